#include "mirel/foundation/color.h"

#include "mirel/foundation/frame_internal.h"

EColorLookup::EColorLookup(unsigned int n, int identity) : EVectorTemplate<EC24>(n), identity_fill_(identity) {
  // The base has zero-filled the entries (or failed with 1303 and no storage).
  if (identity == 0 || this->m_pData == nullptr) return;
  const unsigned int filled = n < 256 ? n : 256;
  for (unsigned int v = 0; v < filled; ++v) {
    const unsigned char b = static_cast<unsigned char>(v);
    this->m_pData[v] = EC24(b, b, b);
  }
}

bool EColorLookup::GrowToFull() {
  const unsigned int old = this->m_un32NumElements;
  if (old >= 256) return true;
  EOk();
  this->SetNumElements(256);
  if (EGetError() != E_OK) return false;
  for (unsigned int v = old; v < 256; ++v) {
    const unsigned char b = static_cast<unsigned char>(v);
    this->m_pData[v] = EC24(b, b, b);
  }
  return true;
}

void EColorLookup::SetIdentity() {
  EOk();
  this->SetNumElements(256);
  if (EGetError() != E_OK) return;
  for (unsigned int v = 0; v < 256; ++v) {
    const unsigned char b = static_cast<unsigned char>(v);
    this->m_pData[v] = EC24(b, b, b);
  }
}

void EColorLookup::SetComponentTable(unsigned int component, const unsigned char* table) {
  if (component > 2 || table == nullptr) {
    ESetError(E_ERROR_BAD_ARGUMENT);
    return;
  }
  if (!GrowToFull()) return;
  for (unsigned int v = 0; v < 256; ++v) this->m_pData[v].c[component] = table[v];
}

void EColorLookup::SetEntry(unsigned int component, unsigned char value, unsigned char mapped) {
  if (component > 2) {
    ESetError(E_ERROR_BAD_ARGUMENT);
    return;
  }
  if (!GrowToFull()) return;
  this->m_pData[value].c[component] = mapped;
}

namespace {

// One component out of a row of EC24, optionally through a lookup.
void GetRow(const unsigned char* src, unsigned char* dst, int width, unsigned int k, const EColorLookup* lookup) {
  if (lookup == nullptr) {
    for (int x = 0; x < width; ++x) dst[x] = src[3 * x + k];
    return;
  }
  for (int x = 0; x < width; ++x) {
    EC24 out;
    lookup->Transform(EC24(src[3 * x], src[3 * x + 1], src[3 * x + 2]), out);
    dst[x] = out.c[k];
  }
}

void SetRow(const unsigned char* src, unsigned char* dst, int width, unsigned int k) {
  for (int x = 0; x < width; ++x) dst[3 * x + k] = src[x];
}

}  // namespace

void ClrGetComponent(EROI<EC24>* source, EROI<EBW8>* plane, unsigned int component, EColorLookup* lookup) {
  mirel::Frame frame("ClrGetComponent");
  if (!frame.NotVoid(source, plane) || !frame.SameSize(source, plane) ||
      !frame.Require(component <= 2, E_ERROR_BAD_ARGUMENT))
    return;
  const auto in = mirel::RowsOf(static_cast<const EROI<EC24>*>(source));
  const auto out = mirel::RowsOf(plane);
  for (int y = 0; y < in.height; ++y)
    GetRow(reinterpret_cast<const unsigned char*>(in.Row(y)), reinterpret_cast<unsigned char*>(out.Row(y)),
           in.width, component, lookup);
}

void ClrSetComponent(EROI<EBW8>* plane, EROI<EC24>* destination, unsigned int component) {
  mirel::Frame frame("ClrSetComponent");
  if (!frame.NotVoid(plane, destination) || !frame.SameSize(plane, destination) ||
      !frame.Require(component <= 2, E_ERROR_BAD_ARGUMENT))
    return;
  const auto in = mirel::RowsOf(static_cast<const EROI<EBW8>*>(plane));
  const auto out = mirel::RowsOf(destination);
  for (int y = 0; y < in.height; ++y)
    SetRow(reinterpret_cast<const unsigned char*>(in.Row(y)), reinterpret_cast<unsigned char*>(out.Row(y)),
           in.width, component);
}

#include "mirel/foundation/image.h"

#include <cstdlib>

namespace mirel {
namespace detail {

// The block is over-allocated by the alignment plus one pointer; the
// original address is kept just in front of the aligned one.
unsigned char* AllocatePixels(std::size_t bytes) {
  constexpr std::size_t kAlign = 64;
  if (bytes > SIZE_MAX - kAlign - sizeof(void*)) return nullptr;
  void* raw = std::malloc(bytes + kAlign + sizeof(void*));
  if (raw == nullptr) return nullptr;
  const std::uintptr_t start = reinterpret_cast<std::uintptr_t>(raw) + sizeof(void*);
  const std::uintptr_t aligned = (start + kAlign - 1) & ~static_cast<std::uintptr_t>(kAlign - 1);
  std::memcpy(reinterpret_cast<void*>(aligned - sizeof(void*)), &raw, sizeof(void*));
  return reinterpret_cast<unsigned char*>(aligned);
}

void FreePixels(unsigned char* block) {
  if (block == nullptr) return;
  void* raw;
  std::memcpy(&raw, block - sizeof(void*), sizeof(void*));
  std::free(raw);
}

}  // namespace detail
}  // namespace mirel

EGenericROI::~EGenericROI() = default;

const EGenericROI* EGenericROI::GetTopParent() const { return Top(); }

const EGenericROI* EGenericROI::Top() const {
  const EGenericROI* r = this;
  while (r->parent_ != nullptr) r = r->parent_;
  return r;
}

int EGenericROI::GetTotalOrgX() const {
  int x = 0;
  for (const EGenericROI* r = this; r != nullptr; r = r->parent_) x += r->org_x_;
  return x;
}

int EGenericROI::GetTotalOrgY() const {
  int y = 0;
  for (const EGenericROI* r = this; r != nullptr; r = r->parent_) y += r->org_y_;
  return y;
}

bool EGenericROI::PlacementFits() const {
  for (const EGenericROI* r = this; r->parent_ != nullptr; r = r->parent_) {
    const EGenericROI* p = r->parent_;
    if (r->org_x_ < 0 || r->org_y_ < 0 || static_cast<long long>(r->org_x_) + r->width_ > p->width_ ||
        static_cast<long long>(r->org_y_) + r->height_ > p->height_)
      return false;
  }
  return true;
}

void EGenericROI::CheckSameSize(const EGenericROI* other) const {
  if (other == nullptr)
    ESetError(E_ERROR_VOID_IMAGE);
  else if (other->width_ != width_ || other->height_ != height_)
    ESetError(E_ERROR_SIZE_MISMATCH);
}

void EGenericROI::CheckNotVoid() const {
  if (Void()) ESetError(E_ERROR_VOID_IMAGE);
}

void EGenericROI::SetSize(const EGenericROI* like) { SetSize(like->GetWidth(), like->GetHeight()); }
void EGenericROI::SetSize(EGenericROI* like) { SetSize(like->GetWidth(), like->GetHeight()); }
void EGenericROI::SetSize(int, int) {}
int EGenericROI::GetBitOffset(int, int) const { return 0; }
void EGenericROI::AttachImage(EImage<EBW8>*) {}

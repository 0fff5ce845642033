// Colour access: moving one component of a 24-bit colour image to or from a
// grey plane, and a colour-to-colour lookup table.
//
// Components are indexed 0, 1, 2 (the three bytes of EC24 in memory order)
// and carry no meaning here.
//
// ClrGetComponent(source, plane, k, lookup) writes component k of every
// source pixel into the 8-bit plane; with a non-null lookup each pixel is
// first passed through lookup->Transform and component k of the result is
// taken. ClrSetComponent(plane, destination, k) writes the plane into
// component k of the destination and leaves the other two components alone.
// Both run the usual frame: neither ROI void (1400), same width and height
// (1403), a component above 2 is refused with 1007; nothing is written when
// a check fails. Labels: "ClrGetComponent", "ClrSetComponent". Source and
// plane may have different pitches and origins.
//
// EColorLookup is a per-component table of 256 entries stored as a vector of
// EC24 records: entry v, component k, is what value v of component k becomes.
// Values at or beyond the element count are left as they are, so an empty
// lookup (the default) is the identity. The counted constructor makes n
// entries; with its flag non-zero (the default) entry v is (v, v, v) (the
// identity), with the flag zero every entry is 0. Only the first 256 entries
// are ever consulted.
//
// EColorVector is a plain growing vector of EC24 colours.
#ifndef MIREL_FOUNDATION_COLOR_H_
#define MIREL_FOUNDATION_COLOR_H_

#include "mirel/foundation/export.h"
#include "mirel/foundation/image.h"
#include "mirel/foundation/pixel.h"
#include "mirel/foundation/vector.h"

class MIREL_API EColorVector : public EVectorTemplate<EC24> {
 public:
  explicit EColorVector(unsigned int n = 0) : EVectorTemplate<EC24>(n) {}
};

class MIREL_API EColorLookup : public EVectorTemplate<EC24> {
 public:
  // n entries (see the header comment); identity non-zero fills them with
  // the identity mapping, zero with zeros.
  explicit EColorLookup(unsigned int n = 0, int identity = 1);

  // The flag the lookup was made with.
  int GetIdentityFill() const { return identity_fill_; }

  // Makes the lookup the identity over all 256 values of each component.
  void SetIdentity();
  // Replaces the table of one component (0..2) by the 256 values of
  // `table`; the other components keep their mapping. The lookup grows to
  // 256 entries when shorter, the new entries mapping to themselves.
  // A component above 2 or a null table sets 1007 and changes nothing.
  void SetComponentTable(unsigned int component, const unsigned char* table);
  // Maps `value` of `component` to `mapped`, growing the lookup to 256
  // entries as above. A component above 2 sets 1007 and changes nothing.
  void SetEntry(unsigned int component, unsigned char value, unsigned char mapped);
  // What `value` of `component` (0..2) becomes.
  unsigned char Map(unsigned int component, unsigned char value) const {
    return value < this->m_un32NumElements ? this->m_pData[value].c[component] : value;
  }
  // result[k] = Map(k, pixel[k]) for k = 0, 1, 2. `result` may be `pixel`.
  void Transform(EC24 pixel, EC24& result) const {
    const EC24 in = pixel;
    result.c[0] = Map(0, in.c[0]);
    result.c[1] = Map(1, in.c[1]);
    result.c[2] = Map(2, in.c[2]);
  }

 private:
  bool GrowToFull();
  int identity_fill_;
};

MIREL_API void ClrGetComponent(const EROI<EC24>* source, EROI<EBW8>* plane, unsigned int component,
                               const EColorLookup* lookup);
MIREL_API void ClrSetComponent(const EROI<EBW8>* plane, EROI<EC24>* destination, unsigned int component);

#endif  // MIREL_FOUNDATION_COLOR_H_

// The frame of the older operations that work on EVector and return short.
//
// These frames arm a code before each test: the code is set first, then the
// test runs, and a failing test returns with the label traced and the armed
// code standing. After a passed test the armed code keeps standing while the
// next steps run, so a helper deep down that fails without a code of its own
// is reported with the last code armed. The frame ends with Done(), which
// clears the state and gives 0.
//
//   short ImgFoo(EVector* src) {
//     mirel::ArmedFrame frame("ImgFoo");
//     MIREL_ARMED_CHECK(frame, E_ERROR_VECTOR_TYPE, src->GetNbGroup() >= 1);
//     MIREL_ARMED_CHECK(frame, E_ERROR_VOID_VECTOR, src->GetDataPtr() != nullptr);
//     ... work; on a failure found later: return frame.Fail(code);
//     return frame.Done();
//   }
#ifndef MIREL_FOUNDATION_ARMED_FRAME_INTERNAL_H_
#define MIREL_FOUNDATION_ARMED_FRAME_INTERNAL_H_

#include "mirel/foundation/error.h"

namespace mirel {

class ArmedFrame {
 public:
  // Clears the error state.
  explicit ArmedFrame(const char* label) noexcept : label_(label) { EOk(); }
  ArmedFrame(const ArmedFrame&) = delete;
  ArmedFrame& operator=(const ArmedFrame&) = delete;

  // Sets `code` so that it stands while the next steps run.
  void Arm(E_ERRORS code) const { ESetError(code); }
  // Arms `code`, then answers the test.
  bool Check(E_ERRORS code, bool ok) const {
    ESetError(code);
    return ok;
  }
  // The failure value: traces the label, returns the standing code.
  short Fail() const { return static_cast<short>(ETraceError(label_)); }
  // Sets `code`, then fails.
  short Fail(E_ERRORS code) const {
    ESetError(code);
    return Fail();
  }
  // The success value: clears the state, returns 0.
  short Done() const { return static_cast<short>(EOk()); }
  const char* Label() const { return label_; }

 private:
  const char* label_;
};

}  // namespace mirel

// Arms `code`, tests `ok` and returns the frame's failure value when it fails.
#define MIREL_ARMED_CHECK(frame, code, ok) \
  do {                                     \
    if (!(frame).Check((code), (ok))) return (frame).Fail(); \
  } while (0)

#endif  // MIREL_FOUNDATION_ARMED_FRAME_INTERNAL_H_

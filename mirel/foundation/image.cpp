#include "mirel/foundation/image.h"

#include "mirel/foundation/runtime.h"

#include <cstdlib>
#include <mutex>

namespace mirel {
namespace detail {
namespace {

#if defined(__SANITIZE_ADDRESS__)
#define MIREL_ASAN 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define MIREL_ASAN 1
#endif
#endif

#if defined(MIREL_ASAN)
// A kept block is poisoned, so that a read or write through an image that
// was freed is still reported as it is for memory given back to malloc.
extern "C" void __asan_poison_memory_region(void const volatile* addr, std::size_t size);
extern "C" void __asan_unpoison_memory_region(void const volatile* addr, std::size_t size);
void Poison(unsigned char* p, std::size_t n) { __asan_poison_memory_region(p, n); }
void Unpoison(unsigned char* p, std::size_t n) { __asan_unpoison_memory_region(p, n); }
#else
void Poison(unsigned char*, std::size_t) {}
void Unpoison(unsigned char*, std::size_t) {}
#endif

constexpr std::size_t kAlign = 64;
// In front of the aligned address: the address malloc gave, then the
// usable size from the aligned address.
constexpr std::size_t kHeader = 2 * sizeof(void*);

struct Header {
  void* raw;
  std::size_t bytes;
};

Header ReadHeader(const unsigned char* block) {
  Header h;
  std::memcpy(&h, block - sizeof(Header), sizeof(Header));
  return h;
}

// Freed pixel blocks of kSmallest bytes or more, kept for the next image of
// about the same size. A fresh block costs a page fault for every page its
// first pass writes (about 2 us a page under a hypervisor, 6 ms for two
// frames of 5 MB), and malloc hands large blocks back to the system as soon
// as two of them are freed together, as an operation's temporaries are.
struct BlockCache {
  static constexpr int kSlots = 4;
  static constexpr std::size_t kSmallest = std::size_t(1) << 20;
  std::mutex lock;
  unsigned char* blocks[kSlots] = {};  // oldest first
  int count = 0;
  std::size_t held = 0;
  std::size_t capacity = std::size_t(32) << 20;

  // Gives back the oldest blocks until at most `slots` are kept and `fits`
  // more bytes fit.
  void Trim(std::size_t fits, int slots) {
    while (count > 0 && (held + fits > capacity || count > slots)) {
      unsigned char* b = blocks[0];
      const Header h = ReadHeader(b);
      for (int k = 1; k < count; ++k) blocks[k - 1] = blocks[k];
      --count;
      held -= h.bytes;
      Unpoison(b, h.bytes);
      std::free(h.raw);
    }
  }
};

// Never destroyed: images freed while static objects are torn down still
// find it.
BlockCache& Cache() {
  static BlockCache* cache = new BlockCache;
  return *cache;
}

// The smallest kept block of `bytes` to bytes + 1/4, taken out of the cache.
unsigned char* TakeKept(std::size_t bytes) {
  BlockCache& c = Cache();
  std::lock_guard<std::mutex> guard(c.lock);
  int best = -1;
  std::size_t bestBytes = 0;
  for (int k = 0; k < c.count; ++k) {
    const std::size_t n = ReadHeader(c.blocks[k]).bytes;
    if (n >= bytes && n - bytes <= bytes / 4 && (best < 0 || n < bestBytes)) best = k, bestBytes = n;
  }
  if (best < 0) return nullptr;
  unsigned char* b = c.blocks[best];
  for (int k = best + 1; k < c.count; ++k) c.blocks[k - 1] = c.blocks[k];
  --c.count;
  c.held -= bestBytes;
  Unpoison(b, bestBytes);
  return b;
}

bool Keep(unsigned char* block, std::size_t bytes) {
  BlockCache& c = Cache();
  std::lock_guard<std::mutex> guard(c.lock);
  if (bytes > c.capacity) return false;
  c.Trim(bytes, BlockCache::kSlots - 1);
  c.blocks[c.count++] = block;
  c.held += bytes;
  Poison(block, bytes);
  return true;
}

}  // namespace

// The block is over-allocated by the alignment plus the header, which sits
// just in front of the aligned address.
unsigned char* AllocatePixels(std::size_t bytes) {
  if (bytes > SIZE_MAX - kAlign - kHeader) return nullptr;
  if (bytes >= BlockCache::kSmallest) {
    if (unsigned char* kept = TakeKept(bytes)) return kept;
  }
  void* raw = std::malloc(bytes + kAlign + kHeader);
  if (raw == nullptr) return nullptr;
  const std::uintptr_t start = reinterpret_cast<std::uintptr_t>(raw) + kHeader;
  const std::uintptr_t aligned = (start + kAlign - 1) & ~static_cast<std::uintptr_t>(kAlign - 1);
  const Header h{raw, bytes};
  std::memcpy(reinterpret_cast<void*>(aligned - sizeof(Header)), &h, sizeof(Header));
  return reinterpret_cast<unsigned char*>(aligned);
}

std::size_t KeptPixelBytes() {
  BlockCache& c = Cache();
  std::lock_guard<std::mutex> guard(c.lock);
  return c.held;
}

void FreePixels(unsigned char* block) {
  if (block == nullptr) return;
  const Header h = ReadHeader(block);
  if (h.bytes >= BlockCache::kSmallest && Keep(block, h.bytes)) return;
  std::free(h.raw);
}

}  // namespace detail
}  // namespace mirel

void ImgSetPixelCache(std::size_t bytes) {
  mirel::detail::BlockCache& c = mirel::detail::Cache();
  std::lock_guard<std::mutex> guard(c.lock);
  c.capacity = bytes;
  c.Trim(0, mirel::detail::BlockCache::kSlots);
}

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

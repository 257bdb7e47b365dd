// The shared ownership behind copies of the memory classes: the block, file,
// mapping or view that an Open obtained lives in one Share object, and every
// class object naming it (the opener and its copies) holds one count of it.
#ifndef TARN_MEMORY_SHARE_H
#define TARN_MEMORY_SHARE_H

#include <windows.h>

#include <utility>

namespace tarn {

// Interlocked, since holders of the same objects may live on different
// threads.
class ShareCount {
 public:
  void Add() noexcept { ::InterlockedIncrement(&count_); }
  // True when the count that was dropped was the last one.
  bool Drop() noexcept { return ::InterlockedDecrement(&count_) == 0; }

 private:
  LONG count_ = 1;
};

// S has a ShareCount `count` and a Release() that frees its platform objects.
template <typename S>
S* JoinShare(S* share) noexcept {
  if (share) share->count.Add();
  return share;
}

// Gives up the holder's count and clears its pointer. The last count
// releases the platform objects when `release` is set; an assignment, which
// never releases, passes false and leaves them allocated.
template <typename S>
void LeaveShare(S*& share, bool release) noexcept {
  S* old = std::exchange(share, nullptr);
  if (old && old->count.Drop()) {
    if (release) old->Release();
    delete old;
  }
}

}  // namespace tarn

#endif  // TARN_MEMORY_SHARE_H

// Owned platform objects: one small RAII type per release function, with the
// invalid value in the type (a file handle is invalid at all bits set, most
// other handles at null).
#ifndef TARN_CORE_HANDLE_H
#define TARN_CORE_HANDLE_H

#include <windows.h>
#include <objbase.h>
#include <oleauto.h>

#include <stdint.h>

#include <utility>

namespace tarn {

// Traits: `type`, `Invalid()` and `Close(type)`.
template <typename Traits>
class UniqueResource {
 public:
  using T = typename Traits::type;

  UniqueResource() noexcept = default;
  explicit UniqueResource(T value) noexcept : value_(value) {}
  UniqueResource(UniqueResource&& other) noexcept : value_(other.release()) {}
  UniqueResource& operator=(UniqueResource&& other) noexcept {
    if (this != &other) reset(other.release());
    return *this;
  }
  UniqueResource(const UniqueResource&) = delete;
  UniqueResource& operator=(const UniqueResource&) = delete;
  ~UniqueResource() { reset(); }

  T get() const noexcept { return value_; }
  explicit operator bool() const noexcept { return value_ != Traits::Invalid(); }
  T release() noexcept { return std::exchange(value_, Traits::Invalid()); }
  void reset(T value = Traits::Invalid()) noexcept {
    T old = std::exchange(value_, value);
    if (old != Traits::Invalid()) Traits::Close(old);
  }

 private:
  T value_ = Traits::Invalid();
};

template <typename T, auto Closer, bool AllBitsInvalid = false>
struct ResourceTraits {
  using type = T;
  static T Invalid() noexcept {
    return AllBitsInvalid ? reinterpret_cast<T>(static_cast<intptr_t>(-1)) : T();
  }
  static void Close(T value) noexcept { Closer(value); }
};

inline void ReleasePages(void* p) noexcept { ::VirtualFree(p, 0, MEM_RELEASE); }
inline void ReleaseSid(PSID sid) noexcept { ::FreeSid(sid); }

// The calling thread's impersonation, ended by RevertToSelf; `true` while it
// lasts.
struct ImpersonationTraits {
  using type = bool;
  static bool Invalid() noexcept { return false; }
  static void Close(bool) noexcept { ::RevertToSelf(); }
};

// A file handle (CreateFile) and a search handle (FindFirstFile) are invalid
// at all bits set.
using UniqueFile = UniqueResource<ResourceTraits<HANDLE, &::CloseHandle, true>>;
using UniqueFind = UniqueResource<ResourceTraits<HANDLE, &::FindClose, true>>;
// Mappings, processes, threads, events, tokens, modules, views, blocks: null.
using UniqueHandle = UniqueResource<ResourceTraits<HANDLE, &::CloseHandle>>;
using UniqueModule = UniqueResource<ResourceTraits<HMODULE, &::FreeLibrary>>;
using UniqueView = UniqueResource<ResourceTraits<LPCVOID, &::UnmapViewOfFile>>;
using UniqueGlobal = UniqueResource<ResourceTraits<HGLOBAL, &::GlobalFree>>;
using UniqueLocal = UniqueResource<ResourceTraits<HLOCAL, &::LocalFree>>;
using UniquePages = UniqueResource<ResourceTraits<void*, &ReleasePages>>;
// A SID from AllocateAndInitializeSid.
using UniqueSid = UniqueResource<ResourceTraits<PSID, &ReleaseSid>>;
using UniqueImpersonation = UniqueResource<ImpersonationTraits>;

// COM: an interface pointer (Release), task-allocator memory (CoTaskMemFree),
// an automation string (SysFreeString); all invalid at null.
template <typename Interface>
void ReleaseInterface(Interface* p) noexcept {
  p->Release();
}
template <typename Interface>
using UniqueInterface = UniqueResource<ResourceTraits<Interface*, &ReleaseInterface<Interface>>>;
using UniqueTaskMemory = UniqueResource<ResourceTraits<void*, &::CoTaskMemFree>>;
using UniqueBstr = UniqueResource<ResourceTraits<BSTR, &::SysFreeString>>;

}  // namespace tarn

#endif  // TARN_CORE_HANDLE_H

// Text conversions between the narrow text of the interface (the calling
// thread's ANSI code page) and the UTF-16 text of the wide platform calls.
// The structured-storage family converts its narrow names in the system's
// ANSI code page instead: WideText(name, CP_ACP).
//
// A conversion object owns its result: up to 128 units live inside the object,
// longer texts in a zero-filled heap buffer released with the object. Use it
// for the length of one statement or block:
//     tarn::WideText wide(path);
//     HANDLE h = CreateFileW(wide, ...);
// A null text converts to null. A failed conversion or allocation throws
// ATL::CAtlException.
#ifndef TARN_CORE_TEXT_H
#define TARN_CORE_TEXT_H

#include <windows.h>

#include <stddef.h>

namespace tarn {

// The HRESULT for a Win32 error code: 0x80070000 | (code & 0xFFFF) when the
// code read as a signed number is positive, the code unchanged otherwise.
HRESULT HResultFromError(DWORD code) noexcept;

namespace detail {

template <typename Unit, size_t InlineUnits>
class ConversionBuffer {
 public:
  ConversionBuffer() = default;
  ConversionBuffer(const ConversionBuffer&) = delete;
  ConversionBuffer& operator=(const ConversionBuffer&) = delete;
  ~ConversionBuffer() { FreeHeap(); }

  // Makes room for `units` units (size() is then `units`): inline up to
  // InlineUnits, else a zero-filled heap block. Throws CAtlException(E_OUTOFMEMORY) when that fails.
  void Resize(size_t units);
  void FreeHeap() noexcept;
  Unit* data() noexcept { return data_; }
  size_t size() const noexcept { return size_; }
  bool OnHeap() const noexcept { return data_ != inline_; }

 private:
  Unit inline_[InlineUnits];
  Unit* data_ = inline_;
  size_t size_ = InlineUnits;
};

}  // namespace detail

class WideText {
 public:
  static constexpr size_t kInlineUnits = 128;

  // `codePage`: the code page of `text`; the thread's ANSI code page unless
  // given.
  explicit WideText(const char* text, UINT codePage = CP_THREAD_ACP);
  WideText(const WideText&) = delete;
  WideText& operator=(const WideText&) = delete;

  const wchar_t* get() const noexcept { return text_; }
  operator const wchar_t*() const noexcept { return text_; }  // NOLINT: used as an argument
  // True when the converted text did not fit the inline buffer.
  bool OnHeap() const noexcept { return text_ && buffer_.OnHeap(); }

 private:
  detail::ConversionBuffer<wchar_t, kInlineUnits> buffer_;
  const wchar_t* text_ = nullptr;
};

class NarrowText {
 public:
  static constexpr size_t kInlineUnits = 128;

  explicit NarrowText(const wchar_t* text);
  NarrowText(const NarrowText&) = delete;
  NarrowText& operator=(const NarrowText&) = delete;

  const char* get() const noexcept { return text_; }
  operator const char*() const noexcept { return text_; }  // NOLINT: used as an argument
  bool OnHeap() const noexcept { return text_ && buffer_.OnHeap(); }

 private:
  detail::ConversionBuffer<char, kInlineUnits> buffer_;
  const char* text_ = nullptr;
};

}  // namespace tarn

#endif  // TARN_CORE_TEXT_H

#include "core/text.h"

#include <limits.h>
#include <stdlib.h>
#include <string.h>
#include <wchar.h>

#include "tarn/core.h"

namespace tarn {

HRESULT HResultFromError(DWORD code) noexcept {
  return static_cast<LONG>(code) > 0 ? static_cast<HRESULT>(0x80070000u | (code & 0xFFFFu))
                                     : static_cast<HRESULT>(code);
}

namespace detail {

template <typename Unit, size_t InlineUnits>
void ConversionBuffer<Unit, InlineUnits>::Resize(size_t units) {
  FreeHeap();
  if (units <= InlineUnits) {
    data_ = inline_;
    size_ = units;
    return;
  }
  void* block = calloc(units, sizeof(Unit));
  if (!block) throw ATL::CAtlException(E_OUTOFMEMORY);
  data_ = static_cast<Unit*>(block);
  size_ = units;
}

template <typename Unit, size_t InlineUnits>
void ConversionBuffer<Unit, InlineUnits>::FreeHeap() noexcept {
  if (data_ != inline_) free(data_);
  data_ = inline_;
  size_ = InlineUnits;
}

template class ConversionBuffer<wchar_t, WideText::kInlineUnits>;
template class ConversionBuffer<char, NarrowText::kInlineUnits>;

// The conversion shared by both directions: convert `length` units (the
// terminator included) into a buffer of `firstUnits`; when the platform says
// the buffer is too small, ask it for the size and convert again. Any other
// failure releases the heap buffer and throws the last error as an HRESULT.
template <typename Buffer, typename Convert>
void ConvertWithRetry(Buffer& buffer, size_t firstUnits, Convert convert) {
  if (firstUnits > static_cast<size_t>(INT_MAX)) throw ATL::CAtlException(E_INVALIDARG);
  buffer.Resize(firstUnits);
  if (convert(buffer.data(), static_cast<int>(buffer.size())) != 0) return;
  DWORD error = ::GetLastError();
  if (error == ERROR_INSUFFICIENT_BUFFER) {
    const int needed = convert(nullptr, 0);
    if (needed > 0) {
      buffer.Resize(static_cast<size_t>(needed));
      if (convert(buffer.data(), static_cast<int>(buffer.size())) != 0) return;
    }
    error = ::GetLastError();
  }
  buffer.FreeHeap();
  throw ATL::CAtlException(HResultFromError(error));
}

}  // namespace detail

WideText::WideText(const char* text, UINT codePage) {
  if (!text) return;
  const size_t length = strlen(text) + 1;
  if (length > static_cast<size_t>(INT_MAX)) throw ATL::CAtlException(E_INVALIDARG);
  // One UTF-16 unit per narrow byte suffices for every ANSI code page.
  detail::ConvertWithRetry(buffer_, length, [&](wchar_t* out, int units) {
    return ::MultiByteToWideChar(codePage, 0, text, static_cast<int>(length), out, units);
  });
  text_ = buffer_.data();
}

NarrowText::NarrowText(const wchar_t* text) {
  if (!text) return;
  const size_t length = wcslen(text) + 1;
  if (length > static_cast<size_t>(INT_MAX) / 4) throw ATL::CAtlException(E_INVALIDARG);
  detail::ConvertWithRetry(buffer_, 4 * length, [&](char* out, int bytes) {
    return ::WideCharToMultiByte(CP_THREAD_ACP, 0, text, static_cast<int>(length), out, bytes,
                                 nullptr, nullptr);
  });
  text_ = buffer_.data();
}

}  // namespace tarn

#include "core/error_out.h"

#include "core/platform.h"

namespace tarn {
namespace {
// The network-management range (NERR_BASE to MAX_NERR), whose texts live in
// "netmsg.dll" rather than in the system's table.
constexpr DWORD kNetMessageFirst = 2100;
constexpr DWORD kNetMessageLast = 2999;
constexpr DWORD kUserDefaultLanguage = 0x400;  // MAKELANGID(LANG_NEUTRAL, SUBLANG_DEFAULT)

// No FORMAT_MESSAGE_IGNORE_INSERTS and no allocation: the text goes straight
// into the caller's buffer, untrimmed and uncut.
DWORD FormatMessageInto(DWORD flags, HMODULE source, DWORD message, char* buffer, DWORD size) {
  return Platform().FormatMessageA(flags, source, message, kUserDefaultLanguage, buffer, size,
                                   nullptr);
}
}  // namespace

DWORD FormatErrorMessage(DWORD code, char* buffer, DWORD size) {
  PlatformCalls& platform = Platform();
  HMODULE netmsg = nullptr;
  DWORD flags = FORMAT_MESSAGE_FROM_SYSTEM;
  if (code >= kNetMessageFirst && code <= kNetMessageLast) {
    netmsg = platform.LoadLibraryExA("netmsg.dll", nullptr, LOAD_LIBRARY_AS_DATAFILE);
    if (netmsg) flags |= FORMAT_MESSAGE_FROM_HMODULE;
  }
  const DWORD count = FormatMessageInto(flags, netmsg, code, buffer, size);
  if (netmsg) platform.FreeLibrary(netmsg);
  return count;
}

DWORD FormatResultMessage(HRESULT code, char* buffer, DWORD size) {
  return FormatMessageInto(FORMAT_MESSAGE_FROM_SYSTEM, nullptr, static_cast<DWORD>(code) & 0xFFFF,
                           buffer, size);
}

template <typename Code, DWORD (*Format)(Code, char*, DWORD)>
BasicErrorOut<Code, Format>::BasicErrorOut(Code* code, char* text, DWORD size) noexcept
    : code_(code), text_(text), size_(size) {
  if (code_) *code_ = 0;
  // An empty buffer is not written at all; one holding text loses only its
  // first character.
  if (text_ && size_ > 0 && text_[0] != '\0') text_[0] = '\0';
}

template <typename Code, DWORD (*Format)(Code, char*, DWORD)>
void BasicErrorOut<Code, Format>::Report(Code code) const {
  if (code_) *code_ = code;
  if (text_ && size_ != 0) Format(code, text_, size_);
}

template class BasicErrorOut<DWORD, FormatErrorMessage>;
template class BasicErrorOut<HRESULT, FormatResultMessage>;

}  // namespace tarn

// The error out-parameters (code, text buffer, buffer size) that most
// operations take last. Constructing an ErrorOut performs the clearing on
// entry; Fail() fills them for a failed platform call.
//
//     ErrorOut err(pdwError, pszError, cchError);
//     HANDLE h = ::CreateFileW(...);
//     if (h == INVALID_HANDLE_VALUE) return err.Fail(::GetLastError(), h);
//
// Pass GetLastError() straight from the failing call: the code is read before
// any destructor (a conversion buffer's, a handle's) can change it.
#ifndef TARN_CORE_ERROR_OUT_H
#define TARN_CORE_ERROR_OUT_H

#include <windows.h>

namespace tarn {

// Writes the system's text for `code` into buffer (size in characters,
// terminator included) with FormatMessageA; codes 2100 to 2999 are looked up
// in "netmsg.dll" first when it loads. Returns the count the platform stored.
DWORD FormatErrorMessage(DWORD code, char* buffer, DWORD size);

class ErrorOut {
 public:
  ErrorOut(DWORD* code, char* text, DWORD size) noexcept;
  ErrorOut(const ErrorOut&) = delete;
  ErrorOut& operator=(const ErrorOut&) = delete;

  // Stores `code` and its system text; returns `result` for the caller's return.
  template <typename T>
  T Fail(DWORD code, T result) const {
    Report(code);
    return result;
  }
  void Report(DWORD code) const;

 private:
  DWORD* code_;
  char* text_;
  DWORD size_;
};

}  // namespace tarn

#endif  // TARN_CORE_ERROR_OUT_H

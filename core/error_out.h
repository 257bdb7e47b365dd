// The out-parameters (code, text buffer, buffer size) that most operations
// take last, in two kinds that differ only in the code:
//  - ErrorOut: a Win32 error code (the thread's last error), its text from
//    FormatErrorMessage;
//  - ResultOut: an HRESULT (the structured-storage family), its text that of
//    the code's low 16 bits from the system's table (FormatResultMessage).
// Constructing one performs the clearing on entry; Fail() fills it for a
// failed platform call.
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

// Writes the system's text for the low 16 bits of the result code `code`
// (the system's table only, no message module). Returns the count stored; 0
// and nothing written when no system message has that number.
DWORD FormatResultMessage(HRESULT code, char* buffer, DWORD size);

template <typename Code, DWORD (*Format)(Code, char*, DWORD)>
class BasicErrorOut {
 public:
  BasicErrorOut(Code* code, char* text, DWORD size) noexcept;
  BasicErrorOut(const BasicErrorOut&) = delete;
  BasicErrorOut& operator=(const BasicErrorOut&) = delete;

  // Stores `code` and its system text; returns `result` for the caller's return.
  template <typename T>
  T Fail(Code code, T result) const {
    Report(code);
    return result;
  }
  void Report(Code code) const;

 private:
  Code* code_;
  char* text_;
  DWORD size_;
};

using ErrorOut = BasicErrorOut<DWORD, FormatErrorMessage>;
using ResultOut = BasicErrorOut<HRESULT, FormatResultMessage>;

extern template class BasicErrorOut<DWORD, FormatErrorMessage>;
extern template class BasicErrorOut<HRESULT, FormatResultMessage>;

}  // namespace tarn

#endif  // TARN_CORE_ERROR_OUT_H

/// \file
/// Tarn: the call frame shared by the library's operations.
///
/// Most operations of the file, process and memory families end with three
/// error out-parameters, in this order:
///   DWORD* pdwError  receives the platform's error code; 0 = no code stored
///   char*  pszError  caller-owned buffer for the system's text of that code
///   DWORD  cchError  size of that buffer in characters, terminator included
/// Each may be null (or 0). On entry the operation stores 0 through pdwError
/// and, if the buffer holds text, a terminator in its first character (an
/// already empty buffer is not written). When a platform call fails, the code
/// is the thread's last error right after that call, and the text is the
/// system's message for it, stored exactly as the platform gives it; codes
/// 2100 to 2999 take their text from "netmsg.dll" where it exists. A failure
/// that the library detects itself (a null argument, a short transfer) leaves
/// code 0 and an empty text. No operation throws but ATL::CAtlException (a
/// text conversion or its buffer failed) and std::bad_alloc.
///
/// Narrow text crossing the interface is in the calling thread's ANSI code
/// page.
#ifndef TARN_CORE_H
#define TARN_CORE_H

#include <windows.h>

#include "tarn/tarn_export.h"

#if !defined(__ATLEXCEPT_H__)
namespace ATL {
/// Raised when a text conversion or its buffer allocation fails; carries the
/// HRESULT (E_OUTOFMEMORY, E_INVALIDARG, or the conversion's last error as an
/// HRESULT). Declared here for applications built without ATL, with the same
/// layout and members as ATL's own class.
class CAtlException {
 public:
  /// Carries E_FAIL.
  CAtlException() noexcept : m_hr(E_FAIL) {}
  /// Carries `hr`.
  CAtlException(HRESULT hr) noexcept : m_hr(hr) {}  // NOLINT: implicit as in ATL
  /// The HRESULT carried.
  operator HRESULT() const noexcept { return m_hr; }

  HRESULT m_hr;  ///< the HRESULT carried
};
}  // namespace ATL
#endif

/// Redirects the module from which the library loads its own resources (the
/// texts "Not Available" and "Cannot create filemapping for files with size 0",
/// the "PIFFILE" resource 103). Any value is stored, null included. The
/// library's entry point stores its own instance again whenever a thread of the
/// process starts or ends, so a redirection lasts only until then.
TARN_API void TarnSetResourceHandle(HINSTANCE hInstance);

/// The module from which the library loads its own resources: tarn.dll itself
/// unless redirected by TarnSetResourceHandle.
TARN_API HINSTANCE TarnGetResourceHandle();

#endif  // TARN_CORE_H

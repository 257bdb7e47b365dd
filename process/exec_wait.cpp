// Programs started and waited for; for 16-bit and MS-DOS programs, the
// program-information file that the Windows 95 family runs them with.
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <memory>

#include "core/error_out.h"
#include "core/handle.h"
#include "core/resource_handle.h"
#include "tarn/core.h"
#include "tarn/memory.h"
#include "tarn/process.h"

namespace {

constexpr size_t kPathBuffer = MAX_PATH + 1;

// A copy of `text` that process creation may write into; null for null.
std::unique_ptr<char[]> WritableCopy(const char* text) {
  if (!text) return nullptr;
  const size_t size = strlen(text) + 1;
  std::unique_ptr<char[]> copy(new char[size]);
  memcpy(copy.get(), text, size);
  return copy;
}

// Waits up to `milliseconds` for `process` to end: WAIT_TIMEOUT while it
// still runs, else its exit code (0 when that cannot be read).
int WaitForExit(HANDLE process, DWORD milliseconds) {
  if (::WaitForSingleObject(process, milliseconds) == WAIT_TIMEOUT) return WAIT_TIMEOUT;
  DWORD code = 0;
  ::GetExitCodeProcess(process, &code);
  return static_cast<int>(code);
}

// "<Windows directory>\<base name of application>.pif" in `path`; false when
// there is no application name or the file name would not fit.
bool ProgramInformationPath(const char* application, char (&path)[kPathBuffer]) {
  char base[kPathBuffer] = {};
  if (!application || strlen(application) > MAX_PATH ||
      _splitpath_s(application, nullptr, 0, nullptr, 0, base, kPathBuffer, nullptr, 0) != 0)
    return false;
  char windows[kPathBuffer] = {};
  const UINT length = ::GetWindowsDirectoryA(windows, MAX_PATH);
  if (length == 0 || length >= MAX_PATH) return false;
  const char* separator = windows[length - 1] == '\\' ? "" : "\\";
  const int written = snprintf(path, kPathBuffer, "%s%s%s.pif", windows, separator, base);
  return written >= 0 && written < static_cast<int>(kPathBuffer);
}

// Writes the library's program-information file for `application` into the
// Windows directory unless one of that name is there; a failure is ignored.
void ProvideProgramInformation(const char* application) {
  char path[kPathBuffer] = {};
  if (!ProgramInformationPath(application, path)) return;
  WIN32_FIND_DATAA found;
  if (tarn::UniqueFind(::FindFirstFileA(path, &found))) return;
  TarnCreateFileFromResource(path, TarnGetResourceHandle(),
                             MAKEINTRESOURCEA(tarn::kPifResourceId), tarn::kPifResourceType,
                             nullptr, nullptr, 0);
}

}  // namespace

int TarnWinExecWait32(const char* pszApplicationName, const char* pszCommandLine,
                      WORD wShowWindow, HANDLE* phProcess, DWORD dwCreationFlags,
                      DWORD dwMilliseconds, DWORD* pdwError, char* pszError, DWORD cchError) {
  const tarn::ErrorOut err(pdwError, pszError, cchError);
  STARTUPINFOA startup = {};
  startup.cb = sizeof startup;
  startup.dwFlags = STARTF_USESHOWWINDOW;
  startup.wShowWindow = wShowWindow;
  PROCESS_INFORMATION started = {};
  std::unique_ptr<char[]> commandLine = WritableCopy(pszCommandLine);
  const HWND focus = ::GetFocus();
  const BOOL created = ::CreateProcessA(pszApplicationName, commandLine.get(), nullptr, nullptr,
                                        FALSE, dwCreationFlags, nullptr, nullptr, &startup,
                                        &started);
  const DWORD error = ::GetLastError();
  commandLine.reset();
  // A failure that leaves no code counts as a start (of nothing).
  if (!created && error != 0) return err.Fail(error, -1);
  const tarn::UniqueHandle thread(started.hThread);
  if (focus) ::SetFocus(focus);
  if (phProcess) *phProcess = started.hProcess;
  if (dwMilliseconds == 0) return 1;
  const tarn::UniqueHandle process(started.hProcess);
  return WaitForExit(process.get(), dwMilliseconds);
}

int TarnWinExecWait16(const char* pszApplicationName, const char* pszCommandLine,
                      WORD wShowWindow, HANDLE* phProcess, DWORD dwCreationFlags,
                      DWORD dwMilliseconds, DWORD* pdwError, char* pszError, DWORD cchError) {
  const tarn::ErrorOut err(pdwError, pszError, cchError);
  OSVERSIONINFOA version = {};
  version.dwOSVersionInfoSize = sizeof version;
  if (!::GetVersionExA(&version)) return -1;
  if (version.dwPlatformId & VER_PLATFORM_WIN32_WINDOWS)
    ProvideProgramInformation(pszApplicationName);
  return TarnWinExecWait32(pszApplicationName, pszCommandLine, wShowWindow, phProcess,
                           dwCreationFlags | CREATE_SEPARATE_WOW_VDM, dwMilliseconds, pdwError,
                           pszError, cchError);
}

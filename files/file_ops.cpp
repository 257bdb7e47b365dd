// File operations on narrow paths: each converts the path, makes its platform
// call and reports a failure through the error out-parameters.
#include "core/error_out.h"
#include "core/handle.h"
#include "core/text.h"
#include "tarn/files.h"

namespace {

bool IsEmpty(const char* text) { return !text || !*text; }

bool IsDirectory(const WIN32_FIND_DATAW& data) {
  return (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

}  // namespace

HANDLE TarnFileCreate(const char* pszPath, DWORD dwDesiredAccess, DWORD dwCreationDisposition,
                      DWORD dwFlagsAndAttributes, DWORD dwShareMode, DWORD* pdwError,
                      char* pszError, DWORD cchError) {
  tarn::ErrorOut err(pdwError, pszError, cchError);
  const HANDLE file = ::CreateFileW(tarn::WideText(pszPath), dwDesiredAccess, dwShareMode, nullptr,
                                    dwCreationDisposition, dwFlagsAndAttributes, nullptr);
  if (file == INVALID_HANDLE_VALUE) return err.Fail(::GetLastError(), INVALID_HANDLE_VALUE);
  return file;
}

HANDLE TarnFileOpen(const char* pszPath, DWORD dwDesiredAccess, DWORD dwCreationDisposition,
                    DWORD dwFlagsAndAttributes, DWORD dwShareMode, DWORD* pdwError,
                    char* pszError, DWORD cchError) {
  return TarnFileCreate(pszPath, dwDesiredAccess, dwCreationDisposition, dwFlagsAndAttributes,
                        dwShareMode, pdwError, pszError, cchError);
}

int TarnFileRead(HANDLE hFile, void* pBuffer, DWORD dwCount, DWORD* pdwError, char* pszError,
                 DWORD cchError) {
  tarn::ErrorOut err(pdwError, pszError, cchError);
  DWORD done = 0;
  if (!::ReadFile(hFile, pBuffer, dwCount, &done, nullptr)) return err.Fail(::GetLastError(), 0);
  return done == dwCount ? 1 : 0;
}

int TarnFileWrite(HANDLE hFile, const void* pBuffer, DWORD dwCount, DWORD* pdwError,
                  char* pszError, DWORD cchError) {
  tarn::ErrorOut err(pdwError, pszError, cchError);
  DWORD done = 0;
  if (!::WriteFile(hFile, pBuffer, dwCount, &done, nullptr)) return err.Fail(::GetLastError(), 0);
  return done == dwCount ? 1 : 0;
}

int TarnFileSeekEnd(HANDLE hFile, DWORD* pdwError, char* pszError, DWORD cchError) {
  tarn::ErrorOut err(pdwError, pszError, cchError);
  if (::SetFilePointer(hFile, 0, nullptr, FILE_END) == INVALID_SET_FILE_POINTER)
    return err.Fail(::GetLastError(), 0);
  return 1;
}

int TarnFileSeek(HANDLE hFile, LONG lPosition, DWORD* pdwError, char* pszError, DWORD cchError) {
  tarn::ErrorOut err(pdwError, pszError, cchError);
  if (::SetFilePointer(hFile, lPosition, nullptr, FILE_BEGIN) == INVALID_SET_FILE_POINTER)
    return err.Fail(::GetLastError(), 0);
  return 1;
}

int TarnFileSize(HANDLE hFile, DWORD* pdwError, char* pszError, DWORD cchError) {
  tarn::ErrorOut err(pdwError, pszError, cchError);
  const DWORD size = ::GetFileSize(hFile, nullptr);
  if (size == INVALID_FILE_SIZE) return err.Fail(::GetLastError(), -1);
  return static_cast<int>(size);
}

int TarnFileSize(const char* pszPath, DWORD* pdwError, char* pszError, DWORD cchError) {
  tarn::UniqueFile file;
  {
    tarn::ErrorOut err(pdwError, pszError, cchError);
    file.reset(::CreateFileW(tarn::WideText(pszPath), GENERIC_READ,
                             FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0,
                             nullptr));
    if (!file) return err.Fail(::GetLastError(), -1);
  }
  return TarnFileSize(file.get(), pdwError, pszError, cchError);
}

int TarnFileFind(const char* pszPath, DWORD* pdwError, char* pszError, DWORD cchError) {
  tarn::ErrorOut err(pdwError, pszError, cchError);
  if (IsEmpty(pszPath)) return 0;
  WIN32_FIND_DATAW data;
  const tarn::UniqueFind find(::FindFirstFileW(tarn::WideText(pszPath), &data));
  if (!find) return err.Fail(::GetLastError(), 0);
  return IsDirectory(data) ? 0 : 1;
}

int TarnFileHide(const char* pszPath, DWORD* pdwError, char* pszError, DWORD cchError) {
  tarn::ErrorOut err(pdwError, pszError, cchError);
  if (IsEmpty(pszPath)) return 0;
  const tarn::WideText path(pszPath);
  const DWORD attributes = ::GetFileAttributesW(path);
  if (attributes == INVALID_FILE_ATTRIBUTES) return err.Fail(::GetLastError(), 0);
  if (attributes & FILE_ATTRIBUTE_HIDDEN) return 1;
  // Hidden alone, not added to the old set: read-only, system and archive go.
  if (!::SetFileAttributesW(path, FILE_ATTRIBUTE_HIDDEN)) return err.Fail(::GetLastError(), 0);
  return 1;
}

int TarnFileMove(const char* pszSource, const char* pszDestination, DWORD* pdwError,
                 char* pszError, DWORD cchError) {
  tarn::ErrorOut err(pdwError, pszError, cchError);
  if (IsEmpty(pszSource) || IsEmpty(pszDestination)) return 0;
  const tarn::WideText source(pszSource);
  {
    WIN32_FIND_DATAW data;
    const tarn::UniqueFind find(::FindFirstFileW(source, &data));
    if (!find) return err.Fail(::GetLastError(), 0);
    if (IsDirectory(data)) return 0;
  }
  const tarn::WideText destination(pszDestination);
  if (TarnDriveIsEqual(pszSource, pszDestination)) {
    // A plain rename: an existing destination makes it fail.
    if (!::MoveFileW(source, destination)) return err.Fail(::GetLastError(), 0);
    return 1;
  }
  // Across roots the copy replaces an existing destination. A failed delete
  // leaves both files; nothing is undone.
  if (!::CopyFileW(source, destination, FALSE)) return err.Fail(::GetLastError(), 0);
  if (!::DeleteFileW(source)) return err.Fail(::GetLastError(), 0);
  return 1;
}

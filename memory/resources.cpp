// Resources copied out of a module: left in place and handed out, written to
// a file, or written to a temporary file that the registry editor imports.
#include <windows.h>

#include <shellapi.h>
#include <stdio.h>

#include "core/error_out.h"
#include "core/handle.h"
#include "core/text.h"
#include "tarn/files.h"
#include "tarn/memory.h"

namespace {

// How long the registry editor is given for an import.
constexpr DWORD kImportWait = 2000;
// The parameters of the registry editor: at most this many characters.
constexpr size_t kParameterChars = MAX_PATH;

// A file deleted when this goes; whether the deletion succeeds is not asked.
using DeleteOnExit = tarn::UniqueResource<tarn::ResourceTraits<const char*, &::DeleteFileA>>;

// The bytes of resource (name, type) in `module`. Null at the first platform
// call that fails, and for an empty resource, the thread's last error then
// telling why. `size` receives the resource's size as soon as it is found.
const void* FindBytes(HINSTANCE module, const char* name, const char* type, DWORD& size) {
  const HRSRC found = ::FindResourceA(module, name, type);
  if (!found) return nullptr;
  size = ::SizeofResource(module, found);
  if (size == 0) return nullptr;
  const HGLOBAL loaded = ::LoadResource(module, found);
  if (!loaded) return nullptr;
  return ::LockResource(loaded);
}

// Starts the registry editor, hidden, on the registry text in `path` with the
// switch that keeps it silent, and waits until it ends or the import time is
// up. False when it cannot be started.
bool ImportSilently(const char* path) {
  const tarn::WideText file(path);
  wchar_t parameters[kParameterChars + 1] = {};  // a longer text is cut
  _snwprintf(parameters, kParameterChars, L"-s \"%ls\"", file.get());
  SHELLEXECUTEINFOW info = {};
  info.cbSize = sizeof info;
  info.fMask = SEE_MASK_NOCLOSEPROCESS;
  info.lpVerb = L"open";
  info.lpFile = L"regedit.exe";
  info.lpParameters = parameters;
  info.nShow = SW_HIDE;
  if (!::ShellExecuteExW(&info)) return false;
  const tarn::UniqueHandle editor(info.hProcess);
  // Neither how the wait ends nor the editor's exit code tells anything.
  ::WaitForSingleObject(editor.get(), kImportWait);
  return true;
}

}  // namespace

const void* TarnLoadFromResource(HINSTANCE hModule, const char* pszName, const char* pszType,
                                 DWORD* pdwSize, DWORD* pdwError, char* pszError,
                                 DWORD cchError) {
  const tarn::ErrorOut err(pdwError, pszError, cchError);
  if (!pdwSize) return nullptr;
  const void* bytes = FindBytes(hModule, pszName, pszType, *pdwSize);
  if (!bytes) return err.Fail(::GetLastError(), bytes);
  return bytes;
}

const void* TarnLoadFromResource(HINSTANCE hModule, DWORD dwResource, const char* pszType,
                                 DWORD* pdwSize, DWORD* pdwError, char* pszError,
                                 DWORD cchError) {
  return TarnLoadFromResource(hModule, MAKEINTRESOURCEA(LOWORD(dwResource)), pszType, pdwSize,
                              pdwError, pszError, cchError);
}

int TarnCreateFileFromResource(const char* pszPath, HINSTANCE hModule, const char* pszName,
                               const char* pszType, DWORD* pdwError, char* pszError,
                               DWORD cchError) {
  const tarn::ErrorOut err(pdwError, pszError, cchError);
  DWORD size = 0;
  const void* bytes = FindBytes(hModule, pszName, pszType, size);
  if (!bytes) return err.Fail(::GetLastError(), 0);
  tarn::UniqueFile file(TarnFileCreate(pszPath, GENERIC_WRITE, CREATE_ALWAYS,
                                       FILE_ATTRIBUTE_NORMAL, 0, pdwError, pszError, cchError));
  if (!file) return 0;
  // A file written in part stays as it is.
  if (!TarnFileWrite(file.get(), bytes, size, pdwError, pszError, cchError)) return 0;
  if (!::CloseHandle(file.release())) return err.Fail(::GetLastError(), 0);
  return 1;
}

int TarnCreateFileFromResource(const char* pszPath, HINSTANCE hModule, DWORD dwResource,
                               const char* pszType, DWORD* pdwError, char* pszError,
                               DWORD cchError) {
  return TarnCreateFileFromResource(pszPath, hModule, MAKEINTRESOURCEA(LOWORD(dwResource)),
                                    pszType, pdwError, pszError, cchError);
}

int TarnRegisterFileFromResource(HINSTANCE hModule, DWORD dwResource, const char* pszType,
                                 DWORD* pdwError, char* pszError, DWORD cchError) {
  char name[MAX_PATH] = {};
  TarnTempFilename(name, MAX_PATH, nullptr, nullptr);
  if (!name[0]) return 0;
  // Whatever happens next, nothing is left under the name.
  const DeleteOnExit file(name);
  if (!TarnCreateFileFromResource(name, hModule, dwResource, pszType, pdwError, pszError,
                                  cchError))
    return 0;
  return ImportSilently(name) ? 1 : 0;
}

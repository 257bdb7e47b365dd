// Where temporary files go, fresh temporary names and files, a module's
// directory and the shell's known folders.
#include <mbstring.h>
#include <shlobj.h>
#include <shlwapi.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <memory>
#include <new>

#include "core/handle.h"
#include "core/platform.h"
#include "tarn/files.h"

namespace {

constexpr DWORD kLongPathBuffer = 521;   // long form of the directory; "TMP=..." assignments
constexpr DWORD kDirectoryBuffer = 261;  // "<system>\~Temp"; the directory given to _tempnam
constexpr DWORD kTempNameBuffer = 260;   // the name TarnCreateTempFile opens

struct FreeDeleter {
  void operator()(char* p) const noexcept { free(p); }
};
using RuntimeText = std::unique_ptr<char, FreeDeleter>;

unsigned char* Bytes(char* text) { return reinterpret_cast<unsigned char*>(text); }
const unsigned char* Bytes(const char* text) {
  return reinterpret_cast<const unsigned char*>(text);
}

// A copy of the variable's value, or null when it is not set (or empty).
RuntimeText ReadVariable(const char* name) {
  char* value = nullptr;
#if defined(__MINGW32__)
  // MinGW's import library for msvcrt.dll has no _dupenv_s; getenv and a
  // copy read the same environment.
  if (const char* found = getenv(name)) {
    value = _strdup(found);
    if (!value) throw std::bad_alloc();
  }
#else
  size_t size = 0;
  if (_dupenv_s(&value, &size, name) != 0) return nullptr;
#endif
  RuntimeText text(value);
  if (text && !*text) text.reset();
  return text;
}

// Sets NAME=value in the process environment (the runtime's copy and the
// platform's). A value too long for the assignment buffer is not set.
void SetVariable(const char* name, const char* value) {
  char assignment[kLongPathBuffer];
  if (strlen(name) + 1 + strlen(value) >= sizeof(assignment)) return;
  sprintf_s(assignment, sizeof(assignment), "%s=%s", name, value);
  _putenv(assignment);
}

// The copy-out rule: the whole text when it fits, else its first size - 1
// bytes and a terminator; the result is the full length either way, so a
// result not below `size` tells the caller the text was cut.
DWORD CopyOut(char* buffer, DWORD size, const char* text) {
  const size_t length = strlen(text);
  _mbsnbcpy_s(Bytes(buffer), size, Bytes(text), length < size ? length : size - 1);
  return static_cast<DWORD>(length);
}

// The long form of `path` (at most 520 bytes) into `out`, or `path` itself
// when the platform has no long form for it.
void LongForm(const char* path, char (&out)[kLongPathBuffer]) {
  DWORD length = 0;
  if (const tarn::UniqueModule kernel = tarn::LoadModule("Kernel32.dll")) {
    using GetLongPathName = DWORD(WINAPI*)(LPCSTR, LPSTR, DWORD);
    if (const auto get = tarn::FindFunction<GetLongPathName>(kernel.get(), "GetLongPathNameA"))
      length = get(path, out, kLongPathBuffer - 1);
  }
  // 0 is a failure (the path does not exist); a result of the buffer size or
  // more is the room a longer form would need.
  if (length == 0 || length >= kLongPathBuffer - 1)
    _mbsnbcpy_s(Bytes(out), kLongPathBuffer, Bytes(path), kLongPathBuffer - 1);
}

}  // namespace

DWORD TarnTempDirectory(char* pszBuffer, DWORD cchBuffer) {
  if (!pszBuffer || cchBuffer == 0) return 0;
  memset(pszBuffer, 0, cchBuffer);

  RuntimeText value = ReadVariable("TMP");
  if (!value) {
    value = ReadVariable("TEMP");
    if (value) {
      // Everything the process starts or asks later finds TMP too.
      SetVariable("TMP", value.get());
    } else {
      char directory[kDirectoryBuffer] = {};
      const UINT length = ::GetSystemDirectoryA(directory, MAX_PATH);
      if (length == 0 || length >= MAX_PATH) return 0;
      ::PathAddBackslashA(directory);
      strncat(directory, "~Temp", MAX_PATH - strlen(directory));
      TarnDirectoryCreate(directory, nullptr, nullptr, 0);
      SetVariable("TMP", directory);
      SetVariable("TEMP", directory);
      return CopyOut(pszBuffer, cchBuffer, directory);
    }
  }
  char longForm[kLongPathBuffer] = {};
  LongForm(value.get(), longForm);
  return CopyOut(pszBuffer, cchBuffer, longForm);
}

DWORD TarnTempFilename(char* pszBuffer, DWORD cchBuffer, const char* pszDirectory,
                       const char* pszPrefix) {
  if (!pszBuffer || cchBuffer == 0) return 0;
  memset(pszBuffer, 0, cchBuffer);
  char directory[kDirectoryBuffer] = {};
  if (pszDirectory)
    _mbsnbcpy_s(Bytes(directory), kDirectoryBuffer, Bytes(pszDirectory), kDirectoryBuffer - 1);
  else
    TarnTempDirectory(directory, kDirectoryBuffer - 1);
  // Which directory the name finally lies in is _tempnam's rule (TMP first,
  // where it names a directory).
  const RuntimeText name(_tempnam(directory, pszPrefix));
  if (!name) return 0;
  return CopyOut(pszBuffer, cchBuffer, name.get());
}

HANDLE TarnCreateTempFile(const char* pszDirectory, const char* pszPrefix, DWORD dwDesiredAccess,
                          DWORD dwCreationDisposition, DWORD dwFlagsAndAttributes,
                          DWORD dwShareMode, DWORD* pdwError, char* pszError, DWORD cchError) {
  char name[kTempNameBuffer] = {};
  // A cut name would open the wrong file; the out-parameters are not even
  // cleared on this way out.
  if (TarnTempFilename(name, kTempNameBuffer, pszDirectory, pszPrefix) >= kTempNameBuffer)
    return INVALID_HANDLE_VALUE;
  return TarnFileCreate(name, dwDesiredAccess, dwCreationDisposition, dwFlagsAndAttributes,
                        dwShareMode, pdwError, pszError, cchError);
}

int TarnGetModulePath(HINSTANCE hModule, char* pszBuffer, DWORD cchBuffer) {
  if (hModule == INVALID_HANDLE_VALUE || !pszBuffer || cchBuffer == 0) return 0;
  pszBuffer[0] = '\0';
  char path[MAX_PATH + 1] = {};
  ::GetModuleFileNameA(hModule, path, MAX_PATH);
  unsigned char* const slash = _mbsrchr(Bytes(path), '\\');
  if (!slash) return 0;
  *slash = '\0';
  // A directory cut to the buffer would be a different directory.
  if (static_cast<DWORD>(slash - Bytes(path)) >= cchBuffer) return 0;
  _mbsnbcpy_s(Bytes(pszBuffer), cchBuffer, Bytes(path), cchBuffer);
  return 1;
}

int TarnGetFolderPath(int nFolder, char* pszBuffer, DWORD cchBuffer) {
  if (cchBuffer < MAX_PATH || !pszBuffer) return 0;
  using GetFolderPath = HRESULT(WINAPI*)(HWND, int, HANDLE, DWORD, LPSTR);
  // Older systems have the function only in the redistributable SHFolder.dll.
  tarn::UniqueModule library = tarn::LoadModule("Shell32.dll");
  if (!library) return 0;
  auto get = tarn::FindFunction<GetFolderPath>(library.get(), "SHGetFolderPathA");
  if (!get) {
    library.reset();
    library = tarn::LoadModule("SHFolder.dll");
    if (!library) return 0;
    get = tarn::FindFunction<GetFolderPath>(library.get(), "SHGetFolderPathA");
    if (!get) return 0;
  }
  const int folder = nFolder | CSIDL_FLAG_CREATE;
  HRESULT result = get(nullptr, folder, nullptr, SHGFP_TYPE_CURRENT, pszBuffer);
  // S_FALSE: the folder is known but has no current location.
  if (FAILED(result) || result == S_FALSE)
    result = get(nullptr, folder, nullptr, SHGFP_TYPE_DEFAULT, pszBuffer);
  library.reset();
  if (result != S_OK) return 0;
  ::PathAddBackslashA(pszBuffer);
  TarnDirectoryCreate(pszBuffer, nullptr, nullptr, 0);
  return 1;
}

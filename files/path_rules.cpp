// Path and file-name rules: how the platform's answers (character classes,
// canonical form, drive type, UNC and same-root checks) combine into yes/no.
#include <mbstring.h>
#include <shlwapi.h>
#include <stdlib.h>
#include <string.h>

#include <memory>
#include <new>

#include "core/platform.h"
#include "core/text.h"
#include "tarn/files.h"

namespace {

constexpr size_t kPathBuffer = MAX_PATH;  // whole paths
constexpr size_t kPartBuffer = 256;       // directory, name or extension of a split path

constexpr UINT kNameClasses = GCT_LFNCHAR | GCT_SHORTCHAR;
constexpr UINT kPathClasses = GCT_LFNCHAR | GCT_SHORTCHAR | GCT_SEPARATOR;

// The reserved device names, in the order they are compared.
constexpr const char* kReservedNames[] = {
    "AUX", "CON", "CLOCK$", "PRN", "NUL", "EPT", "COM", "COM1",
    "COM2", "COM3", "COM4", "LPT", "LPT1", "LPT2", "LPT3", "LPT4"};

const unsigned char* Bytes(const char* text) {
  return reinterpret_cast<const unsigned char*>(text);
}

// The classes of a character are those of its first byte.
UINT CharClasses(const unsigned char* character) { return ::PathGetCharTypeA(*character); }

// Steps through `text` by multibyte characters: 0 if a character has none of
// `classes` or if every character is a space, else 1.
int CharactersAreValid(const char* text, UINT classes) {
  bool allSpaces = true;
  for (const unsigned char* p = Bytes(text); *p; p = _mbsinc(p)) {
    if ((CharClasses(p) & classes) == 0) return 0;
    if (*p != ' ') allSpaces = false;
  }
  return allSpaces ? 0 : 1;
}

struct SplitParts {
  char dir[kPartBuffer] = {};
  char name[kPartBuffer] = {};
  char ext[kPartBuffer] = {};
};

// Whether each part _splitpath_s would produce (directory, name, extension)
// fits its 256-byte buffer; a part that does not would reach the runtime's
// invalid-parameter handler instead of a failure.
bool PartsFit(const char* path) {
  if (strlen(path) < kPartBuffer) return true;
  const char* start = (path[0] && path[1] == ':') ? path + 2 : path;
  const char* nameStart = start;
  for (const unsigned char* p = Bytes(start); *p; p = _mbsinc(p))
    if (*p == '\\' || *p == '/') nameStart = reinterpret_cast<const char*>(p) + 1;
  const char* dot = reinterpret_cast<const char*>(_mbsrchr(Bytes(nameStart), '.'));
  const char* end = nameStart + strlen(nameStart);
  return static_cast<size_t>(nameStart - start) < kPartBuffer &&
         static_cast<size_t>((dot ? dot : end) - nameStart) < kPartBuffer &&
         static_cast<size_t>(dot ? end - dot : 0) < kPartBuffer;
}

// _splitpath_s into 256-byte parts; the drive is not taken.
bool SplitPath(const char* path, SplitParts& parts, bool wantDirectory) {
  if (!PartsFit(path)) return false;
  return _splitpath_s(path, nullptr, 0, wantDirectory ? parts.dir : nullptr,
                      wantDirectory ? kPartBuffer : 0, parts.name, kPartBuffer, parts.ext,
                      kPartBuffer) == 0;
}

// An empty extension compares as ".".
int ExtensionsAreEqual(const char* a, const char* b) {
  if (!*a) a = ".";
  if (!*b) b = ".";
  return _mbsicmp(Bytes(a), Bytes(b)) == 0 ? 1 : 0;
}

bool ShorterThanTwoBytes(const char* text) { return !text || !text[0] || !text[1]; }

}  // namespace

int TarnPathIsValid(const char* pszPath, int bAllowRemovable, int* pbRemovable) {
  if (pbRemovable) *pbRemovable = 0;
  if (!pszPath || !*pszPath) return 0;

  // A path longer than the platform's limit gets a buffer as long as itself,
  // so that canonicalization, not the buffer, refuses it.
  const size_t length = strlen(pszPath);
  const size_t bufferSize = length < kPathBuffer ? kPathBuffer : length + 1;
  std::unique_ptr<char[]> buffer(new (std::nothrow) char[bufferSize]());
  if (!buffer) return 0;
  char* canonical = buffer.get();

  if (!::PathCanonicalizeA(canonical, pszPath)) return 0;
  if (strlen(canonical) > kPathBuffer) return 0;

  if (!::PathIsUNCW(tarn::WideText(canonical))) {
    ::PathStripToRootA(canonical);
    const UINT type = ::GetDriveTypeA(canonical);
    if (type < DRIVE_REMOVABLE) return 0;
    if (type == DRIVE_REMOVABLE) {
      if (pbRemovable) *pbRemovable = 1;
      if (!bAllowRemovable) return 0;
    }
  }

  // A UNC prefix is the only place for two backslashes in a row: look from
  // the second character on.
  if (_mbsstr(_mbsinc(Bytes(pszPath)), Bytes("\\\\"))) return 0;

  if (!::PathCanonicalizeA(canonical, pszPath)) return 0;
  if (strlen(canonical) >= 3 && canonical[1] == ':' && canonical[2] != '\\') return 0;
  if (!*canonical) return 0;
  const int charactersValid = CharactersAreValid(canonical, kPathClasses);
  const unsigned char* colon = _mbsrchr(Bytes(canonical), ':');
  if (colon && colon - Bytes(canonical) > 1) return 0;
  return charactersValid;
}

int TarnFilenameIsValid(const char* pszFilename) {
  if (!pszFilename || !*pszFilename) return 0;
  return CharactersAreValid(pszFilename, kNameClasses);
}

UINT TarnReplaceInvalidFilenameCharacters(char* pszFilename, char cReplace, UINT dwAccept) {
  if (!pszFilename || !*pszFilename) return 0;
  UINT replaced = 0;
  // After a replacement inside a double-byte character the next step starts
  // at the replaced byte, so the trail byte is examined on its own.
  for (unsigned char* p = reinterpret_cast<unsigned char*>(pszFilename); *p; p = _mbsinc(p)) {
    if ((dwAccept & CharClasses(p)) == 0) {
      *p = static_cast<unsigned char>(cReplace);
      ++replaced;
    }
  }
  return replaced;
}

int TarnIsReservedDeviceName(const char* pszName) {
  if (!pszName) return 0;
  for (const char* reserved : kReservedNames) {
    if (::CompareStringA(LOCALE_SYSTEM_DEFAULT, NORM_IGNORECASE, reserved, -1, pszName, -1) ==
        CSTR_EQUAL)
      return 1;
  }
  return 0;
}

int TarnDriveIsEqual(const char* pszPath1, const char* pszPath2) {
  if (ShorterThanTwoBytes(pszPath1) || ShorterThanTwoBytes(pszPath2)) return 0;
  char first[kPathBuffer] = {};
  char second[kPathBuffer] = {};
  _mbsnbcpy_s(reinterpret_cast<unsigned char*>(first), kPathBuffer, Bytes(pszPath1),
              kPathBuffer - 1);
  _mbsnbcpy_s(reinterpret_cast<unsigned char*>(second), kPathBuffer, Bytes(pszPath2),
              kPathBuffer - 1);
  ::PathAddBackslashA(first);
  ::PathAddBackslashA(second);
  return ::PathIsSameRootW(tarn::WideText(first), tarn::WideText(second)) ? 1 : 0;
}

int TarnPathIsEqual(const char* pszPath1, const char* pszPath2) {
  if (!TarnDriveIsEqual(pszPath1, pszPath2)) return 0;

  // Existing paths compare in their short form, so a long and a short
  // spelling of one path are equal; others compare as written.
  char shortPath[2][kPathBuffer] = {};
  const char* paths[2] = {pszPath1, pszPath2};
  SplitParts parts[2];
  for (int i = 0; i < 2; ++i) {
    const DWORD n = ::GetShortPathNameA(paths[i], shortPath[i], kPathBuffer);
    if (n == 0 || n >= kPathBuffer || !shortPath[i][0])
      _mbsnbcpy_s(reinterpret_cast<unsigned char*>(shortPath[i]), kPathBuffer, Bytes(paths[i]),
                  kPathBuffer - 1);
    if (!SplitPath(shortPath[i], parts[i], true)) return 0;
    if (!parts[i].dir[0]) strcpy(parts[i].dir, "\\");
  }
  if (_mbsicmp(Bytes(parts[0].dir), Bytes(parts[1].dir)) != 0) return 0;
  if (_mbsicmp(Bytes(parts[0].name), Bytes(parts[1].name)) != 0) return 0;
  return ExtensionsAreEqual(parts[0].ext, parts[1].ext);
}

int TarnFilenameIsEqual(const char* pszPath1, const char* pszPath2) {
  if (ShorterThanTwoBytes(pszPath1) || ShorterThanTwoBytes(pszPath2)) return 0;
  SplitParts first;
  SplitParts second;
  if (!SplitPath(pszPath1, first, false) || !SplitPath(pszPath2, second, false)) return 0;
  if (_mbsicmp(Bytes(first.name), Bytes(second.name)) != 0) return 0;
  return ExtensionsAreEqual(first.ext, second.ext);
}

int TarnDeviceIsReady(const char* pszRoot) {
  // No "insert a disk" prompt for an empty removable drive.
  const UINT previousMode = ::SetErrorMode(SEM_FAILCRITICALERRORS);
  wchar_t volumeName[MAX_PATH];
  wchar_t fileSystemName[MAX_PATH];
  DWORD maximumComponent = 0;
  DWORD fileSystemFlags = 0;
  const BOOL ready = tarn::Platform().GetVolumeInformationW(tarn::WideText(pszRoot), volumeName, MAX_PATH,
                                             nullptr, &maximumComponent, &fileSystemFlags,
                                             fileSystemName, MAX_PATH);
  ::SetErrorMode(previousMode);
  return ready;
}

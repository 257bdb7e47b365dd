// Directory links: a directory turned into an NTFS mount-point reparse point
// that names another directory.
#include <stdio.h>
#include <string.h>
#include <wchar.h>

#include <utility>


#include "core/handle.h"
#include "core/platform.h"
#include "core/text.h"
#include "tarn/files.h"

namespace {

constexpr DWORD kPathUnits = MAX_PATH;
// Three times MAX_PATH bytes: the header, the substitute name and the two
// terminators with room to spare.
constexpr size_t kReparseBufferBytes = 3 * MAX_PATH;
constexpr DWORD kMountPointTag = 0xA0000003;  // IO_REPARSE_TAG_MOUNT_POINT
constexpr DWORD kSetReparsePoint = 0x900A4;   // FSCTL_SET_REPARSE_POINT
// The four 2-byte offset and length fields and the two 2-byte terminators.
constexpr WORD kMountPointFixedBytes = 12;

using GetFullPathNameWFn = DWORD(WINAPI*)(LPCWSTR, DWORD, LPWSTR, LPWSTR*);

// The full paths of link and target, through "GetFullPathNameW" looked up in
// "Kernel32.dll". False when the look-up or either path fails or a path does
// not fit kPathUnits.
bool FullPaths(const char* link, const char* target, wchar_t* fullLink, wchar_t* fullTarget) {
  tarn::UniqueModule kernel = tarn::LoadModule("Kernel32.dll");
  if (!kernel) return false;
  auto getFullPathName = tarn::FindFunction<GetFullPathNameWFn>(kernel.get(), "GetFullPathNameW");
  if (!getFullPathName) return false;
  for (auto [path, full] : {std::make_pair(target, fullTarget), std::make_pair(link, fullLink)}) {
    const DWORD units = getFullPathName(tarn::WideText(path), kPathUnits, full, nullptr);
    if (units == 0 || units >= kPathUnits) return false;
  }
  return true;
}

// "\??\" and the target's full path; a trailing backslash goes unless it
// follows a colon (a drive root keeps it). False when it does not fit.
bool SubstituteName(const wchar_t* fullTarget, wchar_t (&name)[kPathUnits]) {
  const int units = _snwprintf(name, kPathUnits, L"\\??\\%ls", fullTarget);
  if (units < 0 || units >= static_cast<int>(kPathUnits)) return false;
  if (units >= 2 && name[units - 1] == L'\\' && name[units - 2] != L':') name[units - 1] = L'\0';
  return true;
}

// The mount-point REPARSE_DATA_BUFFER, little-endian, in a zero-filled
// buffer; returns the number of bytes the request sends (header and data).
DWORD FillMountPoint(const wchar_t* substitute, BYTE (&buffer)[kReparseBufferBytes]) {
  memset(buffer, 0, sizeof buffer);
  const WORD nameBytes = static_cast<WORD>(wcslen(substitute) * sizeof(wchar_t));
  const DWORD dataLength = nameBytes + kMountPointFixedBytes;  // upper half: Reserved, 0
  const WORD fields[] = {0, nameBytes, static_cast<WORD>(nameBytes + sizeof(wchar_t)), 0};
  memcpy(buffer, &kMountPointTag, 4);
  memcpy(buffer + 4, &dataLength, 4);
  memcpy(buffer + 8, fields, sizeof fields);
  memcpy(buffer + 16, substitute, nameBytes);  // both terminators stay zero
  return dataLength + 8;
}

// Removes, on request, the directory that this call created.
class CreatedDirectory {
 public:
  explicit CreatedDirectory(const wchar_t* path) : path_(path) {}
  bool created = false;
  void Remove() const {
    if (created) ::RemoveDirectoryW(path_);
  }

 private:
  const wchar_t* path_;
};

}  // namespace

int TarnMakeDirectoryLink(const char* pszLink, const char* pszTarget, int bTry) {
  if (!pszLink || !*pszLink || !pszTarget || !*pszTarget) return 0;
  const char* firstBackslash = strchr(pszLink, '\\');
  if (!firstBackslash || firstBackslash - pszLink + 1 >= static_cast<ptrdiff_t>(kPathUnits)) return 0;

  // The link's volume must support reparse points.
  char root[kPathUnits] = {};
  memcpy(root, pszLink, firstBackslash - pszLink + 1);
  DWORD maxComponent = 0, flags = 0;
  if (!tarn::Platform().GetVolumeInformationW(tarn::WideText(root), nullptr, 0, nullptr,
                                              &maxComponent, &flags, nullptr, 0) ||
      !(flags & FILE_SUPPORTS_REPARSE_POINTS)) {
    return 0;
  }

  wchar_t fullLink[kPathUnits] = {}, fullTarget[kPathUnits] = {}, substitute[kPathUnits] = {};
  if (!FullPaths(pszLink, pszTarget, fullLink, fullTarget)) return 0;
  if (!SubstituteName(fullTarget, substitute)) return 0;

  // An existing directory may become the link; an existing reparse point is
  // never replaced.
  CreatedDirectory directory(fullLink);
  directory.created = ::CreateDirectoryW(fullLink, nullptr) != FALSE;
  if (!directory.created && ::GetLastError() != ERROR_ALREADY_EXISTS) return 0;
  const DWORD attributes = tarn::Platform().GetFileAttributesW(fullLink);
  if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_REPARSE_POINT)) return 0;

  tarn::UniqueFile link(::CreateFileW(fullLink, GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                                      FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT,
                                      nullptr));
  if (!link) return 0;  // a directory created above stays

  BYTE buffer[kReparseBufferBytes];
  const DWORD requestBytes = FillMountPoint(substitute, buffer);
  if (bTry) {
    link.reset();
    directory.Remove();
    return 1;
  }
  DWORD returned = 0;
  const BOOL set = tarn::Platform().DeviceIoControl(link.get(), kSetReparsePoint, buffer,
                                                    requestBytes, nullptr, 0, &returned, nullptr);
  link.reset();
  if (!set) {
    directory.Remove();
    return 0;
  }
  return 1;
}

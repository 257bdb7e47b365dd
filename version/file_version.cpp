// The version resource of a file: its string values, fixed record and the
// help file beside it.
#include <mbstring.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <memory>
#include <new>

#include "core/resource_handle.h"
#include "tarn/core.h"
#include "tarn/files.h"
#include "tarn/version.h"

char CTarnFileVersionInfo::s_szNotAvailable[260] = {};

namespace {

constexpr DWORD kTextBuffer = 260;   // keys, joined paths, version text
constexpr size_t kPartBuffer = 256;  // directory, base name, extension of a split path
constexpr size_t kDriveBuffer = 3;

// The version block is kept with its size in front of it: VerQueryValueA
// stores the narrow forms of the values in the part of the buffer behind the
// resource, so a copy has to take the whole buffer, not the resource alone.
// 16 bytes keep the block as aligned as the allocation.
constexpr size_t kBlockHeader = 16;

BYTE* NewVersionBlock(size_t size) {
  BYTE* raw = static_cast<BYTE*>(::operator new(kBlockHeader + size));
  memset(raw, 0, kBlockHeader + size);
  *reinterpret_cast<size_t*>(raw) = size;
  return raw + kBlockHeader;
}

size_t VersionBlockSize(const BYTE* block) {
  return *reinterpret_cast<const size_t*>(block - kBlockHeader);
}

struct VersionBlockDelete {
  void operator()(BYTE* block) const noexcept { ::operator delete(block - kBlockHeader); }
};
using OwnedBlock = std::unique_ptr<BYTE, VersionBlockDelete>;
using OwnedText = std::unique_ptr<char[]>;

OwnedBlock CopyVersionBlock(const BYTE* block) {
  if (!block) return OwnedBlock();
  const size_t size = VersionBlockSize(block);
  OwnedBlock copy(NewVersionBlock(size));
  memcpy(copy.get(), block, size);
  return copy;
}

OwnedText CopyText(const char* text) {
  if (!text) return OwnedText();
  const size_t length = strlen(text);
  OwnedText copy(new char[length + 1]);
  memcpy(copy.get(), text, length + 1);
  return copy;
}

// Common start of every text query: false for no buffer, else the buffer is
// all zeros.
bool ClearBuffer(char* buffer, DWORD size) {
  if (!buffer || size == 0) return false;
  memset(buffer, 0, size);
  return true;
}

// Copies at most size - 1 bytes of `text` into a cleared buffer.
void CopyCut(char* buffer, DWORD size, const char* text, size_t length) {
  const size_t count = length < size - 1 ? length : size - 1;
  memcpy(buffer, text, count);
  buffer[count] = '\0';
}

void CopyCut(char* buffer, DWORD size, const char* text) {
  CopyCut(buffer, size, text, strlen(text));
}

// Whether each part _splitpath_s makes of `path` fits its buffer; a part that
// does not would go to the runtime's invalid-parameter handler instead of
// failing. A path shorter than a part buffer always fits.
bool SplitFits(const char* path) {
  const size_t length = strlen(path);
  if (length < kPartBuffer) return true;
  const unsigned char* start = reinterpret_cast<const unsigned char*>(path);
  if (start[0] && start[1] == ':') start += 2;
  const unsigned char* name = start;
  const unsigned char* dot = nullptr;
  for (const unsigned char* p = start; *p; p = _mbsinc(p)) {
    if (*p == '\\' || *p == '/') {
      name = p + 1;
      dot = nullptr;
    } else if (*p == '.') {
      dot = p;
    }
  }
  const unsigned char* end = reinterpret_cast<const unsigned char*>(path) + length;
  const unsigned char* nameEnd = dot ? dot : end;
  return static_cast<size_t>(name - start) < kPartBuffer &&
         static_cast<size_t>(nameEnd - name) < kPartBuffer &&
         static_cast<size_t>(end - nameEnd) < kPartBuffer;
}

struct SplitPath {
  char drive[kDriveBuffer] = {};
  char dir[kPartBuffer] = {};
  char name[kPartBuffer] = {};
  char ext[kPartBuffer] = {};

  bool Split(const char* path) {
    return SplitFits(path) && _splitpath_s(path, drive, sizeof drive, dir, sizeof dir, name,
                                           sizeof name, ext, sizeof ext) == 0;
  }
};

// Joins up to four parts into `out` (kTextBuffer + 1 bytes), cut at
// kTextBuffer bytes.
void JoinPath(char (&out)[kTextBuffer + 1], const char* drive, const char* dir, const char* name,
              const char* ext) {
  snprintf(out, sizeof out, "%s%s%s%s", drive, dir, name, ext);
}

bool FileExists(const char* path) { return TarnFileFind(path, nullptr, nullptr, 0) != 0; }

// Reads a root or string value of an open block; null when it is missing.
const void* LookUp(BYTE* block, const char* key, UINT* length) {
  void* value = nullptr;
  UINT size = 0;
  if (!::VerQueryValueA(block, key, &value, &size) || !value) return nullptr;
  if (length) *length = size;
  return value;
}

const VS_FIXEDFILEINFO* FixedRecord(BYTE* block) {
  UINT length = 0;
  const void* record = block ? LookUp(block, "\\", &length) : nullptr;
  if (!record || length < sizeof(VS_FIXEDFILEINFO)) return nullptr;
  return static_cast<const VS_FIXEDFILEINFO*>(record);
}

// Gives out the not-available text: the buffer cleared and the text copied,
// cut like any other; the query then fails.
int GiveNotAvailable(char* buffer, DWORD size, const char* notAvailable) {
  memset(buffer, 0, size);
  CopyCut(buffer, size, notAvailable);
  return 0;
}

int FormatVersion(char* buffer, DWORD size, BYTE* block, bool product, const char* notAvailable) {
  if (!ClearBuffer(buffer, size)) return 0;
  const VS_FIXEDFILEINFO* fixed = FixedRecord(block);
  if (!fixed) return GiveNotAvailable(buffer, size, notAvailable);
  const DWORD ms = product ? fixed->dwProductVersionMS : fixed->dwFileVersionMS;
  const DWORD ls = product ? fixed->dwProductVersionLS : fixed->dwFileVersionLS;
  char text[kTextBuffer] = {};
  snprintf(text, sizeof text, "%hu,%hu,%hu,%hu", HIWORD(ms), LOWORD(ms), HIWORD(ls), LOWORD(ls));
  CopyCut(buffer, size, text);
  return 1;
}

}  // namespace

CTarnFileVersionInfo::CTarnFileVersionInfo()
    : m_pVersionData(nullptr), m_dwTranslation(0), m_pszFilePath(nullptr) {
  Initialize();
}

CTarnFileVersionInfo::CTarnFileVersionInfo(const CTarnFileVersionInfo& other)
    : m_pVersionData(nullptr), m_dwTranslation(0), m_pszFilePath(nullptr) {
  OwnedBlock block = CopyVersionBlock(other.m_pVersionData);
  OwnedText path = CopyText(other.m_pszFilePath);
  m_pVersionData = block.release();
  m_dwTranslation = other.m_dwTranslation;
  m_pszFilePath = path.release();
}

CTarnFileVersionInfo& CTarnFileVersionInfo::operator=(const CTarnFileVersionInfo& other) {
  if (this != &other) {
    OwnedBlock block = CopyVersionBlock(other.m_pVersionData);
    OwnedText path = CopyText(other.m_pszFilePath);
    Close();
    m_pVersionData = block.release();
    m_dwTranslation = other.m_dwTranslation;
    m_pszFilePath = path.release();
  }
  return *this;
}

CTarnFileVersionInfo::~CTarnFileVersionInfo() { Close(); }

void CTarnFileVersionInfo::Initialize() {
  // A function-local static is initialised exactly once; threads that arrive
  // while the first one loads wait for it. The load is not repeated when the
  // module has no such string.
  static const bool loaded = [] {
    ::LoadStringA(TarnGetResourceHandle(), tarn::kStringNotAvailable, s_szNotAvailable,
                  sizeof s_szNotAvailable);
    return true;
  }();
  (void)loaded;
}

int CTarnFileVersionInfo::Open(HINSTANCE hInstance) {
  char path[MAX_PATH + 1] = {};
  if (!::GetModuleFileNameA(hInstance, path, MAX_PATH)) return 0;
  return Open(path);
}

int CTarnFileVersionInfo::Open(const char* pszPath) {
  if (!pszPath || !*pszPath || m_pVersionData) return 0;
  DWORD ignored = 0;
  const DWORD size = ::GetFileVersionInfoSizeA(pszPath, &ignored);
  if (!size) return 0;
  OwnedBlock block(NewVersionBlock(size));
  if (!::GetFileVersionInfoA(pszPath, 0, size, block.get())) return 0;
  UINT length = 0;
  const WORD* pair =
      static_cast<const WORD*>(LookUp(block.get(), "\\VarFileInfo\\Translation", &length));
  if (!pair || length < 2 * sizeof(WORD)) return 0;
  OwnedText path = CopyText(pszPath);
  m_pVersionData = block.release();
  m_dwTranslation = MAKELONG(pair[1], pair[0]);  // language high, code page low
  m_pszFilePath = path.release();
  return 1;
}

void CTarnFileVersionInfo::Close() {
  OwnedBlock(m_pVersionData).reset();
  delete[] m_pszFilePath;
  m_pVersionData = nullptr;
  m_dwTranslation = 0;
  m_pszFilePath = nullptr;
}

int CTarnFileVersionInfo::QueryValue(char* pszBuffer, DWORD cchBuffer, const char* pszValueName,
                                     DWORD dwTranslation) {
  if (!ClearBuffer(pszBuffer, cchBuffer)) return 0;
  if (!pszValueName || !*pszValueName || !m_pVersionData)
    return GiveNotAvailable(pszBuffer, cchBuffer, s_szNotAvailable);
  const DWORD translation = dwTranslation ? dwTranslation : m_dwTranslation;
  char key[kTextBuffer] = {};
  const int keyLength = snprintf(key, sizeof key, "\\StringFileInfo\\%08lx\\%s",
                                 static_cast<unsigned long>(translation), pszValueName);
  // A name too long for the key is a value no resource can hold.
  if (keyLength < 0 || static_cast<DWORD>(keyLength) >= sizeof key) return 0;
  UINT length = 0;
  const char* value = static_cast<const char*>(LookUp(m_pVersionData, key, &length));
  if (!value || length == 0) return 0;
  CopyCut(pszBuffer, cchBuffer, value, strnlen(value, length));
  return 1;
}

int CTarnFileVersionInfo::GetCompanyName(char* pszBuffer, DWORD cchBuffer) {
  return QueryValue(pszBuffer, cchBuffer, "CompanyName", 0);
}
int CTarnFileVersionInfo::GetFileDescription(char* pszBuffer, DWORD cchBuffer) {
  return QueryValue(pszBuffer, cchBuffer, "FileDescription", 0);
}
int CTarnFileVersionInfo::GetFileVersion(char* pszBuffer, DWORD cchBuffer) {
  return QueryValue(pszBuffer, cchBuffer, "FileVersion", 0);
}
int CTarnFileVersionInfo::GetInternalName(char* pszBuffer, DWORD cchBuffer) {
  return QueryValue(pszBuffer, cchBuffer, "InternalName", 0);
}
int CTarnFileVersionInfo::GetLegalCopyright(char* pszBuffer, DWORD cchBuffer) {
  return QueryValue(pszBuffer, cchBuffer, "LegalCopyright", 0);
}
int CTarnFileVersionInfo::GetOriginalFilename(char* pszBuffer, DWORD cchBuffer) {
  return QueryValue(pszBuffer, cchBuffer, "OriginalFilename", 0);
}
int CTarnFileVersionInfo::GetProductName(char* pszBuffer, DWORD cchBuffer) {
  return QueryValue(pszBuffer, cchBuffer, "ProductName", 0);
}
int CTarnFileVersionInfo::GetProductVersion(char* pszBuffer, DWORD cchBuffer) {
  return QueryValue(pszBuffer, cchBuffer, "ProductVersion", 0);
}

int CTarnFileVersionInfo::GetHelpFileName(char* pszBuffer, DWORD cchBuffer) {
  if (!ClearBuffer(pszBuffer, cchBuffer)) return 0;
  if (!m_pVersionData) return 0;
  char base[kTextBuffer] = {};
  if (!GetValidFileName(base, sizeof base, "HelpFileName") &&
      !GetValidFileName(base, sizeof base, "InternalName")) {
    memset(base, 0, sizeof base);
    CopyCut(base, sizeof base, m_pszFilePath);
  }
  SplitPath parts;
  char help[kTextBuffer + 1] = {};
  if (parts.Split(base)) {
    JoinPath(help, parts.drive, parts.dir, parts.name, ".hlp");
    if (FileExists(help)) {
      CopyCut(pszBuffer, cchBuffer, help);
      return 1;
    }
  }
  memset(pszBuffer, 0, cchBuffer);
  return 0;
}

int CTarnFileVersionInfo::GetFixedInfo(VS_FIXEDFILEINFO& info) {
  const VS_FIXEDFILEINFO* fixed = FixedRecord(m_pVersionData);
  if (!fixed) return 0;
  memcpy(&info, fixed, sizeof info);
  return 1;
}

int CTarnFileVersionInfo::GetFixedFileVersion(char* pszBuffer, DWORD cchBuffer) {
  return FormatVersion(pszBuffer, cchBuffer, m_pVersionData, false, s_szNotAvailable);
}

int CTarnFileVersionInfo::GetFixedProductVersion(char* pszBuffer, DWORD cchBuffer) {
  return FormatVersion(pszBuffer, cchBuffer, m_pVersionData, true, s_szNotAvailable);
}

int CTarnFileVersionInfo::GetFullPath(char* pszBuffer, DWORD cchBuffer,
                                      const char* pszFilename) const {
  if (!ClearBuffer(pszBuffer, cchBuffer)) return 0;
  if (!pszFilename || !*pszFilename || !m_pVersionData)
    return GiveNotAvailable(pszBuffer, cchBuffer, s_szNotAvailable);
  SplitPath name;
  if (!name.Split(pszFilename) || !name.name[0])
    return GiveNotAvailable(pszBuffer, cchBuffer, s_szNotAvailable);
  SplitPath opened;
  if (!opened.Split(m_pszFilePath)) return GiveNotAvailable(pszBuffer, cchBuffer, s_szNotAvailable);
  char path[kTextBuffer + 1] = {};
  JoinPath(path, opened.drive, opened.dir, name.name, name.ext[0] ? name.ext : opened.ext);
  CopyCut(pszBuffer, cchBuffer, path);
  return 1;
}

int CTarnFileVersionInfo::GetValidFileName(char* pszBuffer, DWORD cchBuffer,
                                           const char* pszValueName) {
  if (!ClearBuffer(pszBuffer, cchBuffer)) return 0;
  if (!pszValueName || !*pszValueName)
    return GiveNotAvailable(pszBuffer, cchBuffer, s_szNotAvailable);
  if (!QueryValue(pszBuffer, cchBuffer, pszValueName, 0)) return 0;
  char path[kTextBuffer] = {};
  if (GetFullPath(path, sizeof path, pszBuffer) && FileExists(path)) {
    memset(pszBuffer, 0, cchBuffer);
    CopyCut(pszBuffer, cchBuffer, path);
    return 1;
  }
  return GiveNotAvailable(pszBuffer, cchBuffer, s_szNotAvailable);
}

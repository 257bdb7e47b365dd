#include <limits.h>
#include <stdlib.h>
#include <string.h>

#include <memory>

#include "core/error_out.h"
#include "core/handle.h"
#include "core/resource_handle.h"
#include "memory/share.h"
#include "tarn/memory.h"

namespace {

// The code reported for an empty file, which no platform call produced.
constexpr DWORD kEmptyFileError = 0xFFFFFFFF;

struct ModeFlags {
  DWORD access;
  DWORD sharing;
  DWORD protection;
  DWORD view;
};

// Read-write mode opens the file exclusively: nobody may change or read the
// bytes behind a writable view.
const ModeFlags* FlagsOf(int mode) {
  static const ModeFlags kRead = {GENERIC_READ, FILE_SHARE_READ, PAGE_READONLY, FILE_MAP_READ};
  static const ModeFlags kReadWrite = {GENERIC_READ | GENERIC_WRITE, 0, PAGE_READWRITE,
                                       FILE_MAP_WRITE};
  switch (mode) {
    case CTarnMmFile::eOpenRead:
      return &kRead;
    case CTarnMmFile::eOpenReadWrite:
      return &kReadWrite;
    default:
      return nullptr;
  }
}

// What follows a failed view of `length` bytes at `offset`: halve the
// length, written back each time, and map again, until a view is had or an
// attempt at length 0 (to the end of the file) has failed too. Null then, the
// last error being that of the last attempt.
void* MapHalving(HANDLE mapping, DWORD access, DWORD offset, ULONGLONG& length) {
  void* view = nullptr;
  while (!view && length != 0) {
    length >>= 1;
    view = ::MapViewOfFile(mapping, access, 0, offset, static_cast<SIZE_T>(length));
  }
  return view;
}

}  // namespace

struct CTarnMmFile::Share {
  tarn::ShareCount count;
  HANDLE file = INVALID_HANDLE_VALUE;
  HANDLE mapping = nullptr;
  void* view = nullptr;  // the current view of every holder
  char* name = nullptr;

  void Release() noexcept {
    if (view) ::UnmapViewOfFile(view);
    if (mapping) ::CloseHandle(mapping);
    if (file != INVALID_HANDLE_VALUE) ::CloseHandle(file);
    free(name);
  }

  // Both forms of Open; `length` is null for the plain form.
  static unsigned char* Open(CTarnMmFile& self, int mode, const char* path, ULONGLONG* length,
                             DWORD* pdwError, char* pszError, DWORD cchError);
};

unsigned char* CTarnMmFile::Share::Open(CTarnMmFile& self, int mode, const char* path,
                                        ULONGLONG* length, DWORD* pdwError, char* pszError,
                                        DWORD cchError) {
  if (length) *length = 0;
  const tarn::ErrorOut err(pdwError, pszError, cchError);
  unsigned char* const none = nullptr;
  if (self.m_nOpenmode != 0) return none;

  self.m_dwFileSizeLow = 0;
  self.m_dwFileSizeHigh = 0;
  self.m_hFile = INVALID_HANDLE_VALUE;
  self.m_hMapping = nullptr;
  self.m_pView = nullptr;
  const ModeFlags* flags = FlagsOf(mode);
  if (!flags) return none;

  // Allocated before anything is opened, so that running out of memory here
  // leaves nothing open.
  std::unique_ptr<Share> share(new Share);
  // Declared in the order of opening: a failure closes the mapping, then the
  // file.
  tarn::UniqueFile file(::CreateFileA(path, flags->access, flags->sharing, nullptr, OPEN_EXISTING,
                                      FILE_ATTRIBUTE_NORMAL, nullptr));
  if (!file) return err.Fail(::GetLastError(), none);

  // A failure of the size query reads as a size (INVALID_FILE_SIZE), as the
  // mapping that follows then fails on its own.
  self.m_dwFileSizeLow = ::GetFileSize(file.get(), &self.m_dwFileSizeHigh);
  if (self.m_dwFileSizeLow == 0 && self.m_dwFileSizeHigh == 0) {
    // The platform cannot map an empty file; the library has a text of its
    // own for that.
    if (pdwError) *pdwError = kEmptyFileError;
    if (pszError && cchError != 0) {
      const int limit = cchError > INT_MAX ? INT_MAX : static_cast<int>(cchError);
      ::LoadStringA(TarnGetResourceHandle(), tarn::kStringEmptyFileMapping, pszError, limit);
    }
    return none;
  }

  tarn::UniqueHandle mapping(
      ::CreateFileMappingA(file.get(), nullptr, flags->protection, 0, 0, nullptr));
  if (!mapping) return err.Fail(::GetLastError(), none);

  // Read-only views take the whole file; writable ones the low 32 bits' worth
  // of bytes, which is the whole file below 4 GiB.
  const SIZE_T whole = mode == eOpenReadWrite ? self.m_dwFileSizeLow : 0;
  tarn::UniqueView view(::MapViewOfFile(mapping.get(), flags->view, 0, 0, whole));
  if (length) {
    *length = self.m_dwFileSizeLow;
    if (!view) view.reset(MapHalving(mapping.get(), flags->view, 0, *length));
  }
  if (!view) return err.Fail(::GetLastError(), none);

  share->name = _strdup(path);  // the name is informational: no copy is no failure
  share->file = file.release();
  share->mapping = mapping.release();
  share->view = const_cast<void*>(view.release());
  self.m_nOpenmode = mode;
  self.m_pszFilename = share->name;
  self.m_hFile = share->file;
  self.m_hMapping = share->mapping;
  self.m_pView = static_cast<unsigned char*>(share->view);
  self.m_pShare = share.release();
  return self.m_pView;
}

CTarnMmFile::CTarnMmFile()
    : m_nOpenmode(0),
      m_pszFilename(nullptr),
      m_dwFileSizeLow(0),
      m_dwFileSizeHigh(0),
      m_hFile(INVALID_HANDLE_VALUE),
      m_hMapping(nullptr),
      m_pView(nullptr),
      m_pShare(nullptr) {}

CTarnMmFile::CTarnMmFile(const CTarnMmFile& other)
    : m_nOpenmode(other.m_nOpenmode),
      m_pszFilename(other.m_pszFilename),
      m_dwFileSizeLow(other.m_dwFileSizeLow),
      m_dwFileSizeHigh(other.m_dwFileSizeHigh),
      m_hFile(other.m_hFile),
      m_hMapping(other.m_hMapping),
      m_pView(other.m_pView),
      m_pShare(tarn::JoinShare(other.m_pShare)) {}

CTarnMmFile& CTarnMmFile::operator=(const CTarnMmFile& other) {
  // Join first: on self-assignment the count never reaches zero.
  Share* share = tarn::JoinShare(other.m_pShare);
  tarn::LeaveShare(m_pShare, false);
  m_pShare = share;
  m_nOpenmode = other.m_nOpenmode;
  m_pszFilename = other.m_pszFilename;
  m_dwFileSizeLow = other.m_dwFileSizeLow;
  m_dwFileSizeHigh = other.m_dwFileSizeHigh;
  m_hFile = other.m_hFile;
  m_hMapping = other.m_hMapping;
  m_pView = other.m_pView;
  return *this;
}

CTarnMmFile::~CTarnMmFile() { Close(); }

unsigned char* CTarnMmFile::Open(eOpenmode mode, const char* pszFilename, DWORD* pdwError,
                                 char* pszError, DWORD cchError) {
  return Share::Open(*this, mode, pszFilename, nullptr, pdwError, pszError, cchError);
}

unsigned char* CTarnMmFile::Open(eOpenmode mode, const char* pszFilename, ULONGLONG& ullLength,
                                 DWORD* pdwError, char* pszError, DWORD cchError) {
  return Share::Open(*this, mode, pszFilename, &ullLength, pdwError, pszError, cchError);
}

unsigned char* CTarnMmFile::ReMap(DWORD& dwOffset, ULONGLONG& ullLength, DWORD* pdwError,
                                  char* pszError, DWORD cchError) {
  // Nothing here is reported: a view that cannot be had is told by the null
  // result alone.
  const tarn::ErrorOut err(pdwError, pszError, cchError);
  if (m_nOpenmode == 0 || !m_pView || !m_pShare || dwOffset >= m_dwFileSizeLow) return nullptr;

  // The view of every holder goes, which may be newer than this holder's own
  // m_pView when another holder remapped.
  if (m_pShare->view) ::UnmapViewOfFile(m_pShare->view);
  m_pShare->view = nullptr;
  m_pView = nullptr;

  SYSTEM_INFO info;
  ::GetSystemInfo(&info);
  const DWORD offset = dwOffset - dwOffset % info.dwAllocationGranularity;
  dwOffset = offset;
  const ULONGLONG size = (static_cast<ULONGLONG>(m_dwFileSizeHigh) << 32) | m_dwFileSizeLow;
  // offset < size here, and this form cannot overflow.
  if (ullLength > size - offset) ullLength = size - offset;

  const DWORD access = m_nOpenmode == eOpenReadWrite ? FILE_MAP_WRITE : FILE_MAP_READ;
  m_pShare->view =
      ::MapViewOfFile(m_pShare->mapping, access, 0, offset, static_cast<SIZE_T>(ullLength));
  if (!m_pShare->view) m_pShare->view = MapHalving(m_pShare->mapping, access, offset, ullLength);
  m_pView = static_cast<unsigned char*>(m_pShare->view);
  return m_pView;
}

void CTarnMmFile::Close() {
  if (m_nOpenmode == 0) return;
  tarn::LeaveShare(m_pShare, true);
  m_pszFilename = nullptr;
  m_nOpenmode = 0;
}

DWORD CTarnMmFile::Size(DWORD* pdwHigh) const {
  if (pdwHigh) *pdwHigh = m_dwFileSizeHigh;
  return m_dwFileSizeLow;
}

#include <string.h>

#include <memory>

#include "core/error_out.h"
#include "core/handle.h"
#include "memory/share.h"
#include "tarn/memory.h"

namespace {
// Backed by the paging file, not by a file of the caller's.
const HANDLE kPagingFile = INVALID_HANDLE_VALUE;
}  // namespace

struct CTarnSharedMemory::Share {
  tarn::ShareCount count;
  HANDLE mapping = nullptr;
  void* view = nullptr;

  void Release() noexcept {
    if (view) ::UnmapViewOfFile(view);
    if (mapping) ::CloseHandle(mapping);
  }

  // Takes over the mapping and its view for `self` in `state`.
  static void Hold(CTarnSharedMemory& self, std::unique_ptr<Share> share, int state,
                   const char* name, tarn::UniqueHandle& mapping, tarn::UniqueView& view) {
    share->mapping = mapping.release();
    share->view = const_cast<void*>(view.release());
    self.m_nState = state;
    // Cut to fit, terminated, the rest zero.
    const size_t length = name ? strnlen(name, sizeof(self.m_szName) - 1) : 0;
    memset(self.m_szName, 0, sizeof(self.m_szName));
    memcpy(self.m_szName, name, length);
    self.m_hMapping = share->mapping;
    self.m_pView = static_cast<unsigned char*>(share->view);
    self.m_pShare = share.release();
  }
};

CTarnSharedMemory::CTarnSharedMemory()
    : m_nState(0), m_dwSize(0), m_hMapping(nullptr), m_pView(nullptr), m_pShare(nullptr) {
  memset(m_szName, 0, sizeof(m_szName));
}

CTarnSharedMemory::CTarnSharedMemory(const CTarnSharedMemory& other)
    : m_nState(other.m_nState),
      m_dwSize(other.m_dwSize),
      m_hMapping(other.m_hMapping),
      m_pView(other.m_pView),
      m_pShare(tarn::JoinShare(other.m_pShare)) {
  memcpy(m_szName, other.m_szName, sizeof(m_szName));
}

CTarnSharedMemory& CTarnSharedMemory::operator=(const CTarnSharedMemory& other) {
  // Join first: on self-assignment the count never reaches zero.
  Share* share = tarn::JoinShare(other.m_pShare);
  tarn::LeaveShare(m_pShare, false);
  m_pShare = share;
  m_nState = other.m_nState;
  memmove(m_szName, other.m_szName, sizeof(m_szName));
  m_dwSize = other.m_dwSize;
  m_hMapping = other.m_hMapping;
  m_pView = other.m_pView;
  return *this;
}

CTarnSharedMemory::~CTarnSharedMemory() { Close(); }

unsigned char* CTarnSharedMemory::Create(const char* pszName, DWORD dwSize, DWORD* pdwError,
                                         char* pszError, DWORD cchError) {
  const tarn::ErrorOut err(pdwError, pszError, cchError);
  unsigned char* const none = nullptr;
  // A null name would create a block that nobody else can open.
  if (m_nState != 0 || !pszName) return none;
  // A name in use is refused here, as creating it would merely open the
  // existing block.
  if (HANDLE existing = ::OpenFileMappingA(FILE_MAP_WRITE, FALSE, pszName)) {
    ::CloseHandle(existing);
    return none;
  }
  Close();
  m_dwSize = dwSize;

  std::unique_ptr<Share> share(new Share);
  tarn::UniqueHandle mapping(
      ::CreateFileMappingA(kPagingFile, nullptr, PAGE_READWRITE, 0, dwSize, pszName));
  if (!mapping) return err.Fail(::GetLastError(), none);
  tarn::UniqueView view(::MapViewOfFile(mapping.get(), FILE_MAP_WRITE, 0, 0, 0));
  if (!view) return err.Fail(::GetLastError(), none);

  Share::Hold(*this, std::move(share), 2, pszName, mapping, view);
  memset(m_pView, 0, dwSize);
  return m_pView;
}

unsigned char* CTarnSharedMemory::Open(const char* pszName, DWORD* pdwError, char* pszError,
                                       DWORD cchError) {
  const tarn::ErrorOut err(pdwError, pszError, cchError);
  unsigned char* const none = nullptr;
  if (m_nState != 0) return none;
  Close();
  m_dwSize = 0;

  std::unique_ptr<Share> share(new Share);
  tarn::UniqueHandle mapping(::OpenFileMappingA(FILE_MAP_WRITE, FALSE, pszName));
  if (!mapping) return err.Fail(::GetLastError(), none);
  tarn::UniqueView view(::MapViewOfFile(mapping.get(), FILE_MAP_WRITE, 0, 0, 0));
  if (!view) return err.Fail(::GetLastError(), none);

  Share::Hold(*this, std::move(share), 1, pszName, mapping, view);
  return m_pView;
}

int CTarnSharedMemory::Exist(const char* pszName) const {
  HANDLE mapping = ::OpenFileMappingA(FILE_MAP_WRITE, FALSE, pszName);
  if (!mapping) return 0;
  ::CloseHandle(mapping);
  return 1;
}

void CTarnSharedMemory::Close() {
  tarn::LeaveShare(m_pShare, true);
  m_nState = 0;
  m_hMapping = nullptr;
  m_pView = nullptr;
  memset(m_szName, 0, sizeof(m_szName));
}

DWORD CTarnSharedMemory::Size() const { return m_dwSize; }

CTarnSharedMemory::operator unsigned char*() const { return m_pView; }

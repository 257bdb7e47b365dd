#include <memory>

#include "core/error_out.h"
#include "memory/share.h"
#include "tarn/memory.h"

namespace {
// Blocks above this many bytes are committed pages when the caller names no
// threshold.
constexpr DWORD kDefaultPageThreshold = 0x80000;
}  // namespace

struct CTarnMemory::Share {
  tarn::ShareCount count;
  HGLOBAL heap = nullptr;
  void* pages = nullptr;

  void Release() noexcept {
    if (heap) {
      ::GlobalUnlock(heap);
      ::GlobalFree(heap);
    } else if (pages) {
      ::VirtualFree(pages, 0, MEM_RELEASE);
    }
  }
};

CTarnMemory::CTarnMemory()
    : m_hMemory(nullptr), m_pMemory(nullptr), m_dwSize(0), m_pShare(nullptr) {}

CTarnMemory::CTarnMemory(const CTarnMemory& other)
    : m_hMemory(other.m_hMemory),
      m_pMemory(other.m_pMemory),
      m_dwSize(other.m_dwSize),
      m_pShare(tarn::JoinShare(other.m_pShare)) {}

CTarnMemory& CTarnMemory::operator=(const CTarnMemory& other) {
  // Join first: on self-assignment the count never reaches zero.
  Share* share = tarn::JoinShare(other.m_pShare);
  tarn::LeaveShare(m_pShare, false);
  m_pShare = share;
  m_hMemory = other.m_hMemory;
  m_pMemory = other.m_pMemory;
  m_dwSize = other.m_dwSize;
  return *this;
}

CTarnMemory::~CTarnMemory() { Close(); }

unsigned char* CTarnMemory::Open(DWORD dwSize, DWORD dwThreshold, DWORD* pdwError,
                                 char* pszError, DWORD cchError) {
  const tarn::ErrorOut err(pdwError, pszError, cchError);
  if (dwSize == 0 || m_hMemory || m_pMemory) return nullptr;
  const DWORD limit = dwThreshold ? dwThreshold : kDefaultPageThreshold;

  // Allocated before the block, so that running out of memory here leaves
  // nothing behind.
  std::unique_ptr<Share> share(new Share);
  unsigned char* address = nullptr;
  if (dwSize > limit) {
    address = static_cast<unsigned char*>(
        ::VirtualAlloc(nullptr, dwSize, MEM_COMMIT, PAGE_READWRITE));
    if (!address) return err.Fail(::GetLastError(), address);
    share->pages = address;
  } else {
    HGLOBAL heap = ::GlobalAlloc(GMEM_FIXED | GMEM_ZEROINIT, dwSize);
    if (!heap) return err.Fail(::GetLastError(), address);
    address = static_cast<unsigned char*>(::GlobalLock(heap));
    if (!address) {
      const DWORD code = ::GetLastError();
      ::GlobalFree(heap);
      return err.Fail(code, address);
    }
    share->heap = heap;
  }
  m_hMemory = share->heap;
  m_pMemory = address;
  m_dwSize = dwSize;
  m_pShare = share.release();
  return address;
}

void CTarnMemory::Close() {
  tarn::LeaveShare(m_pShare, true);
  m_hMemory = nullptr;
  m_pMemory = nullptr;
  m_dwSize = 0;
}

unsigned char* CTarnMemory::Address() { return m_pMemory; }

DWORD CTarnMemory::Size() { return m_dwSize; }

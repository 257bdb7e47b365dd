// CTarnOleEnumElements: a snapshot of the element records of one storage.
#include <vector>

#include "core/error_out.h"
#include "core/handle.h"
#include "tarn/storage.h"

// The records as the enumerator delivered them, names included; the vector
// keeps its capacity from one enumeration to the next.
struct CTarnOleEnumElements::Elements {
  std::vector<STATSTG> records;
};

CTarnOleEnumElements::CTarnOleEnumElements() : m_pElements(new Elements) {}

CTarnOleEnumElements::~CTarnOleEnumElements() {
  FreeElements();
  delete m_pElements;
}

int CTarnOleEnumElements::EnumElements(IStorage* storage, HRESULT* phr, char* pszError,
                                       DWORD cchError) {
  const tarn::ResultOut out(phr, pszError, cchError);
  if (!storage) {
    // The library's own refusal: a code, no text, the earlier snapshot kept.
    if (phr) *phr = E_INVALIDARG;
    return 0;
  }
  FreeElements();
  IEnumSTATSTG* enumerator = nullptr;
  const HRESULT hr = storage->EnumElements(0, nullptr, 0, &enumerator);
  if (FAILED(hr)) return out.Fail(hr, 0);
  const tarn::UniqueInterface<IEnumSTATSTG> owned(enumerator);
  STATSTG record;
  ULONG fetched = 0;
  // An error after the first record ends the snapshot early, unreported.
  while (SUCCEEDED(enumerator->Next(1, &record, &fetched)) && fetched == 1)
    m_pElements->records.push_back(record);
  return 1;
}

void CTarnOleEnumElements::FreeElements() {
  for (STATSTG& record : m_pElements->records) {
    if (record.pwcsName) ::CoTaskMemFree(record.pwcsName);
    record.pwcsName = nullptr;
  }
  m_pElements->records.clear();
}

ULONGLONG CTarnOleEnumElements::Size() const { return m_pElements->records.size(); }

const STATSTG& CTarnOleEnumElements::GetAt(int nIndex) { return m_pElements->records[nIndex]; }

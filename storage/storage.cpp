// Compound files, storages and streams: each operation is one platform call
// (and a Stat where a record is asked for), reported through the result-code
// out-parameters.
#include "tarn/storage.h"

#include <wchar.h>

#include <optional>

#include "core/error_out.h"
#include "core/handle.h"
#include "core/text.h"
#include "tarn/core.h"

namespace {

using tarn::ResultOut;

// The platform's mode words: read-only or read-write, always exclusive and
// direct; every create replaces.
constexpr DWORD kOpenReadOnly = STGM_READ | STGM_SHARE_EXCLUSIVE;
constexpr DWORD kOpenReadWrite = STGM_READWRITE | STGM_SHARE_EXCLUSIVE;
constexpr DWORD kCreate = STGM_CREATE | STGM_READWRITE | STGM_SHARE_EXCLUSIVE;

DWORD OpenMode(int access) { return access == 0 ? kOpenReadOnly : kOpenReadWrite; }

// Hands over a storage or stream just obtained, after filling `stat` from it
// when a record is asked for; a failed Stat releases it.
template <typename Interface>
Interface* Deliver(Interface* element, STATSTG* stat, const ResultOut& out) {
  tarn::UniqueInterface<Interface> owned(element);
  if (stat) {
    const HRESULT hr = element->Stat(stat, STATFLAG_DEFAULT);
    if (FAILED(hr)) return out.Fail(hr, static_cast<Interface*>(nullptr));
  }
  return owned.release();
}

// Calls the wide form with `name` converted from the system's ANSI code page.
// A failed conversion leaves as _com_error, before the wide form runs.
template <typename Call>
auto WithWideName(const char* name, Call call) {
  std::optional<tarn::WideText> wide;
  try {
    wide.emplace(name, CP_ACP);
  } catch (const ATL::CAtlException& e) {
    throw _com_error(e.m_hr);
  }
  return call(wide->get());
}

}  // namespace

IStorage* TarnOleOpenStgFile(int nAccess, const wchar_t* path, HRESULT* phr, char* pszError,
                             DWORD cchError) {
  const ResultOut out(phr, pszError, cchError);
  IStorage* root = nullptr;
  const HRESULT hr = ::StgOpenStorage(path, nullptr, OpenMode(nAccess), nullptr, 0, &root);
  if (FAILED(hr)) return out.Fail(hr, static_cast<IStorage*>(nullptr));
  return root;
}

IStorage* TarnOleCreateStgFile(const wchar_t* path, HRESULT* phr, char* pszError,
                               DWORD cchError) {
  const ResultOut out(phr, pszError, cchError);
  IStorage* root = nullptr;
  const HRESULT hr = ::StgCreateDocfile(path, kCreate, 0, &root);
  if (FAILED(hr)) return out.Fail(hr, static_cast<IStorage*>(nullptr));
  return root;
}

IStorage* TarnOleOpenStorage(int nAccess, IStorage* parent, const wchar_t* name, STATSTG* pStat,
                             HRESULT* phr, char* pszError, DWORD cchError) {
  const ResultOut out(phr, pszError, cchError);
  IStorage* storage = nullptr;
  const HRESULT hr = parent->OpenStorage(name, nullptr, OpenMode(nAccess), nullptr, 0, &storage);
  if (FAILED(hr)) return out.Fail(hr, static_cast<IStorage*>(nullptr));
  return Deliver(storage, pStat, out);
}

IStorage* TarnOleCreateStorage(IStorage* parent, const wchar_t* name, STATSTG* pStat,
                               HRESULT* phr, char* pszError, DWORD cchError) {
  const ResultOut out(phr, pszError, cchError);
  IStorage* storage = nullptr;
  const HRESULT hr = parent->CreateStorage(name, kCreate, 0, 0, &storage);
  if (FAILED(hr)) return out.Fail(hr, static_cast<IStorage*>(nullptr));
  return Deliver(storage, pStat, out);
}

IStream* TarnOleOpenStream(int nAccess, IStorage* parent, const wchar_t* name, STATSTG* pStat,
                           HRESULT* phr, char* pszError, DWORD cchError) {
  const ResultOut out(phr, pszError, cchError);
  IStream* stream = nullptr;
  const HRESULT hr = parent->OpenStream(name, nullptr, OpenMode(nAccess), 0, &stream);
  if (FAILED(hr)) return out.Fail(hr, static_cast<IStream*>(nullptr));
  return Deliver(stream, pStat, out);
}

IStream* TarnOleCreateStream(IStorage* parent, const wchar_t* name, STATSTG* pStat, HRESULT* phr,
                             char* pszError, DWORD cchError) {
  const ResultOut out(phr, pszError, cchError);
  IStream* stream = nullptr;
  const HRESULT hr = parent->CreateStream(name, kCreate, 0, 0, &stream);
  if (FAILED(hr)) return out.Fail(hr, static_cast<IStream*>(nullptr));
  return Deliver(stream, pStat, out);
}

int TarnOleWriteStream(IStream* stream, const void* data, DWORD cb, HRESULT* phr, char* pszError,
                       DWORD cchError) {
  if (!stream || !data) return 0;
  const ResultOut out(phr, pszError, cchError);
  const HRESULT hr = stream->Write(data, cb, nullptr);
  return FAILED(hr) ? out.Fail(hr, 0) : 1;
}

int TarnOleReadStream(IStream* stream, void* buffer, DWORD cb, HRESULT* phr, char* pszError,
                      DWORD cchError) {
  if (!stream || !buffer) return 0;
  const ResultOut out(phr, pszError, cchError);
  const HRESULT hr = stream->Read(buffer, cb, nullptr);
  return FAILED(hr) ? out.Fail(hr, 0) : 1;
}

int TarnOleDeleteElement(IStorage* parent, const wchar_t* name, HRESULT* phr, char* pszError,
                         DWORD cchError) {
  const ResultOut out(phr, pszError, cchError);
  const HRESULT hr = parent->DestroyElement(name);
  return FAILED(hr) ? out.Fail(hr, 0) : 1;
}

int TarnOleFindElement(IStorage* storage, const wchar_t* name, DWORD dwType, STATSTG& stat,
                       HRESULT* phr, char* pszError, DWORD cchError) {
  const ResultOut out(phr, pszError, cchError);
  IEnumSTATSTG* enumerator = nullptr;
  const HRESULT hr = storage->EnumElements(0, nullptr, 0, &enumerator);
  if (FAILED(hr)) return out.Fail(hr, 0);
  const tarn::UniqueInterface<IEnumSTATSTG> owned(enumerator);
  const tarn::UniqueBstr wanted(::SysAllocString(name));
  if (name && !wanted) throw _com_error(E_OUTOFMEMORY);
  ULONG fetched = 0;
  while (SUCCEEDED(enumerator->Next(1, &stat, &fetched)) && fetched == 1) {
    // Code unit by code unit: case-sensitive, no locale, no prefix match.
    const bool sameName = wanted && stat.pwcsName && wcscmp(stat.pwcsName, wanted.get()) == 0;
    if (sameName && (dwType == 0 || dwType == stat.type)) return 1;
    ::CoTaskMemFree(stat.pwcsName);
  }
  return 0;
}

int TarnOleCLSIDAsString(const GUID& clsid, char* buffer, DWORD cchBuffer) {
  constexpr DWORD kLength = 38;  // "{8-4-4-4-12}"
  if (!buffer || cchBuffer == 0) return 0;
  ZeroMemory(buffer, cchBuffer);
  char text[kLength + 1];
  ::wsprintfA(text, "{%08X-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X}", clsid.Data1,
              clsid.Data2, clsid.Data3, clsid.Data4[0], clsid.Data4[1], clsid.Data4[2],
              clsid.Data4[3], clsid.Data4[4], clsid.Data4[5], clsid.Data4[6], clsid.Data4[7]);
  if (cchBuffer <= kLength) return 0;  // nothing is cut: the buffer stays all zero
  CopyMemory(buffer, text, kLength + 1);
  return 1;
}

// The narrow forms: the name converted in CP_ACP, then the wide form.

IStorage* TarnOleOpenStgFile(int nAccess, const char* path, HRESULT* phr, char* pszError,
                             DWORD cchError) {
  return WithWideName(path, [&](const wchar_t* wide) {
    return TarnOleOpenStgFile(nAccess, wide, phr, pszError, cchError);
  });
}

IStorage* TarnOleCreateStgFile(const char* path, HRESULT* phr, char* pszError, DWORD cchError) {
  return WithWideName(path, [&](const wchar_t* wide) {
    return TarnOleCreateStgFile(wide, phr, pszError, cchError);
  });
}

IStorage* TarnOleOpenStorage(int nAccess, IStorage* parent, const char* name, STATSTG* pStat,
                             HRESULT* phr, char* pszError, DWORD cchError) {
  return WithWideName(name, [&](const wchar_t* wide) {
    return TarnOleOpenStorage(nAccess, parent, wide, pStat, phr, pszError, cchError);
  });
}

IStorage* TarnOleCreateStorage(IStorage* parent, const char* name, STATSTG* pStat, HRESULT* phr,
                               char* pszError, DWORD cchError) {
  return WithWideName(name, [&](const wchar_t* wide) {
    return TarnOleCreateStorage(parent, wide, pStat, phr, pszError, cchError);
  });
}

IStream* TarnOleOpenStream(int nAccess, IStorage* parent, const char* name, STATSTG* pStat,
                           HRESULT* phr, char* pszError, DWORD cchError) {
  return WithWideName(name, [&](const wchar_t* wide) {
    return TarnOleOpenStream(nAccess, parent, wide, pStat, phr, pszError, cchError);
  });
}

IStream* TarnOleCreateStream(IStorage* parent, const char* name, STATSTG* pStat, HRESULT* phr,
                             char* pszError, DWORD cchError) {
  return WithWideName(name, [&](const wchar_t* wide) {
    return TarnOleCreateStream(parent, wide, pStat, phr, pszError, cchError);
  });
}

int TarnOleDeleteElement(IStorage* parent, const char* name, HRESULT* phr, char* pszError,
                         DWORD cchError) {
  return WithWideName(name, [&](const wchar_t* wide) {
    return TarnOleDeleteElement(parent, wide, phr, pszError, cchError);
  });
}

int TarnOleFindElement(IStorage* storage, const char* name, DWORD dwType, STATSTG& stat,
                       HRESULT* phr, char* pszError, DWORD cchError) {
  return WithWideName(name, [&](const wchar_t* wide) {
    return TarnOleFindElement(storage, wide, dwType, stat, phr, pszError, cchError);
  });
}

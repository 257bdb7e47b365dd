/// \file
/// Tarn: structured storage. Compound files, the storages and streams inside
/// them, element search and enumeration, class identifiers as text.
///
/// Result-code out-parameters. Every operation here but TarnOleCLSIDAsString
/// ends with three out-parameters, in this order:
///   HRESULT* phr       receives the platform's result code; 0 = no code
///   char*    pszError  caller-owned buffer for the system's text of that code
///   DWORD    cchError  size of that buffer in characters, terminator included
/// Each may be null (or 0). On entry the operation stores 0 through phr and,
/// if the buffer holds text, a terminator in its first character (an already
/// empty buffer is not written). When a platform call fails, phr receives its
/// whole result code (0x80030002, say) and the buffer the system's message
/// whose number is the code's low 16 bits (here 2, "file not found"), stored
/// as the platform gives it; a code whose low 16 bits name no system message
/// leaves the text empty. A failure the library detects itself leaves code 0
/// and an empty text.
///
/// Modes. Every storage and stream is opened with exclusive sharing and
/// without transactions: a second open of an open element fails, and every
/// write reaches the file at once. The open functions take an access argument:
/// 0 opens read-only (STGM_READ | STGM_SHARE_EXCLUSIVE, 0x10), any other value
/// read-write (STGM_READWRITE | STGM_SHARE_EXCLUSIVE, 0x12). Every create
/// uses STGM_CREATE | STGM_READWRITE | STGM_SHARE_EXCLUSIVE (0x1012): it
/// replaces a file or element of the same name.
///
/// Ownership. Every IStorage and IStream returned belongs to the caller, who
/// releases it once. Where a STATSTG record is filled (with STATFLAG_DEFAULT),
/// its pwcsName belongs to the caller, who frees it with CoTaskMemFree; the
/// records of CTarnOleEnumElements stay the object's.
///
/// Names. The wide forms take UTF-16 names. The narrow forms take the same
/// arguments with a narrow name in the system's ANSI code page (CP_ACP, not
/// the thread's code page of the other families); a null name stays null.
/// When the name cannot be converted, a narrow form throws _com_error
/// (<comdef.h>) before anything else happens, out-parameters untouched:
/// E_INVALIDARG for a text longer than 0x7FFFFFFF bytes, E_OUTOFMEMORY when
/// memory runs out, else the conversion's last error as an HRESULT.
/// Parent storages are not checked for null: pass a valid one.
#ifndef TARN_STORAGE_H
#define TARN_STORAGE_H

#include <windows.h>
#include <objbase.h>
#include <comdef.h>

#include "tarn/tarn_export.h"

// ---------------------------------------------------------------------------
/// \name Compound files
// ---------------------------------------------------------------------------
/// @{

/// Opens the compound file `path` (StgOpenStorage, no priority storage, no
/// exclusions) and returns its root storage; null on failure, with the result
/// code (0x80030002 for a missing file, 0x80030050 for a file that is not a
/// compound file, 0x80030020 for a file already open).
TARN_API IStorage* TarnOleOpenStgFile(int nAccess, const wchar_t* path, HRESULT* phr,
                                      char* pszError, DWORD cchError);
TARN_API IStorage* TarnOleOpenStgFile(int nAccess, const char* path, HRESULT* phr,
                                      char* pszError, DWORD cchError);

/// Creates the compound file `path` (StgCreateDocfile, 0x1012), replacing an
/// existing one, and returns its root storage; null on failure.
TARN_API IStorage* TarnOleCreateStgFile(const wchar_t* path, HRESULT* phr, char* pszError,
                                        DWORD cchError);
TARN_API IStorage* TarnOleCreateStgFile(const char* path, HRESULT* phr, char* pszError,
                                        DWORD cchError);

/// @}

// ---------------------------------------------------------------------------
/// \name Storages and streams inside a storage.
/// When `pStat` is given, the new interface's Stat fills it; if Stat fails, the
/// interface is released and null returned with Stat's code (an element just
/// created stays in its parent). With a null pStat no Stat call is made.
// ---------------------------------------------------------------------------
/// @{

/// Opens the storage `name` of `parent`; null on failure.
TARN_API IStorage* TarnOleOpenStorage(int nAccess, IStorage* parent, const wchar_t* name,
                                      STATSTG* pStat, HRESULT* phr, char* pszError,
                                      DWORD cchError);
TARN_API IStorage* TarnOleOpenStorage(int nAccess, IStorage* parent, const char* name,
                                      STATSTG* pStat, HRESULT* phr, char* pszError,
                                      DWORD cchError);

/// Creates the storage `name` in `parent`, replacing an element of that name;
/// null on failure.
TARN_API IStorage* TarnOleCreateStorage(IStorage* parent, const wchar_t* name, STATSTG* pStat,
                                        HRESULT* phr, char* pszError, DWORD cchError);
TARN_API IStorage* TarnOleCreateStorage(IStorage* parent, const char* name, STATSTG* pStat,
                                        HRESULT* phr, char* pszError, DWORD cchError);

/// Opens the stream `name` of `parent`; null on failure.
TARN_API IStream* TarnOleOpenStream(int nAccess, IStorage* parent, const wchar_t* name,
                                    STATSTG* pStat, HRESULT* phr, char* pszError,
                                    DWORD cchError);
TARN_API IStream* TarnOleOpenStream(int nAccess, IStorage* parent, const char* name,
                                    STATSTG* pStat, HRESULT* phr, char* pszError,
                                    DWORD cchError);

/// Creates the empty stream `name` in `parent`, replacing an element of that
/// name; null on failure.
TARN_API IStream* TarnOleCreateStream(IStorage* parent, const wchar_t* name, STATSTG* pStat,
                                      HRESULT* phr, char* pszError, DWORD cchError);
TARN_API IStream* TarnOleCreateStream(IStorage* parent, const char* name, STATSTG* pStat,
                                      HRESULT* phr, char* pszError, DWORD cchError);

/// Writes `cb` bytes of `data` at the stream's position. 1 on success; 0 with
/// the code of the failed Write (a stream opened read-only gives 0x80030005).
/// A null stream or null data returns 0 at once, the out-parameters not even
/// cleared.
TARN_API int TarnOleWriteStream(IStream* stream, const void* data, DWORD cb, HRESULT* phr,
                                char* pszError, DWORD cchError);

/// Reads up to `cb` bytes at the stream's position into `buffer`. 1 on success,
/// also when fewer bytes (none at the end of the stream) were there: the count
/// is not reported. 0 with the code of the failed Read. A null stream or null
/// buffer returns 0 at once, the out-parameters not even cleared.
TARN_API int TarnOleReadStream(IStream* stream, void* buffer, DWORD cb, HRESULT* phr,
                               char* pszError, DWORD cchError);

/// Removes the element `name` (a storage with everything inside it, or a
/// stream) from `parent`. 1, or 0 with the code of DestroyElement.
TARN_API int TarnOleDeleteElement(IStorage* parent, const wchar_t* name, HRESULT* phr,
                                  char* pszError, DWORD cchError);
TARN_API int TarnOleDeleteElement(IStorage* parent, const char* name, HRESULT* phr,
                                  char* pszError, DWORD cchError);

/// Looks among the elements directly inside `storage` for one called exactly
/// `name` (same UTF-16 units, case-sensitive, no prefix match) whose type is
/// `dwType` (STGTY_STORAGE 1, STGTY_STREAM 2, ...; 0: any type). 1 when found:
/// `stat` holds its record and the caller frees stat.pwcsName. 0 with code 0
/// when there is none; `stat` may then hold a record whose name has already
/// been freed: read it only after a 1. 0 with the code when the storage
/// cannot enumerate its elements. Throws _com_error(E_OUTOFMEMORY) when the
/// name cannot be copied.
TARN_API int TarnOleFindElement(IStorage* storage, const wchar_t* name, DWORD dwType,
                                STATSTG& stat, HRESULT* phr, char* pszError, DWORD cchError);
TARN_API int TarnOleFindElement(IStorage* storage, const char* name, DWORD dwType,
                                STATSTG& stat, HRESULT* phr, char* pszError, DWORD cchError);

/// Writes `clsid` as "{XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}" (38 characters,
/// upper-case hexadecimal digits, the last eight bytes in stored order) into
/// `buffer` of `cchBuffer` characters, every byte after the text zero, and
/// returns 1. Buffers of 38 characters or fewer are not written but zeroed
/// (nothing is cut) and give 0, as do a null buffer or size 0.
TARN_API int TarnOleCLSIDAsString(const GUID& clsid, char* buffer, DWORD cchBuffer);

// ---------------------------------------------------------------------------
/// A snapshot of the element records directly inside one storage, in the
/// order the platform's enumerator delivers them (not the order in which the
/// elements were made). The object owns the records' names. Not copyable.
// ---------------------------------------------------------------------------
class TARN_API CTarnOleEnumElements {
 public:
  CTarnOleEnumElements();
  CTarnOleEnumElements(const CTarnOleEnumElements&) = delete;
  CTarnOleEnumElements& operator=(const CTarnOleEnumElements&) = delete;
  /// Releases the records' names and the list.
  virtual ~CTarnOleEnumElements();

  /// Replaces the snapshot with the records of `storage`'s elements; 1 (also
  /// for a storage without elements, and when the enumeration stops early on
  /// an error: the records gathered until then are kept, code 0).
  /// 0 with code E_INVALIDARG (0x80070057), no text and the earlier snapshot
  /// kept, for a null storage. 0 with the code and an empty list when the
  /// storage cannot enumerate its elements.
  int EnumElements(IStorage* storage, HRESULT* phr, char* pszError, DWORD cchError);

  /// Releases every record's name and empties the list.
  void FreeElements();

  /// The number of records.
  ULONGLONG Size() const;

  /// The record at `nIndex`, 0 to Size() - 1 (not checked). It and its name
  /// stay valid until the next EnumElements, FreeElements or destruction.
  const STATSTG& GetAt(int nIndex);

 private:
  struct Elements;
  Elements* m_pElements;
};
/// @}

#endif  // TARN_STORAGE_H

/// \file
/// Tarn: memory blocks, memory-mapped files, named shared memory and resources
/// copied into memory, files or the registry.
///
/// Each class holds at most one platform object set at a time and releases it
/// in Close and in its destructor. Open and Create report platform failures
/// through the error out-parameters described in tarn/core.h (code, text
/// buffer, buffer size; each may be null) and return null on failure.
///
/// Copies. Copy construction and assignment copy every public member, so a
/// copy reads the same handles, addresses and sizes as its source: it is a
/// second name for the same block, file, mapping and view, never a duplicate.
/// Ownership of those platform objects is shared: every object that holds them
/// (the one that opened them and each copy) carries one share in a reference
/// count kept outside the public members (the private pointer behind them).
/// Close or destruction of a holder gives up its share and clears its own
/// members as documented; the platform objects are released when the last
/// share goes, whatever the order in which the holders are closed or
/// destroyed. Nothing is released twice, and a block or view stays valid while
/// any holder of it is open. The holders of a mapped file share one current
/// view: CTarnMmFile::ReMap through any of them replaces it for all, and the
/// others' m_pView then names the old, unmapped address.
/// Assignment never releases anything: a target that held objects of its own
/// gives up its share of them without releasing them, so when it was their
/// last holder they stay allocated for the life of the process. Close the
/// target first when that is not wanted.
/// The count is interlocked: holders of the same objects may be copied,
/// closed and destroyed on different threads. Anything else (Open, ReMap,
/// the members) belongs to one thread at a time, across all holders.
#ifndef TARN_MEMORY_H
#define TARN_MEMORY_H

#include <windows.h>

#include "tarn/core.h"
#include "tarn/tarn_export.h"

// ---------------------------------------------------------------------------
/// A zero-filled, writable block of memory. Blocks up to the threshold come
/// from the global heap (GlobalAlloc GMEM_FIXED | GMEM_ZEROINIT, locked); larger
/// ones are committed pages of their own (VirtualAlloc MEM_COMMIT,
/// PAGE_READWRITE).
// ---------------------------------------------------------------------------
class TARN_API CTarnMemory {
 public:
  CTarnMemory();
  /// A holder of what `other` holds (see "Copies" above).
  CTarnMemory(const CTarnMemory& other);
  /// Gives up what this object held and holds what `other` holds (see
  /// "Copies" above).
  CTarnMemory& operator=(const CTarnMemory& other);
  /// Same as Close.
  virtual ~CTarnMemory();

  /// Allocates a zero-filled block of dwSize bytes and returns its address.
  /// Sizes up to dwThreshold bytes (0: 524288, 512 KiB), that size included,
  /// come from the global heap; larger sizes are committed pages.
  /// Null with code 0 when dwSize is 0 or the object already holds a block
  /// (which stays as it was); null with the platform's code and text when the
  /// allocation or the lock fails, the object then holding nothing.
  unsigned char* Open(DWORD dwSize, DWORD dwThreshold, DWORD* pdwError, char* pszError,
                      DWORD cchError);

  /// Gives up the block (see "Copies"); afterwards Address is null and Size 0.
  /// Does nothing more on an empty object.
  void Close();

  /// The block's address; null when none is held.
  unsigned char* Address();
  /// The block's size in bytes as requested; 0 when none is held.
  DWORD Size();

  HGLOBAL m_hMemory;        ///< heap block's handle; null for pages or no block
  unsigned char* m_pMemory; ///< start of the block; null when none
  DWORD m_dwSize;           ///< requested size; 0 when none

 private:
  struct Share;
  Share* m_pShare;
};

// ---------------------------------------------------------------------------
/// An existing file mapped into memory, for reading or for reading and
/// writing. The mapping always has the file's current size: the class never
/// creates, extends or truncates a file. Paths go to CreateFileA unchanged.
/// Quantities are 32-bit: for files of 4 GiB or more the sized Open reports and
/// ReMap offsets use the low 32 bits of the size, and eOpenReadWrite maps only
/// the low 32 bits' worth of bytes (the whole file when they are 0).
// ---------------------------------------------------------------------------
class TARN_API CTarnMmFile {
 public:
  /// How Open opens and maps the file.
  enum eOpenmode {
    /// GENERIC_READ, shared for reading; PAGE_READONLY, FILE_MAP_READ.
    eOpenRead = 1,
    /// GENERIC_READ | GENERIC_WRITE, not shared (a second opener gets the
    /// sharing violation); PAGE_READWRITE, FILE_MAP_WRITE.
    eOpenReadWrite = 2
  };

  CTarnMmFile();
  /// A holder of what `other` holds (see "Copies" above).
  CTarnMmFile(const CTarnMmFile& other);
  /// Gives up what this object held and holds what `other` holds (see
  /// "Copies" above).
  CTarnMmFile& operator=(const CTarnMmFile& other);
  /// Same as Close.
  virtual ~CTarnMmFile();

  /// Opens the existing file pszFilename in `mode` and maps a view of it whole;
  /// returns the view's address.
  /// Null with code 0 when the object is already open (the first file stays
  /// mapped) or `mode` is not an eOpenmode value. Null with code 0xFFFFFFFF
  /// and the text of string 2 of the resource module ("Cannot create
  /// filemapping for files with size 0", loaded with the buffer size as limit)
  /// for an empty file. Null with the platform's code and text when the file
  /// cannot be opened or mapped. A failure leaves nothing open.
  unsigned char* Open(eOpenmode mode, const char* pszFilename, DWORD* pdwError, char* pszError,
                      DWORD cchError);

  /// As above, and reports in ullLength the number of bytes mapped (0 on entry
  /// and on failure; the low 32 bits of the file size after a full mapping).
  /// When the whole file cannot be mapped, halves the length until a view of
  /// the leading ullLength bytes can be (a last attempt at length 0 asks for
  /// the whole file once more); fails with the code of the last attempt.
  unsigned char* Open(eOpenmode mode, const char* pszFilename, ULONGLONG& ullLength,
                      DWORD* pdwError, char* pszError, DWORD cchError);

  /// Replaces the view with one of ullLength bytes (0: up to the end of the
  /// file) at dwOffset rounded down to the allocation granularity. Writes back
  /// the rounded offset, and the length cut to the end of the file when it
  /// would pass it. When the view cannot be mapped, halves the length (written
  /// back) down to 0 as the sized Open does.
  /// Null, with nothing changed, when the object is closed, has no view, or
  /// dwOffset is not below the low 32 bits of the file size. Null after every
  /// attempt failed: the old view is gone and the object stays open without a
  /// view until Close. The error out-parameters are cleared, never filled.
  unsigned char* ReMap(DWORD& dwOffset, ULONGLONG& ullLength, DWORD* pdwError, char* pszError,
                       DWORD cchError);

  /// Gives up the view, mapping, file and name copy (see "Copies"). The size,
  /// handle and view members keep their values until the next Open. Does
  /// nothing on a closed object.
  void Close();

  /// The low 32 bits of the size of the file last opened; the high 32 bits go
  /// to *pdwHigh when pdwHigh is given. Unchanged by Close.
  DWORD Size(DWORD* pdwHigh) const;

  int m_nOpenmode;          ///< 0 while closed, else the eOpenmode of the Open
  char* m_pszFilename;      ///< heap copy of the path while open; else null
  DWORD m_dwFileSizeLow;    ///< file size when opened, low 32 bits
  DWORD m_dwFileSizeHigh;   ///< and high 32 bits
  HANDLE m_hFile;           ///< INVALID_HANDLE_VALUE when none was opened
  HANDLE m_hMapping;        ///< null when none
  unsigned char* m_pView;   ///< current view; null when none

 private:
  struct Share;
  Share* m_pShare;
};

// ---------------------------------------------------------------------------
/// A block of memory in the paging file that processes share by name. The
/// class stores nothing inside the block: openers learn its address, not its
/// size, which the processes agree on by other means. Every view is writable.
/// Names are file-mapping names of at most 259 characters.
// ---------------------------------------------------------------------------
class TARN_API CTarnSharedMemory {
 public:
  CTarnSharedMemory();
  /// A holder of what `other` holds (see "Copies" above).
  CTarnSharedMemory(const CTarnSharedMemory& other);
  /// Gives up what this object held and holds what `other` holds (see
  /// "Copies" above).
  CTarnSharedMemory& operator=(const CTarnSharedMemory& other);
  /// Same as Close.
  virtual ~CTarnSharedMemory();

  /// Creates the block pszName of dwSize bytes, maps it whole and returns its
  /// zero-filled view. Null with code 0 when the object already holds a block
  /// (which stays held), when pszName is null, or when a block of that name
  /// can already be opened (checked just before creating; not atomic with the
  /// creation). Otherwise m_dwSize becomes dwSize, and a failed create or map
  /// (a size of 0 among others) gives null with the platform's code and text.
  unsigned char* Create(const char* pszName, DWORD dwSize, DWORD* pdwError, char* pszError,
                        DWORD cchError);

  /// Opens the existing block pszName for writing and maps it whole; returns
  /// its view, contents untouched. m_dwSize is 0 afterwards. Null with code 0
  /// when the object already holds a block; null with the platform's code and
  /// text when no block of that name exists or it cannot be mapped.
  unsigned char* Open(const char* pszName, DWORD* pdwError, char* pszError, DWORD cchError);

  /// 1 if a block named pszName can be opened for writing, else 0. The object
  /// is not used.
  int Exist(const char* pszName) const;

  /// Gives up the view and mapping (see "Copies"), whatever the state; the
  /// name is zeroed, the size kept.
  void Close();

  /// The size given to the last Create (0 after Open); kept by Close.
  DWORD Size() const;

  /// The view; null when no block is held.
  operator unsigned char*() const;

  int m_nState;             ///< 0 no block, 1 opened, 2 created
  char m_szName[260];       ///< name of the block held; all zero bytes when none
  DWORD m_dwSize;           ///< size given to Create; 0 after Open
  HANDLE m_hMapping;        ///< null when none
  unsigned char* m_pView;   ///< the whole block in this process; null when none

 private:
  struct Share;
  Share* m_pShare;
};

// ---------------------------------------------------------------------------
/// \name Resources copied out of a module.
/// A resource is named exactly as FindResourceA takes it: the module (null: the
/// process's executable, never the library's resource handle), the name and the
/// type, each a narrow text or an integer identifier (MAKEINTRESOURCEA). The
/// forms that take a DWORD resource number use its low 16 bits as the integer
/// identifier and do nothing else, so 0x10065 names resource 101. The error
/// out-parameters are those of tarn/core.h. A missing resource gives
/// FindResourceA's code (ERROR_RESOURCE_TYPE_NOT_FOUND 1813 for a missing type,
/// ERROR_RESOURCE_NAME_NOT_FOUND 1814 for a missing name); an empty one (size
/// 0) fails too, with whatever last error the thread holds then.
// ---------------------------------------------------------------------------
/// @{

/// The address of the resource's bytes in the module's image; their number
/// goes to *pdwSize as soon as the resource is found, so an empty resource
/// gives null with *pdwSize 0 and a missing one leaves *pdwSize as it was. The
/// bytes are read-only, belong to the module and stay valid while it stays
/// loaded; they are never released. Null with code 0 when pdwSize is null.
TARN_API const void* TarnLoadFromResource(HINSTANCE hModule, const char* pszName,
                                          const char* pszType, DWORD* pdwSize, DWORD* pdwError,
                                          char* pszError, DWORD cchError);
/// The same for the resource whose integer identifier is `dwResource`.
TARN_API const void* TarnLoadFromResource(HINSTANCE hModule, DWORD dwResource,
                                          const char* pszType, DWORD* pdwSize, DWORD* pdwError,
                                          char* pszError, DWORD cchError);

/// Writes the resource's bytes, all at once, to the file pszPath, which is
/// created or replaced (TarnFileCreate: GENERIC_WRITE, CREATE_ALWAYS,
/// FILE_ATTRIBUTE_NORMAL, not shared); afterwards the file holds exactly the
/// resource. 1 on success. 0 when the resource is missing or empty (no file is
/// touched then); 0 with TarnFileCreate's or TarnFileWrite's report when the
/// file cannot be created or written (a short write gives code 0 and leaves
/// what was written); 0 with the platform's code when closing the file fails.
/// May throw ATL::CAtlException (conversion of the path).
TARN_API int TarnCreateFileFromResource(const char* pszPath, HINSTANCE hModule,
                                        const char* pszName, const char* pszType,
                                        DWORD* pdwError, char* pszError, DWORD cchError);
/// The same for the resource whose integer identifier is `dwResource`.
TARN_API int TarnCreateFileFromResource(const char* pszPath, HINSTANCE hModule, DWORD dwResource,
                                        const char* pszType, DWORD* pdwError, char* pszError,
                                        DWORD cchError);

/// Imports a resource of registry text (a .reg file's contents, "REGEDIT4"
/// first) into the registry: writes it with TarnCreateFileFromResource to a
/// fresh name from TarnTempFilename (default directory, no prefix; names of 260
/// bytes and more are cut), starts the system's registry editor on it, hidden
/// and silent (ShellExecuteExW: "regedit.exe" with -s "<file>"; the parameters
/// are cut at 260 characters), waits up to 2000 ms for the editor to end and
/// deletes the file. Blocks the caller that long at most.
/// 1 once the editor has started: whether it accepted the text is not known,
/// and an editor still running after 2000 ms finds the file gone. 0 when no
/// temporary name can be had (the error out-parameters are then not even
/// cleared); 0 with TarnCreateFileFromResource's report when the resource
/// cannot be written; 0 with code 0 when the editor cannot be started. No
/// temporary file is left on any of these ways out. May throw
/// ATL::CAtlException (conversion of the file name).
TARN_API int TarnRegisterFileFromResource(HINSTANCE hModule, DWORD dwResource,
                                          const char* pszType, DWORD* pdwError, char* pszError,
                                          DWORD cchError);
/// @}

#endif  // TARN_MEMORY_H

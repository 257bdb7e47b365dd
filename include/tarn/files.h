/// \file
/// Tarn: paths, files and directories.
///
/// All paths and names are narrow, NUL-terminated text in the calling thread's
/// ANSI code page (double-byte code pages included), owned by the caller.
#ifndef TARN_FILES_H
#define TARN_FILES_H

#include <windows.h>

#include "tarn/core.h"
#include "tarn/tarn_export.h"

// ---------------------------------------------------------------------------
/// \name Path and file-name rules.
/// None of these reports errors: a failed platform call or an unusable argument
/// (null, empty) gives 0. Those that convert text to UTF-16 (TarnPathIsValid,
/// TarnDriveIsEqual, TarnPathIsEqual, TarnDeviceIsReady) may throw
/// ATL::CAtlException.
// ---------------------------------------------------------------------------
/// @{

/// 1 if `pszPath` is well formed and on a usable drive, else 0.
/// Valid: canonical form ("." and ".." resolved) at most 260 bytes; a drive of
/// a known type (removable drives only when bAllowRemovable is nonzero) or a
/// UNC path, which is never typed; no doubled backslash but a leading UNC
/// prefix; not drive-relative (D:dir); every character valid in a long or
/// short name or a separator (no wildcards); a colon only as the second
/// character; not all spaces.
/// *pbRemovable (if given) is set to 0 on entry and to 1 when the path's drive
/// is removable, whether or not that is allowed; UNC paths leave it 0.
TARN_API int TarnPathIsValid(const char* pszPath, int bAllowRemovable, int* pbRemovable);

/// 1 if `pszFilename` is a usable file name: not null or empty, every
/// character valid in a long or short file name (no separator, wildcard or
/// invalid character), not all spaces. Reserved device names are not examined.
TARN_API int TarnFilenameIsValid(const char* pszFilename);

/// Rewrites `pszFilename` in place: each character none of whose character
/// classes (GCT_LFNCHAR 0x1, GCT_SHORTCHAR 0x2, GCT_WILD 0x4, GCT_SEPARATOR
/// 0x8) is in `dwAccept` has its first byte replaced by `cReplace`. Returns
/// the number of characters replaced (0 for null or empty). With dwAccept 0x3
/// the result passes TarnFilenameIsValid unless it is all spaces.
TARN_API UINT TarnReplaceInvalidFilenameCharacters(char* pszFilename, char cReplace,
                                                   UINT dwAccept);

/// 1 if the whole of `pszName` is, ignoring case, one of AUX, CON, CLOCK$,
/// PRN, NUL, EPT, COM, COM1 to COM4, LPT, LPT1 to LPT4; else 0 ("CON.TXT",
/// "COM5" and null give 0).
TARN_API int TarnIsReservedDeviceName(const char* pszName);

/// 1 if both paths denote the same path: same root, and directory, name and
/// extension equal ignoring case, existing paths compared in their short
/// (8.3) form, others as written; an empty extension equals ".". Nothing is
/// canonicalized. Paths must be shorter than 260 bytes and each part shorter
/// than 256.
TARN_API int TarnPathIsEqual(const char* pszPath1, const char* pszPath2);

/// 1 if the file names and extensions of both (directories ignored) are equal
/// ignoring case; an empty extension equals ".". 0 when either is null or
/// shorter than 2 bytes.
TARN_API int TarnFilenameIsEqual(const char* pszPath1, const char* pszPath2);

/// 1 if both paths have the same root (drive, or UNC server and share); 0 when
/// either is null or shorter than 2 bytes. Paths are cut at 259 bytes.
TARN_API int TarnDriveIsEqual(const char* pszPath1, const char* pszPath2);

/// Nonzero if the volume at root `pszRoot` (such as "D:\") answers, else 0;
/// no prompt is shown for an empty removable drive. Null asks for the root of
/// the current directory. Changes the process error mode for the length of
/// one platform call.
TARN_API int TarnDeviceIsReady(const char* pszRoot);

/// @}

// ---------------------------------------------------------------------------
/// \name Files and directories.
/// Every operation here ends with the error out-parameters described in
/// tarn/core.h (pdwError, pszError, cchError), clears them on entry and, when a
/// platform call fails, stores that call's last error and its system text. A
/// failure the library detects itself (a null or empty path, a short transfer,
/// an entry of the wrong kind) gives the failure value with code 0 and an empty
/// text. Paths are converted to UTF-16 in the thread's ANSI code page; a failed
/// conversion throws ATL::CAtlException. Handles returned belong to the caller.
// ---------------------------------------------------------------------------
/// @{

/// Opens or creates `pszPath` with CreateFileW. Note the argument order:
/// access, disposition, flags and attributes, share mode (the platform's order
/// is access, share, security, disposition, flags). No security attributes, no
/// template. Returns the file handle (close it with CloseHandle), or
/// INVALID_HANDLE_VALUE. Without a message buffer the thread's last error
/// after a failure is still the one the failed open left.
TARN_API HANDLE TarnFileCreate(const char* pszPath, DWORD dwDesiredAccess,
                               DWORD dwCreationDisposition, DWORD dwFlagsAndAttributes,
                               DWORD dwShareMode, DWORD* pdwError, char* pszError,
                               DWORD cchError);

/// The same operation as TarnFileCreate, in every respect.
TARN_API HANDLE TarnFileOpen(const char* pszPath, DWORD dwDesiredAccess,
                             DWORD dwCreationDisposition, DWORD dwFlagsAndAttributes,
                             DWORD dwShareMode, DWORD* pdwError, char* pszError, DWORD cchError);

/// Reads exactly `dwCount` bytes at the file position: 1 when all of them came.
/// A read that stops early (end of file) returns 0 with code 0: the bytes read
/// are in `pBuffer` and the position has advanced past them, but their number
/// is not given back.
TARN_API int TarnFileRead(HANDLE hFile, void* pBuffer, DWORD dwCount, DWORD* pdwError,
                          char* pszError, DWORD cchError);

/// Writes exactly `dwCount` bytes at the file position: 1 when all were
/// written; fewer is 0 with code 0.
TARN_API int TarnFileWrite(HANDLE hFile, const void* pBuffer, DWORD dwCount, DWORD* pdwError,
                           char* pszError, DWORD cchError);

/// Moves the file position to the end of the file. 1 or 0.
TARN_API int TarnFileSeekEnd(HANDLE hFile, DWORD* pdwError, char* pszError, DWORD cchError);

/// Moves the file position to `lPosition` bytes from the start (no high part:
/// a negative position fails with the platform's code). 1 or 0.
TARN_API int TarnFileSeek(HANDLE hFile, LONG lPosition, DWORD* pdwError, char* pszError,
                          DWORD cchError);

/// The low 32 bits of the file's size as a signed number, or -1 on failure.
/// Sizes of 2 GiB and more come back negative, and the high part is dropped:
/// 4 GiB + 10 bytes gives 10.
TARN_API int TarnFileSize(HANDLE hFile, DWORD* pdwError, char* pszError, DWORD cchError);

/// The same for the file at `pszPath`, opened for reading (sharing reading and
/// writing) just for the query.
TARN_API int TarnFileSize(const char* pszPath, DWORD* pdwError, char* pszError,
                          DWORD cchError);

/// 1 if a file, not a directory, matches `pszPath` (wildcards allowed: the
/// first match decides). A directory gives 0 with code 0; nothing there gives
/// 0 with the search's code (such as ERROR_FILE_NOT_FOUND).
TARN_API int TarnFileFind(const char* pszPath, DWORD* pdwError, char* pszError, DWORD cchError);

/// Makes the file or directory hidden by replacing its whole attribute set
/// with FILE_ATTRIBUTE_HIDDEN: read-only, system, archive and the rest are
/// cleared. An entry already hidden is left as it is. 1 or 0.
TARN_API int TarnFileHide(const char* pszPath, DWORD* pdwError, char* pszError, DWORD cchError);

/// Moves a file (never a directory: 0 with code 0). On the same root
/// (TarnDriveIsEqual) it is renamed and an existing destination makes it fail
/// (ERROR_ALREADY_EXISTS); across roots it is copied over any existing
/// destination, then the source is deleted. When the copy succeeds and the
/// delete fails, both files remain and 0 is returned with the delete's code.
TARN_API int TarnFileMove(const char* pszSource, const char* pszDestination, DWORD* pdwError,
                          char* pszError, DWORD cchError);

/// Looks up the directory `pszPath`; one trailing backslash is ignored
/// ("D:\dir\" searches for "D:\dir"). Returns the open search handle when the
/// entry found is a directory (close it with FindClose); INVALID_HANDLE_VALUE
/// when nothing is found (with the search's code) or the entry is a file (code
/// 0). When an entry is found, *pFindData receives its attributes, times and
/// size, and its names converted to narrow text, cut to 259 and 13 bytes;
/// dwReserved0 and dwReserved1 are not written. After a failed search the
/// record's contents are unspecified. A null or empty path or a null record
/// gives INVALID_HANDLE_VALUE with code 0.
TARN_API HANDLE TarnDirectoryFind(const char* pszPath, WIN32_FIND_DATAA* pFindData,
                                  DWORD* pdwError, char* pszError, DWORD cchError);

/// 1 if `pszPath` names an existing directory (as TarnDirectoryFind), else 0
/// with what the search reported.
TARN_API int TarnDirectoryExist(const char* pszPath, DWORD* pdwError, char* pszError,
                                DWORD cchError);

/// Creates the directory `pszPath` and every missing directory above it.
/// Level by level: D:\a\b\c creates D:\a, D:\a\b, D:\a\b\c (\\srv\share\dir
/// tries \, \\srv and \\srv\share first). Only a failure of the last level
/// counts, and not when it exists already (as a directory or a file). Each
/// directory this call creates gets its attributes changed to
/// (current & ~dwClear) | dwSet when either is nonzero; directories that
/// existed are not touched. Returns 1 at once for a bare drive of up to three
/// bytes (D:, D:\); 0 with code 0 for null, a path under 2 bytes or a path
/// without a backslash.
TARN_API int TarnDirectoryCreateAttr(const char* pszPath, DWORD dwSet, DWORD dwClear,
                                     DWORD* pdwError, char* pszError, DWORD cchError);

/// TarnDirectoryCreateAttr without attribute changes.
TARN_API int TarnDirectoryCreate(const char* pszPath, DWORD* pdwError, char* pszError,
                                 DWORD cchError);

/// @}

// ---------------------------------------------------------------------------
/// \name Temporary files and known folders.
/// Texts are copied into caller buffers whose size (cch...) counts bytes,
/// terminator included. None of these has error out-parameters but
/// TarnCreateTempFile.
// ---------------------------------------------------------------------------
/// @{

/// The directory for temporary files: TMP, else TEMP, each in its long form
/// when the path exists (as written otherwise, trailing backslash or not);
/// when neither is set, "<system directory>\~Temp", which is created. Repairs
/// the process environment: with only TEMP set, TMP is set to TEMP's value;
/// with neither, both are set to the "~Temp" directory. The buffer is zeroed,
/// then receives the path, cut to cchBuffer - 1 bytes. Returns the full length
/// of the path (a result >= cchBuffer means it was cut), 0 for a null buffer,
/// a size of 0 or no system directory. TEMP (when TMP is missing) is used for
/// TMP only up to 516 bytes; the long form must fit in 520 bytes.
TARN_API DWORD TarnTempDirectory(char* pszBuffer, DWORD cchBuffer);

/// A fresh temporary file name from the runtime's _tempnam for `pszDirectory`
/// (at most 260 bytes of it; null: TarnTempDirectory) and `pszPrefix` (may be
/// null). _tempnam prefers the directory in TMP when that exists. No file is
/// created. The buffer is zeroed and receives the name cut to cchBuffer - 1
/// bytes; returns the name's full length, or 0 (null buffer, size 0, no name).
TARN_API DWORD TarnTempFilename(char* pszBuffer, DWORD cchBuffer, const char* pszDirectory,
                                const char* pszPrefix);

/// Creates a file under a name from TarnTempFilename with TarnFileCreate (same
/// argument order and reporting). When the name would be 260 bytes or more,
/// returns INVALID_HANDLE_VALUE without touching the error out-parameters, not
/// even clearing them. There is no retry: with CREATE_NEW an existing name
/// fails.
TARN_API HANDLE TarnCreateTempFile(const char* pszDirectory, const char* pszPrefix,
                                   DWORD dwDesiredAccess, DWORD dwCreationDisposition,
                                   DWORD dwFlagsAndAttributes, DWORD dwShareMode,
                                   DWORD* pdwError, char* pszError, DWORD cchError);

/// The directory of module `hModule` (null: the process's executable), without
/// a trailing backslash. 1 on success. 0 with the buffer untouched for
/// INVALID_HANDLE_VALUE, a null buffer or size 0; 0 with an empty buffer for a
/// module without a path and for a buffer too small for the whole directory
/// and its terminator (nothing cut is handed out).
TARN_API int TarnGetModulePath(HINSTANCE hModule, char* pszBuffer, DWORD cchBuffer);

/// The path of the shell folder `nFolder` (a CSIDL value), created when
/// missing, always ending in a backslash. The buffer must hold MAX_PATH
/// characters: with fewer (or null) returns 0 and leaves it untouched. Returns
/// 0 when SHGetFolderPathA is found neither in Shell32.dll nor in SHFolder.dll
/// or the folder has neither a current nor a default path.
TARN_API int TarnGetFolderPath(int nFolder, char* pszBuffer, DWORD cchBuffer);

/// @}

// ---------------------------------------------------------------------------
/// \name Directory links (junctions) and free disk space.
// ---------------------------------------------------------------------------
/// @{

/// Turns the directory `pszLink` into a link to the directory `pszTarget` (an
/// NTFS junction: a mount-point reparse point whose substitute name is
/// "\??\" and the target's full path, a trailing backslash removed unless it
/// follows a colon, so "\??\D:\" keeps it). The link directory is created
/// when missing; an existing one must be empty for the request to succeed. An
/// existing reparse point is never replaced. With `bTry` nonzero every step
/// but the final request runs, and a directory this call created is removed
/// again: 1 then says a link could be made there.
/// Returns 1 on success; 0 for a null or empty argument, a link path without
/// a backslash, a volume without reparse-point support (FAT; every Wine
/// volume), a failed full-path look-up, an existing reparse point, a link
/// directory that cannot be created or opened (one this call created then
/// stays), or a failed request (a directory this call created is removed).
/// Stores no error code. Paths are converted in the thread's ANSI code page
/// (a failed conversion throws ATL::CAtlException). Limits: the link's first
/// backslash within its first 259 bytes; full paths of link and target under
/// 256 characters (longer ones give 0).
TARN_API int TarnMakeDirectoryLink(const char* pszLink, const char* pszTarget, int bTry);

/// The free space of the drive of `pszPath` available to the calling user
/// (quotas count), in bytes: the drive letter is taken from the path (D:\x,
/// D: and d:\ all ask about D:), so UNC and relative paths have none.
/// Uses GetDiskFreeSpaceExA, looked up in KERNEL32.DLL on the first call that
/// gets past the argument checks and never again; where it is missing,
/// bytes per sector x sectors per cluster x free clusters from
/// GetDiskFreeSpaceA. Returns 1 with *pFreeBytes set; 0 with code 0 for a null
/// or empty path, a null pFreeBytes or a path without a drive letter; 0 with
/// the platform's code and text when the query fails (3 for a drive letter
/// without a volume).
TARN_API int TarnFreeDiskSpace(const char* pszPath, ULARGE_INTEGER* pFreeBytes, DWORD* pdwError,
                               char* pszError, DWORD cchError);

/// TarnFreeDiskSpace in whole mebibytes (bytes / 1,048,576, the remainder
/// discarded; 1,048,575 bytes give 0 and the result 1). *pdwFreeMB is set to 0
/// on entry. A null pdwFreeMB gives 0 with code 0. On every other failure the
/// code is the thread's last error read after the query, with its text: the
/// platform's code for a failed query, whatever the thread last had for a
/// path without a drive.
TARN_API int TarnFreeDiskSpaceMB(const char* pszPath, DWORD* pdwFreeMB, DWORD* pdwError,
                                 char* pszError, DWORD cchError);

extern "C" {
/// TarnFreeDiskSpace without error out-parameters, exported under this
/// undecorated name; its own once-only look-up. Every failure gives 0.
TARN_API int TarnFreeDiskSpaceC(const char* pszPath, ULARGE_INTEGER* pFreeBytes);
/// TarnFreeDiskSpaceMB without error out-parameters, exported under this
/// undecorated name; shares TarnFreeDiskSpaceC's look-up. Every failure gives 0.
TARN_API int TarnFreeDiskSpaceMBC(const char* pszPath, DWORD* pdwFreeMB);
}
/// @}

#endif  // TARN_FILES_H

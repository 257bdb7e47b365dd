// Tarn: paths, files and directories.
//
// All paths and names are narrow, NUL-terminated text in the calling thread's
// ANSI code page (double-byte code pages included), owned by the caller.
#ifndef TARN_FILES_H
#define TARN_FILES_H

#include <windows.h>

#include "tarn/core.h"
#include "tarn/tarn_export.h"

// ---------------------------------------------------------------------------
// Path and file-name rules. None of these reports errors: a failed platform
// call or an unusable argument (null, empty) gives 0. Those that convert text
// to UTF-16 (TarnPathIsValid, TarnDriveIsEqual, TarnPathIsEqual,
// TarnDeviceIsReady) may throw ATL::CAtlException.
// ---------------------------------------------------------------------------

// 1 if `pszPath` is well formed and on a usable drive, else 0.
// Valid: canonical form ("." and ".." resolved) at most 260 bytes; a drive of
// a known type (removable drives only when bAllowRemovable is nonzero) or a
// UNC path, which is never typed; no doubled backslash but a leading UNC
// prefix; not drive-relative (D:dir); every character valid in a long or
// short name or a separator (no wildcards); a colon only as the second
// character; not all spaces.
// *pbRemovable (if given) is set to 0 on entry and to 1 when the path's drive
// is removable, whether or not that is allowed; UNC paths leave it 0.
TARN_API int TarnPathIsValid(const char* pszPath, int bAllowRemovable, int* pbRemovable);

// 1 if `pszFilename` is a usable file name: not null or empty, every
// character valid in a long or short file name (no separator, wildcard or
// invalid character), not all spaces. Reserved device names are not examined.
TARN_API int TarnFilenameIsValid(const char* pszFilename);

// Rewrites `pszFilename` in place: each character none of whose character
// classes (GCT_LFNCHAR 0x1, GCT_SHORTCHAR 0x2, GCT_WILD 0x4, GCT_SEPARATOR
// 0x8) is in `dwAccept` has its first byte replaced by `cReplace`. Returns
// the number of characters replaced (0 for null or empty). With dwAccept 0x3
// the result passes TarnFilenameIsValid unless it is all spaces.
TARN_API UINT TarnReplaceInvalidFilenameCharacters(char* pszFilename, char cReplace,
                                                   UINT dwAccept);

// 1 if the whole of `pszName` is, ignoring case, one of AUX, CON, CLOCK$,
// PRN, NUL, EPT, COM, COM1 to COM4, LPT, LPT1 to LPT4; else 0 ("CON.TXT",
// "COM5" and null give 0).
TARN_API int TarnIsReservedDeviceName(const char* pszName);

// 1 if both paths denote the same path: same root, and directory, name and
// extension equal ignoring case, existing paths compared in their short
// (8.3) form, others as written; an empty extension equals ".". Nothing is
// canonicalized. Paths must be shorter than 260 bytes and each part shorter
// than 256.
TARN_API int TarnPathIsEqual(const char* pszPath1, const char* pszPath2);

// 1 if the file names and extensions of both (directories ignored) are equal
// ignoring case; an empty extension equals ".". 0 when either is null or
// shorter than 2 bytes.
TARN_API int TarnFilenameIsEqual(const char* pszPath1, const char* pszPath2);

// 1 if both paths have the same root (drive, or UNC server and share); 0 when
// either is null or shorter than 2 bytes. Paths are cut at 259 bytes.
TARN_API int TarnDriveIsEqual(const char* pszPath1, const char* pszPath2);

// Nonzero if the volume at root `pszRoot` (such as "D:\") answers, else 0;
// no prompt is shown for an empty removable drive. Null asks for the root of
// the current directory. Changes the process error mode for the length of
// one platform call.
TARN_API int TarnDeviceIsReady(const char* pszRoot);

#endif  // TARN_FILES_H

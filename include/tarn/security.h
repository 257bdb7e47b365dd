/// \file
/// Tarn: access-control entries on files and registry keys, group membership
/// and file access checks.
///
/// The security functions of the NT platform are found at run time in
/// "Advapi32.dll", which each call loads and frees itself; a missing function
/// makes the operation fail (or take the fallback stated below). None of these
/// functions has error out-parameters: they answer by result alone, and every
/// platform record they obtain (descriptor, SID, list, token, library) is
/// released before they return.
///
/// A built-in group is the alias S-1-5-32-r: authority SECURITY_NT_AUTHORITY,
/// sub-authorities SECURITY_BUILTIN_DOMAIN_RID (0x20) and the relative
/// identifier r (DOMAIN_ALIAS_RID_ADMINS 0x220, DOMAIN_ALIAS_RID_USERS 0x221,
/// DOMAIN_ALIAS_RID_GUESTS 0x222, ...).
#ifndef TARN_SECURITY_H
#define TARN_SECURITY_H

#include <windows.h>

#include <accctrl.h>

#include "tarn/tarn_export.h"

// ---------------------------------------------------------------------------
/// \name Access-control entries
// ---------------------------------------------------------------------------
/// @{

/// Merges one entry for a trustee into the discretionary access-control list
/// (DACL) of a named object and stores the new list:
///   pszObjectName       a file or directory path, or a registry key in the
///                       platform's form for named objects
///                       ("CURRENT_USER\Software\Example",
///                       "MACHINE\SOFTWARE\Example"); 1 to 515 characters
///   ObjectType          SE_FILE_OBJECT, SE_REGISTRY_KEY or any other type
///                       GetNamedSecurityInfoA accepts
///   pAuthority          the SID's identifier authority; required
///   pdwSubAuthorities   the SID's sub-authorities; required, even when
///                       nSubAuthorityCount is 0 (the SID of the authority
///                       alone)
///   nSubAuthorityCount  0 to 8
///   dwAccessMask        the entry's access mask (GENERIC_READ, GENERIC_ALL...)
///   AccessMode          GRANT_ACCESS, SET_ACCESS, DENY_ACCESS, REVOKE_ACCESS
///   dwInheritance       the entry's inheritance flags (NO_INHERITANCE,
///                       SUB_CONTAINERS_AND_OBJECTS_INHERIT...)
/// The current list is read (GetNamedSecurityInfoA), the entry merged into a
/// copy by the platform's rules for the access mode (SetEntriesInAclA: a grant
/// goes first, a revoke removes every entry of the trustee; other trustees'
/// entries remain) and the copy written back (SetNamedSecurityInfoA with
/// DACL_SECURITY_INFORMATION alone, so the list's protection against
/// inheritance stays as it was).
/// 1 when the new list was stored. 0, with the object unchanged, for a null or
/// empty name, a name of 516 characters or more, a null authority or
/// sub-authority array, a count above 8, a missing object, a missing platform
/// function or any failing platform call; the platform's code is dropped.
/// Two calls changing the same object at the same time can lose one change.
TARN_API int TarnSetNamedSecurityInfo(const char* pszObjectName, SE_OBJECT_TYPE ObjectType,
                                      PSID_IDENTIFIER_AUTHORITY pAuthority,
                                      const DWORD* pdwSubAuthorities, BYTE nSubAuthorityCount,
                                      DWORD dwAccessMask, ACCESS_MODE AccessMode,
                                      DWORD dwInheritance);

/// TarnSetNamedSecurityInfo on a file or directory path (SE_FILE_OBJECT) for
/// the built-in group r.
TARN_API int TarnSetFileSecurityInfo(const char* pszPath, DWORD dwRid, DWORD dwAccessMask,
                                     ACCESS_MODE AccessMode, DWORD dwInheritance);

/// TarnSetFileSecurityInfo on `pszPath` with a backslash appended unless it
/// ends in one (PathAddBackslashA; "C:\Data" becomes "C:\Data\"). 0 for a null
/// or empty path, or one too long for that (515 characters or more, or more
/// than PathAddBackslashA handles).
TARN_API int TarnSetFileGroupSecurityInfo(const char* pszPath, DWORD dwRid, DWORD dwAccessMask,
                                          ACCESS_MODE AccessMode, DWORD dwInheritance);

/// TarnSetNamedSecurityInfo on a registry key (SE_REGISTRY_KEY), any trustee.
TARN_API int TarnSetRegistryKeySecurityInfo(const char* pszKeyName,
                                            PSID_IDENTIFIER_AUTHORITY pAuthority,
                                            const DWORD* pdwSubAuthorities,
                                            BYTE nSubAuthorityCount, DWORD dwAccessMask,
                                            ACCESS_MODE AccessMode, DWORD dwInheritance);

/// TarnSetNamedSecurityInfo on a registry key (SE_REGISTRY_KEY) for the
/// built-in group r.
TARN_API int TarnSetRegistryKeyGroupSecurityInfo(const char* pszKeyName, DWORD dwRid,
                                                 DWORD dwAccessMask, ACCESS_MODE AccessMode,
                                                 DWORD dwInheritance);

/// @}

// ---------------------------------------------------------------------------
/// \name Membership and access checks
// ---------------------------------------------------------------------------
/// @{

/// Whether a thread's token holds the built-in group r as an enabled group,
/// found by an access check (AccessCheck) against a descriptor made for the
/// purpose: its only entry allows the group dwAccessMask, mapped through the
/// file-like generic mapping {0x20094, 0x20028, 0x20004, 0xF01FF}.
/// The calling thread impersonates itself (ImpersonateSelf,
/// SecurityImpersonation) for the length of the call; the token is opened for
/// querying from hThread first, and from hFallbackThread when hThread is null
/// or has no token (ERROR_NO_TOKEN). Passing the calling thread's own handle
/// as hThread always finds the impersonation token.
/// Returns 1 when the check was made, `bIsMember` then nonzero exactly when the
/// token holds the group. 0 with `bIsMember` 0 when both handles are null, no
/// token could be opened, or a platform function is missing or fails.
/// Outside the NT platform every caller passes: 1 with `bIsMember` 1.
/// Whatever the outcome, the call ends with RevertToSelf, which ends any
/// impersonation of the calling thread, the caller's own included.
TARN_API int TarnCheckProcessGroupSecurityInfo(HANDLE hFallbackThread, HANDLE hThread,
                                               DWORD dwRid, DWORD dwAccessMask, int& bIsMember);

/// Whether `hToken` (null: the calling thread's own token) holds the built-in
/// group r: CheckTokenMembership, its result returned and its verdict stored
/// in `*pbIsMember` (an impersonation token is required; a primary token fails
/// with ERROR_NO_IMPERSONATION_TOKEN).
/// Where CheckTokenMembership is missing, the token's groups are read
/// (GetTokenInformation, TokenGroups; a null or invalid token means the
/// thread's token, else the process's) and the first group with the SID
/// decides: `*pbIsMember` becomes its attributes masked with SE_GROUP_ENABLED,
/// so 4 for an enabled group and 0 for one present but disabled; the result is
/// then 1 even when the token's groups could not be read.
/// 0 with `*pbIsMember` 0 outside the NT platform or when the SID cannot be
/// made; 0, touching nothing, when pbIsMember is null.
TARN_API int TarnCheckTokenMembership(HANDLE hToken, DWORD dwRid, int* pbIsMember);

/// The answer of TarnChkDesiredAccess.
enum TARN_CHKDESIREDACCESS {
  TARN_DESIREDACCESS_GRANTED = 0,      ///< the file opened with the access asked for
  TARN_DESIREDACCESS_DENIED = 1,       ///< access denied or medium write-protected
  TARN_DESIREDACCESS_INUSE = 2,        ///< the file is open elsewhere or locked
  TARN_DESIREDACCESS_UNAVAILABLE = 3,  ///< the drive, network path or device is out of reach
  TARN_DESIREDACCESS_ERROR = 4,        ///< no path, or any other failure
};

/// What keeps the caller from opening the existing file `pszPath` with
/// `dwDesiredAccess` (GENERIC_READ, GENERIC_WRITE, ...): the file is opened
/// for exclusive use (share mode 0) and closed again at once, and a failure is
/// classified by its code:
///   ERROR_ACCESS_DENIED, ERROR_WRITE_PROTECT          DENIED
///   ERROR_SHARING_VIOLATION, ERROR_LOCK_VIOLATION     INUSE (also for reading)
///   the network codes 53, 54, 55, 64, 65, 71, 88      UNAVAILABLE
///   file, path or drive not found                     ERROR on a UNC path or
///       on a drive whose root exists (a missing file), else UNAVAILABLE (a
///       drive without a volume, a path without a root)
///   anything else, and a null or empty path           ERROR
TARN_API TARN_CHKDESIREDACCESS TarnChkDesiredAccess(const char* pszPath, DWORD dwDesiredAccess);
/// @}

#endif  // TARN_SECURITY_H

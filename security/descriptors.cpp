// One access-control entry merged into the list of a named object: read the
// list, merge, write it back.
#include <windows.h>

#include <aclapi.h>
#include <shlwapi.h>
#include <string.h>

#include "security/advapi.h"
#include "tarn/security.h"

namespace {

// Names are copied into a buffer of this size, terminator included.
constexpr size_t kNameBuffer = 516;
constexpr BYTE kMaxSubAuthorities = 8;

bool IsEmpty(const char* text) { return !text || !*text; }

int SetGroupEntry(const char* name, SE_OBJECT_TYPE type, DWORD rid, DWORD mask, ACCESS_MODE mode,
                  DWORD inheritance) {
  SID_IDENTIFIER_AUTHORITY ntAuthority = SECURITY_NT_AUTHORITY;
  const DWORD group[] = {SECURITY_BUILTIN_DOMAIN_RID, rid};
  return TarnSetNamedSecurityInfo(name, type, &ntAuthority, group, 2, mask, mode, inheritance);
}

}  // namespace

int TarnSetNamedSecurityInfo(const char* pszObjectName, SE_OBJECT_TYPE ObjectType,
                             PSID_IDENTIFIER_AUTHORITY pAuthority, const DWORD* pdwSubAuthorities,
                             BYTE nSubAuthorityCount, DWORD dwAccessMask, ACCESS_MODE AccessMode,
                             DWORD dwInheritance) {
  if (IsEmpty(pszObjectName) || !pAuthority || !pdwSubAuthorities ||
      nSubAuthorityCount > kMaxSubAuthorities)
    return 0;
  // SetNamedSecurityInfoA takes the name as writable text.
  char name[kNameBuffer] = {};
  const size_t length = strlen(pszObjectName);
  if (length >= kNameBuffer) return 0;
  memcpy(name, pszObjectName, length);

  // Released in reverse: descriptor, new list, SID, library last.
  const tarn::UniqueModule advapi = tarn::LoadAdvapi();
  if (!advapi) return 0;
  tarn::UniqueSid sid;
  tarn::UniqueLocal newList, descriptor;

  const auto getNamed = TARN_ADVAPI(advapi.get(), GetNamedSecurityInfoA);
  if (!getNamed) return 0;
  PACL currentList = nullptr;  // inside the descriptor; may stay null
  PSECURITY_DESCRIPTOR rawDescriptor = nullptr;
  if (getNamed(name, ObjectType, DACL_SECURITY_INFORMATION, nullptr, nullptr, &currentList,
               nullptr, &rawDescriptor) != ERROR_SUCCESS)
    return 0;
  descriptor.reset(rawDescriptor);

  sid = tarn::MakeSid(advapi.get(), pAuthority, pdwSubAuthorities, nSubAuthorityCount);
  if (!sid) return 0;

  const auto buildTrustee = TARN_ADVAPI(advapi.get(), BuildTrusteeWithSidA);
  if (!buildTrustee) return 0;
  EXPLICIT_ACCESS_A entry = {};
  entry.grfAccessPermissions = dwAccessMask;
  entry.grfAccessMode = AccessMode;
  entry.grfInheritance = dwInheritance;
  buildTrustee(&entry.Trustee, sid.get());

  const auto setEntries = TARN_ADVAPI(advapi.get(), SetEntriesInAclA);
  if (!setEntries) return 0;
  PACL rawList = nullptr;
  if (setEntries(1, &entry, currentList, &rawList) != ERROR_SUCCESS) return 0;
  newList.reset(rawList);

  const auto setNamed = TARN_ADVAPI(advapi.get(), SetNamedSecurityInfoA);
  if (!setNamed) return 0;
  return setNamed(name, ObjectType, DACL_SECURITY_INFORMATION, nullptr, nullptr, rawList,
                  nullptr) == ERROR_SUCCESS;
}

int TarnSetFileSecurityInfo(const char* pszPath, DWORD dwRid, DWORD dwAccessMask,
                            ACCESS_MODE AccessMode, DWORD dwInheritance) {
  return SetGroupEntry(pszPath, SE_FILE_OBJECT, dwRid, dwAccessMask, AccessMode, dwInheritance);
}

int TarnSetFileGroupSecurityInfo(const char* pszPath, DWORD dwRid, DWORD dwAccessMask,
                                 ACCESS_MODE AccessMode, DWORD dwInheritance) {
  if (IsEmpty(pszPath)) return 0;
  // PathAddBackslashA needs room for the backslash and the terminator.
  char folder[kNameBuffer] = {};
  const size_t length = strlen(pszPath);
  if (length >= kNameBuffer - 1) return 0;
  memcpy(folder, pszPath, length);
  if (!::PathAddBackslashA(folder)) return 0;
  return TarnSetFileSecurityInfo(folder, dwRid, dwAccessMask, AccessMode, dwInheritance);
}

int TarnSetRegistryKeySecurityInfo(const char* pszKeyName, PSID_IDENTIFIER_AUTHORITY pAuthority,
                                   const DWORD* pdwSubAuthorities, BYTE nSubAuthorityCount,
                                   DWORD dwAccessMask, ACCESS_MODE AccessMode,
                                   DWORD dwInheritance) {
  return TarnSetNamedSecurityInfo(pszKeyName, SE_REGISTRY_KEY, pAuthority, pdwSubAuthorities,
                                  nSubAuthorityCount, dwAccessMask, AccessMode, dwInheritance);
}

int TarnSetRegistryKeyGroupSecurityInfo(const char* pszKeyName, DWORD dwRid, DWORD dwAccessMask,
                                        ACCESS_MODE AccessMode, DWORD dwInheritance) {
  return SetGroupEntry(pszKeyName, SE_REGISTRY_KEY, dwRid, dwAccessMask, AccessMode,
                       dwInheritance);
}

// The caller's rights: group membership through an access check or the
// token's groups, and what keeps a file from opening.
#include <windows.h>

#include <shlwapi.h>
#include <string.h>

#include <vector>

#include "security/advapi.h"
#include "tarn/files.h"
#include "tarn/security.h"
#include "tarn/version.h"

namespace {

// Generic rights of the descriptor made for the access check, as for files.
GENERIC_MAPPING FileLikeMapping() { return {0x00020094, 0x00020028, 0x00020004, 0x000F01FF}; }

constexpr DWORD kDescriptorSize = 40;
constexpr DWORD kAclHeaderAndAce = 16;
constexpr DWORD kPrivilegeSetSize = 20;

bool IsNTPlatform() { return CTarnSystemVersionInfo().IsWinNTPlatform() != 0; }

// A token for querying of `thread`; empty when it has none or cannot be had.
tarn::UniqueHandle OpenThreadTokenOf(decltype(&::OpenThreadToken) openThreadToken, HANDLE thread) {
  HANDLE token = nullptr;
  if (!openThreadToken(thread, TOKEN_QUERY, FALSE, &token)) return {};
  return tarn::UniqueHandle(token);
}

// The descriptor whose only entry allows the group `sid` the mapped `mask`,
// with the group as its owner and group; `list` receives its DACL. Empty when
// a step fails or the result is not valid.
tarn::UniqueLocal MakeGroupDescriptor(HMODULE advapi, PSID sid, DWORD mask,
                                      tarn::UniqueLocal& list) {
  const auto initializeDescriptor = TARN_ADVAPI(advapi, InitializeSecurityDescriptor);
  const auto initializeAcl = TARN_ADVAPI(advapi, InitializeAcl);
  const auto mapGenericMask = TARN_ADVAPI(advapi, MapGenericMask);
  const auto addAllowed = TARN_ADVAPI(advapi, AddAccessAllowedAce);
  const auto setDacl = TARN_ADVAPI(advapi, SetSecurityDescriptorDacl);
  const auto setGroup = TARN_ADVAPI(advapi, SetSecurityDescriptorGroup);
  const auto setOwner = TARN_ADVAPI(advapi, SetSecurityDescriptorOwner);
  const auto isValid = TARN_ADVAPI(advapi, IsValidSecurityDescriptor);
  if (!initializeDescriptor || !initializeAcl || !mapGenericMask || !addAllowed || !setDacl ||
      !setGroup || !setOwner || !isValid)
    return {};

  tarn::UniqueLocal descriptor(::LocalAlloc(LPTR, kDescriptorSize));
  if (!descriptor || !initializeDescriptor(descriptor.get(), SECURITY_DESCRIPTOR_REVISION))
    return {};
  const DWORD listSize = kAclHeaderAndAce + ::GetLengthSid(sid);
  list.reset(::LocalAlloc(LPTR, listSize));
  const auto acl = static_cast<PACL>(list.get());
  if (!acl || !initializeAcl(acl, listSize, ACL_REVISION)) return {};
  GENERIC_MAPPING mapping = FileLikeMapping();
  mapGenericMask(&mask, &mapping);
  if (!addAllowed(acl, ACL_REVISION, mask, sid) ||
      !setDacl(descriptor.get(), TRUE, acl, FALSE))
    return {};
  setGroup(descriptor.get(), sid, FALSE);
  setOwner(descriptor.get(), sid, FALSE);
  if (!isValid(descriptor.get())) return {};
  return descriptor;
}

// Membership read from the token's groups, for systems without
// CheckTokenMembership: the attributes of the first group with the SID,
// masked with SE_GROUP_ENABLED; 0 when the groups cannot be read.
int GroupAttributesByHand(HMODULE advapi, HANDLE token, PSID sid) {
  tarn::UniqueHandle opened;
  if (!token || token == INVALID_HANDLE_VALUE) {
    if (const auto openThreadToken = TARN_ADVAPI(advapi, OpenThreadToken))
      opened = OpenThreadTokenOf(openThreadToken, ::GetCurrentThread());
    const auto openProcessToken = TARN_ADVAPI(advapi, OpenProcessToken);
    HANDLE processToken = nullptr;
    if (!opened && openProcessToken &&
        openProcessToken(::GetCurrentProcess(), TOKEN_QUERY, &processToken))
      opened.reset(processToken);
    token = opened.get();
  }
  const auto getInformation = TARN_ADVAPI(advapi, GetTokenInformation);
  const auto equalSid = TARN_ADVAPI(advapi, EqualSid);
  if (!token || !getInformation || !equalSid) return 0;

  DWORD size = 0;
  if (!getInformation(token, TokenGroups, nullptr, 0, &size) &&
      ::GetLastError() != ERROR_INSUFFICIENT_BUFFER)
    return 0;
  const tarn::UniqueLocal buffer(::LocalAlloc(LPTR, size));
  if (!buffer || !getInformation(token, TokenGroups, buffer.get(), size, &size)) return 0;
  const auto* groups = static_cast<const TOKEN_GROUPS*>(buffer.get());
  for (DWORD i = 0; i < groups->GroupCount; ++i)
    if (equalSid(groups->Groups[i].Sid, sid))
      return static_cast<int>(groups->Groups[i].Attributes & SE_GROUP_ENABLED);
  return 0;
}

bool IsNotFound(DWORD error) {
  return error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND ||
         error == ERROR_INVALID_DRIVE;
}

// A path that was not found: a missing file where its drive (or network
// share) exists, an unreachable place where the root is missing or unknown.
TARN_CHKDESIREDACCESS ClassifyNotFound(const char* path) {
  if (::PathIsUNCA(path)) return TARN_DESIREDACCESS_ERROR;
  std::vector<char> root(path, path + strlen(path) + 1);
  if (::PathStripToRootA(root.data()) && ::GetDriveTypeA(root.data()) > DRIVE_NO_ROOT_DIR)
    return TARN_DESIREDACCESS_ERROR;
  return TARN_DESIREDACCESS_UNAVAILABLE;
}

TARN_CHKDESIREDACCESS Classify(DWORD error, const char* path) {
  if (IsNotFound(error)) return ClassifyNotFound(path);
  switch (error) {
    case ERROR_ACCESS_DENIED:
    case ERROR_WRITE_PROTECT:
      return TARN_DESIREDACCESS_DENIED;
    case ERROR_SHARING_VIOLATION:
    case ERROR_LOCK_VIOLATION:
      return TARN_DESIREDACCESS_INUSE;
    case ERROR_BAD_NETPATH:
    case ERROR_NETWORK_BUSY:
    case ERROR_DEV_NOT_EXIST:
    case ERROR_NETNAME_DELETED:
    case ERROR_NETWORK_ACCESS_DENIED:
    case ERROR_REQ_NOT_ACCEP:
    case ERROR_NET_WRITE_FAULT:
      return TARN_DESIREDACCESS_UNAVAILABLE;
    default:
      return TARN_DESIREDACCESS_ERROR;
  }
}

}  // namespace

int TarnCheckProcessGroupSecurityInfo(HANDLE hFallbackThread, HANDLE hThread, DWORD dwRid,
                                      DWORD dwAccessMask, int& bIsMember) {
  if (!IsNTPlatform()) {  // without NT security every caller passes
    bIsMember = 1;
    return 1;
  }
  bIsMember = 0;
  if (!hThread && !hFallbackThread) return 0;
  // Released in reverse: list, descriptor, SID, token, impersonation, library.
  const tarn::UniqueModule advapi = tarn::LoadAdvapi();
  if (!advapi) return 0;
  const auto impersonateSelf = TARN_ADVAPI(advapi.get(), ImpersonateSelf);
  if (!impersonateSelf || !impersonateSelf(SecurityImpersonation)) return 0;
  const tarn::UniqueImpersonation impersonation(true);

  const auto openThreadToken = TARN_ADVAPI(advapi.get(), OpenThreadToken);
  if (!openThreadToken) return 0;
  tarn::UniqueHandle token;
  DWORD error = ERROR_NO_TOKEN;
  if (hThread) {
    token = OpenThreadTokenOf(openThreadToken, hThread);
    if (!token) error = ::GetLastError();
  }
  if (!token) {
    // The fallback serves a thread handle that has no token, or none given.
    if (!hFallbackThread || error != ERROR_NO_TOKEN) return 0;
    token = OpenThreadTokenOf(openThreadToken, hFallbackThread);
    if (!token) return 0;
  }

  const tarn::UniqueSid sid = tarn::MakeBuiltinGroupSid(advapi.get(), dwRid);
  if (!sid) return 0;
  tarn::UniqueLocal list;
  const tarn::UniqueLocal descriptor =
      MakeGroupDescriptor(advapi.get(), sid.get(), dwAccessMask, list);
  const auto mapGenericMask = TARN_ADVAPI(advapi.get(), MapGenericMask);
  const auto accessCheck = TARN_ADVAPI(advapi.get(), AccessCheck);
  if (!descriptor || !mapGenericMask || !accessCheck) return 0;

  GENERIC_MAPPING mapping = FileLikeMapping();
  DWORD desired = dwAccessMask;
  mapGenericMask(&desired, &mapping);
  alignas(PRIVILEGE_SET) BYTE privileges[kPrivilegeSetSize] = {};
  DWORD privilegesLength = kPrivilegeSetSize;
  DWORD granted = 0;
  BOOL status = FALSE;
  const BOOL result = accessCheck(descriptor.get(), token.get(), desired, &mapping,
                                  reinterpret_cast<PPRIVILEGE_SET>(privileges), &privilegesLength,
                                  &granted, &status);
  bIsMember = status;
  return result;
}

int TarnCheckTokenMembership(HANDLE hToken, DWORD dwRid, int* pbIsMember) {
  if (!pbIsMember) return 0;
  *pbIsMember = 0;
  if (!IsNTPlatform()) return 0;
  const tarn::UniqueModule advapi = tarn::LoadAdvapi();
  if (!advapi) return 0;
  const tarn::UniqueSid sid = tarn::MakeBuiltinGroupSid(advapi.get(), dwRid);
  if (!sid) return 0;
  if (const auto checkMembership = TARN_ADVAPI(advapi.get(), CheckTokenMembership))
    return checkMembership(hToken, sid.get(), pbIsMember);
  *pbIsMember = GroupAttributesByHand(advapi.get(), hToken, sid.get());
  return 1;
}

TARN_CHKDESIREDACCESS TarnChkDesiredAccess(const char* pszPath, DWORD dwDesiredAccess) {
  if (!pszPath || !*pszPath) return TARN_DESIREDACCESS_ERROR;
  // Share mode 0: a file that anyone else holds open fails, for reading too.
  const tarn::UniqueFile file(TarnFileOpen(pszPath, dwDesiredAccess, OPEN_EXISTING,
                                           FILE_ATTRIBUTE_NORMAL, 0, nullptr, nullptr, 0));
  if (file) return TARN_DESIREDACCESS_GRANTED;
  return Classify(::GetLastError(), pszPath);
}

#include "security/advapi.h"

#include <string.h>

namespace tarn {

UniqueModule LoadAdvapi() { return LoadModule("Advapi32.dll"); }

UniqueSid MakeSid(HMODULE advapi, PSID_IDENTIFIER_AUTHORITY authority,
                  const DWORD* subAuthorities, BYTE count) {
  const auto allocateSid = TARN_ADVAPI(advapi, AllocateAndInitializeSid);
  if (!allocateSid) return {};
  DWORD sub[8] = {};
  memcpy(sub, subAuthorities, count * sizeof(DWORD));
  PSID sid = nullptr;
  if (!allocateSid(authority, count, sub[0], sub[1], sub[2], sub[3], sub[4], sub[5], sub[6],
                   sub[7], &sid))
    return {};
  return UniqueSid(sid);
}

UniqueSid MakeBuiltinGroupSid(HMODULE advapi, DWORD rid) {
  SID_IDENTIFIER_AUTHORITY ntAuthority = SECURITY_NT_AUTHORITY;
  const DWORD subAuthorities[] = {SECURITY_BUILTIN_DOMAIN_RID, rid};
  return MakeSid(advapi, &ntAuthority, subAuthorities, 2);
}

}  // namespace tarn

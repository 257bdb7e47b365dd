// What the security functions share: "Advapi32.dll" loaded for one call, its
// functions found by name in it, and the SIDs they are given.
#ifndef TARN_SECURITY_ADVAPI_H
#define TARN_SECURITY_ADVAPI_H

#include <windows.h>

#include "core/handle.h"
#include "core/platform.h"

// The function NAME of the loaded "Advapi32.dll" `module`, typed as the
// platform declares it; null when missing.
#define TARN_ADVAPI(module, name) ::tarn::FindFunction<decltype(&::name)>(module, #name)

namespace tarn {

// "Advapi32.dll", loaded by the call that uses it.
UniqueModule LoadAdvapi();

// The SID of `authority` with the first `count` (at most 8) of `subAuthorities`,
// the rest 0 (AllocateAndInitializeSid of `advapi`); empty when the function
// is missing or fails.
UniqueSid MakeSid(HMODULE advapi, PSID_IDENTIFIER_AUTHORITY authority,
                  const DWORD* subAuthorities, BYTE count);

// The built-in group S-1-5-32-r.
UniqueSid MakeBuiltinGroupSid(HMODULE advapi, DWORD rid);

}  // namespace tarn

#endif  // TARN_SECURITY_ADVAPI_H

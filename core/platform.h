// Where the library meets platform services that may be missing.
//
// 1. Run-time lookup of a platform function by module and name, for
//    functions that older systems lack. Tests can make a named function look
//    missing to reach the fallbacks.
// 2. A table of the few platform calls that Wine cannot serve (a module it
//    does not ship, a device it lacks). The library makes those calls through
//    the table; tests replace an entry to observe the exact arguments or to
//    stand in for the service. The comment beside each entry names what
//    Wine lacks for it. Outside tests the table holds the real
//    functions and nothing else.
#ifndef TARN_CORE_PLATFORM_H
#define TARN_CORE_PLATFORM_H

#include <windows.h>

#include "core/handle.h"

namespace tarn {

struct PlatformCalls {
  decltype(&::LoadLibraryExA) LoadLibraryExA;  // "netmsg.dll"
  decltype(&::FreeLibrary) FreeLibrary;        // "netmsg.dll"
  decltype(&::FormatMessageA) FormatMessageA;  // texts from "netmsg.dll"
  decltype(&::GetVolumeInformationW) GetVolumeInformationW;  // an empty removable drive; a
                                                             // volume with reparse points
  decltype(&::GetFileAttributesW) GetFileAttributesW;  // a directory that is a reparse point
  decltype(&::DeviceIoControl) DeviceIoControl;        // FSCTL_SET_REPARSE_POINT
  decltype(&::GetDiskFreeSpaceA) GetDiskFreeSpaceA;    // volumes of any size and cluster shape
};

// The calls in force; the real platform functions unless a test replaced them.
PlatformCalls& Platform();

// Loads a system module by name (LoadLibraryA); empty when it cannot be
// loaded.
UniqueModule LoadModule(const char* name);

// GetProcAddress, unless a test has hidden that name in that module.
FARPROC FindFunction(HMODULE module, const char* name);

template <typename F>
F FindFunction(HMODULE module, const char* name) {
  return reinterpret_cast<F>(reinterpret_cast<void (*)()>(FindFunction(module, name)));
}

// Test-only controls. Never called by the library itself.
namespace testing {
// Makes FindFunction report `function` as missing in modules whose file name
// (without directory, compared case-insensitively) is `module`; a null module
// hides the function everywhere.
void HideFunction(const char* module, const char* function);
// Undoes every HideFunction and restores the real platform calls.
void ResetPlatform();
}  // namespace testing

}  // namespace tarn

#endif  // TARN_CORE_PLATFORM_H

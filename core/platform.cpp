#include "core/platform.h"

#include <string.h>

#include <string>
#include <utility>
#include <vector>

namespace tarn {
namespace {

PlatformCalls RealPlatform() {
  return PlatformCalls{&::LoadLibraryExA, &::FreeLibrary, &::FormatMessageA,
                       &::GetVolumeInformationW, &::GetFileAttributesW, &::DeviceIoControl,
                       &::GetDiskFreeSpaceA};
}

PlatformCalls g_platform = RealPlatform();

// (module file name or empty for any, function name) pairs hidden by tests.
std::vector<std::pair<std::string, std::string>>& Hidden() {
  static std::vector<std::pair<std::string, std::string>> hidden;
  return hidden;
}

bool ModuleNameIs(HMODULE module, const std::string& name) {
  char path[MAX_PATH] = {};
  if (::GetModuleFileNameA(module, path, MAX_PATH) == 0) return false;
  const char* base = strrchr(path, '\\');
  base = base ? base + 1 : path;
  return _stricmp(base, name.c_str()) == 0;
}

}  // namespace

PlatformCalls& Platform() { return g_platform; }

UniqueModule LoadModule(const char* name) { return UniqueModule(::LoadLibraryA(name)); }

FARPROC FindFunction(HMODULE module, const char* name) {
  for (const auto& [hiddenModule, hiddenName] : Hidden()) {
    if (hiddenName == name && (hiddenModule.empty() || ModuleNameIs(module, hiddenModule))) {
      ::SetLastError(ERROR_PROC_NOT_FOUND);
      return nullptr;
    }
  }
  return ::GetProcAddress(module, name);
}

namespace testing {

void HideFunction(const char* module, const char* function) {
  Hidden().emplace_back(module ? module : "", function);
}

void ResetPlatform() {
  Hidden().clear();
  g_platform = RealPlatform();
}

}  // namespace testing
}  // namespace tarn

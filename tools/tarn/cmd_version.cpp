// tarn version [MODULE]: the version resource of a module, tarn.dll unless
// another is named.
#include <windows.h>

#include <stdio.h>

#include <string>

#include "commands.h"
#include "tarn/core.h"

int CmdVersion(int argc, char** argv) {
  char path[MAX_PATH] = {};
  if (argc > 0) {
    snprintf(path, sizeof path, "%s", argv[0]);
  } else if (!::GetModuleFileNameA(TarnGetResourceHandle(), path, MAX_PATH)) {
    fprintf(stderr, "tarn.dll is not loaded\n");
    return 1;
  }
  DWORD ignored = 0;
  const DWORD size = ::GetFileVersionInfoSizeA(path, &ignored);
  if (!size) {
    fprintf(stderr, "%s: no version resource (error %lu)\n", path, ::GetLastError());
    return 1;
  }
  std::string block(size, '\0');
  if (!::GetFileVersionInfoA(path, 0, size, block.data())) return 1;
  printf("%s\n", path);

  VS_FIXEDFILEINFO* fixed = nullptr;
  UINT length = 0;
  if (::VerQueryValueA(block.data(), "\\", reinterpret_cast<void**>(&fixed), &length))
    printf("  fixed file version  %u.%u.%u.%u\n", HIWORD(fixed->dwFileVersionMS),
           LOWORD(fixed->dwFileVersionMS), HIWORD(fixed->dwFileVersionLS),
           LOWORD(fixed->dwFileVersionLS));

  WORD* translation = nullptr;
  if (!::VerQueryValueA(block.data(), "\\VarFileInfo\\Translation",
                        reinterpret_cast<void**>(&translation), &length) ||
      length < 4)
    return 0;
  for (const char* key : {"CompanyName", "FileDescription", "FileVersion", "InternalName",
                          "LegalCopyright", "OriginalFilename", "ProductName",
                          "ProductVersion"}) {
    char query[128];
    snprintf(query, sizeof query, "\\StringFileInfo\\%04x%04x\\%s", translation[0],
             translation[1], key);
    char* value = nullptr;
    if (::VerQueryValueA(block.data(), query, reinterpret_cast<void**>(&value), &length))
      printf("  %-18s  %s\n", key, value);
  }
  return 0;
}

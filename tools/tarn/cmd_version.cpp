// tarn version [MODULE]: every value of a module's version resource as
// CTarnFileVersionInfo reads it (tarn.dll unless another module is named),
// and the operating system as CTarnSystemVersionInfo identifies it.
#include <windows.h>

#include <stdio.h>

#include "commands.h"
#include "tarn/core.h"
#include "tarn/version.h"

namespace {

using Getter = int (CTarnFileVersionInfo::*)(char*, DWORD);

struct NamedGetter {
  const char* name;
  Getter get;
};

const NamedGetter kStandardValues[] = {
    {"CompanyName", &CTarnFileVersionInfo::GetCompanyName},
    {"FileDescription", &CTarnFileVersionInfo::GetFileDescription},
    {"FileVersion", &CTarnFileVersionInfo::GetFileVersion},
    {"InternalName", &CTarnFileVersionInfo::GetInternalName},
    {"LegalCopyright", &CTarnFileVersionInfo::GetLegalCopyright},
    {"OriginalFilename", &CTarnFileVersionInfo::GetOriginalFilename},
    {"ProductName", &CTarnFileVersionInfo::GetProductName},
    {"ProductVersion", &CTarnFileVersionInfo::GetProductVersion},
};

// Values that some resources carry besides the standard eight; shown only
// when present.
const char* const kOptionalValues[] = {"Comments", "LegalTrademarks", "PrivateBuild",
                                       "SpecialBuild", "HelpFileName"};

const char* SystemName(CTarnSystemVersionInfo::eOperatingSystem os) {
  switch (os) {
    case CTarnSystemVersionInfo::eWin32S:
      return "Win32s";
    case CTarnSystemVersionInfo::eWin95:
      return "Windows 95";
    case CTarnSystemVersionInfo::eWin98:
      return "Windows 98";
    case CTarnSystemVersionInfo::eWinME:
      return "Windows Me";
    case CTarnSystemVersionInfo::eNT35:
      return "Windows NT 3.5x";
    case CTarnSystemVersionInfo::eNT40:
      return "Windows NT 4.0";
    case CTarnSystemVersionInfo::eWin2000:
      return "Windows 2000";
    case CTarnSystemVersionInfo::eWinXP:
      return "Windows XP";
    case CTarnSystemVersionInfo::eWinServer2003:
      return "Windows Server 2003";
    case CTarnSystemVersionInfo::eWinVista:
      return "Windows Vista";
    case CTarnSystemVersionInfo::eWin7:
      return "Windows 7";
    default:
      return "unknown";
  }
}

void PrintValue(const char* label, int found, const char* text) {
  printf("  %-22s  %s\n", label, found ? text : "-");
}

void PrintFileVersion(CTarnFileVersionInfo& info) {
  char text[MAX_PATH];
  for (const NamedGetter& value : kStandardValues) {
    const int found = (info.*value.get)(text, sizeof text);
    PrintValue(value.name, found, text);
  }
  for (const char* name : kOptionalValues)
    if (info.QueryValue(text, sizeof text, name, 0)) PrintValue(name, 1, text);

  int found = info.GetFixedFileVersion(text, sizeof text);
  PrintValue("fixed file version", found, text);
  found = info.GetFixedProductVersion(text, sizeof text);
  PrintValue("fixed product version", found, text);
  VS_FIXEDFILEINFO fixed = {};
  if (info.GetFixedInfo(fixed)) {
    printf("  %-22s  0x%08lX\n", "file flags", fixed.dwFileFlags & fixed.dwFileFlagsMask);
    printf("  %-22s  0x%08lX\n", "file OS", fixed.dwFileOS);
    printf("  %-22s  %lu (subtype %lu)\n", "file type", fixed.dwFileType, fixed.dwFileSubtype);
  }
  found = info.GetHelpFileName(text, sizeof text);
  PrintValue("help file", found, text);
}

void PrintSystem() {
  const CTarnSystemVersionInfo system;
  printf("operating system\n");
  printf("  %-22s  %s (%d)\n", "identified", SystemName(system.GetOperatingSystem()),
         static_cast<int>(system.GetOperatingSystem()));
  printf("  %-22s  %s\n", "NT platform", system.IsWinNTPlatform() ? "yes" : "no");
  printf("  %-22s  %s\n", "terminal server", system.IsTerminalServer() ? "yes" : "no");
}

}  // namespace

int CmdVersion(int argc, char** argv) {
  CTarnFileVersionInfo info;
  char path[MAX_PATH] = {};
  int opened = 0;
  if (argc > 0) {
    snprintf(path, sizeof path, "%s", argv[0]);
    opened = info.Open(argv[0]);
  } else {
    ::GetModuleFileNameA(TarnGetResourceHandle(), path, MAX_PATH);
    opened = info.Open(TarnGetResourceHandle());
  }
  printf("%s\n", path);
  if (opened)
    PrintFileVersion(info);
  else
    printf("  no version resource with a translation table\n");
  PrintSystem();
  return opened ? 0 : 1;
}

// tarn version [MODULE]: every value of a module's version resource as
// CTarnFileVersionInfo reads it (tarn.dll unless another module is named),
// and the operating system as CTarnSystemVersionInfo identifies it.
#include <windows.h>

#include "commands.h"
#include "tarn/core.h"
#include "tarn/files.h"
#include "tarn/version.h"

namespace tarn_tool {
namespace {

using Getter = int (CTarnFileVersionInfo::*)(char*, DWORD);

const struct {
  const char* name;
  Getter get;
} kStandardValues[] = {
    {"CompanyName", &CTarnFileVersionInfo::GetCompanyName},
    {"FileDescription", &CTarnFileVersionInfo::GetFileDescription},
    {"FileVersion", &CTarnFileVersionInfo::GetFileVersion},
    {"InternalName", &CTarnFileVersionInfo::GetInternalName},
    {"LegalCopyright", &CTarnFileVersionInfo::GetLegalCopyright},
    {"OriginalFilename", &CTarnFileVersionInfo::GetOriginalFilename},
    {"ProductName", &CTarnFileVersionInfo::GetProductName},
    {"ProductVersion", &CTarnFileVersionInfo::GetProductVersion},
    {"FixedFileVersion", &CTarnFileVersionInfo::GetFixedFileVersion},
    {"FixedProductVersion", &CTarnFileVersionInfo::GetFixedProductVersion},
    {"HelpFileName", &CTarnFileVersionInfo::GetHelpFileName},
};

// Values that some resources carry besides the standard ones; listed only
// when present.
const char* const kOptionalValues[] = {"Comments", "LegalTrademarks", "PrivateBuild",
                                       "SpecialBuild"};

const char* const kSystemNames[] = {
    "unknown",   "Win32s",     "Windows 95",   "Windows 98",          "Windows Me",
    "Windows NT 3.5x", "Windows NT 4.0", "Windows 2000", "Windows XP",
    "Windows Server 2003", "Windows Vista", "Windows 7"};

Json FileRecord(const std::string& module, CTarnFileVersionInfo& info) {
  Json record = {{"module", module}};
  char text[MAX_PATH];
  for (const auto& value : kStandardValues)
    record[value.name] = (info.*value.get)(text, sizeof text) ? Json(text) : Json();
  for (const char* name : kOptionalValues)
    if (info.QueryValue(text, sizeof text, name, 0)) record[name] = text;
  VS_FIXEDFILEINFO fixed = {};
  if (info.GetFixedInfo(fixed)) {
    record["FileFlags"] = fixed.dwFileFlags & fixed.dwFileFlagsMask;
    record["FileOS"] = fixed.dwFileOS;
    record["FileType"] = fixed.dwFileType;
    record["FileSubtype"] = fixed.dwFileSubtype;
  }
  return record;
}

Json SystemRecord() {
  const CTarnSystemVersionInfo system;
  const int os = static_cast<int>(system.GetOperatingSystem());
  const int known = sizeof kSystemNames / sizeof kSystemNames[0];
  return {{"system", os >= 0 && os < known ? kSystemNames[os] : "unknown"},
          {"identifier", os},
          {"NTPlatform", system.IsWinNTPlatform() != 0},
          {"TerminalServer", system.IsTerminalServer() != 0}};
}

struct Arguments {
  std::string module;
  bool json = false;
};

int Run(const Arguments& args) {
  CTarnFileVersionInfo info;
  std::string module = args.module;
  int opened = 0;
  if (module.empty()) {
    char path[MAX_PATH] = "";
    ::GetModuleFileNameA(TarnGetResourceHandle(), path, MAX_PATH);
    module = path;
    opened = info.Open(TarnGetResourceHandle());
  } else {
    // The module must be there as a file before its resource is looked at.
    DWORD code = 0;
    char text[512] = "";
    if (!TarnFileFind(module.c_str(), &code, text, sizeof text))
      return Fail(module, code ? text : "a directory, not a module");
    opened = info.Open(module.c_str());
  }
  if (!opened) return Fail(module, "no version resource with a translation table");
  PrintRecords(Json::array({FileRecord(module, info), SystemRecord()}), args.json,
               Layout::kLines);
  return 0;
}

}  // namespace

Runner DeclareVersion(CLI::App& command) {
  auto args = std::make_shared<Arguments>();
  command.add_option("module", args->module, "a DLL or program (default: tarn.dll)");
  AddJsonFlag(command, args->json);
  return [args] { return Run(*args); };
}

}  // namespace tarn_tool

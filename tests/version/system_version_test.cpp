// CTarnSystemVersionInfo: the identification table row by row on version
// records, and the real platform under the Windows versions that Wine reports
// when asked to (a per-program AppDefaults key for version_os_probe.exe).
#include <gtest/gtest.h>

#include <stdio.h>
#include <string.h>

#include <string>

#include "tarn/version.h"
#include "version/system_version.h"
#include "version/version_test_env.h"

namespace {

using OS = CTarnSystemVersionInfo;

constexpr DWORD k32s = VER_PLATFORM_WIN32s;
constexpr DWORD k9x = VER_PLATFORM_WIN32_WINDOWS;
constexpr DWORD kNT = VER_PLATFORM_WIN32_NT;

OSVERSIONINFOEXA Record(DWORD platform, DWORD major, DWORD minor, WORD suite, BYTE productType) {
  return {sizeof(OSVERSIONINFOEXA), major, minor, 0, platform, {}, 0, 0, suite, productType, 0};
}

TEST(SystemVersionTable, EveryRowAndItsEdgesAndTheTerminalServerRule) {
  const struct {
    DWORD platform, major, minor;
    OS::eOperatingSystem expected;
  } rows[] = {
      {k32s, 0, 0, OS::eWin32S},      {k32s, 3, 10, OS::eWin32S},   {k32s, 6, 1, OS::eWin32S},
      {k9x, 5, 0, OS::eWinME},        {k9x, 9, 99, OS::eWinME},     {k9x, 4, 90, OS::eWinME},
      {k9x, 4, 200, OS::eWinME},      {k9x, 4, 89, OS::eWin98},     {k9x, 4, 10, OS::eWin98},
      {k9x, 4, 1, OS::eWin98},        {k9x, 4, 0, OS::eWin95},      {k9x, 3, 95, OS::eWin95},
      {k9x, 0, 0, OS::eWin95},        {kNT, 3, 51, OS::eNT35},      {kNT, 0, 99, OS::eNT35},
      {kNT, 4, 0, OS::eNT40},         {kNT, 4, 90, OS::eNT40},      {kNT, 5, 0, OS::eWin2000},
      {kNT, 5, 1, OS::eWinXP},        {kNT, 5, 2, OS::eWinServer2003},
      {kNT, 5, 3, OS::eUnknownOS},    {kNT, 5, 90, OS::eUnknownOS}, {kNT, 6, 0, OS::eWinVista},
      {kNT, 6, 1, OS::eWin7},         {kNT, 6, 2, OS::eUnknownOS},  {kNT, 6, 3, OS::eUnknownOS},
      {kNT, 10, 0, OS::eWinVista},    {kNT, 10, 1, OS::eWin7},      {kNT, 7, 2, OS::eUnknownOS},
      {3, 5, 0, OS::eUnknownOS} /* Windows CE */, {3, 6, 1, OS::eUnknownOS},
      {0xFFFFFFFF, 6, 0, OS::eUnknownOS},
  };
  // Neither the product type nor the suite mask takes part in the identification;
  // the suite mask makes a terminal server only in its multi-session form.
  const BYTE productTypes[] = {0, VER_NT_WORKSTATION, VER_NT_DOMAIN_CONTROLLER, VER_NT_SERVER};
  const struct {
    WORD mask;
    BOOL terminalServer;
  } suites[] = {
      {0, FALSE}, {VER_SUITE_TERMINAL, TRUE}, {VER_SUITE_SINGLEUSERTS, FALSE},
      {VER_SUITE_TERMINAL | VER_SUITE_SINGLEUSERTS, FALSE},
      {VER_SUITE_TERMINAL | VER_SUITE_ENTERPRISE | VER_SUITE_DATACENTER, TRUE},
      {0xFFFF & ~VER_SUITE_SINGLEUSERTS, TRUE}, {0xFFFF, FALSE},
      {0xFFFF & ~VER_SUITE_TERMINAL, FALSE},
  };
  for (const auto& row : rows)
    for (BYTE type : productTypes)
      for (const auto& suite : suites) {
        const OSVERSIONINFOEXA record =
            Record(row.platform, row.major, row.minor, suite.mask, type);
        EXPECT_EQ(tarn::IdentifyOperatingSystem(record), row.expected)
            << "platform " << row.platform << ", " << row.major << "." << row.minor
            << ", product type " << int(type) << ", suite 0x" << std::hex << suite.mask;
        EXPECT_EQ(tarn::IsMultiUserTerminalServer(record), suite.terminalServer)
            << "suite 0x" << std::hex << suite.mask;
      }
}

const char kAppDefaults[] = "Software\\Wine\\AppDefaults\\version_os_probe.exe";

// The line version_os_probe.exe prints when Wine is told to report `version` to it.
std::string Probe(const char* version) {
  EXPECT_EQ(::RegSetKeyValueA(HKEY_CURRENT_USER, kAppDefaults, "Version", REG_SZ, version,
                              static_cast<DWORD>(strlen(version) + 1)),
            ERROR_SUCCESS);
  const std::string command = "\"" + version_test::BesideProgram("version_os_probe.exe") + "\"";
  FILE* probe = _popen(command.c_str(), "r");
  if (!probe) return "cannot start " + command;
  std::string output;
  char chunk[256];
  while (fgets(chunk, sizeof chunk, probe)) output += chunk;
  _pclose(probe);
  return output;
}

TEST(SystemVersionUnderWine, IdentifiesEveryVersionWineReports) {
  const struct {
    const char* version;
    unsigned long platform, major, minor;
    OS::eOperatingSystem expected;
  } runs[] = {
      {"win31", k32s, 3, 10, OS::eWin32S},   {"win95", k9x, 4, 0, OS::eWin95},
      {"win98", k9x, 4, 10, OS::eWin98},     {"winme", k9x, 4, 90, OS::eWinME},
      {"nt351", kNT, 3, 51, OS::eNT35},      {"nt40", kNT, 4, 0, OS::eNT40},
      {"win2k", kNT, 5, 0, OS::eWin2000},    {"winxp", kNT, 5, 1, OS::eWinXP},
      {"winxp64", kNT, 5, 2, OS::eWinServer2003},  // a workstation, reporting 5.2
      {"win2003", kNT, 5, 2, OS::eWinServer2003},    {"vista", kNT, 6, 0, OS::eWinVista},
      {"win2008", kNT, 6, 0, OS::eWinVista},  // a server, reporting 6.0
      {"win7", kNT, 6, 1, OS::eWin7},        {"win8", kNT, 6, 2, OS::eUnknownOS},
      {"win81", kNT, 6, 3, OS::eUnknownOS},  {"win10", kNT, 10, 0, OS::eWinVista},
  };
  for (const auto& run : runs) {
    // What Wine reported, then what the class and a copy of it made of it:
    // exactly the predicate of the value (none for eWin7), and never a
    // terminal server (Wine reports single-session terminal services at most).
    char expected[160];
    snprintf(expected, sizeof expected,
             "os=%d nt=%d ts=0 predicates=%u copy=1 platform=%lu version=%lu.%lu\n",
             static_cast<int>(run.expected), run.platform == kNT ? 1 : 0,
             run.expected == OS::eWin7 ? 0u : 1u << run.expected, run.platform, run.major,
             run.minor);
    EXPECT_EQ(Probe(run.version), expected) << run.version;
  }
  ::RegDeleteKeyA(HKEY_CURRENT_USER, kAppDefaults);
}

}  // namespace

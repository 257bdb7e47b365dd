// CTarnSystemVersionInfo: the identification table row by row on version
// records, and the real platform under the Windows versions that Wine reports
// when asked to (a per-program AppDefaults key for version_os_probe.exe).
#include <gtest/gtest.h>

#include <stdio.h>
#include <string.h>

#include <string>

#include "core/handle.h"
#include "tarn/version.h"
#include "version/system_version.h"
#include "version/version_test_env.h"

namespace {

using OS = CTarnSystemVersionInfo;

OSVERSIONINFOEXA Record(DWORD platform, DWORD major, DWORD minor, WORD suite = 0,
                        BYTE productType = VER_NT_WORKSTATION) {
  OSVERSIONINFOEXA record = {};
  record.dwOSVersionInfoSize = sizeof record;
  record.dwPlatformId = platform;
  record.dwMajorVersion = major;
  record.dwMinorVersion = minor;
  record.wSuiteMask = suite;
  record.wProductType = productType;
  return record;
}

struct Row {
  DWORD platform, major, minor;
  OS::eOperatingSystem expected;
};

constexpr DWORD k32s = VER_PLATFORM_WIN32s;
constexpr DWORD k9x = VER_PLATFORM_WIN32_WINDOWS;
constexpr DWORD kNT = VER_PLATFORM_WIN32_NT;

TEST(SystemVersionTable, EveryRowAndItsEdges) {
  const Row rows[] = {
      {k32s, 0, 0, OS::eWin32S},   {k32s, 3, 10, OS::eWin32S},
      {k32s, 6, 1, OS::eWin32S},   {k9x, 5, 0, OS::eWinME},
      {k9x, 9, 99, OS::eWinME},    {k9x, 4, 90, OS::eWinME},
      {k9x, 4, 200, OS::eWinME},   {k9x, 4, 89, OS::eWin98},
      {k9x, 4, 10, OS::eWin98},    {k9x, 4, 1, OS::eWin98},
      {k9x, 4, 0, OS::eWin95},     {k9x, 3, 95, OS::eWin95},
      {k9x, 0, 0, OS::eWin95},     {kNT, 3, 51, OS::eNT35},
      {kNT, 0, 99, OS::eNT35},     {kNT, 4, 0, OS::eNT40},
      {kNT, 4, 90, OS::eNT40},     {kNT, 5, 0, OS::eWin2000},
      {kNT, 5, 1, OS::eWinXP},     {kNT, 5, 2, OS::eWinServer2003},
      {kNT, 5, 3, OS::eUnknownOS}, {kNT, 5, 90, OS::eUnknownOS},
      {kNT, 6, 0, OS::eWinVista},  {kNT, 6, 1, OS::eWin7},
      {kNT, 6, 2, OS::eUnknownOS}, {kNT, 6, 3, OS::eUnknownOS},
      {kNT, 10, 0, OS::eWinVista}, {kNT, 10, 1, OS::eWin7},
      {kNT, 7, 2, OS::eUnknownOS}, {3, 5, 0, OS::eUnknownOS},  // Windows CE
      {3, 6, 1, OS::eUnknownOS},   {0xFFFFFFFF, 6, 0, OS::eUnknownOS},
  };
  // Neither the product type nor the suite mask takes part.
  const BYTE productTypes[] = {0, VER_NT_WORKSTATION, VER_NT_DOMAIN_CONTROLLER, VER_NT_SERVER};
  const WORD suites[] = {0, VER_SUITE_TERMINAL, VER_SUITE_SINGLEUSERTS, 0xFFFF};
  for (const Row& row : rows) {
    for (BYTE type : productTypes) {
      for (WORD suite : suites) {
        EXPECT_EQ(
            tarn::IdentifyOperatingSystem(Record(row.platform, row.major, row.minor, suite, type)),
            row.expected)
            << "platform " << row.platform << ", " << row.major << "." << row.minor
            << ", product type " << int(type) << ", suite 0x" << std::hex << suite;
      }
    }
  }
}

TEST(SystemVersionTable, TerminalServerOnlyInMultiSessionForm) {
  struct {
    WORD suite;
    BOOL expected;
  } const rows[] = {
      {0, FALSE},
      {VER_SUITE_TERMINAL, TRUE},
      {VER_SUITE_SINGLEUSERTS, FALSE},
      {VER_SUITE_TERMINAL | VER_SUITE_SINGLEUSERTS, FALSE},
      {VER_SUITE_TERMINAL | VER_SUITE_ENTERPRISE | VER_SUITE_DATACENTER, TRUE},
      {VER_SUITE_SINGLEUSERTS | VER_SUITE_PERSONAL, FALSE},
      {0xFFFF & ~VER_SUITE_SINGLEUSERTS, TRUE},
      {0xFFFF, FALSE},
      {0xFFFF & ~VER_SUITE_TERMINAL, FALSE},
  };
  for (const auto& row : rows)
    EXPECT_EQ(tarn::IsMultiUserTerminalServer(Record(kNT, 5, 2, row.suite)), row.expected)
        << "suite 0x" << std::hex << row.suite;
}

TEST(SystemVersion, AnswersFromThePlatformRecordAndCopiesAsAValue) {
  OSVERSIONINFOEXA record = {};
  record.dwOSVersionInfoSize = sizeof record;
  ASSERT_TRUE(::GetVersionExA(reinterpret_cast<OSVERSIONINFOA*>(&record)));

  const CTarnSystemVersionInfo info;
  EXPECT_EQ(info.GetOperatingSystem(), tarn::IdentifyOperatingSystem(record));
  EXPECT_EQ(info.IsWinNTPlatform(), record.dwPlatformId == VER_PLATFORM_WIN32_NT ? 1 : 0);
  EXPECT_EQ(info.IsTerminalServer(), tarn::IsMultiUserTerminalServer(record));

  CTarnSystemVersionInfo copy(info);
  CTarnSystemVersionInfo assigned;
  assigned = copy;
  for (const CTarnSystemVersionInfo* other : {&copy, &assigned}) {
    EXPECT_EQ(other->GetOperatingSystem(), info.GetOperatingSystem());
    EXPECT_EQ(other->IsWinNTPlatform(), info.IsWinNTPlatform());
    EXPECT_EQ(other->IsTerminalServer(), info.IsTerminalServer());
    EXPECT_EQ(other->IsWinVista(), info.IsWinVista());
    EXPECT_EQ(other->IsUnknownOS(), info.IsUnknownOS());
  }
}

// What version_os_probe.exe printed.
struct ProbeAnswer {
  int os = -1, nt = -1, ts = -1, copy = -1;
  unsigned predicates = 0;
  unsigned long platform = 0, major = 0, minor = 0;
};

const char kProbeName[] = "version_os_probe.exe";
const char kAppDefaults[] = "Software\\Wine\\AppDefaults\\version_os_probe.exe";

class SystemVersionUnderWine : public ::testing::Test {
 protected:
  void TearDown() override { ::RegDeleteKeyA(HKEY_CURRENT_USER, kAppDefaults); }

  // Runs the probe with Wine told to report `version` to it.
  ProbeAnswer Probe(const char* version) {
    HKEY key = nullptr;
    EXPECT_EQ(::RegCreateKeyExA(HKEY_CURRENT_USER, kAppDefaults, 0, nullptr, 0, KEY_SET_VALUE,
                                nullptr, &key, nullptr),
              ERROR_SUCCESS);
    EXPECT_EQ(::RegSetValueExA(key, "Version", 0, REG_SZ, reinterpret_cast<const BYTE*>(version),
                               static_cast<DWORD>(strlen(version) + 1)),
              ERROR_SUCCESS);
    ::RegCloseKey(key);

    SECURITY_ATTRIBUTES inherit = {sizeof inherit, nullptr, TRUE};
    HANDLE readEnd = nullptr, writeEnd = nullptr;
    EXPECT_TRUE(::CreatePipe(&readEnd, &writeEnd, &inherit, 0));
    const tarn::UniqueHandle reader(readEnd);
    tarn::UniqueHandle writer(writeEnd);
    ::SetHandleInformation(readEnd, HANDLE_FLAG_INHERIT, 0);

    STARTUPINFOA startup = {};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = writeEnd;
    startup.hStdError = writeEnd;
    PROCESS_INFORMATION process = {};
    const std::string program = version_test::BesideProgram(kProbeName);
    std::string commandLine = "\"" + program + "\"";
    if (!::CreateProcessA(program.c_str(), &commandLine[0], nullptr, nullptr, TRUE, 0, nullptr,
                          nullptr, &startup, &process)) {
      ADD_FAILURE() << "cannot start " << program << ": " << ::GetLastError();
      return ProbeAnswer();
    }
    const tarn::UniqueHandle processHandle(process.hProcess);
    const tarn::UniqueHandle threadHandle(process.hThread);
    writer.reset();  // the pipe ends when the probe exits

    std::string output;
    char chunk[256];
    DWORD count = 0;
    while (::ReadFile(readEnd, chunk, sizeof chunk, &count, nullptr) && count)
      output.append(chunk, count);
    ::WaitForSingleObject(process.hProcess, INFINITE);

    ProbeAnswer answer;
    const int fields = sscanf(
        output.c_str(), "os=%d nt=%d ts=%d predicates=%u copy=%d platform=%lu version=%lu.%lu",
        &answer.os, &answer.nt, &answer.ts, &answer.predicates, &answer.copy, &answer.platform,
        &answer.major, &answer.minor);
    EXPECT_EQ(fields, 8) << "probe said: " << output;
    return answer;
  }
};

TEST_F(SystemVersionUnderWine, IdentifiesEveryVersionWineReports) {
  struct {
    const char* version;
    unsigned long platform, major, minor;
    OS::eOperatingSystem expected;
  } const runs[] = {
      {"win31", k32s, 3, 10, OS::eWin32S},
      {"win95", k9x, 4, 0, OS::eWin95},
      {"win98", k9x, 4, 10, OS::eWin98},
      {"winme", k9x, 4, 90, OS::eWinME},
      {"nt351", kNT, 3, 51, OS::eNT35},
      {"nt40", kNT, 4, 0, OS::eNT40},
      {"win2k", kNT, 5, 0, OS::eWin2000},
      {"winxp", kNT, 5, 1, OS::eWinXP},
      {"winxp64", kNT, 5, 2, OS::eWinServer2003},  // a workstation, reporting 5.2
      {"win2003", kNT, 5, 2, OS::eWinServer2003},
      {"vista", kNT, 6, 0, OS::eWinVista},
      {"win2008", kNT, 6, 0, OS::eWinVista},  // a server, reporting 6.0
      {"win7", kNT, 6, 1, OS::eWin7},
      {"win8", kNT, 6, 2, OS::eUnknownOS},
      {"win81", kNT, 6, 3, OS::eUnknownOS},
      {"win10", kNT, 10, 0, OS::eWinVista},
  };
  for (const auto& run : runs) {
    SCOPED_TRACE(run.version);
    const ProbeAnswer answer = Probe(run.version);
    // First that Wine reported what was asked for, then what the class made of it.
    EXPECT_EQ(answer.platform, run.platform);
    EXPECT_EQ(answer.major, run.major);
    EXPECT_EQ(answer.minor, run.minor);
    EXPECT_EQ(answer.os, static_cast<int>(run.expected));
    EXPECT_EQ(answer.nt, run.platform == kNT ? 1 : 0);
    EXPECT_EQ(answer.ts, 0) << "Wine reports single-session terminal services at most";
    EXPECT_EQ(answer.predicates, run.expected == OS::eWin7 ? 0u : 1u << run.expected)
        << "exactly the predicate of the value, none for eWin7";
    EXPECT_EQ(answer.copy, 1);
  }
}

}  // namespace

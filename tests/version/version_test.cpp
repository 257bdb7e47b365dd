// The version classes on real version resources, version_fixture.dll and
// version_notrans.dll (beside the program), and under the Windows versions
// that Wine reports to a program when told to.
#include <gtest/gtest.h>

#include "support/checks.h"
#include "support/wine_env.h"
#include "tarn/core.h"
#include "tarn/version.h"
#include "version/system_version.h"

namespace {

using namespace tarn_test;
using Info = CTarnFileVersionInfo;
using OS = CTarnSystemVersionInfo;

const std::string kFixture = BesideProgram("version_fixture.dll");
// String 1 of version_fixture.dll, loaded by the first object of the program.
const char kNotAvailable[] = "Fixture: no value";

auto Value(const char* name, DWORD translation = 0) {
  return [=](Info& info, char* b, DWORD n) { return info.QueryValue(b, n, name, translation); };
}

// Every text query of `info`, open on version_fixture.dll or closed. No help
// file lies beside the fixture.
std::vector<TextRow> Rows(Info& info, bool open) {
  auto row = [&](const char* what, auto call, const std::string& text, int result = 1) {
    return TextRow{what, [&info, call](char* b, DWORD n) { return std::invoke(call, info, b, n); },
                   open ? text : kNotAvailable, Short::kCut, open * result, open * result, true};
  };
  auto help = [&info](char* b, DWORD n) { return info.GetHelpFileName(b, n); };
  return {row("GetCompanyName", &Info::GetCompanyName, "Fixture Company"),
          row("GetFileDescription", &Info::GetFileDescription, "Version resource fixture"),
          row("GetFileVersion", &Info::GetFileVersion, "2.7.0.1234"),
          row("GetInternalName", &Info::GetInternalName, "FixtureInternal"),
          row("GetLegalCopyright", &Info::GetLegalCopyright, "Copyright (C) Fixture Authors"),
          row("GetOriginalFilename", &Info::GetOriginalFilename, "version_fixture.dll"),
          row("GetProductName", &Info::GetProductName, "Fixture Product"),
          row("GetProductVersion", &Info::GetProductVersion, "3.1 beta"),
          row("GetFixedFileVersion", &Info::GetFixedFileVersion, "2,7,0,1234"),
          row("GetFixedProductVersion", &Info::GetFixedProductVersion, "3,1,65535,0"),
          row("QueryValue", Value("ProductName", 0x040704E4), "Fixture Produkt"),
          row("QueryValue, not in that translation", Value("FileVersion", 0x040704E4), "", 0),
          row("QueryValue, a missing value", Value("NoSuchValue"), "", 0),
          row("QueryValue, no name", Value(""), kNotAvailable, 0),
          row("QueryValue, null name", Value(nullptr), kNotAvailable, 0),
          {"GetHelpFileName", help, "", Short::kCut, 0, 0, true}};
}

// First in the program: the not-available text comes from the module that
// the resource handle names when the first object is made, once.
TEST(FileVersion, OpensOnlyWhileClosedOnATranslatedResourceAndCopiesAnswerAsTheSource) {
  const std::string noTranslation = BesideProgram("version_notrans.dll");
  ASSERT_GT(::GetFileVersionInfoSizeA(noTranslation.c_str(), nullptr), 0u) << "has a resource";
  HMODULE module = ::LoadLibraryA(kFixture.c_str());
  TarnSetResourceHandle(module);
  Info copy, assigned, closed;
  TarnSetResourceHandle(::GetModuleHandleA(nullptr));
  Info::Initialize();
  ExpectBalanced("opens and copies, failed ones included", [&] {
    Info source, own;  // gone before the copies are asked
    ASSERT_EQ(source.Open(module), 1);
    ASSERT_EQ(own.Open(HINSTANCE{}), 1);
    EXPECT_EQ(source.Open(HINSTANCE{}), 0) << "a second Open keeps the first file";
    closed = assigned = own;
    assigned = source;  // releases what it held
    assigned = assigned;
    copy = Info(source);
    closed = Info();
    const char* const paths[] = {nullptr, "", "T:\\no.dll", noTranslation.c_str()};
    for (const char* path : paths) EXPECT_EQ(closed.Open(path), 0) << path;
  }, 250);
  ::FreeLibrary(module);
  CheckTextRows(Rows(copy, true));
  CheckTextRows(Rows(assigned, true));
  CheckTextRows(Rows(closed, false));
  VS_FIXEDFILEINFO record;
  memset(&record, 0xAB, sizeof record);
  EXPECT_EQ(closed.GetFixedInfo(record), 0);
  EXPECT_EQ(record.dwSignature, 0xABABABABu) << "written while closed";
  ASSERT_EQ(copy.GetFixedInfo(record), 1);
  EXPECT_EQ(record.dwSignature, 0xFEEF04BDu);
  EXPECT_EQ(record.dwFileDateLS, 0u) << "the last of the 52 bytes";
  EXPECT_EQ(closed.Open(kFixture.c_str()), 1) << "a failed Open left something behind";
}

// version_fixture.dll copied as Tool.dll, next to the files of each row and
// opened with a slash (the path is kept as given). Its "HelpFileName" names
// Manual.chm (the drive and directory do not count), its "InternalName"
// FixtureInternal (no extension: the opened file's).
TEST(FileVersionHelp, FirstExistingBaseDecidesAndItsHlpMustExist) {
  const std::pair<const char*, const char*> rows[] = {  // the files there, the help file found
      {"Tool.hlp FixtureInternal.hlp Manual.hlp", "Tool.hlp"},  // a .hlp alone is no base
      {"Tool.hlp FixtureInternal.dll", ""},  // a chosen base without .hlp ends the search
      {"Tool.hlp FixtureInternal.dll FixtureInternal.hlp", "FixtureInternal.hlp"},
      {"FixtureInternal.dll FixtureInternal.hlp Manual.chm Manual.hlp", "Manual.hlp"},
  };
  for (const auto& [files, found] : rows) {
    SCOPED_TRACE(files);
    ScratchDir dir;
    ASSERT_TRUE(::CopyFileA(kFixture.c_str(), (dir / "Tool.dll").c_str(), FALSE));
    std::istringstream names(files);
    for (std::string name; names >> name;) WriteFile(dir / name, "x");
    Info info;
    ASSERT_EQ(info.Open((dir.path() + "/Tool.dll").c_str()), 1);
    const int result = *found ? 1 : 0;
    CheckTextRows({{"GetHelpFileName", [&](char* b, DWORD n) { return info.GetHelpFileName(b, n); },
                    result ? dir.path() + "/" + found : "", Short::kCut, result, result, true}});
  }
}

OSVERSIONINFOEXA Record(DWORD platform, DWORD major, DWORD minor, WORD suite = 0) {
  return {sizeof(OSVERSIONINFOEXA), major, minor, 0, platform, {}, 0, 0, suite, VER_NT_SERVER, 0};
}

// The product type (a server in every record) and the suite mask play no
// part in the identification.
TEST(SystemVersionTable, RowByRowOnRecords) {
  constexpr DWORD k9x = VER_PLATFORM_WIN32_WINDOWS, kNT = VER_PLATFORM_WIN32_NT;
  const struct { DWORD platform, major, minor; OS::eOperatingSystem os; } rows[] = {
      {VER_PLATFORM_WIN32s, 3, 10, OS::eWin32S}, {k9x, 5, 0, OS::eWinME}, {k9x, 4, 90, OS::eWinME},
      {k9x, 4, 89, OS::eWin98},  {k9x, 4, 1, OS::eWin98},    {k9x, 4, 0, OS::eWin95},
      {k9x, 3, 95, OS::eWin95},  {kNT, 3, 51, OS::eNT35},    {kNT, 4, 90, OS::eNT40},
      {kNT, 5, 0, OS::eWin2000}, {kNT, 5, 1, OS::eWinXP},    {kNT, 5, 2, OS::eWinServer2003},
      {kNT, 5, 3, OS::eUnknownOS}, {kNT, 6, 0, OS::eWinVista}, {kNT, 6, 1, OS::eWin7},
      {kNT, 6, 2, OS::eUnknownOS}, {kNT, 10, 0, OS::eWinVista}, {kNT, 10, 1, OS::eWin7},
      {3, 5, 0, OS::eUnknownOS}};
  for (const auto& row : rows)
    for (WORD suite : {0x0000, 0xFFFF})
      EXPECT_EQ(tarn::IdentifyOperatingSystem(Record(row.platform, row.major, row.minor, suite)),
                row.os) << "row " << &row - rows << ", suite " << suite;
  // Terminal services (VER_SUITE_TERMINAL, 0x10) count only in their
  // multi-session form (without VER_SUITE_SINGLEUSERTS, 0x100).
  const std::pair<WORD, BOOL> masks[] = {{0, 0}, {0x10, 1}, {0x110, 0}, {0xFEFF, 1}, {0xFFEF, 0}};
  for (auto [mask, multi] : masks)
    EXPECT_EQ(tarn::IsMultiUserTerminalServer(Record(kNT, 5, 2, mask)), multi) << mask;
}

// Runs itself, this test alone, under Windows versions that Wine reports to
// the program when its AppDefaults key says so; TARN_OS_PROBE holds the
// version, the system it must be taken for and whether it is NT. winxp64 is
// a workstation reporting 5.2.
TEST(SystemVersionUnderWine, IdentifiesWhatWineReports) {
  if (const char* run = getenv("TARN_OS_PROBE")) {
    int os = 0, nt = 0;
    ASSERT_EQ(sscanf(run, "%*s %d %d", &os, &nt), 2) << run;
    const OS source, info(source);
    EXPECT_EQ(info.GetOperatingSystem(), os);
    EXPECT_EQ(info.IsWinNTPlatform(), nt);
    EXPECT_EQ(info.IsTerminalServer(), 0) << "Wine reports single-session terminal services";
    const int is[] = {info.IsUnknownOS(), info.IsWin32S(), info.IsWin95(),   info.IsWin98(),
                      info.IsWinME(),     info.IsNT35(),   info.IsNT40(),    info.IsWin2000(),
                      info.IsWinXP(),     info.IsWinServer2003(),           info.IsWinVista()};
    for (int value = 0; value < 11; ++value) EXPECT_EQ(is[value], value == os) << value;
    return;
  }
  for (const char* run : {"win98 3 0", "winxp64 9 1", "win7 11 1", "win8 0 1"}) {
    _putenv_s("TARN_OS_PROBE", run);
    EXPECT_EQ(RunUnderWindowsVersion(std::string(run, strcspn(run, " ")),
                                     "--gtest_brief=1 --gtest_filter=SystemVersionUnderWine.*"),
              0)
        << run;
  }
  _putenv_s("TARN_OS_PROBE", "");
}

}  // namespace

// Path and file-name rules on the drives of the test prefix: T: and U: fixed,
// R: removable with a medium, Q: removable without one.
#include <gtest/gtest.h>

#include <shlwapi.h>
#include <string.h>

#include <string>

#include "core/platform.h"
#include "support/wine_env.h"
#include "tarn/files.h"

namespace {

using tarn_test::Root;
using tarn_test::ScratchDir;

std::string OnDrive(char drive, const char* rest) { return std::string(1, drive) + ":" + rest; }

TEST(PathIsValid, FixedDrivePathsAndWhatBreaksThem) {
  int removable = 7;
  EXPECT_EQ(TarnPathIsValid(OnDrive('T', "\\dir\\file.txt").c_str(), 0, &removable), 1);
  EXPECT_EQ(removable, 0);
  EXPECT_EQ(TarnPathIsValid(OnDrive('T', "\\dir\\*.txt").c_str(), 1, nullptr), 0) << "wildcard";
  EXPECT_EQ(TarnPathIsValid(OnDrive('T', "\\dir\\fi?e").c_str(), 1, nullptr), 0) << "wildcard";
  EXPECT_EQ(TarnPathIsValid(OnDrive('T', "\\dir\\\\file").c_str(), 1, nullptr), 0)
      << "doubled backslash inside";
  EXPECT_EQ(TarnPathIsValid(OnDrive('T', "dir").c_str(), 1, nullptr), 0) << "drive-relative";
  EXPECT_EQ(TarnPathIsValid(OnDrive('T', "").c_str(), 1, nullptr), 1) << "bare drive passes";
  EXPECT_EQ(TarnPathIsValid(OnDrive('T', "\\dir\\file:stream").c_str(), 1, nullptr), 0)
      << "late colon";
  EXPECT_EQ(TarnPathIsValid(OnDrive('T', "\\a\\..\\b").c_str(), 1, nullptr), 1);
  EXPECT_EQ(TarnPathIsValid(OnDrive('T', "\\a|b").c_str(), 1, nullptr), 0) << "invalid char";
  EXPECT_EQ(TarnPathIsValid(OnDrive('T', "\\a\"b").c_str(), 1, nullptr), 0) << "invalid char";
  EXPECT_EQ(TarnPathIsValid("S:\\dir", 1, nullptr), 0) << "no such drive";
}

TEST(PathIsValid, UncPathsAreNeverTyped) {
  int removable = 7;
  EXPECT_EQ(TarnPathIsValid("\\\\server\\share\\file", 0, &removable), 1);
  EXPECT_EQ(removable, 0);
  EXPECT_EQ(TarnPathIsValid("\\\\server\\share\\\\file", 0, nullptr), 0);
  EXPECT_EQ(TarnPathIsValid("\\\\\\server\\share", 0, nullptr), 0) << "three at the start";
}

TEST(PathIsValid, RemovableDriveWithFlagZeroAndOne) {
  const std::string path = OnDrive(tarn_test::kRemovableDrive, "\\dir\\file.txt");
  int removable = 0;
  EXPECT_EQ(TarnPathIsValid(path.c_str(), 0, &removable), 0);
  EXPECT_EQ(removable, 1);
  removable = 0;
  EXPECT_EQ(TarnPathIsValid(path.c_str(), 1, &removable), 1);
  EXPECT_EQ(removable, 1);
  EXPECT_EQ(TarnPathIsValid(path.c_str(), 1, nullptr), 1);
}

TEST(PathIsValid, LengthSpacesNullAndEmpty) {
  int removable = 7;
  EXPECT_EQ(TarnPathIsValid(nullptr, 1, &removable), 0);
  EXPECT_EQ(removable, 0) << "cleared before the argument checks";
  EXPECT_EQ(TarnPathIsValid("", 1, nullptr), 0);
  EXPECT_EQ(TarnPathIsValid("   ", 1, nullptr), 0);

  // Canonical length: 259 bytes pass, a path past the platform limit fails.
  std::string path = "T:\\" + std::string(252, 'a') + "\\bcd";
  ASSERT_EQ(path.size(), 259u);
  EXPECT_EQ(TarnPathIsValid(path.c_str(), 1, nullptr), 1);
  std::string longer = "T:\\" + std::string(300, 'a');
  EXPECT_EQ(TarnPathIsValid(longer.c_str(), 1, nullptr), 0);
}

TEST(FilenameIsValid, ClassesAndSpaces) {
  EXPECT_EQ(TarnFilenameIsValid("report.txt"), 1);
  EXPECT_EQ(TarnFilenameIsValid(" a"), 1);
  EXPECT_EQ(TarnFilenameIsValid("   "), 0);
  for (const char* bad : {"a\\b", "a:b", "a*b", "a?b", "a|b", "a<b", "a\"b", "a/b"})
    EXPECT_EQ(TarnFilenameIsValid(bad), 0) << bad;
  EXPECT_EQ(TarnFilenameIsValid(nullptr), 0);
  EXPECT_EQ(TarnFilenameIsValid(""), 0);
  EXPECT_EQ(TarnFilenameIsValid("CON"), 1) << "reserved names are not examined";
}

TEST(ReplaceInvalidFilenameCharacters, MasksAndCounts) {
  char name[] = "x:y*z";
  EXPECT_EQ(TarnReplaceInvalidFilenameCharacters(name, '_', 0x03), 2u);
  EXPECT_STREQ(name, "x_y_z");

  char all[] = "abc";
  EXPECT_EQ(TarnReplaceInvalidFilenameCharacters(all, '-', 0), 3u);
  EXPECT_STREQ(all, "---");

  // Accepting wildcards keeps them, the separator still goes.
  char wild[] = "a*\\b";
  EXPECT_EQ(TarnReplaceInvalidFilenameCharacters(wild, '_', GCT_LFNCHAR | GCT_WILD), 1u);
  EXPECT_STREQ(wild, "a*_b");

  char empty[] = "";
  EXPECT_EQ(TarnReplaceInvalidFilenameCharacters(empty, '_', 0), 0u);
  EXPECT_EQ(TarnReplaceInvalidFilenameCharacters(nullptr, '_', 0), 0u);
}

TEST(IsReservedDeviceName, TheSixteenNamesAndNoOthers) {
  for (const char* name : {"nul", "Clock$", "LPT", "AUX", "con", "PRN", "EPT", "COM", "COM1",
                           "com4", "LPT1", "lpt4"})
    EXPECT_EQ(TarnIsReservedDeviceName(name), 1) << name;
  for (const char* name : {"COM5", "LPT9", "CON.txt", "con1", "", "NULL", "CLOCK"})
    EXPECT_EQ(TarnIsReservedDeviceName(name), 0) << name;
  EXPECT_EQ(TarnIsReservedDeviceName(nullptr), 0);
}

TEST(DriveIsEqual, RootsOfDrivesAndShares) {
  EXPECT_EQ(TarnDriveIsEqual("D:\\x", "D:\\y"), 1);
  EXPECT_EQ(TarnDriveIsEqual("d:", "D:\\y"), 1);
  EXPECT_EQ(TarnDriveIsEqual("D:\\x", "E:\\x"), 0);
  EXPECT_EQ(TarnDriveIsEqual("D", "D:\\x"), 0) << "shorter than two bytes";
  EXPECT_EQ(TarnDriveIsEqual(nullptr, "D:\\x"), 0);
  EXPECT_EQ(TarnDriveIsEqual("D:\\x", nullptr), 0);
  EXPECT_EQ(TarnDriveIsEqual("\\\\srv\\share\\a", "\\\\srv\\share\\b"), 1);
  EXPECT_EQ(TarnDriveIsEqual("\\\\srv\\share\\a", "\\\\srv\\other\\a"), 0);
  // Past 259 bytes the path is cut, not overrun.
  const std::string longPath = "D:\\" + std::string(400, 'x');
  EXPECT_EQ(TarnDriveIsEqual(longPath.c_str(), "D:\\y"), 1);
}

TEST(PathIsEqual, CaseExtensionsAndDrives) {
  EXPECT_EQ(TarnPathIsEqual("T:\\Dir\\File.TXT", "T:\\dir\\file.txt"), 1);
  EXPECT_EQ(TarnPathIsEqual("T:\\dir\\file", "T:\\dir\\file."), 1) << "empty extension is '.'";
  EXPECT_EQ(TarnPathIsEqual("T:\\dir\\file", "U:\\dir\\file"), 0);
  EXPECT_EQ(TarnPathIsEqual("T:\\dir\\file.a", "T:\\dir\\file.b"), 0);
  EXPECT_EQ(TarnPathIsEqual("T:\\dir\\file", "T:\\other\\file"), 0);
  EXPECT_EQ(TarnPathIsEqual("T:\\a\\..\\b\\f", "T:\\b\\f"), 0) << "nothing is canonicalized";
  EXPECT_EQ(TarnPathIsEqual(nullptr, "T:\\x"), 0);
}

TEST(PathIsEqual, LongAndShortFormOfAnExistingPath) {
  ScratchDir dir;
  const std::string longName = dir / "A long directory name";
  ASSERT_TRUE(::CreateDirectoryA(longName.c_str(), nullptr));
  const std::string longFile = longName + "\\Some long file name.text";
  tarn_test::WriteFile(longFile, "x");
  char shortFile[MAX_PATH] = {};
  ASSERT_GT(::GetShortPathNameA(longFile.c_str(), shortFile, MAX_PATH), 0u);
  ASSERT_STRNE(shortFile, longFile.c_str()) << "the platform gave no short form";
  EXPECT_EQ(TarnPathIsEqual(longFile.c_str(), shortFile), 1);
  EXPECT_EQ(TarnPathIsEqual(shortFile, longFile.c_str()), 1);
}

TEST(FilenameIsEqual, NamesAndExtensionsOnly) {
  EXPECT_EQ(TarnFilenameIsEqual("D:\\a\\report.txt", "E:\\b\\REPORT.TXT"), 1);
  EXPECT_EQ(TarnFilenameIsEqual("a", "a"), 0) << "shorter than two bytes";
  EXPECT_EQ(TarnFilenameIsEqual("archive.tar.gz", "archive.gz"), 0);
  EXPECT_EQ(TarnFilenameIsEqual("x\\file", "y\\file."), 1);
  EXPECT_EQ(TarnFilenameIsEqual("file.a", "file.b"), 0);
  EXPECT_EQ(TarnFilenameIsEqual(nullptr, "file"), 0);
  // A name part too long for its buffer is refused, not a crash.
  const std::string huge = "C:\\" + std::string(300, 'n') + ".txt";
  EXPECT_EQ(TarnFilenameIsEqual(huge.c_str(), huge.c_str()), 0);
}

// Wine answers for every mapped drive, even one whose medium is missing, so
// the empty drive is stood in for at the platform call.
UINT g_modeDuringCall = 0;
const wchar_t* g_rootSeen = nullptr;
BOOL WINAPI EmptyDrive(LPCWSTR root, LPWSTR volume, DWORD volumeSize, LPDWORD serial,
                       LPDWORD maxComponent, LPDWORD flags, LPWSTR fsName, DWORD fsNameSize) {
  g_modeDuringCall = ::GetErrorMode();
  g_rootSeen = root;
  EXPECT_NE(volume, nullptr);
  EXPECT_EQ(volumeSize, static_cast<DWORD>(MAX_PATH));
  EXPECT_EQ(serial, nullptr);
  EXPECT_NE(maxComponent, nullptr);
  EXPECT_NE(flags, nullptr);
  EXPECT_NE(fsName, nullptr);
  EXPECT_EQ(fsNameSize, static_cast<DWORD>(MAX_PATH));
  ::SetLastError(ERROR_NOT_READY);
  return FALSE;
}

TEST(DeviceIsReady, EmptyRemovableDriveFailsWithoutAPrompt) {
  tarn::Platform().GetVolumeInformationW = EmptyDrive;
  ::SetErrorMode(SEM_NOOPENFILEERRORBOX);
  EXPECT_EQ(TarnDeviceIsReady("Q:\\"), 0);
  EXPECT_EQ(g_modeDuringCall, static_cast<UINT>(SEM_FAILCRITICALERRORS));
  EXPECT_EQ(::GetErrorMode(), static_cast<UINT>(SEM_NOOPENFILEERRORBOX)) << "mode restored";
  g_rootSeen = reinterpret_cast<const wchar_t*>(1);
  EXPECT_EQ(TarnDeviceIsReady(nullptr), 0);
  EXPECT_EQ(g_rootSeen, nullptr) << "a null root reaches the platform as null";
  ::SetErrorMode(0);
  tarn::testing::ResetPlatform();
}

TEST(DeviceIsReady, RealDrives) {
  EXPECT_NE(TarnDeviceIsReady(Root(tarn_test::kFixedDrive).c_str()), 0);
  EXPECT_NE(TarnDeviceIsReady(Root(tarn_test::kRemovableDrive).c_str()), 0);
  EXPECT_EQ(TarnDeviceIsReady("S:\\"), 0) << "no such drive";
}

}  // namespace

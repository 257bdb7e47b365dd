// Temporary directory, names and files, module paths and known folders.
//
// TarnTempDirectory repairs the process environment, so the cases that need
// TMP or TEMP missing run in a child: this program started again with a
// filter that selects the DISABLED_ test below.
#include <gtest/gtest.h>

#include <process.h>
#include <shlobj.h>
#include <stdlib.h>
#include <string.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "core/platform.h"
#include "files/files_test_util.h"
#include "support/wine_env.h"
#include "tarn/files.h"

namespace {

using namespace files_test;
using tarn_test::ScratchDir;

// The runtime's copy of the environment and the platform's, which _putenv
// keeps in step.
std::string Variable(const char* name) {
  const char* value = getenv(name);
  return value ? value : "<unset>";
}
std::string PlatformVariable(const char* name) {
  char value[1024];
  const DWORD length = ::GetEnvironmentVariableA(name, value, sizeof(value));
  return length ? std::string(value, length) : "<unset>";
}

// Runs this program again with only the test TempDirectoryChild.`name`;
// true if it ran and passed.
bool RunChild(const std::string& name) {
  ScratchDir dir;
  char program[MAX_PATH] = {};
  ::GetModuleFileNameA(nullptr, program, MAX_PATH);
  const std::string filter = "--gtest_filter=TempDirectoryChild." + name;
  const std::string output = "--gtest_output=xml:" + dir / "child.xml";
  const auto code = _spawnl(_P_WAIT, program, "child", "--gtest_also_run_disabled_tests",
                            filter.c_str(), output.c_str(), nullptr);
  // A filter that matched nothing passes too: make sure the test ran.
  return code == 0 && ReadAll(dir / "child.xml").find("tests=\"1\"") != std::string::npos;
}

// TarnTempDirectory's text (as long as it says) and then TMP and TEMP, each
// as the runtime and as the platform see it.
std::vector<std::string> TempDirectoryAndVariables() {
  char buffer[521];
  const DWORD length = std::min<DWORD>(TarnTempDirectory(buffer, sizeof(buffer)), sizeof(buffer));
  return {std::string(buffer, length), Variable("TMP"), PlatformVariable("TMP"), Variable("TEMP"),
          PlatformVariable("TEMP")};
}

// Only in a child, whose environment it may change for good.
TEST(TempDirectoryChild, DISABLED_TmpThenTempThenTheSystemDirectory) {
  using State = std::vector<std::string>;
  ScratchDir dir;
  const std::string longForm = dir / "A long temporary directory", unset = "<unset>";
  ASSERT_TRUE(::CreateDirectoryA(longForm.c_str(), nullptr));
  char shortName[MAX_PATH] = {};
  ::GetShortPathNameA(longForm.c_str(), shortName, MAX_PATH);
  const std::string shortForm = shortName, missing = "T:\\no such directory\\TMP";
  ASSERT_NE(shortForm, longForm) << "the platform gave no short form";

  // TMP set: the long form, a trailing backslash kept; a directory that does
  // not exist comes back as it is. The environment is not changed.
  _putenv("TEMP=");
  const std::pair<std::string, std::string> kCases[] = {
      {shortForm, longForm}, {longForm + "\\", longForm + "\\"}, {missing, missing}};
  for (const auto& c : kCases) {
    _putenv(("TMP=" + c.first).c_str());
    EXPECT_EQ(TempDirectoryAndVariables(), (State{c.second, c.first, c.first, unset, unset}));
  }
  // Without GetLongPathNameA the value comes back as it is.
  tarn::testing::HideFunction("kernel32.dll", "GetLongPathNameA");
  _putenv(("TMP=" + shortForm).c_str());
  EXPECT_EQ(TempDirectoryAndVariables()[0], shortForm);
  tarn::testing::ResetPlatform();

  // Only TEMP set: TMP repaired from it, TEMP unchanged; the second call
  // finds TMP.
  _putenv("TMP=");
  _putenv(("TEMP=" + shortForm).c_str());
  for (int call = 0; call < 2; ++call)
    EXPECT_EQ(TempDirectoryAndVariables(), (State{longForm, shortForm, shortForm, shortForm,
                                                  shortForm}));

  // Neither set: the system directory's ~Temp, created, in both.
  _putenv("TMP=");
  _putenv("TEMP=");
  char system[MAX_PATH] = {};
  ASSERT_GT(::GetSystemDirectoryA(system, MAX_PATH), 0u);
  const std::string expected = std::string(system) + "\\~Temp";
  const bool existed = IsDirectory(expected);
  EXPECT_EQ(TempDirectoryAndVariables(), State(5, expected));
  EXPECT_TRUE(IsDirectory(expected));
  if (!existed) ::RemoveDirectoryA(expected.c_str());
}

TEST(TempDirectory, FromTheEnvironmentCopiedOutAtTheBufferSize) {
  EXPECT_TRUE(RunChild("DISABLED_TmpThenTempThenTheSystemDirectory"));
  // 20 bytes, no such directory: it comes back as it is.
  const std::string value = "T:\\tarn-missing\\0123";
  ASSERT_EQ(value.size(), 20u);
  const ScopedVariable tmp("TMP", value);
  char buffer[32];
  for (DWORD size : {1u, 5u, 19u, 20u, 21u}) {
    memset(buffer, '#', sizeof(buffer));
    EXPECT_EQ(TarnTempDirectory(buffer, size), 20u) << size;
    const size_t kept = std::min<size_t>(size - 1, 20);
    EXPECT_EQ(std::string(buffer), value.substr(0, kept)) << size;
    for (size_t i = kept; i < size; ++i) EXPECT_EQ(buffer[i], '\0') << size << " zero-filled";
    EXPECT_EQ(buffer[size], '#') << size << ": nothing written past the buffer";
  }
  memset(buffer, '#', sizeof(buffer));
  EXPECT_EQ(TarnTempDirectory(buffer, 0), 0u);
  EXPECT_EQ(buffer[0], '#');
  EXPECT_EQ(TarnTempDirectory(nullptr, 32), 0u);
}

TEST(TempFilename, NamesAndFilesFromTheRuntime) {
  ScratchDir dir;
  // _tempnam may leave a file of a 260-byte name behind.
  const LongTreeCleanup cleanup{dir.path()};
  const ScopedVariable tmp("TMP", dir.path());
  const std::string start = dir.path() + "\\tst";
  char buffer[MAX_PATH + 8];
  const DWORD length = TarnTempFilename(buffer, MAX_PATH, nullptr, "tst");
  ASSERT_GT(length, start.size());
  EXPECT_EQ(strlen(buffer), length);
  EXPECT_EQ(std::string(buffer).substr(0, start.size()), start);
  EXPECT_FALSE(Exists(buffer)) << "only a name";
  // At the size limit: names differ from call to call, their lengths do not.
  for (DWORD size : {length - 1, length, length + 1}) {
    memset(buffer, '#', sizeof(buffer));
    EXPECT_EQ(TarnTempFilename(buffer, size, dir.path().c_str(), "tst"), length) << size;
    EXPECT_EQ(strlen(buffer), std::min<size_t>(size - 1, length)) << size;
    EXPECT_EQ(std::string(buffer).substr(0, start.size()), start);
    EXPECT_EQ(buffer[size], '#') << size;
  }

  ErrorOut err;
  HANDLE file = TarnCreateTempFile(dir.path().c_str(), "tst", GENERIC_READ | GENERIC_WRITE,
                                   CREATE_NEW, FILE_ATTRIBUTE_HIDDEN, 0, ERR(err));
  ASSERT_NE(file, INVALID_HANDLE_VALUE);
  EXPECT_TRUE(Outcome(err, 0));
  EXPECT_EQ(TarnFileWrite(file, "abc", 3, ERR(err)), 1);
  ::CloseHandle(file);
  WIN32_FIND_DATAA found = {};
  ::FindClose(::FindFirstFileA((dir / "tst*").c_str(), &found));
  EXPECT_EQ(found.nFileSizeLow, 3u);
  EXPECT_TRUE(found.dwFileAttributes & FILE_ATTRIBUTE_HIDDEN) << "flags reached the create";

  // _tempnam finds no directory: no name, and the create of the empty name
  // fails and reports.
  {
    const ScopedVariable missing("TMP", "T:\\tarn-missing");
    memset(buffer, '#', sizeof(buffer));
    EXPECT_EQ(TarnTempFilename(buffer, 10, "T:\\tarn-missing-too", "tst"), 0u);
    EXPECT_EQ(std::string(buffer, 10), std::string(10, '\0')) << "zero-filled all the same";
    EXPECT_EQ(TarnTempFilename(nullptr, 10, nullptr, nullptr), 0u);
    EXPECT_EQ(TarnTempFilename(buffer, 0, nullptr, nullptr), 0u);
    ::CreateFileW(L"", GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    const DWORD emptyCode = ::GetLastError();
    EXPECT_REPORT(INVALID_HANDLE_VALUE, emptyCode, TarnCreateTempFile, "T:\\tarn-missing",
                  nullptr, GENERIC_READ, OPEN_EXISTING, 0, 0);
  }

  // A directory so long that the name reaches 260 bytes: refused before the
  // create, and the caller's earlier code and text are still there.
  std::string deep = dir / std::string(200, 'd');
  ASSERT_TRUE(::CreateDirectoryA(deep.c_str(), nullptr));
  deep += "\\" + std::string(250 - deep.size(), 'e');
  ASSERT_TRUE(::CreateDirectoryA(deep.c_str(), nullptr));
  const ScopedVariable longTmp("TMP", deep);
  char name[300] = {};
  ASSERT_GE(TarnTempFilename(name, sizeof(name), deep.c_str(), "tst"), 260u) << name;
  ErrorOut earlier{1234};
  EXPECT_EQ(TarnCreateTempFile(deep.c_str(), "tst", GENERIC_WRITE, CREATE_NEW, 0, 0, ERR(earlier)),
            INVALID_HANDLE_VALUE);
  EXPECT_EQ(earlier.code, 1234u);
  EXPECT_STREQ(earlier.text, ErrorOut().text);
}

TEST(GetModulePath, DirectoryWithoutTrailingBackslash) {
  char full[MAX_PATH] = {};
  ASSERT_GT(::GetModuleFileNameA(nullptr, full, MAX_PATH), 0u);
  const std::string expected(full, strrchr(full, '\\') - full);
  char buffer[MAX_PATH + 8];
  // At the size limit: the whole directory or nothing.
  const DWORD exact = static_cast<DWORD>(expected.size() + 1);
  for (DWORD size : {exact + 1, exact, exact - 1, exact - 2}) {
    memset(buffer, '#', sizeof(buffer));
    const int fits = size >= exact;
    EXPECT_EQ(TarnGetModulePath(nullptr, buffer, size), fits) << size;
    EXPECT_EQ(std::string(buffer), fits ? expected : "") << size;
    EXPECT_EQ(buffer[fits ? size : 1], '#') << size;
  }

  memset(buffer, '#', sizeof(buffer));
  EXPECT_EQ(TarnGetModulePath(static_cast<HINSTANCE>(INVALID_HANDLE_VALUE), buffer, MAX_PATH), 0);
  EXPECT_EQ(buffer[0], '#') << "refused before the buffer is touched";
  EXPECT_EQ(TarnGetModulePath(reinterpret_cast<HINSTANCE>(0x1230000), buffer, MAX_PATH), 0)
      << "not a module";
  EXPECT_EQ(buffer[0], '\0');
  EXPECT_EQ(TarnGetModulePath(nullptr, nullptr, MAX_PATH), 0);
  EXPECT_EQ(TarnGetModulePath(nullptr, buffer, 0), 0);
}

// Points the user's "My Music" folder at `blocked` for one scope.
struct BlockedMusicFolder {
  const char* key = "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\User Shell Folders";
  char old[1024] = {};
  DWORD type = 0, size = sizeof(old);
  const bool had = !::RegGetValueA(HKEY_CURRENT_USER, key, "My Music", RRF_RT_ANY | RRF_NOEXPAND,
                                   &type, old, &size);
  explicit BlockedMusicFolder(const std::string& blocked) {
    ::RegSetKeyValueA(HKEY_CURRENT_USER, key, "My Music", REG_EXPAND_SZ, blocked.c_str(),
                      blocked.size() + 1);
  }
  ~BlockedMusicFolder() {
    had ? ::RegSetKeyValueA(HKEY_CURRENT_USER, key, "My Music", type, old, size)
        : ::RegDeleteKeyValueA(HKEY_CURRENT_USER, key, "My Music");
  }
};

TEST(GetFolderPath, KnownFoldersThroughShell32OrSHFolder) {
  char direct[MAX_PATH] = {};
  ASSERT_EQ(::SHGetFolderPathA(nullptr, CSIDL_APPDATA, nullptr, SHGFP_TYPE_CURRENT, direct), S_OK);
  const std::string expected = std::string(direct) + "\\";
  char buffer[MAX_PATH + 8];
  memset(buffer, '#', sizeof(buffer));
  EXPECT_EQ(TarnGetFolderPath(CSIDL_APPDATA, buffer, MAX_PATH - 1), 0);
  EXPECT_EQ(buffer[0], '#') << "a buffer under MAX_PATH is not handed on";
  for (DWORD size : {MAX_PATH, MAX_PATH + 1}) {
    EXPECT_EQ(TarnGetFolderPath(CSIDL_APPDATA, buffer, size), 1);
    EXPECT_EQ(buffer, expected);
  }
  EXPECT_TRUE(IsDirectory(buffer));
  EXPECT_EQ(TarnGetFolderPath(0x7E, buffer, MAX_PATH), 0) << "no such folder";

  // Shell32.dll without the function: SHFolder.dll serves, and is released.
  const bool shfolderLoaded = ::GetModuleHandleA("shfolder.dll") != nullptr;
  tarn::testing::HideFunction("shell32.dll", "SHGetFolderPathA");
  memset(buffer, '#', sizeof(buffer));
  EXPECT_EQ(TarnGetFolderPath(CSIDL_APPDATA, buffer, MAX_PATH), 1);
  EXPECT_EQ(buffer, expected);
  if (!shfolderLoaded) EXPECT_EQ(::GetModuleHandleA("shfolder.dll"), nullptr);
  tarn::testing::HideFunction("shfolder.dll", "SHGetFolderPathA");
  EXPECT_EQ(TarnGetFolderPath(CSIDL_APPDATA, buffer, MAX_PATH), 0);
  tarn::testing::ResetPlatform();

  // The current path cannot be made (a file stands in its way): the default
  // path is asked next.
  ScratchDir dir;
  tarn_test::WriteFile(dir / "blocker", "x");
  const BlockedMusicFolder blocked(dir / "blocker\\Music");
  char path[MAX_PATH] = {};
  ASSERT_NE(::SHGetFolderPathA(nullptr, CSIDL_MYMUSIC | CSIDL_FLAG_CREATE, nullptr,
                               SHGFP_TYPE_CURRENT, path),
            S_OK);
  ASSERT_EQ(::SHGetFolderPathA(nullptr, CSIDL_MYMUSIC, nullptr, SHGFP_TYPE_DEFAULT, path), S_OK);
  EXPECT_EQ(TarnGetFolderPath(CSIDL_MYMUSIC, buffer, MAX_PATH), 1);
  EXPECT_EQ(buffer, std::string(path) + "\\");
}

}  // namespace

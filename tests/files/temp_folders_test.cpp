// Temporary directory, names and files, module paths and known folders.
//
// TarnTempDirectory repairs the process environment, so the cases that need
// TMP or TEMP missing run in a child: this program started again with an
// environment of its own and a filter that selects one of the DISABLED_
// tests below.
#include <gtest/gtest.h>

#include <shlobj.h>
#include <stdlib.h>
#include <string.h>

#include <algorithm>
#include <string>
#include <vector>

#include "core/platform.h"
#include "files/files_test_util.h"
#include "support/wine_env.h"
#include "tarn/files.h"

namespace {

using files_test::ErrorOut;
using files_test::IsDirectory;
using files_test::NothingReported;
using files_test::Reported;
using tarn_test::ScratchDir;

std::string Variable(const char* name) {
  const char* value = getenv(name);
  return value ? value : "<unset>";
}

// The platform's copy of the environment, which _putenv keeps in step.
std::string PlatformVariable(const char* name) {
  char value[1024];
  const DWORD length = ::GetEnvironmentVariableA(name, value, sizeof(value));
  return length ? std::string(value, length) : "<unset>";
}

// Sets a variable for one scope and puts the old value back.
class ScopedVariable {
 public:
  ScopedVariable(const char* name, const std::string& value)
      : name_(name), old_(getenv(name) ? getenv(name) : ""), had_(getenv(name) != nullptr) {
    _putenv((name_ + "=" + value).c_str());
  }
  ~ScopedVariable() { _putenv((name_ + "=" + (had_ ? old_ : "")).c_str()); }

 private:
  std::string name_;
  std::string old_;
  bool had_;
};

// A directory with a long name and its short (8.3) spelling.
struct LongAndShort {
  explicit LongAndShort(const ScratchDir& dir) : longForm(dir / "A long temporary directory") {
    ::CreateDirectoryA(longForm.c_str(), nullptr);
    char buffer[MAX_PATH] = {};
    ::GetShortPathNameA(longForm.c_str(), buffer, MAX_PATH);
    shortForm = buffer;
  }
  std::string longForm;
  std::string shortForm;
};

// Runs this program again with only the test `name` (a DISABLED_ test of
// TempDirectoryChild) and the current environment changed by `unset` and
// `set` ("NAME=value"). Returns the exit code; `output` gets what it wrote.
DWORD RunChild(const std::string& name, const std::vector<std::string>& unset,
               const std::vector<std::string>& set, std::string* output) {
  std::vector<std::string> entries;
  char* block = ::GetEnvironmentStringsA();
  for (const char* p = block; *p; p += strlen(p) + 1) {
    const std::string entry = p;
    const std::string variable = entry.substr(0, entry.find('=', 1));
    auto same = [&](const std::string& other) {
      return _stricmp(other.substr(0, other.find('=')).c_str(), variable.c_str()) == 0;
    };
    if (std::none_of(unset.begin(), unset.end(), same) &&
        std::none_of(set.begin(), set.end(), same))
      entries.push_back(entry);
  }
  ::FreeEnvironmentStringsA(block);
  entries.insert(entries.end(), set.begin(), set.end());
  std::string environment;
  for (const std::string& entry : entries) environment += entry + '\0';
  environment += '\0';

  ScratchDir dir;
  const std::string outputPath = dir / "child-output.txt";
  SECURITY_ATTRIBUTES inherit = {sizeof(inherit), nullptr, TRUE};
  HANDLE out = ::CreateFileA(outputPath.c_str(), GENERIC_WRITE, FILE_SHARE_READ, &inherit,
                             CREATE_ALWAYS, 0, nullptr);
  if (out == INVALID_HANDLE_VALUE) return 1000;
  char program[MAX_PATH] = {};
  ::GetModuleFileNameA(nullptr, program, MAX_PATH);
  std::string commandLine = std::string("\"") + program +
                            "\" --gtest_also_run_disabled_tests --gtest_filter=TempDirectoryChild." +
                            name;
  STARTUPINFOA startup = {};
  startup.cb = sizeof(startup);
  startup.dwFlags = STARTF_USESTDHANDLES;
  startup.hStdOutput = out;
  startup.hStdError = out;
  startup.hStdInput = ::GetStdHandle(STD_INPUT_HANDLE);
  PROCESS_INFORMATION process = {};
  const BOOL started =
      ::CreateProcessA(nullptr, &commandLine[0], nullptr, nullptr, TRUE, 0, &environment[0],
                       nullptr, &startup, &process);
  ::CloseHandle(out);
  if (!started) return 1001;
  ::WaitForSingleObject(process.hProcess, INFINITE);
  DWORD exitCode = 1002;
  ::GetExitCodeProcess(process.hProcess, &exitCode);
  ::CloseHandle(process.hThread);
  ::CloseHandle(process.hProcess);

  output->clear();
  HANDLE in = ::CreateFileA(outputPath.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE,
                            nullptr, OPEN_EXISTING, 0, nullptr);
  char chunk[512];
  DWORD done = 0;
  while (in != INVALID_HANDLE_VALUE && ::ReadFile(in, chunk, sizeof(chunk), &done, nullptr) && done)
    output->append(chunk, done);
  if (in != INVALID_HANDLE_VALUE) ::CloseHandle(in);
  // A filter that matched nothing passes too: make sure the test ran.
  if (output->find("[  PASSED  ] 1 test") == std::string::npos && exitCode == 0) exitCode = 1003;
  return exitCode;
}

// ---------------------------------------------------------------------------
// The child tests: they run only when the test above starts them.

TEST(TempDirectoryChild, DISABLED_TmpSet) {
  // TMP holds the short form of an existing directory; TEMP is missing.
  const std::string shortForm = Variable("TMP");
  const std::string longForm = Variable("TARN_EXPECTED");
  char buffer[521];
  EXPECT_EQ(TarnTempDirectory(buffer, sizeof(buffer)), longForm.size());
  EXPECT_EQ(buffer, longForm);
  EXPECT_EQ(Variable("TMP"), shortForm) << "the environment is not changed";
  EXPECT_EQ(Variable("TEMP"), "<unset>");
  EXPECT_EQ(PlatformVariable("TEMP"), "<unset>");

  // Without GetLongPathNameA the value comes back as it is.
  tarn::testing::HideFunction("kernel32.dll", "GetLongPathNameA");
  EXPECT_EQ(TarnTempDirectory(buffer, sizeof(buffer)), shortForm.size());
  EXPECT_EQ(buffer, shortForm);
  tarn::testing::ResetPlatform();

  // A trailing backslash stays; a directory that does not exist comes back
  // unchanged.
  _putenv(("TMP=" + longForm + "\\").c_str());
  EXPECT_EQ(TarnTempDirectory(buffer, sizeof(buffer)), longForm.size() + 1);
  EXPECT_EQ(buffer, longForm + "\\");
  const std::string missing = "T:\\no such directory\\TMP";
  _putenv(("TMP=" + missing).c_str());
  EXPECT_EQ(TarnTempDirectory(buffer, sizeof(buffer)), missing.size());
  EXPECT_EQ(buffer, missing);
}

TEST(TempDirectoryChild, DISABLED_OnlyTempSet) {
  const std::string shortForm = Variable("TEMP");
  const std::string longForm = Variable("TARN_EXPECTED");
  ASSERT_EQ(Variable("TMP"), "<unset>");
  char buffer[521];
  EXPECT_EQ(TarnTempDirectory(buffer, sizeof(buffer)), longForm.size());
  EXPECT_EQ(buffer, longForm);
  EXPECT_EQ(Variable("TMP"), shortForm) << "TMP repaired from TEMP";
  EXPECT_EQ(PlatformVariable("TMP"), shortForm);
  EXPECT_EQ(Variable("TEMP"), shortForm) << "TEMP unchanged";
  // The second call finds TMP.
  EXPECT_EQ(TarnTempDirectory(buffer, sizeof(buffer)), longForm.size());
  EXPECT_EQ(buffer, longForm);
}

TEST(TempDirectoryChild, DISABLED_NeitherSet) {
  ASSERT_EQ(Variable("TMP"), "<unset>");
  ASSERT_EQ(Variable("TEMP"), "<unset>");
  char system[MAX_PATH] = {};
  ASSERT_GT(::GetSystemDirectoryA(system, MAX_PATH), 0u);
  const std::string expected = std::string(system) + "\\~Temp";
  const bool existed = IsDirectory(expected);
  char buffer[521];
  memset(buffer, 'x', sizeof(buffer));
  EXPECT_EQ(TarnTempDirectory(buffer, sizeof(buffer)), expected.size());
  EXPECT_EQ(buffer, expected);
  EXPECT_TRUE(IsDirectory(expected));
  EXPECT_EQ(Variable("TMP"), expected);
  EXPECT_EQ(Variable("TEMP"), expected);
  EXPECT_EQ(PlatformVariable("TMP"), expected);
  EXPECT_EQ(PlatformVariable("TEMP"), expected);
  if (!existed) ::RemoveDirectoryA(expected.c_str());
}

TEST(TempDirectory, TmpThenTempThenTheSystemDirectory) {
  ScratchDir dir;
  const LongAndShort names(dir);
  ASSERT_NE(names.shortForm, names.longForm) << "the platform gave no short form";
  const std::string expected = "TARN_EXPECTED=" + names.longForm;
  std::string output;
  EXPECT_EQ(RunChild("DISABLED_TmpSet", {"TEMP"}, {"TMP=" + names.shortForm, expected}, &output),
            0u)
      << output;
  EXPECT_EQ(RunChild("DISABLED_OnlyTempSet", {"TMP"}, {"TEMP=" + names.shortForm, expected},
                     &output),
            0u)
      << output;
  EXPECT_EQ(RunChild("DISABLED_NeitherSet", {"TMP", "TEMP"}, {}, &output), 0u) << output;
}

TEST(TempDirectory, CopyOutAtTheBufferSize) {
  // 20 bytes, no such directory: it comes back as it is.
  const std::string value = "T:\\tarn-missing\\0123";
  ASSERT_EQ(value.size(), 20u);
  ScopedVariable tmp("TMP", value);
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

TEST(TempFilename, NamesFromTheRuntime) {
  ScratchDir dir;
  ScopedVariable tmp("TMP", dir.path());
  char buffer[MAX_PATH + 8];
  const DWORD length = TarnTempFilename(buffer, MAX_PATH, nullptr, "tst");
  ASSERT_GT(length, dir.path().size());
  EXPECT_EQ(strlen(buffer), length);
  EXPECT_EQ(std::string(buffer).substr(0, dir.path().size() + 4), dir.path() + "\\tst");
  EXPECT_EQ(::GetFileAttributesA(buffer), INVALID_FILE_ATTRIBUTES) << "only a name";
  const DWORD withoutPrefix = TarnTempFilename(buffer, MAX_PATH, dir.path().c_str(), nullptr);
  EXPECT_EQ(withoutPrefix, strlen(buffer));

  // At the size limit: names differ from call to call, their lengths do not.
  for (DWORD size : {length - 1, length, length + 1}) {
    memset(buffer, '#', sizeof(buffer));
    EXPECT_EQ(TarnTempFilename(buffer, size, dir.path().c_str(), "tst"), length) << size;
    const size_t kept = std::min<size_t>(size - 1, length);
    EXPECT_EQ(strlen(buffer), kept) << size;
    EXPECT_EQ(std::string(buffer).substr(0, dir.path().size() + 4), dir.path() + "\\tst");
    EXPECT_EQ(buffer[size], '#') << size;
  }

  // _tempnam finds no directory: no name.
  ScopedVariable missing("TMP", "T:\\tarn-missing");
  memset(buffer, '#', sizeof(buffer));
  EXPECT_EQ(TarnTempFilename(buffer, 10, "T:\\tarn-missing-too", "tst"), 0u);
  EXPECT_EQ(std::string(buffer, 10), std::string(10, '\0')) << "zero-filled all the same";
  EXPECT_EQ(TarnTempFilename(nullptr, 10, nullptr, nullptr), 0u);
  EXPECT_EQ(TarnTempFilename(buffer, 0, nullptr, nullptr), 0u);
}

TEST(CreateTempFile, OpensANewNameOrReportsTheCreate) {
  ScratchDir dir;
  // _tempnam may leave a file of a 260-byte name behind.
  const files_test::LongTreeCleanup cleanup(dir.path());
  ScopedVariable tmp("TMP", dir.path());
  ErrorOut err;
  HANDLE file = TarnCreateTempFile(dir.path().c_str(), "tst", GENERIC_READ | GENERIC_WRITE,
                                   CREATE_NEW, FILE_ATTRIBUTE_HIDDEN, 0, ERR(err));
  ASSERT_NE(file, INVALID_HANDLE_VALUE);
  EXPECT_TRUE(NothingReported(err));
  EXPECT_EQ(TarnFileWrite(file, "abc", 3, ERR(err)), 1);
  ::CloseHandle(file);
  WIN32_FIND_DATAA found;
  HANDLE search = ::FindFirstFileA((dir / "tst*").c_str(), &found);
  ASSERT_NE(search, INVALID_HANDLE_VALUE);
  ::FindClose(search);
  EXPECT_EQ(found.nFileSizeLow, 3u);
  EXPECT_TRUE(found.dwFileAttributes & FILE_ATTRIBUTE_HIDDEN) << "flags reached the create";

  // No name (no directory): the create of the empty name fails and reports.
  {
    ScopedVariable missing("TMP", "T:\\tarn-missing");
    ::SetLastError(0);
    ASSERT_EQ(::CreateFileW(L"", GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr),
              INVALID_HANDLE_VALUE);
    const DWORD emptyCode = ::GetLastError();
    EXPECT_EQ(TarnCreateTempFile("T:\\tarn-missing", nullptr, GENERIC_READ, OPEN_EXISTING, 0, 0,
                                 ERR(err)),
              INVALID_HANDLE_VALUE);
    EXPECT_TRUE(Reported(err, emptyCode));
  }

  // A directory so long that the name reaches 260 bytes: refused before the
  // create, and the caller's earlier code and text are still there.
  std::string deep = dir / std::string(200, 'd');
  ASSERT_TRUE(::CreateDirectoryA(deep.c_str(), nullptr));
  deep += "\\" + std::string(250 - deep.size(), 'e');
  ASSERT_TRUE(::CreateDirectoryA(deep.c_str(), nullptr));
  ASSERT_EQ(deep.size(), 251u);
  ScopedVariable longTmp("TMP", deep);
  char name[300] = {};
  ASSERT_GE(TarnTempFilename(name, sizeof(name), deep.c_str(), "tst"), 260u) << name;
  ErrorOut earlier;
  earlier.code = 1234;
  EXPECT_EQ(TarnCreateTempFile(deep.c_str(), "tst", GENERIC_WRITE, CREATE_NEW, 0, 0,
                               ERR(earlier)),
            INVALID_HANDLE_VALUE);
  EXPECT_EQ(earlier.code, 1234u);
  EXPECT_STREQ(earlier.text, "junk from an earlier call");
}

TEST(GetModulePath, DirectoryWithoutTrailingBackslash) {
  char full[MAX_PATH] = {};
  ASSERT_GT(::GetModuleFileNameA(nullptr, full, MAX_PATH), 0u);
  const std::string expected = std::string(full).substr(0, strrchr(full, '\\') - full);
  char buffer[MAX_PATH + 8];
  EXPECT_EQ(TarnGetModulePath(nullptr, buffer, MAX_PATH), 1);
  EXPECT_EQ(buffer, expected);
  EXPECT_EQ(TarnGetModulePath(::GetModuleHandleA(nullptr), buffer, MAX_PATH), 1);
  EXPECT_EQ(buffer, expected);

  const DWORD exact = static_cast<DWORD>(expected.size() + 1);
  memset(buffer, '#', sizeof(buffer));
  EXPECT_EQ(TarnGetModulePath(nullptr, buffer, exact), 1);
  EXPECT_EQ(buffer, expected);
  EXPECT_EQ(buffer[exact], '#');
  for (DWORD size : {exact - 1, exact - 2}) {
    memset(buffer, '#', sizeof(buffer));
    EXPECT_EQ(TarnGetModulePath(nullptr, buffer, size), 0) << size;
    EXPECT_EQ(buffer[0], '\0') << size;
    EXPECT_EQ(buffer[1], '#') << size;
  }

  // The library's own system modules have a path too.
  EXPECT_EQ(TarnGetModulePath(::GetModuleHandleA("kernel32.dll"), buffer, MAX_PATH), 1);
  char system[MAX_PATH] = {};
  ::GetSystemDirectoryA(system, MAX_PATH);
  EXPECT_EQ(_stricmp(buffer, system), 0) << buffer;

  memset(buffer, '#', sizeof(buffer));
  EXPECT_EQ(TarnGetModulePath(static_cast<HINSTANCE>(INVALID_HANDLE_VALUE), buffer, MAX_PATH), 0);
  EXPECT_EQ(buffer[0], '#') << "refused before the buffer is touched";
  EXPECT_EQ(TarnGetModulePath(reinterpret_cast<HINSTANCE>(0x1230000), buffer, MAX_PATH), 0)
      << "not a module";
  EXPECT_EQ(buffer[0], '\0');
  EXPECT_EQ(TarnGetModulePath(nullptr, nullptr, MAX_PATH), 0);
  EXPECT_EQ(TarnGetModulePath(nullptr, buffer, 0), 0);
}

TEST(GetFolderPath, KnownFoldersThroughShell32OrSHFolder) {
  char direct[MAX_PATH] = {};
  ASSERT_EQ(::SHGetFolderPathA(nullptr, CSIDL_APPDATA, nullptr, SHGFP_TYPE_CURRENT, direct), S_OK);
  const std::string expected = std::string(direct) + "\\";

  char buffer[MAX_PATH + 8];
  memset(buffer, '#', sizeof(buffer));
  EXPECT_EQ(TarnGetFolderPath(CSIDL_APPDATA, buffer, MAX_PATH - 1), 0);
  EXPECT_EQ(buffer[0], '#') << "a buffer under MAX_PATH is not handed on";
  EXPECT_EQ(TarnGetFolderPath(CSIDL_APPDATA, buffer, MAX_PATH), 1);
  EXPECT_EQ(buffer, expected);
  EXPECT_EQ(TarnGetFolderPath(CSIDL_APPDATA, buffer, MAX_PATH + 1), 1);
  EXPECT_EQ(buffer, expected);
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
  EXPECT_EQ(TarnGetFolderPath(CSIDL_APPDATA, buffer, MAX_PATH), 1);
}

// Points the user's "My Music" folder at a path that cannot be created (a
// file stands in its way) for one scope, then puts the old value back.
class BlockedMusicFolder {
 public:
  explicit BlockedMusicFolder(const std::string& blocked) {
    ::RegOpenKeyExA(HKEY_CURRENT_USER,
                    "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\User Shell Folders", 0,
                    KEY_QUERY_VALUE | KEY_SET_VALUE, &key_);
    had_ = ::RegQueryValueExA(key_, kValue, nullptr, &type_, reinterpret_cast<BYTE*>(old_),
                              &size_) == ERROR_SUCCESS;
    ::RegSetValueExA(key_, kValue, 0, REG_EXPAND_SZ, reinterpret_cast<const BYTE*>(blocked.c_str()),
                     static_cast<DWORD>(blocked.size() + 1));
  }
  ~BlockedMusicFolder() {
    if (had_)
      ::RegSetValueExA(key_, kValue, 0, type_, reinterpret_cast<const BYTE*>(old_), size_);
    else
      ::RegDeleteValueA(key_, kValue);
    ::RegCloseKey(key_);
  }

 private:
  static constexpr const char* kValue = "My Music";
  HKEY key_ = nullptr;
  bool had_ = false;
  DWORD type_ = 0;
  char old_[1024] = {};
  DWORD size_ = sizeof(old_);
};

TEST(GetFolderPath, DefaultPathWhenTheCurrentOneFails) {
  ScratchDir dir;
  tarn_test::WriteFile(dir / "blocker", "x");
  BlockedMusicFolder blocked(dir / "blocker\\Music");
  char path[MAX_PATH] = {};
  ASSERT_NE(::SHGetFolderPathA(nullptr, CSIDL_MYMUSIC | CSIDL_FLAG_CREATE, nullptr,
                               SHGFP_TYPE_CURRENT, path),
            S_OK)
      << "the current path was expected to fail";
  ASSERT_EQ(::SHGetFolderPathA(nullptr, CSIDL_MYMUSIC, nullptr, SHGFP_TYPE_DEFAULT, path), S_OK);
  char buffer[MAX_PATH];
  EXPECT_EQ(TarnGetFolderPath(CSIDL_MYMUSIC, buffer, sizeof(buffer)), 1);
  EXPECT_EQ(buffer, std::string(path) + "\\");
}

}  // namespace

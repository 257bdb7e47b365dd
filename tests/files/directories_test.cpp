// Directories: the search and its narrow record, existence, and creation
// level by level.
#include <gtest/gtest.h>

#include <mbctype.h>
#include <stddef.h>
#include <string.h>

#include <string>

#include "files/files_test_util.h"
#include "files/find_record.h"
#include "support/wine_env.h"
#include "tarn/files.h"

namespace {

using namespace files_test;
using tarn_test::ScratchDir;

// The narrow calls stop at MAX_PATH; the wide ones with the \\?\ prefix do not.
bool CreateLongDirectory(const std::string& path) {
  return ::CreateDirectoryW((L"\\\\?\\" + std::wstring(path.begin(), path.end())).c_str(),
                            nullptr) != 0;
}

// The thread's ANSI code page and the runtime's multibyte code page set to
// Japanese (932) for one scope.
struct JapaneseCodePage {
  LCID locale = ::GetThreadLocale();
  int mbcp = _getmbcp();
  JapaneseCodePage() {
    ::SetThreadLocale(MAKELCID(MAKELANGID(LANG_JAPANESE, SUBLANG_JAPANESE_JAPAN), SORT_DEFAULT));
    _setmbcp(932);
  }
  ~JapaneseCodePage() {
    ::SetThreadLocale(locale);
    _setmbcp(mbcp);
  }
};

TEST(DirectoryFind, HandleForDirectoriesRecordForBoth) {
  ScratchDir dir;
  const LongTreeCleanup cleanup{dir.path()};
  const std::string sub = dir / "sub\\", file = dir / "five.txt", gone = dir / "gone";
  ASSERT_TRUE(::CreateDirectoryA(sub.c_str(), nullptr));
  tarn_test::WriteFile(file, "12345");
  ErrorOut err;
  WIN32_FIND_DATAA record;
  memset(&record, 0x5A, sizeof(record));
  HANDLE find = TarnDirectoryFind(sub.c_str(), &record, ERR(err));
  ASSERT_NE(find, INVALID_HANDLE_VALUE) << "the trailing backslash is dropped";
  EXPECT_TRUE(Outcome(err, 0));
  EXPECT_STREQ(record.cFileName, "sub");
  EXPECT_TRUE(record.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY);
  EXPECT_EQ(record.dwReserved0, 0x5A5A5A5Au) << "not written";
  EXPECT_EQ(record.dwReserved1, 0x5A5A5A5Au) << "not written";
  EXPECT_TRUE(::FindClose(find)) << "the caller owns an open search";

  // A file: no handle, no code, but the record describes the file.
  EXPECT_REPORT(INVALID_HANDLE_VALUE, 0, TarnDirectoryFind, file.c_str(), &record);
  EXPECT_STREQ(record.cFileName, "five.txt");
  EXPECT_EQ(record.nFileSizeLow, 5u);
  EXPECT_REPORT(INVALID_HANDLE_VALUE, ERROR_FILE_NOT_FOUND, TarnDirectoryFind, gone.c_str(),
                &record);
  for (const char* empty : {"", static_cast<const char*>(nullptr)})
    EXPECT_REPORT(INVALID_HANDLE_VALUE, 0, TarnDirectoryFind, empty, &record);
  EXPECT_REPORT(INVALID_HANDLE_VALUE, 0, TarnDirectoryFind, sub.c_str(), nullptr);
  EXPECT_REPORT(1, 0, TarnDirectoryExist, sub.c_str());
  EXPECT_REPORT(0, 0, TarnDirectoryExist, file.c_str());
  EXPECT_REPORT(0, ERROR_FILE_NOT_FOUND, TarnDirectoryExist, gone.c_str());
  EXPECT_REPORT(0, 0, TarnDirectoryExist, nullptr);

  // The longest name the file system takes, and a path beyond MAX_PATH,
  // copied to the heap before its backslash goes.
  const std::string deep = dir / std::string(255, 'n') + "\\" + std::string(100, 'd');
  ASSERT_TRUE(CreateLongDirectory(dir / std::string(255, 'n')) && CreateLongDirectory(deep));
  find = TarnDirectoryFind((deep + "\\").c_str(), &record, ERR(err));
  ASSERT_NE(find, INVALID_HANDLE_VALUE) << err.text;
  ::FindClose(find);
  EXPECT_EQ(record.cFileName, std::string(100, 'd'));
}

TEST(FindRecord, NumbersAsTheyAreNamesCutAtTheirFields) {
  JapaneseCodePage japanese;
  WIN32_FIND_DATAW wide = {0x1234, {1, 2}, {3, 4}, {5, 6}, 7, 8};
  WIN32_FIND_DATAA narrow;
  memset(&narrow, 0x5A, sizeof(narrow));
  tarn::CopyFindRecord(wide, &narrow);
  // Both records begin alike: attributes, three times, size high and low.
  EXPECT_EQ(memcmp(&narrow, &wide, offsetof(WIN32_FIND_DATAA, dwReserved0)), 0);
  EXPECT_EQ(narrow.dwReserved0, 0x5A5A5A5Au);
  EXPECT_EQ(narrow.dwReserved1, 0x5A5A5A5Au);

  const wchar_t kA = 0x3042;  // two bytes in code page 932
  const struct { bool alternate; std::wstring name; int bytes; int kept; } kCases[] = {
      {false, std::wstring(129, kA), 258, 258},  {false, std::wstring(129, kA) + L"a", 259, 259},
      {false, std::wstring(130, kA), 260, 259},  {false, std::wstring(130, kA) + L"b", 261, 259},
      {true, std::wstring(6, kA), 12, 12},       {true, std::wstring(6, kA) + L"a", 13, 13},
      {true, std::wstring(7, kA), 14, 13},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.bytes);
    wcscpy(c.alternate ? wide.cAlternateFileName : wide.cFileName, c.name.c_str());
    tarn::CopyFindRecord(wide, &narrow);
    char expected[600] = {};
    ASSERT_EQ(::WideCharToMultiByte(932, 0, c.name.c_str(), -1, expected, sizeof(expected),
                                    nullptr, nullptr),
              c.bytes + 1);
    expected[c.kept] = '\0';
    EXPECT_STREQ(c.alternate ? narrow.cAlternateFileName : narrow.cFileName, expected);
  }
}

TEST(DirectoryCreate, AttributesOnCreatedLevelsResultOfTheLast) {
  ScratchDir dir;
  // Also for names the narrow clean-up would see in another code page.
  const LongTreeCleanup cleanup{dir.path()};
  const std::string x = dir / "x";
  ASSERT_TRUE(::CreateDirectoryA(x.c_str(), nullptr));
  const DWORD hidden = FILE_ATTRIBUTE_HIDDEN, system = FILE_ATTRIBUTE_SYSTEM;
  EXPECT_REPORT(1, 0, TarnDirectoryCreateAttr, (x + "\\y\\z").c_str(), hidden, 0);
  EXPECT_TRUE(Has(x + "\\y\\z", hidden | FILE_ATTRIBUTE_DIRECTORY) && Has(x + "\\y", hidden));
  EXPECT_FALSE(Has(x, hidden) || Has(dir.path(), hidden)) << "existed before";
  // Cleared first, then set: what is in both ends up set.
  EXPECT_REPORT(1, 0, TarnDirectoryCreateAttr, (dir / "both").c_str(), hidden | system, system);
  EXPECT_TRUE(Has(dir / "both", hidden | system));
  ::SetFileAttributesA((dir / "both").c_str(), FILE_ATTRIBUTE_NORMAL);
  // A trailing backslash: the last level repeats the one before and exists.
  EXPECT_REPORT(1, 0, TarnDirectoryCreateAttr, (dir / "t1\\t2\\").c_str(), hidden, 0);
  EXPECT_TRUE(Has(dir / "t1\\t2", hidden));
  EXPECT_REPORT(1, 0, TarnDirectoryCreate, (dir / "p\\q").c_str());
  EXPECT_TRUE(IsDirectory(dir / "p\\q") && !Has(dir / "p", hidden) && !Has(dir / "p\\q", hidden));

  // UNC: \, \\server and \\server\share are tried first and fail without
  // effect; the share's last level reports the platform's own code. The
  // current directory is on the test drive meanwhile, so that a fault could
  // only touch that drive's root as "\".
  char previous[MAX_PATH] = {};
  ::GetCurrentDirectoryA(MAX_PATH, previous);
  ASSERT_TRUE(::SetCurrentDirectoryA(dir.path().c_str()));
  const char* unc = "\\\\tarn-no-server\\share\\dir";
  EXPECT_FALSE(::CreateDirectoryA(unc, nullptr));
  const DWORD uncCode = ::GetLastError();
  EXPECT_REPORT(0, uncCode, TarnDirectoryCreateAttr, unc, hidden, 0);
  EXPECT_FALSE(Has("\\", hidden)) << "a level that failed keeps its attributes";
  ::SetFileAttributesA("\\", FILE_ATTRIBUTE_NORMAL);
  ::SetCurrentDirectoryA(previous);

  // Only the last level counts.
  tarn_test::WriteFile(dir / "file", "x");
  const struct { std::string path; int result; DWORD code; } kCases[] = {
      {dir.path(), 1, 0},
      {dir / "file", 1, 0},  // exists as a file
      // A level above fails (a file is in the way), then the last one for
      // want of its parent: that code is the one reported.
      {dir / "file\\sub", 0, ERROR_PATH_NOT_FOUND},
      {dir / "bad|name", 0, ERROR_INVALID_NAME},
      // Bare drives succeed at once; bare names and short texts are refused.
      {"T:", 1, 0}, {"T:\\", 1, 0}, {"S:", 1, 0}, {"S:\\", 1, 0}, {"T:x", 1, 0},
      {"newdir", 0, 0}, {"a", 0, 0}, {"", 0, 0},
      // Beyond MAX_PATH: the copy lives on the heap.
      {dir / std::string(120, 'a') + "\\" + std::string(120, 'b') + "\\" + std::string(40, 'c'),
       1, 0},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.path);
    EXPECT_REPORT(c.result, c.code, TarnDirectoryCreate, c.path.c_str());
  }
  EXPECT_REPORT(0, 0, TarnDirectoryCreate, nullptr);
  EXPECT_FALSE(IsDirectory("T:\\x") || IsDirectory("newdir"));

  // U+8868 is 0x95 0x5C in code page 932: its second byte is a backslash
  // that separates nothing, so no level may end inside it.
  JapaneseCodePage japanese;
  const wchar_t table[] = {0x8868, 0};
  char narrow[8] = {};
  ASSERT_EQ(::WideCharToMultiByte(932, 0, table, -1, narrow, sizeof(narrow), nullptr, nullptr), 3);
  ASSERT_EQ(narrow[1], '\\');
  ASSERT_TRUE(::CreateDirectoryA((dir / "j").c_str(), nullptr));
  EXPECT_REPORT(1, 0, TarnDirectoryCreate, (dir / "j\\" + narrow + "\\inner").c_str());
  const std::wstring j = std::wstring(dir.path().begin(), dir.path().end()) + L"\\j\\";
  int entries = 0;  // ".", ".." and the one level
  WIN32_FIND_DATAW found;
  HANDLE search = ::FindFirstFileW((j + L"*").c_str(), &found);
  for (BOOL more = search != INVALID_HANDLE_VALUE; more; more = ::FindNextFileW(search, &found))
    ++entries;
  ::FindClose(search);
  EXPECT_EQ(entries, 3);
  const DWORD attributes = ::GetFileAttributesW((j + table + L"\\inner").c_str());
  EXPECT_TRUE(attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY));
}

}  // namespace

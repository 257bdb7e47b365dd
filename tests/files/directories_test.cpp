// Directories: the search and its narrow record, existence, and creation
// level by level.
#include <gtest/gtest.h>

#include <mbctype.h>
#include <string.h>

#include <string>

#include "files/files_test_util.h"
#include "files/find_record.h"
#include "support/wine_env.h"
#include "tarn/files.h"

namespace {

using files_test::Attributes;
using files_test::ErrorOut;
using files_test::IsDirectory;
using files_test::NothingReported;
using files_test::Reported;
using tarn_test::ScratchDir;

bool IsHidden(const std::string& path) {
  const DWORD attributes = Attributes(path);
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_HIDDEN);
}

// The narrow calls stop at MAX_PATH; the wide ones with the \\?\ prefix do not.
bool CreateLongDirectory(const std::string& path) {
  return ::CreateDirectoryW((L"\\\\?\\" + std::wstring(path.begin(), path.end())).c_str(),
                            nullptr) != 0;
}

// The thread's ANSI code page and the runtime's multibyte code page set to
// Japanese (932) for one test, restored afterwards.
class JapaneseCodePage {
 public:
  JapaneseCodePage() : locale_(::GetThreadLocale()), mbcp_(_getmbcp()) {
    ::SetThreadLocale(MAKELCID(MAKELANGID(LANG_JAPANESE, SUBLANG_JAPANESE_JAPAN), SORT_DEFAULT));
    _setmbcp(932);
  }
  ~JapaneseCodePage() {
    ::SetThreadLocale(locale_);
    _setmbcp(mbcp_);
  }

 private:
  LCID locale_;
  int mbcp_;
};

TEST(DirectoryFind, HandleForDirectoriesRecordForBoth) {
  ScratchDir dir;
  ASSERT_TRUE(::CreateDirectoryA((dir / "sub").c_str(), nullptr));
  tarn_test::WriteFile(dir / "five.txt", "12345");
  ErrorOut err;
  WIN32_FIND_DATAA record;
  memset(&record, 0x5A, sizeof(record));

  HANDLE find = TarnDirectoryFind((dir / "sub\\").c_str(), &record, ERR(err));
  ASSERT_NE(find, INVALID_HANDLE_VALUE) << "the trailing backslash is dropped";
  EXPECT_TRUE(NothingReported(err));
  EXPECT_STREQ(record.cFileName, "sub");
  EXPECT_TRUE(record.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY);
  EXPECT_EQ(record.dwReserved0, 0x5A5A5A5Au) << "not written";
  EXPECT_EQ(record.dwReserved1, 0x5A5A5A5Au) << "not written";
  EXPECT_TRUE(::FindClose(find)) << "the caller owns an open search";

  EXPECT_NE(find = TarnDirectoryFind((dir / "sub").c_str(), &record, ERR(err)),
            INVALID_HANDLE_VALUE);
  ::FindClose(find);

  // A file: no handle, no code, but the record describes the file.
  memset(&record, 0x5A, sizeof(record));
  err = ErrorOut();
  EXPECT_EQ(TarnDirectoryFind((dir / "five.txt").c_str(), &record, ERR(err)),
            INVALID_HANDLE_VALUE);
  EXPECT_TRUE(NothingReported(err));
  EXPECT_STREQ(record.cFileName, "five.txt");
  EXPECT_EQ(record.nFileSizeLow, 5u);
  EXPECT_EQ(record.nFileSizeHigh, 0u);
  EXPECT_FALSE(record.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY);
  WIN32_FILE_ATTRIBUTE_DATA info;
  ASSERT_TRUE(::GetFileAttributesExA((dir / "five.txt").c_str(), GetFileExInfoStandard, &info));
  EXPECT_EQ(CompareFileTime(&record.ftLastWriteTime, &info.ftLastWriteTime), 0);
  EXPECT_EQ(CompareFileTime(&record.ftCreationTime, &info.ftCreationTime), 0);
  EXPECT_EQ(CompareFileTime(&record.ftLastAccessTime, &info.ftLastAccessTime), 0);

  EXPECT_EQ(TarnDirectoryFind((dir / "gone").c_str(), &record, ERR(err)), INVALID_HANDLE_VALUE);
  EXPECT_TRUE(Reported(err, ERROR_FILE_NOT_FOUND));
  EXPECT_EQ(TarnDirectoryFind((dir / "gone\\deeper").c_str(), &record, ERR(err)),
            INVALID_HANDLE_VALUE);
  EXPECT_TRUE(Reported(err, ERROR_PATH_NOT_FOUND));

  for (const char* empty : {"", static_cast<const char*>(nullptr)}) {
    err = ErrorOut();
    EXPECT_EQ(TarnDirectoryFind(empty, &record, ERR(err)), INVALID_HANDLE_VALUE);
    EXPECT_TRUE(NothingReported(err));
  }
  err = ErrorOut();
  EXPECT_EQ(TarnDirectoryFind(dir.path().c_str(), nullptr, ERR(err)), INVALID_HANDLE_VALUE);
  EXPECT_TRUE(NothingReported(err));
}

TEST(DirectoryFind, LongNamesAndPaths) {
  ScratchDir dir;
  const files_test::LongTreeCleanup cleanup(dir.path());
  // The longest name the file system takes comes through whole, with its
  // short name beside it.
  const std::string name(255, 'n');
  ASSERT_TRUE(CreateLongDirectory(dir / name));
  ErrorOut err;
  WIN32_FIND_DATAA record;
  HANDLE find = TarnDirectoryFind((dir / name).c_str(), &record, ERR(err));
  ASSERT_NE(find, INVALID_HANDLE_VALUE);
  ::FindClose(find);
  EXPECT_EQ(record.cFileName, name);
  EXPECT_GT(strlen(record.cAlternateFileName), 0u);
  EXPECT_LE(strlen(record.cAlternateFileName), 12u);

  // A path beyond MAX_PATH is copied to the heap before its backslash goes.
  const std::string deep = dir / name + "\\" + std::string(100, 'd');
  ASSERT_TRUE(CreateLongDirectory(deep));
  find = TarnDirectoryFind((deep + "\\").c_str(), &record, ERR(err));
  ASSERT_NE(find, INVALID_HANDLE_VALUE) << err.text;
  ::FindClose(find);
  EXPECT_EQ(record.cFileName, std::string(100, 'd'));
}

std::string In932(const std::wstring& text) {
  char narrow[600] = {};
  ::WideCharToMultiByte(932, 0, text.c_str(), -1, narrow, sizeof(narrow), nullptr, nullptr);
  return narrow;
}

// The narrow record made from `wide`, over a record filled with 0x5A bytes.
WIN32_FIND_DATAA Transferred(const WIN32_FIND_DATAW& wide) {
  WIN32_FIND_DATAA narrow;
  memset(&narrow, 0x5A, sizeof(narrow));
  tarn::CopyFindRecord(wide, &narrow);
  return narrow;
}

TEST(FindRecord, NamesAreCutAtTheirFields) {
  JapaneseCodePage japanese;
  WIN32_FIND_DATAW wide = {};
  wide.dwFileAttributes = 0x1234;
  wide.ftCreationTime = {1, 2};
  wide.ftLastAccessTime = {3, 4};
  wide.ftLastWriteTime = {5, 6};
  wide.nFileSizeHigh = 7;
  wide.nFileSizeLow = 8;
  const wchar_t kA = 0x3042;  // two bytes in code page 932

  struct Case {
    std::wstring name;
    size_t narrowBytes;
    size_t kept;
  };
  const Case names[] = {
      {std::wstring(129, kA), 258, 258},
      {std::wstring(129, kA) + L"a", 259, 259},
      {std::wstring(130, kA), 260, 259},
      {std::wstring(130, kA) + L"b", 261, 259},
  };
  for (const Case& c : names) {
    wcscpy(wide.cFileName, c.name.c_str());
    const WIN32_FIND_DATAA narrow = Transferred(wide);
    const std::string expected = In932(c.name);
    ASSERT_EQ(expected.size(), c.narrowBytes);
    EXPECT_EQ(narrow.cFileName, expected.substr(0, c.kept)) << c.narrowBytes;
    EXPECT_EQ(narrow.dwFileAttributes, 0x1234u);
    EXPECT_EQ(narrow.ftCreationTime.dwLowDateTime, 1u);
    EXPECT_EQ(narrow.ftCreationTime.dwHighDateTime, 2u);
    EXPECT_EQ(narrow.ftLastAccessTime.dwLowDateTime, 3u);
    EXPECT_EQ(narrow.ftLastAccessTime.dwHighDateTime, 4u);
    EXPECT_EQ(narrow.ftLastWriteTime.dwLowDateTime, 5u);
    EXPECT_EQ(narrow.ftLastWriteTime.dwHighDateTime, 6u);
    EXPECT_EQ(narrow.nFileSizeHigh, 7u);
    EXPECT_EQ(narrow.nFileSizeLow, 8u);
    EXPECT_EQ(narrow.dwReserved0, 0x5A5A5A5Au);
    EXPECT_EQ(narrow.dwReserved1, 0x5A5A5A5Au);
  }

  const Case alternates[] = {
      {std::wstring(6, kA), 12, 12},
      {std::wstring(6, kA) + L"a", 13, 13},
      {std::wstring(7, kA), 14, 13},
  };
  for (const Case& c : alternates) {
    wcscpy(wide.cAlternateFileName, c.name.c_str());
    const WIN32_FIND_DATAA narrow = Transferred(wide);
    const std::string expected = In932(c.name);
    ASSERT_EQ(expected.size(), c.narrowBytes);
    EXPECT_EQ(narrow.cAlternateFileName, expected.substr(0, c.kept)) << c.narrowBytes;
  }
}

TEST(DirectoryExist, DirectoriesOnly) {
  ScratchDir dir;
  tarn_test::WriteFile(dir / "file", "x");
  ErrorOut err;
  EXPECT_EQ(TarnDirectoryExist(dir.path().c_str(), ERR(err)), 1);
  EXPECT_TRUE(NothingReported(err));
  EXPECT_EQ(TarnDirectoryExist((dir.path() + "\\").c_str(), ERR(err)), 1);
  err = ErrorOut();
  EXPECT_EQ(TarnDirectoryExist((dir / "file").c_str(), ERR(err)), 0);
  EXPECT_TRUE(NothingReported(err));
  EXPECT_EQ(TarnDirectoryExist((dir / "gone").c_str(), ERR(err)), 0);
  EXPECT_TRUE(Reported(err, ERROR_FILE_NOT_FOUND));
  err = ErrorOut();
  EXPECT_EQ(TarnDirectoryExist(nullptr, ERR(err)), 0);
  EXPECT_TRUE(NothingReported(err));
}

TEST(DirectoryCreateAttr, AttributesOnlyOnTheLevelsItCreates) {
  ScratchDir dir;
  const std::string x = dir / "x";
  ASSERT_TRUE(::CreateDirectoryA(x.c_str(), nullptr));
  ErrorOut err;
  EXPECT_EQ(TarnDirectoryCreateAttr((x + "\\y\\z").c_str(), FILE_ATTRIBUTE_HIDDEN, 0, ERR(err)), 1);
  EXPECT_TRUE(NothingReported(err));
  EXPECT_TRUE(IsDirectory(x + "\\y\\z"));
  EXPECT_FALSE(IsHidden(dir.path()));
  EXPECT_FALSE(IsHidden(x)) << "existed before";
  EXPECT_TRUE(IsHidden(x + "\\y"));
  EXPECT_TRUE(IsHidden(x + "\\y\\z"));

  // Cleared first, then set: what is in both ends up set.
  const std::string both = dir / "both";
  EXPECT_EQ(TarnDirectoryCreateAttr(both.c_str(), FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM,
                                    FILE_ATTRIBUTE_SYSTEM, ERR(err)),
            1);
  EXPECT_EQ(Attributes(both) & (FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM),
            static_cast<DWORD>(FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM));
  ::SetFileAttributesA(both.c_str(), FILE_ATTRIBUTE_NORMAL);

  // A trailing backslash: the last level repeats the one before and exists.
  const std::string trailing = dir / "t1\\t2\\";
  EXPECT_EQ(TarnDirectoryCreateAttr(trailing.c_str(), FILE_ATTRIBUTE_HIDDEN, 0, ERR(err)), 1);
  EXPECT_TRUE(NothingReported(err));
  EXPECT_TRUE(IsHidden(dir / "t1\\t2"));
  EXPECT_EQ(TarnDirectoryCreateAttr(trailing.c_str(), 0, 0, ERR(err)), 1) << "exists now";

  // The same directories created by name only.
  EXPECT_EQ(TarnDirectoryCreate((dir / "p\\q\\r").c_str(), ERR(err)), 1);
  EXPECT_TRUE(IsDirectory(dir / "p\\q\\r"));
  EXPECT_FALSE(IsHidden(dir / "p\\q"));
  EXPECT_FALSE(IsHidden(dir / "p\\q\\r"));
}

TEST(DirectoryCreateAttr, OnlyTheLastLevelCounts) {
  ScratchDir dir;
  const files_test::LongTreeCleanup cleanup(dir.path());
  tarn_test::WriteFile(dir / "file", "x");
  ErrorOut err;
  EXPECT_EQ(TarnDirectoryCreate(dir.path().c_str(), ERR(err)), 1) << "exists";
  EXPECT_TRUE(NothingReported(err));
  EXPECT_EQ(TarnDirectoryCreate((dir / "file").c_str(), ERR(err)), 1) << "exists as a file";
  EXPECT_TRUE(NothingReported(err));
  // A level above fails (a file is in the way), then the last one for want
  // of its parent: that code is the one reported.
  EXPECT_EQ(TarnDirectoryCreate((dir / "file\\sub").c_str(), ERR(err)), 0);
  EXPECT_TRUE(Reported(err, ERROR_PATH_NOT_FOUND));
  EXPECT_EQ(TarnDirectoryCreate((dir / "bad|name").c_str(), ERR(err)), 0);
  EXPECT_TRUE(Reported(err, ERROR_INVALID_NAME));

  // UNC: \, \\server and \\server\share are tried first and fail without
  // effect; the share's last level reports the platform's own code. The
  // current directory is on the test drive meanwhile, so that a fault could
  // only touch that drive's root as "\".
  {
    char previous[MAX_PATH] = {};
    ::GetCurrentDirectoryA(MAX_PATH, previous);
    ASSERT_TRUE(::SetCurrentDirectoryA(dir.path().c_str()));
    const char* unc = "\\\\tarn-no-server\\share\\dir";
    ::SetLastError(0);
    EXPECT_FALSE(::CreateDirectoryA(unc, nullptr));
    const DWORD uncCode = ::GetLastError();
    EXPECT_EQ(TarnDirectoryCreateAttr(unc, FILE_ATTRIBUTE_HIDDEN, 0, ERR(err)), 0);
    EXPECT_TRUE(Reported(err, uncCode));
    EXPECT_FALSE(IsHidden("\\")) << "a level that failed keeps its attributes";
    ::SetFileAttributesA("\\", FILE_ATTRIBUTE_NORMAL);
    ::SetCurrentDirectoryA(previous);
  }

  // Bare drives succeed at once; bare names and short texts are refused.
  for (const char* drive : {"T:", "T:\\", "S:", "S:\\", "T:x"}) {
    err = ErrorOut();
    EXPECT_EQ(TarnDirectoryCreate(drive, ERR(err)), 1) << drive;
    EXPECT_TRUE(NothingReported(err));
  }
  EXPECT_FALSE(IsDirectory("T:\\x")) << "nothing created for T:x";
  for (const char* refused : {"newdir", "a", "", static_cast<const char*>(nullptr)}) {
    err = ErrorOut();
    EXPECT_EQ(TarnDirectoryCreate(refused, ERR(err)), 0) << (refused ? refused : "null");
    EXPECT_TRUE(NothingReported(err));
  }
  EXPECT_FALSE(IsDirectory("newdir"));

  // A path beyond MAX_PATH: the copy lives on the heap.
  const std::string deep =
      dir / std::string(120, 'a') + "\\" + std::string(120, 'b') + "\\" + std::string(40, 'c');
  ASSERT_GT(deep.size(), static_cast<size_t>(MAX_PATH));
  EXPECT_EQ(TarnDirectoryCreate(deep.c_str(), ERR(err)), 1) << err.text;
}

TEST(DirectoryCreateAttr, BackslashBytesInsideDoubleByteCharacters) {
  ScratchDir dir;
  // The narrow clean-up would see these names in another code page.
  const files_test::LongTreeCleanup cleanup(dir.path());
  JapaneseCodePage japanese;
  // U+8868 is 0x95 0x5C in code page 932: its second byte is a backslash.
  const wchar_t table[] = {0x8868, 0};
  char narrowTable[8] = {};
  ASSERT_EQ(::WideCharToMultiByte(932, 0, table, -1, narrowTable, sizeof(narrowTable), nullptr,
                                  nullptr),
            3);
  ASSERT_EQ(narrowTable[1], '\\');
  const std::string path = dir / narrowTable + "\\inner";
  ErrorOut err;
  EXPECT_EQ(TarnDirectoryCreate(path.c_str(), ERR(err)), 1) << err.text;
  const std::wstring wideDir(dir.path().begin(), dir.path().end());
  const DWORD attributes = ::GetFileAttributesW((wideDir + L"\\" + table + L"\\inner").c_str());
  EXPECT_NE(attributes, INVALID_FILE_ATTRIBUTES);
  EXPECT_TRUE(attributes & FILE_ATTRIBUTE_DIRECTORY);
}

}  // namespace

// File operations on real files of the test prefix (T: and U: are two
// different fixed drives), and the handles that all operations leave open.
#include <gtest/gtest.h>
#include <shlobj.h>
#include <windows.h>
#include <winioctl.h>

#include <string.h>

#include <string>

#include "files/files_test_util.h"
#include "support/wine_env.h"
#include "tarn/files.h"

namespace {

using namespace files_test;
using tarn_test::ScratchDir;

LONGLONG Position(HANDLE file) {
  LARGE_INTEGER zero = {}, position = {};
  ::SetFilePointerEx(file, zero, &position, FILE_CURRENT);
  return position.QuadPart;
}

using OpenFunction = HANDLE (*)(const char*, DWORD, DWORD, DWORD, DWORD, DWORD*, char*, DWORD);

TEST(FileCreateOpen, ArgumentsReachThePlatformInItsOrder) {
  ScratchDir dir;
  ErrorOut err;
  for (OpenFunction open : {&TarnFileCreate, &TarnFileOpen}) {
    const std::string path = dir / (open == &TarnFileCreate ? "created" : "opened");
    SCOPED_TRACE(path);
    // Any two arguments swapped change the outcome: disposition CREATE_NEW
    // (1), flags HIDDEN (2), share READ | DELETE (5).
    HANDLE file = open(path.c_str(), GENERIC_WRITE, CREATE_NEW, FILE_ATTRIBUTE_HIDDEN,
                       FILE_SHARE_READ | FILE_SHARE_DELETE, ERR(err));
    ASSERT_NE(file, INVALID_HANDLE_VALUE);
    EXPECT_TRUE(Outcome(err, 0));
    EXPECT_EQ(Attributes(path) & (FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_READONLY), 2u);
    // Share mode: others may not write.
    EXPECT_EQ(::CreateFileA(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                            nullptr, OPEN_EXISTING, 0, nullptr),
              INVALID_HANDLE_VALUE);
    EXPECT_EQ(::GetLastError(), static_cast<DWORD>(ERROR_SHARING_VIOLATION));
    // Access: written, not read.
    char byte = 0;
    EXPECT_EQ(TarnFileWrite(file, "x", 1, ERR(err)), 1);
    EXPECT_REPORT(0, ERROR_ACCESS_DENIED, TarnFileRead, file, &byte, 1);
    ::CloseHandle(file);
    // Disposition: CREATE_NEW refuses the file that now exists.
    EXPECT_REPORT(INVALID_HANDLE_VALUE, ERROR_FILE_EXISTS, open, path.c_str(), GENERIC_READ,
                  CREATE_NEW, 0, FILE_SHARE_READ);
  }
  const std::string missing = dir / "missing";
  EXPECT_REPORT(INVALID_HANDLE_VALUE, ERROR_FILE_NOT_FOUND, TarnFileOpen, missing.c_str(),
                GENERIC_READ, OPEN_EXISTING, 0, 0);
  // Without out-parameters the failed open's last error is still there.
  ::SetLastError(0);
  EXPECT_EQ(TarnFileOpen(missing.c_str(), GENERIC_READ, OPEN_EXISTING, 0, 0, nullptr, nullptr, 0),
            INVALID_HANDLE_VALUE);
  EXPECT_EQ(::GetLastError(), static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
}

TEST(FileReadWrite, ShortTransfersPositionsAndFailures) {
  ScratchDir dir;
  ErrorOut err;
  HANDLE file = TarnFileCreate((dir / "hundred").c_str(), GENERIC_READ | GENERIC_WRITE,
                               CREATE_ALWAYS, 0, 0, ERR(err));
  ASSERT_NE(file, INVALID_HANDLE_VALUE);
  char data[100];
  for (int i = 0; i < 100; ++i) data[i] = static_cast<char>('A' + i % 26);
  EXPECT_REPORT(1, 0, TarnFileWrite, file, data, sizeof(data));
  EXPECT_EQ(TarnFileSize(file, ERR(err)), 100);

  // 100 bytes asked 40 before the end: 0 without a code, 40 delivered, the
  // position past them.
  EXPECT_EQ(TarnFileSeek(file, 60, ERR(err)), 1);
  char buffer[100];
  memset(buffer, '.', sizeof(buffer));
  EXPECT_REPORT(0, 0, TarnFileRead, file, buffer, 100);
  EXPECT_EQ(std::string(buffer, 41), std::string(data + 60, 40) + '.');
  EXPECT_EQ(Position(file), 100);
  EXPECT_REPORT(0, 0, TarnFileRead, file, buffer, 1);  // at the end

  EXPECT_EQ(TarnFileSeek(file, 10, ERR(err)), 1);
  EXPECT_EQ(TarnFileRead(file, buffer, 90, ERR(err)), 1) << "exactly to the end";
  EXPECT_EQ(std::string(buffer, 90), std::string(data + 10, 90));
  EXPECT_EQ(TarnFileSeek(file, 0, ERR(err)), 1);
  EXPECT_EQ(TarnFileSeekEnd(file, ERR(err)), 1);
  EXPECT_EQ(Position(file), 100);
  EXPECT_REPORT(0, ERROR_NEGATIVE_SEEK, TarnFileSeek, file, -1);
  EXPECT_EQ(Position(file), 100) << "a failed seek does not move";
  ::CloseHandle(file);

  HANDLE bad = INVALID_HANDLE_VALUE;
  EXPECT_REPORT(0, ERROR_INVALID_HANDLE, TarnFileWrite, bad, buffer, 1);
  EXPECT_REPORT(0, ERROR_INVALID_HANDLE, TarnFileSeekEnd, bad);
  EXPECT_REPORT(-1, ERROR_INVALID_HANDLE, TarnFileSize, bad);
}

TEST(FileSize, LowPartAsSignedNumber) {
  ScratchDir dir;
  const std::string path = dir / "long.bin";
  const struct { LONGLONG size; int expected; } kCases[] = {
      {3000000000LL, static_cast<int>(3000000000u)}, {(1LL << 32) + 10, 10}, {0, 0}};
  for (const auto& c : kCases) {
    // Sparse where the file system allows: nothing is written.
    HANDLE file = ::CreateFileA(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    DWORD returned = 0;
    ::DeviceIoControl(file, FSCTL_SET_SPARSE, nullptr, 0, nullptr, 0, &returned, nullptr);
    LARGE_INTEGER end;
    end.QuadPart = c.size;
    ASSERT_TRUE(::SetFilePointerEx(file, end, nullptr, FILE_BEGIN) && ::SetEndOfFile(file));
    ::CloseHandle(file);
    EXPECT_REPORT(c.expected, 0, TarnFileSize, path.c_str());
    ASSERT_TRUE(::DeleteFileA(path.c_str()));
  }
  // The query shares reading and writing with a writer that holds the file.
  HANDLE writer = ::CreateFileA(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                nullptr, CREATE_ALWAYS, 0, nullptr);
  DWORD written = 0;
  ASSERT_TRUE(::WriteFile(writer, "abc", 3, &written, nullptr));
  EXPECT_REPORT(3, 0, TarnFileSize, path.c_str());
  ::CloseHandle(writer);
  EXPECT_REPORT(-1, ERROR_FILE_NOT_FOUND, TarnFileSize, (dir / "missing").c_str());
}

TEST(FileFindHide, FilesOnlyAndTheAttributeSetReplaced) {
  ScratchDir dir;
  const std::string file = dir / "here.txt", sub = dir / "sub";
  tarn_test::WriteFile(file, "x");
  ASSERT_TRUE(::CreateDirectoryA(sub.c_str(), nullptr));
  EXPECT_REPORT(1, 0, TarnFileFind, file.c_str());
  EXPECT_REPORT(0, 0, TarnFileFind, sub.c_str());
  EXPECT_REPORT(0, ERROR_FILE_NOT_FOUND, TarnFileFind, (dir / "gone").c_str());
  EXPECT_REPORT(0, ERROR_PATH_NOT_FOUND, TarnFileFind, (dir / "no\\gone").c_str());
  EXPECT_REPORT(0, ERROR_FILE_NOT_FOUND, TarnFileHide, (dir / "gone").c_str());
  for (const char* empty : {"", static_cast<const char*>(nullptr)}) {
    EXPECT_REPORT(0, 0, TarnFileFind, empty);
    EXPECT_REPORT(0, 0, TarnFileHide, empty);
  }

  // Hidden alone replaces read-only and system; an already hidden file keeps
  // its set.
  ASSERT_TRUE(::SetFileAttributesA(
      file.c_str(), FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_ARCHIVE | FILE_ATTRIBUTE_SYSTEM));
  EXPECT_REPORT(1, 0, TarnFileHide, file.c_str());
  EXPECT_EQ(Attributes(file) & (FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_READONLY |
                                FILE_ATTRIBUTE_SYSTEM),
            static_cast<DWORD>(FILE_ATTRIBUTE_HIDDEN));
  ASSERT_TRUE(::SetFileAttributesA(file.c_str(), FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_READONLY));
  EXPECT_REPORT(1, 0, TarnFileHide, file.c_str());
  EXPECT_TRUE(Has(file, FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_READONLY));
  ::SetFileAttributesA(file.c_str(), FILE_ATTRIBUTE_NORMAL);
  EXPECT_REPORT(1, 0, TarnFileHide, sub.c_str());
  EXPECT_TRUE(Has(sub, FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_DIRECTORY));
}

TEST(FileMove, RefusesOnOneDriveReplacesAcrossDrives) {
  ScratchDir t;
  ScratchDir u(tarn_test::kSecondFixedDrive);
  const std::string a = t / "a", b = t / "b", c = t / "c", ub = u / "b", x = t / "x";
  // Same drive: a rename, refused onto an existing file.
  tarn_test::WriteFile(a, "first");
  EXPECT_REPORT(1, 0, TarnFileMove, a.c_str(), b.c_str());
  EXPECT_FALSE(Exists(a));
  tarn_test::WriteFile(c, "second");
  EXPECT_REPORT(0, ERROR_ALREADY_EXISTS, TarnFileMove, c.c_str(), b.c_str());
  EXPECT_EQ(ReadAll(b) + ReadAll(c), "firstsecond");
  // Across drives: copied over the existing destination, source deleted.
  tarn_test::WriteFile(ub, "old");
  EXPECT_REPORT(1, 0, TarnFileMove, c.c_str(), ub.c_str());
  EXPECT_EQ(ReadAll(ub), "second");
  EXPECT_FALSE(Exists(c));

  // The copy succeeds, the delete does not (the source is held open without
  // delete sharing): both files stay, the delete's code is reported.
  HANDLE holder = ::CreateFileA(b.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                0, nullptr);
  EXPECT_REPORT(0, ERROR_SHARING_VIOLATION, TarnFileMove, b.c_str(), (u / "copy").c_str());
  ::CloseHandle(holder);
  EXPECT_EQ(ReadAll(u / "copy") + ReadAll(b), "firstfirst");

  // Directories are never moved; a missing source is the search's failure.
  ASSERT_TRUE(::CreateDirectoryA((t / "dir").c_str(), nullptr));
  EXPECT_REPORT(0, 0, TarnFileMove, (t / "dir").c_str(), x.c_str());
  EXPECT_REPORT(0, ERROR_FILE_NOT_FOUND, TarnFileMove, (t / "gone").c_str(), x.c_str());
  for (const char* empty : {"", static_cast<const char*>(nullptr)}) {
    EXPECT_REPORT(0, 0, TarnFileMove, empty, x.c_str());
    EXPECT_REPORT(0, 0, TarnFileMove, b.c_str(), empty);
  }
  EXPECT_TRUE(IsDirectory(t / "dir") && Exists(b) && !Exists(x));
}

// One round of every operation, each way out taken at least once.
void EveryOperation(const ScratchDir& t, const ScratchDir& u) {
  ErrorOut err;
  const std::string file = t / "file.txt", missing = t / "missing", moved = t / "moved";
  HANDLE handle = TarnFileCreate(file.c_str(), GENERIC_READ | GENERIC_WRITE, CREATE_ALWAYS, 0, 0,
                                 ERR(err));
  char text[MAX_PATH];
  TarnFileWrite(handle, "0123456789", 10, ERR(err));
  TarnFileSeek(handle, 5, ERR(err));
  TarnFileRead(handle, text, 10, ERR(err));  // short
  TarnFileSeek(handle, -1, ERR(err));         // fails
  TarnFileSeekEnd(handle, ERR(err));
  TarnFileSize(handle, ERR(err));
  ::CloseHandle(handle);
  TarnFileOpen(missing.c_str(), GENERIC_READ, OPEN_EXISTING, 0, 0, ERR(err));
  WIN32_FIND_DATAA record;
  // A file, nothing, a directory, and a pattern: Wine's search opens a
  // handle for patterns only.
  for (const std::string& path : {file, missing, t.path(), t / "*"}) {
    TarnFileSize(path.c_str(), ERR(err));
    TarnFileFind(path.c_str(), ERR(err));
    TarnFileHide(path.c_str(), ERR(err));
    ::FindClose(TarnDirectoryFind(path.c_str(), &record, ERR(err)));
    TarnDirectoryExist(path.c_str(), ERR(err));
    TarnFileMove(path.c_str(), moved.c_str(), ERR(err));  // moves the file only
    ::SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_NORMAL);
  }
  tarn_test::WriteFile(file, "again");
  TarnFileMove(file.c_str(), moved.c_str(), ERR(err));          // exists
  TarnFileMove(file.c_str(), (u / "moved").c_str(), ERR(err));  // across drives
  ::DeleteFileA(moved.c_str());
  ::DeleteFileA((u / "moved").c_str());
  TarnDirectoryCreateAttr((t / "sub\\deeper").c_str(), FILE_ATTRIBUTE_HIDDEN, 0, ERR(err));
  TarnDirectoryCreate("\\\\tarn-no-server\\share\\dir", ERR(err));

  TarnTempDirectory(text, sizeof(text));
  ::CloseHandle(
      TarnCreateTempFile(t.path().c_str(), "tst", GENERIC_WRITE, CREATE_NEW, 0, 0, ERR(err)));
  TarnCreateTempFile(missing.c_str(), "tst", GENERIC_WRITE, OPEN_EXISTING, 0, 0, ERR(err));
  TarnGetModulePath(nullptr, text, sizeof(text));
  TarnGetFolderPath(CSIDL_APPDATA, text, sizeof(text));
  TarnGetFolderPath(0x7E, text, sizeof(text));
}

TEST(Handles, NoneLeftOpenByAnyOperation) {
  ScratchDir t;
  ScratchDir u(tarn_test::kSecondFixedDrive);
  const ScopedVariable tmp("TMP", t.path());  // where _tempnam looks first
  EveryOperation(t, u);                       // first-time loads and caches
  const DWORD before = tarn_test::HandleCount();
  ASSERT_GT(before, 0u) << "no way to count handles";
  for (int i = 0; i < 20; ++i) EveryOperation(t, u);
  EXPECT_EQ(tarn_test::HandleCount(), before);
}

}  // namespace

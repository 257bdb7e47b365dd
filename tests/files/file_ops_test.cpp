// File operations on real files of the test prefix (T: and U: are two
// different fixed drives).
#include <gtest/gtest.h>
#include <windows.h>
#include <winioctl.h>

#include <string.h>

#include <string>

#include "files/files_test_util.h"
#include "support/wine_env.h"
#include "tarn/files.h"

namespace {

using files_test::Attributes;
using files_test::ErrorOut;
using files_test::Exists;
using files_test::NothingReported;
using files_test::Reported;
using tarn_test::ScratchDir;

std::string ReadAll(const std::string& path) {
  std::string bytes;
  HANDLE file = ::CreateFileA(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE,
                              nullptr, OPEN_EXISTING, 0, nullptr);
  if (file == INVALID_HANDLE_VALUE) return "<cannot open>";
  char chunk[256];
  DWORD done = 0;
  while (::ReadFile(file, chunk, sizeof(chunk), &done, nullptr) && done) bytes.append(chunk, done);
  ::CloseHandle(file);
  return bytes;
}

LONGLONG Position(HANDLE file) {
  LARGE_INTEGER zero = {};
  LARGE_INTEGER position = {};
  ::SetFilePointerEx(file, zero, &position, FILE_CURRENT);
  return position.QuadPart;
}

TEST(FileCreate, ArgumentsReachThePlatformInItsOrder) {
  ScratchDir dir;
  const std::string path = dir / "created.txt";
  ErrorOut err;
  // Values chosen so that any two swapped arguments change the outcome:
  // disposition CREATE_NEW (1), flags HIDDEN (2), share READ | DELETE (5).
  HANDLE file = TarnFileCreate(path.c_str(), GENERIC_WRITE, CREATE_NEW, FILE_ATTRIBUTE_HIDDEN,
                               FILE_SHARE_READ | FILE_SHARE_DELETE, ERR(err));
  ASSERT_NE(file, INVALID_HANDLE_VALUE);
  EXPECT_TRUE(NothingReported(err));

  const DWORD attributes = Attributes(path);
  EXPECT_TRUE(attributes & FILE_ATTRIBUTE_HIDDEN) << std::hex << attributes;
  EXPECT_FALSE(attributes & (FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_SYSTEM)) << attributes;

  // Share mode: others may read, not write.
  HANDLE reader = ::CreateFileA(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                nullptr, OPEN_EXISTING, 0, nullptr);
  EXPECT_NE(reader, INVALID_HANDLE_VALUE);
  ::CloseHandle(reader);
  HANDLE writer = ::CreateFileA(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                nullptr, OPEN_EXISTING, 0, nullptr);
  EXPECT_EQ(writer, INVALID_HANDLE_VALUE);
  EXPECT_EQ(::GetLastError(), static_cast<DWORD>(ERROR_SHARING_VIOLATION));

  // Access: written, not read.
  char byte = 0;
  EXPECT_EQ(TarnFileWrite(file, "x", 1, ERR(err)), 1);
  EXPECT_EQ(TarnFileRead(file, &byte, 1, ERR(err)), 0);
  EXPECT_TRUE(Reported(err, ERROR_ACCESS_DENIED));
  ::CloseHandle(file);

  // Disposition: CREATE_NEW refuses the file that now exists.
  file = TarnFileCreate(path.c_str(), GENERIC_READ, CREATE_NEW, 0,
                        FILE_SHARE_READ | FILE_SHARE_WRITE, ERR(err));
  EXPECT_EQ(file, INVALID_HANDLE_VALUE);
  EXPECT_TRUE(Reported(err, ERROR_FILE_EXISTS));
}

TEST(FileOpen, SameAsCreateAndFailuresWithCodeAndText) {
  ScratchDir dir;
  const std::string path = dir / "data.bin";
  tarn_test::WriteFile(path, "0123456789");
  ErrorOut err;
  HANDLE file = TarnFileOpen(path.c_str(), GENERIC_READ, OPEN_EXISTING, 0, FILE_SHARE_READ,
                             ERR(err));
  ASSERT_NE(file, INVALID_HANDLE_VALUE);
  EXPECT_TRUE(NothingReported(err));
  EXPECT_EQ(TarnFileSize(file, ERR(err)), 10);
  ::CloseHandle(file);

  const std::string missing = dir / "missing.bin";
  EXPECT_EQ(TarnFileOpen(missing.c_str(), GENERIC_READ, OPEN_EXISTING, 0, 0, ERR(err)),
            INVALID_HANDLE_VALUE);
  EXPECT_TRUE(Reported(err, ERROR_FILE_NOT_FOUND));

  // Without out-parameters the failed open's last error is still there.
  ::SetLastError(0);
  EXPECT_EQ(TarnFileOpen(missing.c_str(), GENERIC_READ, OPEN_EXISTING, 0, 0, nullptr, nullptr, 0),
            INVALID_HANDLE_VALUE);
  EXPECT_EQ(::GetLastError(), static_cast<DWORD>(ERROR_FILE_NOT_FOUND));

  // A null path reaches the platform as null; its failure is reported.
  EXPECT_EQ(::CreateFileW(nullptr, GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr),
            INVALID_HANDLE_VALUE);
  const DWORD nullCode = ::GetLastError();
  EXPECT_EQ(TarnFileOpen(nullptr, GENERIC_READ, OPEN_EXISTING, 0, 0, ERR(err)),
            INVALID_HANDLE_VALUE);
  EXPECT_NE(nullCode, 0u);
  EXPECT_TRUE(Reported(err, nullCode));

  // Only the code, only the text, neither: each alone still works.
  DWORD code = 1;
  EXPECT_EQ(TarnFileOpen(missing.c_str(), GENERIC_READ, OPEN_EXISTING, 0, 0, &code, nullptr, 0),
            INVALID_HANDLE_VALUE);
  EXPECT_EQ(code, static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
  char text[64] = "untouched";
  EXPECT_EQ(TarnFileOpen(missing.c_str(), GENERIC_READ, OPEN_EXISTING, 0, 0, nullptr, text, 0),
            INVALID_HANDLE_VALUE);
  EXPECT_STREQ(text, "untouched") << "a buffer of size 0 is never written";
}

TEST(FileReadWrite, ShortTransfersPositionsAndSizes) {
  ScratchDir dir;
  const std::string path = dir / "hundred.bin";
  ErrorOut err;
  HANDLE file = TarnFileCreate(path.c_str(), GENERIC_READ | GENERIC_WRITE, CREATE_ALWAYS, 0, 0,
                               ERR(err));
  ASSERT_NE(file, INVALID_HANDLE_VALUE);
  char data[100];
  for (int i = 0; i < 100; ++i) data[i] = static_cast<char>('A' + i % 26);
  EXPECT_EQ(TarnFileWrite(file, data, sizeof(data), ERR(err)), 1);
  EXPECT_TRUE(NothingReported(err));
  EXPECT_EQ(TarnFileSize(file, ERR(err)), 100);
  EXPECT_EQ(TarnFileWrite(file, data, 0, ERR(err)), 1) << "nothing asked, nothing short";

  // 100 bytes asked 40 before the end: 0 without a code, 40 delivered, the
  // position past them.
  EXPECT_EQ(TarnFileSeek(file, 60, ERR(err)), 1);
  EXPECT_EQ(Position(file), 60);
  char buffer[100];
  memset(buffer, '.', sizeof(buffer));
  err = ErrorOut();
  EXPECT_EQ(TarnFileRead(file, buffer, 100, ERR(err)), 0);
  EXPECT_TRUE(NothingReported(err));
  EXPECT_EQ(std::string(buffer, 40), std::string(data + 60, 40));
  EXPECT_EQ(buffer[40], '.');
  EXPECT_EQ(Position(file), 100);
  EXPECT_EQ(TarnFileRead(file, buffer, 1, ERR(err)), 0) << "at the end";
  EXPECT_TRUE(NothingReported(err));

  EXPECT_EQ(TarnFileSeek(file, 10, ERR(err)), 1);
  EXPECT_EQ(TarnFileRead(file, buffer, 90, ERR(err)), 1) << "exactly to the end";
  EXPECT_EQ(std::string(buffer, 90), std::string(data + 10, 90));

  EXPECT_EQ(TarnFileSeek(file, 0, ERR(err)), 1);
  EXPECT_EQ(TarnFileSeekEnd(file, ERR(err)), 1);
  EXPECT_EQ(Position(file), 100);
  EXPECT_EQ(TarnFileSeek(file, -1, ERR(err)), 0);
  EXPECT_TRUE(Reported(err, ERROR_NEGATIVE_SEEK));
  EXPECT_EQ(Position(file), 100) << "a failed seek does not move";
  ::CloseHandle(file);

  // Each call on a handle that is not open reports the platform's code.
  HANDLE bad = INVALID_HANDLE_VALUE;
  EXPECT_EQ(TarnFileRead(bad, buffer, 1, ERR(err)), 0);
  EXPECT_TRUE(Reported(err, ERROR_INVALID_HANDLE));
  EXPECT_EQ(TarnFileWrite(bad, buffer, 1, ERR(err)), 0);
  EXPECT_TRUE(Reported(err, ERROR_INVALID_HANDLE));
  EXPECT_EQ(TarnFileSeek(bad, 0, ERR(err)), 0);
  EXPECT_TRUE(Reported(err, ERROR_INVALID_HANDLE));
  EXPECT_EQ(TarnFileSeekEnd(bad, ERR(err)), 0);
  EXPECT_TRUE(Reported(err, ERROR_INVALID_HANDLE));
  EXPECT_EQ(TarnFileSize(bad, ERR(err)), -1);
  EXPECT_TRUE(Reported(err, ERROR_INVALID_HANDLE));

  // Writing through a handle opened for reading.
  file = TarnFileOpen(path.c_str(), GENERIC_READ, OPEN_EXISTING, 0, 0, ERR(err));
  ASSERT_NE(file, INVALID_HANDLE_VALUE);
  EXPECT_EQ(TarnFileWrite(file, data, 1, ERR(err)), 0);
  EXPECT_TRUE(Reported(err, ERROR_ACCESS_DENIED));
  ::CloseHandle(file);
  EXPECT_EQ(ReadAll(path), std::string(data, 100));
}

// A file of `size` bytes without writing them (sparse where the file system
// allows).
void MakeLongFile(const std::string& path, LONGLONG size) {
  HANDLE file = ::CreateFileA(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
  ASSERT_NE(file, INVALID_HANDLE_VALUE);
  DWORD returned = 0;
  ::DeviceIoControl(file, FSCTL_SET_SPARSE, nullptr, 0, nullptr, 0, &returned, nullptr);
  LARGE_INTEGER end;
  end.QuadPart = size;
  ASSERT_TRUE(::SetFilePointerEx(file, end, nullptr, FILE_BEGIN));
  ASSERT_TRUE(::SetEndOfFile(file));
  ::CloseHandle(file);
}

TEST(FileSize, LowPartAsSignedNumber) {
  ScratchDir dir;
  const std::string big = dir / "three-billion.bin";
  MakeLongFile(big, 3000000000LL);
  ErrorOut err;
  EXPECT_EQ(TarnFileSize(big.c_str(), ERR(err)), static_cast<int>(3000000000u));
  EXPECT_LT(TarnFileSize(big.c_str(), ERR(err)), 0);
  EXPECT_TRUE(NothingReported(err));
  ASSERT_TRUE(::DeleteFileA(big.c_str()));

  const std::string huge = dir / "four-gib-and-ten.bin";
  MakeLongFile(huge, (1LL << 32) + 10);
  EXPECT_EQ(TarnFileSize(huge.c_str(), ERR(err)), 10) << "the high part is dropped";
  ASSERT_TRUE(::DeleteFileA(huge.c_str()));

  // The query shares reading and writing with a writer that holds the file.
  const std::string open = dir / "open.bin";
  HANDLE writer = ::CreateFileA(open.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                nullptr, CREATE_ALWAYS, 0, nullptr);
  ASSERT_NE(writer, INVALID_HANDLE_VALUE);
  DWORD written = 0;
  ::WriteFile(writer, "abc", 3, &written, nullptr);
  EXPECT_EQ(TarnFileSize(open.c_str(), ERR(err)), 3);
  EXPECT_TRUE(NothingReported(err));
  ::CloseHandle(writer);

  EXPECT_EQ(TarnFileSize((dir / "missing").c_str(), ERR(err)), -1);
  EXPECT_TRUE(Reported(err, ERROR_FILE_NOT_FOUND));
  tarn_test::WriteFile(dir / "empty", "");
  EXPECT_EQ(TarnFileSize((dir / "empty").c_str(), ERR(err)), 0);
  EXPECT_TRUE(NothingReported(err));
}

TEST(FileFind, FilesOnlyAndTheSearchCode) {
  ScratchDir dir;
  tarn_test::WriteFile(dir / "here.txt", "x");
  ASSERT_TRUE(::CreateDirectoryA((dir / "sub").c_str(), nullptr));
  ErrorOut err;
  EXPECT_EQ(TarnFileFind((dir / "here.txt").c_str(), ERR(err)), 1);
  EXPECT_TRUE(NothingReported(err));
  EXPECT_EQ(TarnFileFind((dir / "h*.txt").c_str(), ERR(err)), 1) << "a pattern";
  err = ErrorOut();
  EXPECT_EQ(TarnFileFind((dir / "sub").c_str(), ERR(err)), 0) << "a directory";
  EXPECT_TRUE(NothingReported(err));
  EXPECT_EQ(TarnFileFind((dir / "gone.txt").c_str(), ERR(err)), 0);
  EXPECT_TRUE(Reported(err, ERROR_FILE_NOT_FOUND));
  EXPECT_EQ(TarnFileFind((dir / "nodir\\gone.txt").c_str(), ERR(err)), 0);
  EXPECT_TRUE(Reported(err, ERROR_PATH_NOT_FOUND));
  err = ErrorOut();
  EXPECT_EQ(TarnFileFind(nullptr, ERR(err)), 0);
  EXPECT_TRUE(NothingReported(err));
  err = ErrorOut();
  EXPECT_EQ(TarnFileFind("", ERR(err)), 0);
  EXPECT_TRUE(NothingReported(err));
}

TEST(FileHide, ReplacesTheAttributeSet) {
  ScratchDir dir;
  const std::string path = dir / "plain.txt";
  tarn_test::WriteFile(path, "x");
  ASSERT_TRUE(::SetFileAttributesA(
      path.c_str(), FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_ARCHIVE | FILE_ATTRIBUTE_SYSTEM));
  ErrorOut err;
  EXPECT_EQ(TarnFileHide(path.c_str(), ERR(err)), 1);
  EXPECT_TRUE(NothingReported(err));
  DWORD attributes = Attributes(path);
  EXPECT_TRUE(attributes & FILE_ATTRIBUTE_HIDDEN) << std::hex << attributes;
  EXPECT_FALSE(attributes & (FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_SYSTEM)) << attributes;

  // Already hidden: nothing changes, read-only stays.
  ASSERT_TRUE(::SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_READONLY));
  EXPECT_EQ(TarnFileHide(path.c_str(), ERR(err)), 1);
  attributes = Attributes(path);
  EXPECT_TRUE(attributes & FILE_ATTRIBUTE_READONLY) << std::hex << attributes;
  EXPECT_TRUE(attributes & FILE_ATTRIBUTE_HIDDEN) << attributes;
  ::SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_NORMAL);

  const std::string sub = dir / "sub";
  ASSERT_TRUE(::CreateDirectoryA(sub.c_str(), nullptr));
  EXPECT_EQ(TarnFileHide(sub.c_str(), ERR(err)), 1);
  EXPECT_EQ(Attributes(sub) & (FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_DIRECTORY),
            static_cast<DWORD>(FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_DIRECTORY));

  EXPECT_EQ(TarnFileHide((dir / "gone").c_str(), ERR(err)), 0);
  EXPECT_TRUE(Reported(err, ERROR_FILE_NOT_FOUND));
  err = ErrorOut();
  EXPECT_EQ(TarnFileHide("", ERR(err)), 0);
  EXPECT_TRUE(NothingReported(err));
  err = ErrorOut();
  EXPECT_EQ(TarnFileHide(nullptr, ERR(err)), 0);
  EXPECT_TRUE(NothingReported(err));
}

TEST(FileMove, RefusesOnOneDriveReplacesAcrossDrives) {
  ScratchDir t;
  ScratchDir u(tarn_test::kSecondFixedDrive);
  ErrorOut err;

  // Same drive: a rename, refused onto an existing file.
  tarn_test::WriteFile(t / "a", "first");
  EXPECT_EQ(TarnFileMove((t / "a").c_str(), (t / "b").c_str(), ERR(err)), 1);
  EXPECT_TRUE(NothingReported(err));
  EXPECT_FALSE(Exists(t / "a"));
  EXPECT_EQ(ReadAll(t / "b"), "first");
  tarn_test::WriteFile(t / "c", "second");
  EXPECT_EQ(TarnFileMove((t / "c").c_str(), (t / "b").c_str(), ERR(err)), 0);
  EXPECT_TRUE(Reported(err, ERROR_ALREADY_EXISTS));
  EXPECT_EQ(ReadAll(t / "b"), "first");
  EXPECT_EQ(ReadAll(t / "c"), "second");

  // Across drives: copied over the existing destination, source deleted.
  tarn_test::WriteFile(u / "b", "old");
  EXPECT_EQ(TarnFileMove((t / "c").c_str(), (u / "b").c_str(), ERR(err)), 1);
  EXPECT_TRUE(NothingReported(err));
  EXPECT_EQ(ReadAll(u / "b"), "second");
  EXPECT_FALSE(Exists(t / "c"));
  EXPECT_EQ(TarnFileMove((u / "b").c_str(), (t / "new").c_str(), ERR(err)), 1);
  EXPECT_EQ(ReadAll(t / "new"), "second");
  EXPECT_FALSE(Exists(u / "b"));

  // The copy succeeds, the delete does not (the source is held open without
  // delete sharing): both files stay, the delete's code is reported.
  HANDLE holder = ::CreateFileA((t / "new").c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                OPEN_EXISTING, 0, nullptr);
  ASSERT_NE(holder, INVALID_HANDLE_VALUE);
  EXPECT_EQ(TarnFileMove((t / "new").c_str(), (u / "copy").c_str(), ERR(err)), 0);
  EXPECT_TRUE(Reported(err, ERROR_SHARING_VIOLATION));
  ::CloseHandle(holder);
  EXPECT_EQ(ReadAll(u / "copy"), "second");
  EXPECT_EQ(ReadAll(t / "new"), "second");

  // Directories are never moved; a missing source is the search's failure.
  ASSERT_TRUE(::CreateDirectoryA((t / "dir").c_str(), nullptr));
  err = ErrorOut();
  EXPECT_EQ(TarnFileMove((t / "dir").c_str(), (t / "moved").c_str(), ERR(err)), 0);
  EXPECT_TRUE(NothingReported(err));
  EXPECT_TRUE(Exists(t / "dir"));
  EXPECT_FALSE(Exists(t / "moved"));
  EXPECT_EQ(TarnFileMove((t / "gone").c_str(), (t / "moved").c_str(), ERR(err)), 0);
  EXPECT_TRUE(Reported(err, ERROR_FILE_NOT_FOUND));
  for (const char* empty : {"", static_cast<const char*>(nullptr)}) {
    err = ErrorOut();
    EXPECT_EQ(TarnFileMove(empty, (t / "x").c_str(), ERR(err)), 0);
    EXPECT_TRUE(NothingReported(err));
    err = ErrorOut();
    EXPECT_EQ(TarnFileMove((t / "new").c_str(), empty, ERR(err)), 0);
    EXPECT_TRUE(NothingReported(err));
  }
  EXPECT_TRUE(Exists(t / "new"));
}

}  // namespace

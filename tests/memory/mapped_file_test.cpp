// Memory-mapped files on the test drive: modes and sharing, the empty and the
// missing file, the sized Open, ReMap's rounding and cutting, and copies.
#include <gtest/gtest.h>

#include <windows.h>

#include <string.h>

#include <string>

#include "support/wine_env.h"
#include "tarn/memory.h"

namespace {

using tarn_test::HandleCount;
using tarn_test::ScratchDir;

constexpr char kEmptyFileText[] = "Cannot create filemapping for files with size 0";

// Bytes that differ from their neighbours and repeat only every 251 bytes, so
// that a view at a wrong offset shows.
std::string Pattern(size_t size) {
  std::string bytes(size, '\0');
  for (size_t i = 0; i < size; ++i) bytes[i] = static_cast<char>((i % 251) ^ (i >> 16));
  return bytes;
}

std::string ReadAll(const std::string& path) {
  HANDLE file = ::CreateFileA(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE,
                              nullptr, OPEN_EXISTING, 0, nullptr);
  EXPECT_NE(file, INVALID_HANDLE_VALUE) << path;
  std::string bytes(::GetFileSize(file, nullptr), '\0');
  DWORD read = 0;
  if (!bytes.empty()) ::ReadFile(file, &bytes[0], static_cast<DWORD>(bytes.size()), &read, nullptr);
  ::CloseHandle(file);
  return bytes;
}

bool SameBytes(const unsigned char* view, const std::string& bytes, size_t from, size_t count) {
  return memcmp(view, bytes.data() + from, count) == 0;
}

MEMORY_BASIC_INFORMATION Query(const void* address) {
  MEMORY_BASIC_INFORMATION info = {};
  ::VirtualQuery(address, &info, sizeof(info));
  return info;
}

bool IsMapped(const void* address) { return Query(address).Type == MEM_MAPPED; }

DWORD Granularity() {
  SYSTEM_INFO info;
  ::GetSystemInfo(&info);
  return info.dwAllocationGranularity;
}

TEST(MmFile, ReadModeMapsTheWholeFileAndCloseReleasesIt) {
  ScratchDir dir;
  const std::string path = dir / "data.bin";
  const std::string bytes = Pattern(10000);
  tarn_test::WriteFile(path, bytes);
  const DWORD handles = HandleCount();

  CTarnMmFile file;
  DWORD code = 7;
  char text[64] = "old";
  unsigned char* view = file.Open(CTarnMmFile::eOpenRead, path.c_str(), &code, text, sizeof(text));
  ASSERT_NE(view, nullptr);
  EXPECT_EQ(code, 0u);
  EXPECT_STREQ(text, "");
  EXPECT_TRUE(SameBytes(view, bytes, 0, bytes.size()));
  EXPECT_EQ(Query(view).Protect, static_cast<DWORD>(PAGE_READONLY));
  EXPECT_EQ(file.m_nOpenmode, 1);
  EXPECT_EQ(file.m_pView, view);
  ASSERT_NE(file.m_pszFilename, nullptr);
  EXPECT_NE(file.m_pszFilename, path.c_str()) << "a copy of the name";
  EXPECT_EQ(std::string(file.m_pszFilename), path);
  EXPECT_NE(file.m_hFile, INVALID_HANDLE_VALUE);
  EXPECT_NE(file.m_hMapping, nullptr);
  EXPECT_EQ(HandleCount(), handles + 2) << "file and mapping";
  DWORD high = 7;
  EXPECT_EQ(file.Size(&high), 10000u);
  EXPECT_EQ(high, 0u);
  EXPECT_EQ(file.Size(nullptr), 10000u);

  // Readers may come along; writers may not.
  CTarnMmFile reader;
  EXPECT_NE(reader.Open(CTarnMmFile::eOpenRead, path.c_str(), nullptr, nullptr, 0), nullptr);
  reader.Close();
  HANDLE writer = ::CreateFileA(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                nullptr, OPEN_EXISTING, 0, nullptr);
  EXPECT_EQ(writer, INVALID_HANDLE_VALUE);
  if (writer != INVALID_HANDLE_VALUE) ::CloseHandle(writer);

  file.Close();
  EXPECT_EQ(HandleCount(), handles);
  EXPECT_FALSE(IsMapped(view));
  EXPECT_EQ(file.m_nOpenmode, 0);
  EXPECT_EQ(file.m_pszFilename, nullptr);
  EXPECT_EQ(file.Size(&high), 10000u) << "the size outlives Close";
  file.Close();
  EXPECT_EQ(HandleCount(), handles);
  EXPECT_TRUE(::DeleteFileA(path.c_str()));
}

TEST(MmFile, ReadWriteModeWritesThroughAndLocksOthersOut) {
  ScratchDir dir;
  const std::string path = dir / "data.bin";
  tarn_test::WriteFile(path, Pattern(5000));
  {
    CTarnMmFile file;
    unsigned char* view =
        file.Open(CTarnMmFile::eOpenReadWrite, path.c_str(), nullptr, nullptr, 0);
    ASSERT_NE(view, nullptr);
    EXPECT_EQ(file.m_nOpenmode, 2);
    EXPECT_EQ(Query(view).Protect, static_cast<DWORD>(PAGE_READWRITE));
    memcpy(view + 4990, "0123456789", 10);

    const DWORD handles = HandleCount();
    CTarnMmFile second;
    DWORD code = 0;
    char text[256] = "";
    EXPECT_EQ(second.Open(CTarnMmFile::eOpenRead, path.c_str(), &code, text, sizeof(text)),
              nullptr);
    EXPECT_EQ(code, static_cast<DWORD>(ERROR_SHARING_VIOLATION));
    EXPECT_STRNE(text, "");
    EXPECT_EQ(second.m_nOpenmode, 0);
    EXPECT_EQ(HandleCount(), handles);
    ULONGLONG length = 99;
    EXPECT_EQ(second.Open(CTarnMmFile::eOpenReadWrite, path.c_str(), length, &code, nullptr, 0),
              nullptr);
    EXPECT_EQ(code, static_cast<DWORD>(ERROR_SHARING_VIOLATION));
    EXPECT_EQ(length, 0u);
  }
  const std::string after = ReadAll(path);
  ASSERT_EQ(after.size(), 5000u) << "never extended or truncated";
  EXPECT_EQ(after.substr(4990), "0123456789");
  EXPECT_EQ(after.substr(0, 4990), Pattern(5000).substr(0, 4990));
}

TEST(MmFile, EmptyFileFailsWithItsOwnCodeAndText) {
  ScratchDir dir;
  const std::string path = dir / "empty.bin";
  tarn_test::WriteFile(path, "");
  const DWORD handles = HandleCount();
  const size_t length = strlen(kEmptyFileText);
  for (auto mode : {CTarnMmFile::eOpenRead, CTarnMmFile::eOpenReadWrite}) {
    CTarnMmFile file;
    DWORD code = 0;
    char text[128] = "old";
    EXPECT_EQ(file.Open(mode, path.c_str(), &code, text, sizeof(text)), nullptr);
    EXPECT_EQ(code, 0xFFFFFFFFu);
    EXPECT_STREQ(text, kEmptyFileText);
    EXPECT_EQ(file.m_nOpenmode, 0);
    EXPECT_EQ(file.m_pszFilename, nullptr);

    ULONGLONG mapped = 99;
    code = 0;
    EXPECT_EQ(file.Open(mode, path.c_str(), mapped, &code, nullptr, 0), nullptr);
    EXPECT_EQ(code, 0xFFFFFFFFu);
    EXPECT_EQ(mapped, 0u);
    EXPECT_EQ(HandleCount(), handles) << "nothing left open";
    // A text to the exact size of the buffer: cut to size - 1, terminated.
    for (size_t size : {length, length + 1, length + 2}) {
      char cut[64];
      memset(cut, 'x', sizeof(cut));
      EXPECT_EQ(file.Open(mode, path.c_str(), &code, cut, static_cast<DWORD>(size)), nullptr);
      EXPECT_EQ(std::string(cut), std::string(kEmptyFileText).substr(0, size - 1)) << size;
      EXPECT_EQ(cut[size], 'x') << "nothing written past the buffer";
    }
  }
  EXPECT_TRUE(::DeleteFileA(path.c_str())) << "the file was closed";
}

TEST(MmFile, MissingFileBadModeAndSecondOpen) {
  ScratchDir dir;
  const std::string missing = dir / "missing.bin";
  CTarnMmFile file;
  DWORD code = 0;
  char text[256] = "";
  ULONGLONG length = 99;
  EXPECT_EQ(file.Open(CTarnMmFile::eOpenReadWrite, missing.c_str(), length, &code, text,
                      sizeof(text)),
            nullptr);
  EXPECT_EQ(code, static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
  EXPECT_STRNE(text, "");
  EXPECT_EQ(length, 0u);
  EXPECT_EQ(::GetFileAttributesA(missing.c_str()), INVALID_FILE_ATTRIBUTES) << "not created";

  const std::string path = dir / "data.bin";
  tarn_test::WriteFile(path, Pattern(3000));
  for (int mode : {0, 3, -1}) {
    code = 7;
    EXPECT_EQ(file.Open(static_cast<CTarnMmFile::eOpenmode>(mode), path.c_str(), &code, nullptr,
                        0),
              nullptr);
    EXPECT_EQ(code, 0u);
    EXPECT_EQ(file.m_nOpenmode, 0);
  }

  unsigned char* view = file.Open(CTarnMmFile::eOpenRead, path.c_str(), length, &code, nullptr, 0);
  ASSERT_NE(view, nullptr);
  EXPECT_EQ(length, 3000u) << "the sized form reports the whole file";
  const DWORD handles = HandleCount();
  const char* name = file.m_pszFilename;
  const std::string other = dir / "other.bin";
  tarn_test::WriteFile(other, Pattern(100));
  code = 7;
  strcpy(text, "old");
  length = 99;
  EXPECT_EQ(file.Open(CTarnMmFile::eOpenRead, other.c_str(), length, &code, text, sizeof(text)),
            nullptr);
  EXPECT_EQ(code, 0u);
  EXPECT_STREQ(text, "");
  EXPECT_EQ(length, 0u);
  EXPECT_EQ(HandleCount(), handles) << "the second file is not opened";
  EXPECT_EQ(file.m_pView, view);
  EXPECT_EQ(file.m_pszFilename, name);
  EXPECT_EQ(file.Size(nullptr), 3000u);
  EXPECT_TRUE(SameBytes(view, Pattern(3000), 0, 3000));
}

TEST(MmFile, ReMapRoundsTheOffsetAndCutsTheLength) {
  ASSERT_EQ(Granularity(), 65536u);
  ScratchDir dir;
  const std::string path = dir / "data.bin";
  const std::string bytes = Pattern(200000);
  tarn_test::WriteFile(path, bytes);
  CTarnMmFile file;
  unsigned char* first = file.Open(CTarnMmFile::eOpenRead, path.c_str(), nullptr, nullptr, 0);
  ASSERT_NE(first, nullptr);

  DWORD offset = 70000;
  ULONGLONG length = 200000;
  DWORD code = 7;
  char text[16] = "old";
  unsigned char* view = file.ReMap(offset, length, &code, text, sizeof(text));
  ASSERT_NE(view, nullptr);
  EXPECT_EQ(code, 0u);
  EXPECT_STREQ(text, "");
  EXPECT_EQ(offset, 65536u);
  EXPECT_EQ(length, 200000u - 65536u);
  EXPECT_EQ(file.m_pView, view);
  EXPECT_TRUE(SameBytes(view, bytes, 65536, 200000 - 65536));
  if (view != first) EXPECT_FALSE(IsMapped(first)) << "the old view is unmapped";

  // A length that fits is used as given.
  offset = 131072;
  length = 4096;
  view = file.ReMap(offset, length, nullptr, nullptr, 0);
  ASSERT_NE(view, nullptr);
  EXPECT_EQ(offset, 131072u);
  EXPECT_EQ(length, 4096u);
  EXPECT_EQ(Query(view).RegionSize, 4096u);
  EXPECT_TRUE(SameBytes(view, bytes, 131072, 4096));

  // Length 0 maps to the end and stays 0.
  offset = 65537;
  length = 0;
  view = file.ReMap(offset, length, nullptr, nullptr, 0);
  ASSERT_NE(view, nullptr);
  EXPECT_EQ(offset, 65536u);
  EXPECT_EQ(length, 0u);
  EXPECT_GE(Query(view).RegionSize, 200000u - 65536u);
  EXPECT_TRUE(SameBytes(view, bytes, 65536, 200000 - 65536));

  // At or past the end: refused, the view kept.
  for (DWORD beyond : {DWORD{200000}, DWORD{300000}, DWORD{0xFFFFFFFF}}) {
    offset = beyond;
    length = 10;
    code = 7;
    EXPECT_EQ(file.ReMap(offset, length, &code, nullptr, 0), nullptr);
    EXPECT_EQ(code, 0u);
    EXPECT_EQ(offset, beyond);
    EXPECT_EQ(length, 10u);
    EXPECT_EQ(file.m_pView, view);
    EXPECT_TRUE(SameBytes(view, bytes, 65536, 200000 - 65536));
  }
  // Just below the end still maps the last bytes.
  offset = 199999;
  length = 10000;
  view = file.ReMap(offset, length, nullptr, nullptr, 0);
  ASSERT_NE(view, nullptr);
  EXPECT_EQ(offset, 196608u);
  EXPECT_EQ(length, 200000u - 196608u);
  EXPECT_EQ(view[200000 - 196608 - 1], static_cast<unsigned char>(bytes[199999]));

  const DWORD handles = HandleCount();
  file.Close();
  EXPECT_EQ(HandleCount(), handles - 2);
  EXPECT_FALSE(IsMapped(view)) << "Close unmaps the remapped view";
  offset = 0;
  length = 0;
  EXPECT_EQ(file.ReMap(offset, length, nullptr, nullptr, 0), nullptr) << "closed";
  CTarnMmFile fresh;
  EXPECT_EQ(fresh.ReMap(offset, length, nullptr, nullptr, 0), nullptr) << "never opened";
}

TEST(MmFile, ReMapInReadWriteModeGivesAWritableView) {
  ScratchDir dir;
  const std::string path = dir / "data.bin";
  tarn_test::WriteFile(path, Pattern(70000));
  {
    CTarnMmFile file;
    ASSERT_NE(file.Open(CTarnMmFile::eOpenReadWrite, path.c_str(), nullptr, nullptr, 0), nullptr);
    DWORD offset = 65540;
    ULONGLONG length = 1000000;
    unsigned char* view = file.ReMap(offset, length, nullptr, nullptr, 0);
    ASSERT_NE(view, nullptr);
    EXPECT_EQ(length, 70000u - 65536u);
    EXPECT_EQ(Query(view).Protect, static_cast<DWORD>(PAGE_READWRITE));
    memcpy(view + 4, "ABCD", 4);
  }
  EXPECT_EQ(ReadAll(path).substr(65540, 4), "ABCD");
}

// A sparse file of 4 GiB + 8 KiB: the class works on the low 32 bits.
TEST(MmFile, FilesOf4GiBAndMoreUseTheLowHalf) {
  ScratchDir dir;
  const std::string path = dir / "big.bin";
  HANDLE handle = ::CreateFileA(path.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
  ASSERT_NE(handle, INVALID_HANDLE_VALUE);
  LARGE_INTEGER end;
  end.QuadPart = 0x100000000LL + 8192;
  ASSERT_TRUE(::SetFilePointerEx(handle, end, nullptr, FILE_BEGIN));
  ASSERT_TRUE(::SetEndOfFile(handle));
  ::CloseHandle(handle);

  CTarnMmFile file;
  ULONGLONG length = 0;
  unsigned char* view =
      file.Open(CTarnMmFile::eOpenReadWrite, path.c_str(), length, nullptr, nullptr, 0);
  ASSERT_NE(view, nullptr);
  EXPECT_EQ(length, 8192u);
  DWORD high = 0;
  EXPECT_EQ(file.Size(&high), 8192u);
  EXPECT_EQ(high, 1u);
  EXPECT_EQ(Query(view).RegionSize, 8192u) << "the low half's worth of bytes";
  DWORD offset = 8192;
  ULONGLONG remap = 0;
  EXPECT_EQ(file.ReMap(offset, remap, nullptr, nullptr, 0), nullptr) << "not below the low half";
  file.Close();

  view = file.Open(CTarnMmFile::eOpenRead, path.c_str(), length, nullptr, nullptr, 0);
  ASSERT_NE(view, nullptr);
  EXPECT_EQ(length, 8192u);
  EXPECT_GE(Query(view).RegionSize, static_cast<SIZE_T>(end.QuadPart)) << "the whole file";
  // Cut at the full 64-bit size, not at the low half.
  offset = 4096;
  remap = 0x200000000ULL;
  ASSERT_NE(file.ReMap(offset, remap, nullptr, nullptr, 0), nullptr);
  EXPECT_EQ(offset, 0u);
  EXPECT_EQ(remap, static_cast<ULONGLONG>(end.QuadPart));
}

TEST(MmFile, CopiesReleaseEverythingOnceInEitherOrder) {
  ScratchDir dir;
  const std::string path = dir / "data.bin";
  const std::string bytes = Pattern(150000);
  tarn_test::WriteFile(path, bytes);
  const DWORD handles = HandleCount();
  {
    CTarnMmFile source;
    unsigned char* view = source.Open(CTarnMmFile::eOpenRead, path.c_str(), nullptr, nullptr, 0);
    ASSERT_NE(view, nullptr);
    {
      CTarnMmFile copy(source);
      EXPECT_EQ(copy.m_pView, view);
      EXPECT_EQ(copy.m_hFile, source.m_hFile);
      EXPECT_EQ(copy.m_hMapping, source.m_hMapping);
      EXPECT_EQ(copy.m_pszFilename, source.m_pszFilename);
      EXPECT_EQ(copy.Size(nullptr), 150000u);
      source.Close();
      EXPECT_EQ(HandleCount(), handles + 2) << "the copy still holds both";
      EXPECT_TRUE(SameBytes(copy.m_pView, bytes, 0, bytes.size()));
      EXPECT_EQ(std::string(copy.m_pszFilename), path);
    }
    EXPECT_EQ(HandleCount(), handles);
    EXPECT_FALSE(IsMapped(view));
  }
  {
    unsigned char* view = nullptr;
    {
      CTarnMmFile source;
      view = source.Open(CTarnMmFile::eOpenRead, path.c_str(), nullptr, nullptr, 0);
      ASSERT_NE(view, nullptr);
      CTarnMmFile copy(source);
      CTarnMmFile assigned;
      assigned = copy;
      assigned = assigned;
      copy.Close();
      assigned.Close();
      EXPECT_EQ(HandleCount(), handles + 2);
      EXPECT_TRUE(SameBytes(source.m_pView, bytes, 0, bytes.size()));
    }
    EXPECT_EQ(HandleCount(), handles);
    EXPECT_FALSE(IsMapped(view));
  }
  {
    // A copy that remapped: the holders share the newest view, which goes
    // with the last of them.
    CTarnMmFile source;
    ASSERT_NE(source.Open(CTarnMmFile::eOpenRead, path.c_str(), nullptr, nullptr, 0), nullptr);
    unsigned char* remapped = nullptr;
    {
      CTarnMmFile copy(source);
      DWORD offset = 65536;
      ULONGLONG length = 0;
      remapped = copy.ReMap(offset, length, nullptr, nullptr, 0);
      ASSERT_NE(remapped, nullptr);
    }
    EXPECT_TRUE(IsMapped(remapped)) << "the source still holds the view";
    EXPECT_TRUE(SameBytes(remapped, bytes, 65536, 150000 - 65536));
    source.Close();
    EXPECT_FALSE(IsMapped(remapped));
    EXPECT_EQ(HandleCount(), handles);
  }
}

}  // namespace

// Memory blocks, memory-mapped files and named shared memory: where blocks
// come from, mapping and remapping files, names seen by a second process, and
// the release of what copies share.
#include <gtest/gtest.h>

#include <windows.h>

#include <string.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <string>

#include "support/wine_env.h"
#include "tarn/memory.h"

namespace {

using tarn_test::HandleCount;

MEMORY_BASIC_INFORMATION Query(const void* address) {
  MEMORY_BASIC_INFORMATION info = {};
  ::VirtualQuery(address, &info, sizeof(info));
  return info;
}

bool IsFree(const void* address) { return Query(address).State == MEM_FREE; }
bool IsMapped(const void* address) { return Query(address).Type == MEM_MAPPED; }
bool AllZero(const unsigned char* p, size_t n) {
  return std::all_of(p, p + n, [](unsigned char b) { return b == 0; });
}

// Error out-parameters holding stale values, which every call must clear or
// fill.
struct Err {
  DWORD code = 7;
  char text[256] = "old";
  // `want` as the code, with a text exactly when the code is not 0.
  testing::AssertionResult Is(DWORD want) const {
    if (code == want && (want != 0) == (text[0] != '\0')) return testing::AssertionSuccess();
    return testing::AssertionFailure() << "code " << code << ", text \"" << text << '"';
  }
};

// Copies share what their source holds. `same` compares a fresh copy with its
// source; `held(holder)` tells that everything is still there for the last
// holder, `released()` that everything is gone.
template <typename T, typename Open, typename Same, typename Held, typename Released>
void ExpectCopiesReleaseOnce(Open open, Same same, Held held, Released released) {
  {
    T source;
    ASSERT_TRUE(open(source));
    {
      T copy(source);
      same(copy, source);
      source.Close();
      EXPECT_TRUE(held(copy)) << "the copy still holds it";
    }
    EXPECT_TRUE(released()) << "source closed, then the copy destroyed";
  }
  {
    T source;
    ASSERT_TRUE(open(source));
    T copy(source);
    T assigned;
    assigned = copy;
    assigned = assigned;
    same(assigned, source);
    copy.Close();
    copy.Close();
    assigned.Close();
    EXPECT_TRUE(held(source)) << "the source still holds it";
  }
  EXPECT_TRUE(released()) << "copies closed, then the source destroyed";
}

// ---------------------------------------------------------------------------
// CTarnMemory

TEST(MemoryBlock, ThresholdPicksTheSourceAndBlocksComeZeroFilled) {
  const struct {
    DWORD size, threshold;
    bool heap;
  } kCases[] = {{524288, 0, true}, {524289, 0, false},  // the default, 512 KiB, is inclusive
                {100, 64, false},  {100, 100, true},   {100, 101, true},
                {64, 0, true},     {100000, 0, true}};
  for (const auto& c : kCases) {
    SCOPED_TRACE(testing::Message() << c.size << " at threshold " << c.threshold);
    // Twice: the second block may reuse the first one's dirty memory.
    for (int round = 0; round < 2; ++round) {
      CTarnMemory memory;
      Err e;
      unsigned char* address = memory.Open(c.size, c.threshold, &e.code, e.text, sizeof(e.text));
      ASSERT_NE(address, nullptr);
      EXPECT_TRUE(e.Is(0));
      EXPECT_EQ(memory.Size(), c.size);
      ASSERT_EQ(memory.m_hMemory != nullptr, c.heap);
      // Heap blocks sit inside a larger allocation; pages are one of their own.
      EXPECT_EQ(Query(address).AllocationBase == address, !c.heap);
      if (c.heap) EXPECT_EQ(::GlobalHandle(address), memory.m_hMemory);
      EXPECT_GE(c.heap ? ::GlobalSize(memory.m_hMemory) : Query(address).RegionSize, c.size);
      EXPECT_TRUE(AllZero(address, c.size)) << "round " << round;
      memset(address, 0xCD, c.size);
      memory.Close();
      if (!c.heap) EXPECT_TRUE(IsFree(address)) << "pages released by Close";
    }
  }
}

TEST(MemoryBlock, RefusalsLeaveCodeZeroAndTheHeldBlock) {
  CTarnMemory memory;
  Err e;
  EXPECT_EQ(memory.Open(0, 0, &e.code, e.text, sizeof(e.text)), nullptr);
  EXPECT_TRUE(e.Is(0));
  EXPECT_EQ(memory.Address(), nullptr);
  unsigned char* first = memory.Open(32, 0, nullptr, nullptr, 0);
  ASSERT_NE(first, nullptr);
  first[0] = 0x5A;
  for (DWORD size : {DWORD{64}, DWORD{600000}}) {  // heap and pages refused alike
    Err again;
    EXPECT_EQ(memory.Open(size, 0, &again.code, again.text, sizeof(again.text)), nullptr);
    EXPECT_TRUE(again.Is(0));
    EXPECT_EQ(memory.Address(), first);
    EXPECT_EQ(memory.Size(), 32u);
  }
  EXPECT_EQ(first[0], 0x5A);
  for (int twice = 0; twice < 2; ++twice) {
    memory.Close();
    EXPECT_EQ(memory.Address(), nullptr);
    EXPECT_EQ(memory.m_hMemory, nullptr);
    EXPECT_EQ(memory.Size(), 0u);
  }
  EXPECT_NE(memory.Open(16, 0, nullptr, nullptr, 0), nullptr) << "reusable after Close";
}

TEST(MemoryBlock, CopiesReleaseTheBlockOnceInEitherOrder) {
  unsigned char* address = nullptr;  // pages, whose release VirtualQuery shows
  ExpectCopiesReleaseOnce<CTarnMemory>(
      [&](CTarnMemory& m) {
        return (address = m.Open(8192, 4096, nullptr, nullptr, 0)) != nullptr;
      },
      [&](const CTarnMemory& copy, const CTarnMemory& source) {
        EXPECT_EQ(copy.m_pMemory, source.m_pMemory);
        EXPECT_EQ(copy.m_dwSize, 8192u);
      },
      [&](const CTarnMemory& holder) { return holder.m_pMemory && !IsFree(address); },
      [&] { return IsFree(address); });

  // Assignment does not release what the target held.
  CTarnMemory target, source;
  unsigned char* old = target.Open(4096, 100, nullptr, nullptr, 0);
  ASSERT_NE(old, nullptr);
  ASSERT_NE(source.Open(100, 0, nullptr, nullptr, 0), nullptr);
  target = source;
  EXPECT_EQ(target.Address(), source.Address());
  EXPECT_FALSE(IsFree(old));
  ::VirtualFree(old, 0, MEM_RELEASE);  // the test's own clean-up
}

// ---------------------------------------------------------------------------
// CTarnMmFile

constexpr char kEmptyFileText[] = "Cannot create filemapping for files with size 0";

// Bytes that repeat only every 251 bytes, so that a view at a wrong offset
// shows.
std::string Pattern(size_t size) {
  std::string bytes(size, '\0');
  for (size_t i = 0; i < size; ++i) bytes[i] = static_cast<char>((i % 251) ^ (i >> 16));
  return bytes;
}

bool SameBytes(const unsigned char* view, const std::string& bytes, size_t from, size_t count) {
  return memcmp(view, bytes.data() + from, count) == 0;
}

// Whether an opener that lets everybody share gets `access` to the file.
bool OthersMay(const std::string& path, DWORD access) {
  HANDLE file = ::CreateFileA(path.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                              OPEN_EXISTING, 0, nullptr);
  return file != INVALID_HANDLE_VALUE && ::CloseHandle(file);
}

// A scratch file of kSize pattern bytes; `handles` counts those open before
// the test maps anything.
class MmFile : public testing::Test {
 protected:
  static constexpr DWORD kSize = 200000;
  void SetUp() override {
    tarn_test::WriteFile(path, bytes);
    handles = HandleCount();
  }
  tarn_test::ScratchDir dir;
  const std::string path = dir / "data.bin";
  const std::string bytes = Pattern(kSize);
  DWORD handles = 0;
};

TEST_F(MmFile, ReadModeMapsTheWholeFileSharedWithReadersOnly) {
  CTarnMmFile file;
  Err e;
  ULONGLONG length = 99;
  unsigned char* view =
      file.Open(CTarnMmFile::eOpenRead, path.c_str(), length, &e.code, e.text, sizeof(e.text));
  ASSERT_NE(view, nullptr);
  EXPECT_TRUE(e.Is(0));
  EXPECT_EQ(length, kSize) << "the sized form reports the whole file";
  EXPECT_TRUE(SameBytes(view, bytes, 0, kSize));
  EXPECT_EQ(Query(view).Protect, static_cast<DWORD>(PAGE_READONLY));
  EXPECT_NE(file.m_pszFilename, path.c_str()) << "a copy of the name";
  EXPECT_STREQ(file.m_pszFilename, path.c_str());
  EXPECT_EQ(HandleCount(), handles + 2) << "file and mapping";
  DWORD high = 7;
  EXPECT_EQ(file.Size(&high), kSize);
  EXPECT_EQ(high, 0u);

  // A second Open is refused and leaves the first mapped.
  Err second;
  EXPECT_EQ(file.Open(CTarnMmFile::eOpenRead, path.c_str(), length, &second.code, second.text,
                      sizeof(second.text)),
            nullptr);
  EXPECT_TRUE(second.Is(0));
  EXPECT_EQ(length, 0u);
  EXPECT_EQ(HandleCount(), handles + 2);
  EXPECT_EQ(file.m_pView, view);

  EXPECT_TRUE(OthersMay(path, GENERIC_READ));
  EXPECT_FALSE(OthersMay(path, GENERIC_WRITE));

  for (int twice = 0; twice < 2; ++twice) {
    file.Close();
    EXPECT_EQ(HandleCount(), handles);
    EXPECT_FALSE(IsMapped(view));
    EXPECT_EQ(file.m_nOpenmode, 0);
    EXPECT_EQ(file.m_pszFilename, nullptr);
    EXPECT_EQ(file.Size(nullptr), kSize) << "the size outlives Close";
  }
}

// Writes reach the file through the first view and a remapped one; nobody
// else may open the file meanwhile.
TEST_F(MmFile, ReadWriteModeWritesThroughAndLocksOthersOut) {
  {
    CTarnMmFile file;
    unsigned char* view =
        file.Open(CTarnMmFile::eOpenReadWrite, path.c_str(), nullptr, nullptr, 0);
    ASSERT_NE(view, nullptr);
    ASSERT_EQ(Query(view).Protect, static_cast<DWORD>(PAGE_READWRITE));
    memcpy(view + 1000, "0123456789", 10);

    CTarnMmFile second;
    Err e;
    EXPECT_EQ(second.Open(CTarnMmFile::eOpenRead, path.c_str(), &e.code, e.text, sizeof(e.text)),
              nullptr);
    EXPECT_TRUE(e.Is(ERROR_SHARING_VIOLATION));
    EXPECT_EQ(HandleCount(), handles + 2);
    EXPECT_FALSE(OthersMay(path, GENERIC_READ)) << "not even a reader";

    DWORD offset = 65540;
    ULONGLONG length = 1000000;
    view = file.ReMap(offset, length, nullptr, nullptr, 0);
    ASSERT_NE(view, nullptr);
    EXPECT_EQ(length, kSize - 65536);
    ASSERT_EQ(Query(view).Protect, static_cast<DWORD>(PAGE_READWRITE));
    memcpy(view + 4, "ABCD", 4);
  }
  std::string expected = bytes;
  expected.replace(1000, 10, "0123456789");
  expected.replace(65540, 4, "ABCD");
  std::ifstream in(path, std::ios::binary);
  EXPECT_TRUE(std::string(std::istreambuf_iterator<char>(in), {}) == expected)
      << "written through, never extended or truncated";
}

TEST_F(MmFile, MissingEmptyAndBadModeLeaveNothingOpen) {
  const std::string missing = dir / "missing.bin";
  const std::string empty = dir / "empty.bin";
  tarn_test::WriteFile(empty, "");
  const size_t length = strlen(kEmptyFileText);
  for (auto mode : {CTarnMmFile::eOpenRead, CTarnMmFile::eOpenReadWrite}) {
    SCOPED_TRACE(mode);
    CTarnMmFile file;
    Err e;
    ULONGLONG mapped = 99;
    EXPECT_EQ(file.Open(mode, missing.c_str(), mapped, &e.code, e.text, sizeof(e.text)), nullptr);
    EXPECT_TRUE(e.Is(ERROR_FILE_NOT_FOUND));
    EXPECT_EQ(mapped, 0u);

    Err none;
    mapped = 99;
    EXPECT_EQ(file.Open(mode, empty.c_str(), mapped, &none.code, none.text, sizeof(none.text)),
              nullptr);
    EXPECT_EQ(none.code, 0xFFFFFFFFu);
    EXPECT_STREQ(none.text, kEmptyFileText);
    EXPECT_EQ(mapped, 0u);
    // A text to the exact size of the buffer: cut to size - 1, terminated.
    for (size_t size : {length, length + 1, length + 2}) {
      char cut[64];
      memset(cut, 'x', sizeof(cut));
      e.code = 7;
      EXPECT_EQ(file.Open(mode, empty.c_str(), &e.code, cut, static_cast<DWORD>(size)), nullptr);
      EXPECT_EQ(e.code, 0xFFFFFFFFu);
      EXPECT_EQ(std::string(cut), std::string(kEmptyFileText).substr(0, size - 1)) << size;
      EXPECT_EQ(cut[size], 'x') << "nothing written past the buffer";
    }
    EXPECT_EQ(file.m_nOpenmode, 0);
    EXPECT_EQ(file.m_pszFilename, nullptr);
  }
  for (int mode : {0, 3, -1}) {
    CTarnMmFile file;
    Err e;
    const auto bad = static_cast<CTarnMmFile::eOpenmode>(mode);
    EXPECT_EQ(file.Open(bad, path.c_str(), &e.code, e.text, sizeof(e.text)), nullptr);
    EXPECT_TRUE(e.Is(0)) << mode;
  }
  EXPECT_EQ(HandleCount(), handles) << "nothing left open";
  EXPECT_EQ(::GetFileAttributesA(missing.c_str()), INVALID_FILE_ATTRIBUTES) << "not created";
  EXPECT_TRUE(::DeleteFileA(empty.c_str())) << "the empty file was closed";
}

TEST_F(MmFile, ReMapRoundsTheOffsetAndCutsTheLength) {
  SYSTEM_INFO system;
  ::GetSystemInfo(&system);
  ASSERT_EQ(system.dwAllocationGranularity, 65536u);
  CTarnMmFile file;
  unsigned char* view = file.Open(CTarnMmFile::eOpenRead, path.c_str(), nullptr, nullptr, 0);
  ASSERT_NE(view, nullptr);
  // Offsets at or past the end are refused, both values left as they were
  // and the old view kept.
  const struct {
    DWORD offset;
    ULONGLONG length;
    DWORD rounded;
    ULONGLONG used;
  } kCases[] = {
      {70000, 200000, 65536, kSize - 65536},       // cut at the end
      {131072, 4096, 131072, 4096},                // fits: used as given
      {65537, 0, 65536, 0},                        // 0: to the end, stays 0
      {kSize, 10, kSize, 10},                      // at the end
      {0xFFFFFFFF, 10, 0xFFFFFFFF, 10},            // beyond
      {kSize - 1, 10000, 196608, kSize - 196608},  // just below the end
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(testing::Message() << c.offset << " + " << c.length);
    DWORD offset = c.offset;
    ULONGLONG length = c.length;
    Err e;
    unsigned char* remapped = file.ReMap(offset, length, &e.code, e.text, sizeof(e.text));
    EXPECT_TRUE(e.Is(0));
    EXPECT_EQ(offset, c.rounded);
    EXPECT_EQ(length, c.used);
    if (c.offset >= kSize) {
      EXPECT_EQ(remapped, nullptr);
      EXPECT_EQ(file.m_pView, view);
      EXPECT_TRUE(IsMapped(view));
      continue;
    }
    ASSERT_NE(remapped, nullptr);
    EXPECT_EQ(file.m_pView, remapped);
    const size_t count = c.used ? c.used : kSize - c.rounded;
    EXPECT_EQ(Query(remapped).RegionSize, (count + 4095) / 4096 * 4096);
    EXPECT_TRUE(SameBytes(remapped, bytes, c.rounded, count));
    if (remapped != view) EXPECT_FALSE(IsMapped(view)) << "the old view is unmapped";
    view = remapped;
  }

  file.Close();
  EXPECT_EQ(HandleCount(), handles);
  EXPECT_FALSE(IsMapped(view)) << "Close unmaps the remapped view";
  DWORD offset = 0;
  ULONGLONG length = 0;
  EXPECT_EQ(file.ReMap(offset, length, nullptr, nullptr, 0), nullptr) << "closed";
}

// A sparse file of 4 GiB + 8 KiB: the class works on the low 32 bits.
TEST_F(MmFile, FilesOf4GiBAndMoreUseTheLowHalf) {
  const std::string big = dir / "big.bin";
  HANDLE handle = ::CreateFileA(big.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
  LARGE_INTEGER end;
  end.QuadPart = 0x100000000LL + 8192;
  ASSERT_TRUE(::SetFilePointerEx(handle, end, nullptr, FILE_BEGIN) && ::SetEndOfFile(handle));
  ::CloseHandle(handle);

  CTarnMmFile file;
  ULONGLONG length = 0;
  DWORD high = 0, offset = 8192;
  unsigned char* view =
      file.Open(CTarnMmFile::eOpenReadWrite, big.c_str(), length, nullptr, nullptr, 0);
  ASSERT_NE(view, nullptr);
  EXPECT_EQ(length, 8192u);
  EXPECT_EQ(file.Size(&high), 8192u);
  EXPECT_EQ(high, 1u);
  EXPECT_EQ(Query(view).RegionSize, 8192u) << "read-write maps the low half's worth of bytes";
  EXPECT_EQ(file.ReMap(offset, length, nullptr, nullptr, 0), nullptr) << "not below the low half";
  file.Close();

  view = file.Open(CTarnMmFile::eOpenRead, big.c_str(), length, nullptr, nullptr, 0);
  ASSERT_NE(view, nullptr);
  EXPECT_EQ(length, 8192u);
  EXPECT_GE(Query(view).RegionSize, static_cast<SIZE_T>(end.QuadPart)) << "read maps it whole";
  offset = 4096;
  length = 0x200000000ULL;
  ASSERT_NE(file.ReMap(offset, length, nullptr, nullptr, 0), nullptr);
  EXPECT_EQ(offset, 0u);
  EXPECT_EQ(length, static_cast<ULONGLONG>(end.QuadPart)) << "cut at the full 64-bit size";
}

TEST_F(MmFile, CopiesReleaseEverythingOnceInEitherOrder) {
  unsigned char* view = nullptr;
  auto open = [&](CTarnMmFile& f) {
    return (view = f.Open(CTarnMmFile::eOpenRead, path.c_str(), nullptr, nullptr, 0)) != nullptr;
  };
  ExpectCopiesReleaseOnce<CTarnMmFile>(
      open,
      [&](const CTarnMmFile& copy, const CTarnMmFile& source) {
        EXPECT_EQ(copy.m_pView, source.m_pView);
        EXPECT_EQ(copy.m_hFile, source.m_hFile);
        EXPECT_EQ(copy.m_hMapping, source.m_hMapping);
        EXPECT_EQ(copy.m_pszFilename, source.m_pszFilename);
        EXPECT_EQ(copy.Size(nullptr), kSize);
      },
      [&](const CTarnMmFile& holder) {
        return HandleCount() == handles + 2 && IsMapped(view) && holder.m_pszFilename &&
               path == holder.m_pszFilename && SameBytes(view, bytes, 0, kSize);
      },
      [&] { return HandleCount() == handles && !IsMapped(view); });

  // A copy that remapped: the holders share the newest view, which goes
  // with the last of them.
  CTarnMmFile source;
  ASSERT_TRUE(open(source));
  {
    CTarnMmFile copy(source);
    DWORD offset = 65536;
    ULONGLONG length = 0;
    view = copy.ReMap(offset, length, nullptr, nullptr, 0);
    ASSERT_NE(view, nullptr);
  }
  ASSERT_TRUE(IsMapped(view)) << "the source still holds it";
  EXPECT_TRUE(SameBytes(view, bytes, 65536, kSize - 65536));
  source.Close();
  EXPECT_FALSE(IsMapped(view));
  EXPECT_EQ(HandleCount(), handles);
}

// ---------------------------------------------------------------------------
// CTarnSharedMemory

// A name of this test process's own.
std::string UniqueName(const char* what) {
  return std::string("tarn-test-") + what + "-" + std::to_string(::GetCurrentProcessId());
}

// The handles open now, after the platform has opened the directory of
// named objects that it keeps for the rest of the process.
DWORD Baseline() {
  CTarnSharedMemory().Exist("tarn-test-warm-up");
  return HandleCount();
}

TEST(SharedMemory, CreateOpenAndTheNameInUse) {
  const std::string name = UniqueName("create");
  const DWORD handles = Baseline();
  CTarnSharedMemory creator, opener, again;
  Err e;
  unsigned char* created = creator.Create(name.c_str(), 4096, &e.code, e.text, sizeof(e.text));
  ASSERT_NE(created, nullptr);
  EXPECT_TRUE(e.Is(0));
  EXPECT_TRUE(AllZero(created, 4096));
  EXPECT_EQ(creator.Size(), 4096u);
  EXPECT_EQ(creator.m_nState, 2);
  EXPECT_EQ(static_cast<unsigned char*>(creator), created);
  unsigned char* opened = opener.Open(name.c_str(), &e.code, e.text, sizeof(e.text));
  ASSERT_NE(opened, nullptr);
  EXPECT_TRUE(e.Is(0));
  EXPECT_EQ(opener.m_nState, 1);
  EXPECT_EQ(opener.Size(), 0u);
  created[4000] = 0x33;
  opened[4095] = 0x77;
  EXPECT_EQ(opened[4000], 0x33);
  EXPECT_EQ(created[4095], 0x77);

  // Refused without a code: the name in use (the probe handle closed), and a
  // second block on a holder, which keeps the first.
  const std::string other = UniqueName("other");
  Err in_use, held;
  EXPECT_EQ(again.Create(name.c_str(), 4096, &in_use.code, in_use.text, sizeof(in_use.text)),
            nullptr);
  EXPECT_TRUE(in_use.Is(0));
  EXPECT_EQ(again.Size(), 0u) << "the size is recorded only past the name check";
  EXPECT_EQ(creator.Create(other.c_str(), 100, &held.code, held.text, sizeof(held.text)), nullptr);
  EXPECT_TRUE(held.Is(0));
  EXPECT_EQ(opener.Open(name.c_str(), nullptr, nullptr, 0), nullptr);
  EXPECT_EQ(static_cast<unsigned char*>(creator), created);
  EXPECT_EQ(creator.Size(), 4096u);
  EXPECT_EQ(again.Exist(other.c_str()), 0);
  EXPECT_EQ(HandleCount(), handles + 2) << "a mapping each";

  // Exist while any holder is left.
  EXPECT_EQ(again.Exist(name.c_str()), 1);
  creator.Close();
  EXPECT_EQ(static_cast<unsigned char*>(creator), nullptr);
  EXPECT_EQ(creator.m_szName[0], '\0');
  EXPECT_EQ(creator.Size(), 4096u) << "kept by Close";
  EXPECT_FALSE(IsMapped(created));
  EXPECT_EQ(again.Exist(name.c_str()), 1);
  EXPECT_EQ(opened[4095], 0x77);
  opener.Close();
  EXPECT_EQ(again.Exist(name.c_str()), 0);
  EXPECT_EQ(creator.Open(name.c_str(), nullptr, nullptr, 0), nullptr);
  EXPECT_EQ(creator.Size(), 0u) << "a failed Open resets the size";
  EXPECT_EQ(HandleCount(), handles);
}

TEST(SharedMemory, FailuresAndTheLongestName) {
  const DWORD handles = Baseline();
  CTarnSharedMemory block;
  Err e;
  EXPECT_EQ(block.Open(UniqueName("nobody").c_str(), &e.code, e.text, sizeof(e.text)), nullptr);
  EXPECT_TRUE(e.Is(ERROR_FILE_NOT_FOUND));
  EXPECT_EQ(block.m_nState, 0);

  // A failed create records the size asked for; a null name is refused
  // before anything.
  const std::string name = UniqueName("empty");
  ASSERT_NE(block.Create(name.c_str(), 100, nullptr, nullptr, 0), nullptr);
  block.Close();
  Err zero;
  EXPECT_EQ(block.Create(name.c_str(), 0, &zero.code, zero.text, sizeof(zero.text)), nullptr);
  EXPECT_NE(zero.code, 0u) << "a size of 0 cannot be created";
  EXPECT_TRUE(zero.Is(zero.code));
  EXPECT_EQ(block.m_nState, 0);
  EXPECT_EQ(block.Size(), 0u);
  EXPECT_EQ(block.Exist(name.c_str()), 0);
  Err null_name;
  EXPECT_EQ(block.Create(nullptr, 300, &null_name.code, nullptr, 0), nullptr);
  EXPECT_EQ(null_name.code, 0u);
  EXPECT_EQ(block.Size(), 0u);
  EXPECT_EQ(HandleCount(), handles);

  std::string longest = UniqueName("long") + "-";
  longest.append(259 - longest.size(), 'n');
  ASSERT_NE(block.Create(longest.c_str(), 64, nullptr, nullptr, 0), nullptr);
  EXPECT_EQ(std::string(block.m_szName), longest);
  EXPECT_EQ(block.m_szName[259], '\0');
  CTarnSharedMemory opener;
  ASSERT_NE(opener.Open(longest.c_str(), nullptr, nullptr, 0), nullptr);
  EXPECT_EQ(std::string(opener.m_szName), longest);
}

// The helper program next to this test opens the block by name, checks and
// inverts its bytes, and holds it until told to let go.
TEST(SharedMemory, ASecondProcessSeesTheSameBytes) {
  char self[MAX_PATH];
  ASSERT_GT(::GetModuleFileNameA(nullptr, self, MAX_PATH), 0u);
  std::string peer = self;
  peer = peer.substr(0, peer.find_last_of('\\') + 1) + "memory_shm_peer.exe";

  const std::string name = UniqueName("peer");
  CTarnSharedMemory creator;
  unsigned char* bytes = creator.Create(name.c_str(), 4096, nullptr, nullptr, 0);
  ASSERT_NE(bytes, nullptr);
  for (int i = 0; i < 4096; ++i) bytes[i] = static_cast<unsigned char>(i * 13 + 5);
  HANDLE ready = ::CreateEventA(nullptr, TRUE, FALSE, (name + ".ready").c_str());
  HANDLE go = ::CreateEventA(nullptr, TRUE, FALSE, (name + ".go").c_str());
  ASSERT_TRUE(ready && go);

  std::string command = "\"" + peer + "\" " + name;
  STARTUPINFOA startup = {};
  startup.cb = sizeof(startup);
  PROCESS_INFORMATION process = {};
  ASSERT_TRUE(::CreateProcessA(peer.c_str(), &command[0], nullptr, nullptr, FALSE, 0, nullptr,
                               nullptr, &startup, &process))
      << peer << ": " << ::GetLastError();
  ::CloseHandle(process.hThread);
  const HANDLE waits[] = {ready, process.hProcess};
  const DWORD first = ::WaitForMultipleObjects(2, waits, FALSE, 120000);
  EXPECT_EQ(first, WAIT_OBJECT_0) << "the peer ended or hung before opening the block";
  if (first == WAIT_OBJECT_0) {
    bool inverted = true;
    for (int i = 0; i < 4096; ++i)
      inverted = inverted && bytes[i] == static_cast<unsigned char>(~(i * 13 + 5));
    EXPECT_TRUE(inverted) << "the peer's writes are seen here";
    creator.Close();
    EXPECT_EQ(creator.Exist(name.c_str()), 1) << "the peer still holds the block";
  }
  ::SetEvent(go);
  EXPECT_EQ(::WaitForSingleObject(process.hProcess, 120000), WAIT_OBJECT_0);
  DWORD exit = 99;
  ::GetExitCodeProcess(process.hProcess, &exit);
  EXPECT_EQ(exit, 0u) << "the peer's step that failed (see shm_peer.cpp)";
  ::CloseHandle(process.hProcess);
  ::CloseHandle(ready);
  ::CloseHandle(go);
  EXPECT_EQ(creator.Exist(name.c_str()), 0) << "every holder has closed";
}

TEST(SharedMemory, CopiesReleaseTheBlockOnceInEitherOrder) {
  const std::string name = UniqueName("copies");
  const DWORD handles = Baseline();
  unsigned char* view = nullptr;
  ExpectCopiesReleaseOnce<CTarnSharedMemory>(
      [&](CTarnSharedMemory& m) {
        return (view = m.Create(name.c_str(), 4096, nullptr, nullptr, 0)) != nullptr;
      },
      [&](const CTarnSharedMemory& copy, const CTarnSharedMemory& source) {
        EXPECT_EQ(static_cast<unsigned char*>(copy), source.m_pView);
        EXPECT_EQ(copy.m_hMapping, source.m_hMapping);
        EXPECT_EQ(copy.m_nState, 2);
        EXPECT_EQ(copy.Size(), 4096u);
        EXPECT_STREQ(copy.m_szName, name.c_str());
      },
      [&](const CTarnSharedMemory& holder) {
        return HandleCount() == handles + 1 && IsMapped(view) && holder.Exist(name.c_str());
      },
      [&] {
        return HandleCount() == handles && !IsMapped(view) &&
               !CTarnSharedMemory().Exist(name.c_str());
      });
}

}  // namespace

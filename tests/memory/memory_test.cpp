// Memory blocks, memory-mapped files and named shared memory: the error
// out-parameters of every Open and Create, where blocks come from, remapping,
// the release of what copies share, and a second process.
#include <gtest/gtest.h>
#include <process.h>
#include <string.h>

#include <algorithm>
#include <string>

#include "support/checks.h"
#include "support/wine_env.h"
#include "tarn/memory.h"

namespace {

using namespace tarn_test;
using M = CTarnMmFile;
using Shm = CTarnSharedMemory;
constexpr DWORD kSize = 200000;
constexpr auto kRead = M::eOpenRead, kReadWrite = M::eOpenReadWrite;
// An operation given the error out-parameters as CheckErrorRows passes them:
// code c, text t of size n.
#define CALL(expression) [&](DWORD* c, char* t, DWORD n) -> long long { return expression; }

std::string Name(std::string s) { return "tarn-" + s + std::to_string(::GetCurrentProcessId()); }
MEMORY_BASIC_INFORMATION Query(const void* address) {
  MEMORY_BASIC_INFORMATION info = {};
  return ::VirtualQuery(address, &info, sizeof(info)), info;
}
bool Mapped(const void* address) { return Query(address).Type == MEM_MAPPED; }

// A file of bytes that repeat only every 251, so that a view at a wrong offset
// shows, and an empty one.
class Memory : public testing::Test {
 protected:
  void SetUp() override {
    for (size_t i = 0; i < kSize; ++i) bytes[i] = static_cast<char>(i % 251);
    WriteFile(path, bytes);
    WriteFile(empty, "");
  }
  ScratchDir dir;
  const std::string path = dir / "data.bin", empty = dir / "empty.bin";
  std::string bytes = std::string(kSize, '\0');
};

// Opens a block and tells where it came from: 1 the heap, 2 pages, -1 not
// zero-filled. Leaves it dirty, so that the next must be zero-filled again, and
// touched throughout, so that one never freed shows in private memory.
long long Block(DWORD size, DWORD threshold, DWORD* c, char* t, DWORD n) {
  CTarnMemory block;
  unsigned char* p = block.Open(size, threshold, c, t, n);
  if (!p) return 0;
  const long long from = std::count(p, p + size, 0) != size ? -1 : block.m_hMemory ? 1 : 2;
  memset(p, 0xCD, size);
  return from;
}

// Every path through Open and Create, none leaving anything behind.
TEST_F(Memory, ErrorOutParameters) {
  // `read` is kept open by a reader who lets others read and write.
  const std::string read = dir / "read.bin", held = Name("held");
  WriteFile(read, "read");
  HANDLE reader = ::CreateFileA(read.c_str(), GENERIC_READ, 3, nullptr, OPEN_EXISTING, 0, nullptr);
  CTarnMemory block;  // held, as are a file and a shared block
  M file;
  Shm holder, gone;
  ASSERT_TRUE(block.Open(1, 0, 0, 0, 0) && file.Open(kRead, path.c_str(), 0, 0, 0) &&
              holder.Create(held.c_str(), 4096, nullptr, nullptr, 0));
  DWORD offset = 0, code = 0;
  ULONGLONG length = 9;
  const std::vector<ErrorRow> rows = {
      {"heap block at the default threshold", CALL(Block(524288, 0, c, t, n)), 1, 0},
      {"pages above it", CALL(Block(524289, 0, c, t, n)), 2, 0},
      {"pages above a threshold", CALL(Block(100, 64, c, t, n)), 2, 0},
      {"heap block at a threshold", CALL(Block(100, 100, c, t, n)), 1, 0},
      {"block of size 0", CALL(Block(0, 0, c, t, n)), 0, 0},
      {"block already held", CALL(!!block.Open(9, 0, c, t, n)), 0, 0},
      {"file, sized", CALL(M().Open(kRead, path.c_str(), length, c, t, n) && length == kSize),
       1, 0},
      {"file read by another", CALL(!!M().Open(kRead, read.c_str(), c, t, n)), 1, 0},
      {"file read-write, exclusive", CALL(!!M().Open(kReadWrite, read.c_str(), c, t, n)), 0,
       ERROR_SHARING_VIOLATION},
      {"missing file", CALL(!!M().Open(kRead, (dir / "no").c_str(), c, t, n)), 0,
       ERROR_FILE_NOT_FOUND},
      {"bad mode", CALL(!!M().Open(M::eOpenmode(3), path.c_str(), c, t, n)), 0, 0},
      {"file already open", CALL(file.Open(kRead, path.c_str(), length, c, t, n) || length), 0, 0},
      {"remap", CALL(!!file.ReMap(offset = 0, length = 0, c, t, n)), 1, 0},
      {"create", CALL(!!Shm().Create(Name("new").c_str(), 4096, c, t, n)), 1, 0},
      {"create, name in use", CALL(!!Shm().Create(held.c_str(), 1, c, t, n)), 0, 0},
      {"create of size 0", CALL(!!Shm().Create(Name("0").c_str(), 0, c, t, n)), 0,
       ERROR_INVALID_PARAMETER},
      {"open", CALL(!!Shm().Open(held.c_str(), c, t, n)), 1, 0},
      {"open of a missing name, which resets the size",
       CALL((gone.Create(Name("gone").c_str(), 1, 0, 0, 0), gone.Close(),
             gone.Open(Name("nobody").c_str(), c, t, n) || gone.Size())), 0, ERROR_FILE_NOT_FOUND},
      {"open when held", CALL(!!holder.Open(held.c_str(), c, t, n)), 0, 0},
  };
  // An empty file: the library's own code, and its own text cut to the buffer.
  const TextRow emptyFile = {"empty file", [&](char* text, DWORD size) -> long long {
    const long long opened = !!M().Open(kRead, empty.c_str(), length, &code, text, size);
    EXPECT_TRUE(code == 0xFFFFFFFF && length == 0) << code;
    return opened;
  }, "Cannot create filemapping for files with size 0", Short::kCut, 0, 0};
  ExpectBalanced("every row", [&] { CheckErrorRows(rows), CheckTextRows({emptyFile}); }, 5);
  ::CloseHandle(reader);
}

// Copies share what their source holds: with the holders closed in any
// order, it goes with the last.
TEST_F(Memory, CopiesShareUntilTheLastHolderCloses) {
  const std::string name = Name("copies");
  ExpectBalanced("copies", [&] {
    for (int first = 0; first < 3; ++first) {
      // The holders of a block (pages, whose release shows), a file and a shared block.
      CTarnMemory b[3]; M f[3]; Shm s[3];
      unsigned char* block = b[0].Open(8192, 4096, nullptr, nullptr, 0);
      unsigned char* view = f[0].Open(kRead, path.c_str(), nullptr, nullptr, 0);
      ASSERT_TRUE(block && view && s[0].Create(name.c_str(), 64, nullptr, nullptr, 0));
      b[2] = CTarnMemory(b[0]), f[2] = M(f[0]), s[2] = Shm(s[0]);  // a copy's copy
      b[1] = b[1] = b[2], f[1] = f[1] = f[2], s[1] = s[1] = s[2];  // and onto itself
      for (int k = 0, i = first; k < 3; ++k, i = (i + 1) % 3) {
        b[i].Close(), f[i].Close(), s[i].Close();
        SCOPED_TRACE(testing::Message() << k + 1 << " closed, from " << first);
        EXPECT_EQ(Query(block).State != MEM_FREE, k < 2);
        EXPECT_EQ(Mapped(view), k < 2);
        EXPECT_EQ(Shm().Exist(name.c_str()), k < 2);
      }
    }
  }, 20);
}

TEST_F(Memory, ReMapRoundsTheOffsetAndCutsTheLength) {
  const struct { DWORD offset; ULONGLONG length; DWORD rounded; ULONGLONG used; } rows[] = {
      {70000, 200000, 65536, kSize - 65536},       // to the allocation granularity, cut
      {131072, 4096, 131072, 4096},                // fits: used as given
      {65537, 0, 65536, 0},                        // 0: to the end, stays 0
      {kSize - 1, 10000, 196608, kSize - 196608},  // just below the end
      {kSize, 10, kSize, 10},                      // at the end: refused, the old view kept
  };
  M file;  // read-write: the access of the views follows the mode
  unsigned char* view = file.Open(kReadWrite, path.c_str(), nullptr, nullptr, 0);
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::Message() << row.offset << " + " << row.length);
    auto [offset, length] = std::pair(row.offset, row.length);
    unsigned char* now = file.ReMap(offset, length, nullptr, nullptr, 0);
    EXPECT_TRUE(offset == row.rounded && length == row.used) << offset << " + " << length;
    ASSERT_EQ(now == nullptr, row.offset >= kSize);
    if (!now) EXPECT_TRUE(Mapped(view)) << "the old view is kept";
    if (!now) continue;
    const size_t count = row.used ? row.used : kSize - row.rounded;
    EXPECT_EQ(Query(now).RegionSize, (count + 4095) / 4096 * 4096);
    EXPECT_EQ(Query(now).Protect, static_cast<DWORD>(PAGE_READWRITE));
    EXPECT_EQ(memcmp(now, bytes.data() + row.rounded, count), 0);
    view = now;
  }
}

// The program next to this test opens the block by name and answers the bytes
// it finds (see shm_peer.cpp).
TEST(SharedMemory, ASecondProcessSeesTheSameBytes) {
  char peer[MAX_PATH];
  ::GetModuleFileNameA(nullptr, peer, MAX_PATH);
  strcpy(strrchr(peer, '\\') + 1, "memory_shm_peer.exe");
  Shm creator;
  unsigned char* bytes = creator.Create(Name("peer").c_str(), 4096, nullptr, nullptr, 0);
  ASSERT_NE(bytes, nullptr);
  memset(bytes, 0x5A, 4096);
  EXPECT_EQ(_spawnl(_P_WAIT, peer, "peer", Name("peer").c_str(), nullptr), 0) << "the peer's Open";
  EXPECT_EQ(std::count(bytes, bytes + 4096, 0xA5), 4096) << "what each saw of the other's bytes";
}

}  // namespace

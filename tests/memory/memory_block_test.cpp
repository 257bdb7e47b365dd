// Memory blocks: where a block comes from on either side of the threshold,
// its contents, and the release of blocks shared by copies.
#include <gtest/gtest.h>

#include <windows.h>

#include <string.h>

#include "tarn/memory.h"

namespace {

constexpr DWORD kDefaultThreshold = 524288;

MEMORY_BASIC_INFORMATION Query(const void* address) {
  MEMORY_BASIC_INFORMATION info = {};
  EXPECT_EQ(::VirtualQuery(address, &info, sizeof(info)), sizeof(info));
  return info;
}

// A block of committed pages of its own: starts its allocation, private,
// read-write, covering the size.
void ExpectPages(CTarnMemory& memory, DWORD size) {
  unsigned char* address = memory.Address();
  ASSERT_NE(address, nullptr);
  EXPECT_EQ(memory.m_hMemory, nullptr);
  const MEMORY_BASIC_INFORMATION info = Query(address);
  EXPECT_EQ(info.AllocationBase, address);
  EXPECT_EQ(info.State, static_cast<DWORD>(MEM_COMMIT));
  EXPECT_EQ(info.Type, static_cast<DWORD>(MEM_PRIVATE));
  EXPECT_EQ(info.Protect, static_cast<DWORD>(PAGE_READWRITE));
  EXPECT_GE(info.RegionSize, size);
}

// A block of the global heap: its handle is the one GlobalHandle finds for
// the address, and it sits inside a larger allocation.
void ExpectHeap(CTarnMemory& memory, DWORD size) {
  unsigned char* address = memory.Address();
  ASSERT_NE(address, nullptr);
  ASSERT_NE(memory.m_hMemory, nullptr);
  EXPECT_EQ(::GlobalHandle(address), memory.m_hMemory);
  EXPECT_GE(::GlobalSize(memory.m_hMemory), size);
  EXPECT_NE(Query(address).AllocationBase, address);
}

bool AllZero(const unsigned char* p, DWORD size) {
  for (DWORD i = 0; i < size; ++i)
    if (p[i] != 0) return false;
  return true;
}

bool IsFree(const void* address) { return Query(address).State == MEM_FREE; }

TEST(MemoryBlock, DefaultThresholdSplitsHeapFromPages) {
  CTarnMemory at;
  DWORD code = 7;
  ASSERT_NE(at.Open(kDefaultThreshold, 0, &code, nullptr, 0), nullptr);
  EXPECT_EQ(code, 0u);
  ExpectHeap(at, kDefaultThreshold);
  EXPECT_EQ(at.Size(), kDefaultThreshold);
  EXPECT_EQ(at.m_pMemory, at.Address());
  EXPECT_TRUE(AllZero(at.Address(), at.Size()));

  CTarnMemory above;
  ASSERT_NE(above.Open(kDefaultThreshold + 1, 0, nullptr, nullptr, 0), nullptr);
  ExpectPages(above, kDefaultThreshold + 1);
  EXPECT_EQ(above.Size(), kDefaultThreshold + 1);
  EXPECT_TRUE(AllZero(above.Address(), above.Size()));

  unsigned char* pages = above.Address();
  above.Close();
  EXPECT_TRUE(IsFree(pages)) << "pages released by Close";
}

TEST(MemoryBlock, ExplicitThresholdOnBothSides) {
  CTarnMemory above;
  ASSERT_NE(above.Open(100, 64, nullptr, nullptr, 0), nullptr);
  ExpectPages(above, 100);
  CTarnMemory at;
  ASSERT_NE(at.Open(100, 100, nullptr, nullptr, 0), nullptr);
  ExpectHeap(at, 100);
  CTarnMemory below;
  ASSERT_NE(below.Open(100, 101, nullptr, nullptr, 0), nullptr);
  ExpectHeap(below, 100);
  EXPECT_TRUE(AllZero(above.Address(), 100));
  EXPECT_TRUE(AllZero(at.Address(), 100));
}

TEST(MemoryBlock, ReusedMemoryComesBackZeroFilled) {
  // Heap memory that held bytes before is handed out again: only the
  // allocation's own zero-fill clears it.
  for (DWORD size : {DWORD{64}, DWORD{4000}, DWORD{100000}}) {
    CTarnMemory first;
    ASSERT_NE(first.Open(size, 0, nullptr, nullptr, 0), nullptr);
    memset(first.Address(), 0xCD, size);
    first.Close();
    CTarnMemory second;
    ASSERT_NE(second.Open(size, 0, nullptr, nullptr, 0), nullptr);
    EXPECT_TRUE(AllZero(second.Address(), size)) << size;
  }
  CTarnMemory pages;
  ASSERT_NE(pages.Open(3 * 4096 + 1, 4096, nullptr, nullptr, 0), nullptr);
  EXPECT_TRUE(AllZero(pages.Address(), 3 * 4096 + 1));
}

TEST(MemoryBlock, RefusalsLeaveCodeZeroAndTheHeldBlock) {
  CTarnMemory memory;
  DWORD code = 7;
  char text[16] = "old";
  EXPECT_EQ(memory.Open(0, 0, &code, text, sizeof(text)), nullptr);
  EXPECT_EQ(code, 0u);
  EXPECT_STREQ(text, "");
  EXPECT_EQ(memory.Address(), nullptr);
  EXPECT_EQ(memory.Size(), 0u);

  unsigned char* first = memory.Open(32, 0, nullptr, nullptr, 0);
  ASSERT_NE(first, nullptr);
  first[0] = 0x5A;
  code = 7;
  strcpy(text, "old");
  EXPECT_EQ(memory.Open(64, 0, &code, text, sizeof(text)), nullptr);
  EXPECT_EQ(code, 0u);
  EXPECT_STREQ(text, "");
  EXPECT_EQ(memory.Address(), first);
  EXPECT_EQ(memory.Size(), 32u);
  EXPECT_EQ(memory.Open(600000, 0, nullptr, nullptr, 0), nullptr) << "pages refused as well";
  EXPECT_EQ(memory.Address(), first);
  EXPECT_EQ(first[0], 0x5A);

  memory.Close();
  EXPECT_EQ(memory.Address(), nullptr);
  EXPECT_EQ(memory.m_hMemory, nullptr);
  EXPECT_EQ(memory.Size(), 0u);
  memory.Close();
  EXPECT_EQ(memory.Address(), nullptr);
  // Reusable after Close.
  ASSERT_NE(memory.Open(16, 0, nullptr, nullptr, 0), nullptr);
  EXPECT_EQ(memory.Size(), 16u);
}

TEST(MemoryBlock, CopiesReleaseTheBlockOnceInEitherOrder) {
  const DWORD size = 2 * 4096;  // pages, whose release VirtualQuery shows
  {
    // Source closed first, then the copy destroyed.
    CTarnMemory source;
    unsigned char* address = source.Open(size, 4096, nullptr, nullptr, 0);
    ASSERT_NE(address, nullptr);
    {
      CTarnMemory copy(source);
      EXPECT_EQ(copy.Address(), address);
      EXPECT_EQ(copy.m_hMemory, source.m_hMemory);
      EXPECT_EQ(copy.Size(), size);
      source.Close();
      EXPECT_EQ(source.Address(), nullptr);
      EXPECT_FALSE(IsFree(address)) << "the copy still holds it";
      copy.Address()[size - 1] = 1;
    }
    EXPECT_TRUE(IsFree(address));
  }
  {
    // Copy closed first, source destroyed last; assignment likewise.
    unsigned char* address = nullptr;
    {
      CTarnMemory source;
      address = source.Open(size, 4096, nullptr, nullptr, 0);
      ASSERT_NE(address, nullptr);
      CTarnMemory copy(source);
      CTarnMemory assigned;
      assigned = copy;
      assigned = assigned;
      EXPECT_EQ(assigned.Address(), address);
      copy.Close();
      copy.Close();
      assigned.Close();
      EXPECT_FALSE(IsFree(address));
      EXPECT_EQ(source.Address()[0], 0);
    }
    EXPECT_TRUE(IsFree(address));
  }
}

TEST(MemoryBlock, CopiesOfAHeapBlockShareIt) {
  CTarnMemory source;
  ASSERT_NE(source.Open(100, 0, nullptr, nullptr, 0), nullptr);
  HGLOBAL handle = source.m_hMemory;
  CTarnMemory copy = source;
  source.Close();
  EXPECT_EQ(copy.m_hMemory, handle);
  EXPECT_EQ(::GlobalHandle(copy.Address()), handle) << "still allocated";
  copy.Address()[99] = 3;
  // A copy holds a block: it refuses a second one.
  EXPECT_EQ(copy.Open(10, 0, nullptr, nullptr, 0), nullptr);
}

TEST(MemoryBlock, AssignmentDoesNotReleaseWhatTheTargetHeld) {
  CTarnMemory target;
  unsigned char* old = target.Open(4096, 100, nullptr, nullptr, 0);
  ASSERT_NE(old, nullptr);
  CTarnMemory source;
  ASSERT_NE(source.Open(8192, 100, nullptr, nullptr, 0), nullptr);
  target = source;
  EXPECT_EQ(target.Address(), source.Address());
  EXPECT_EQ(target.Size(), 8192u);
  EXPECT_FALSE(IsFree(old));
  old[4095] = 1;
  ::VirtualFree(old, 0, MEM_RELEASE);  // the test's own clean-up
}

}  // namespace

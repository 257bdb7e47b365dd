// Named shared memory: creating, opening and probing names, a second process
// on the same bytes, and copies.
#include <gtest/gtest.h>

#include <windows.h>

#include <string.h>

#include <string>

#include "support/wine_env.h"
#include "tarn/memory.h"

namespace {

using tarn_test::HandleCount;

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

bool AllZero(const unsigned char* p, DWORD size) {
  for (DWORD i = 0; i < size; ++i)
    if (p[i] != 0) return false;
  return true;
}

bool IsMapped(const void* address) {
  MEMORY_BASIC_INFORMATION info = {};
  ::VirtualQuery(address, &info, sizeof(info));
  return info.Type == MEM_MAPPED;
}

TEST(SharedMemory, CreateOpenAndTheNameInUse) {
  const std::string name = UniqueName("create");
  const DWORD handles = Baseline();
  CTarnSharedMemory creator;
  DWORD code = 7;
  char text[256] = "old";
  unsigned char* created = creator.Create(name.c_str(), 4096, &code, text, sizeof(text));
  ASSERT_NE(created, nullptr);
  EXPECT_EQ(code, 0u);
  EXPECT_STREQ(text, "");
  EXPECT_TRUE(AllZero(created, 4096));
  EXPECT_EQ(creator.Size(), 4096u);
  EXPECT_EQ(creator.m_nState, 2);
  EXPECT_STREQ(creator.m_szName, name.c_str());
  EXPECT_EQ(static_cast<unsigned char*>(creator), created);
  EXPECT_EQ(HandleCount(), handles + 1) << "the mapping";

  CTarnSharedMemory opener;
  unsigned char* opened = opener.Open(name.c_str(), &code, text, sizeof(text));
  ASSERT_NE(opened, nullptr);
  EXPECT_EQ(code, 0u);
  EXPECT_EQ(opener.m_nState, 1);
  EXPECT_EQ(opener.Size(), 0u);
  EXPECT_STREQ(opener.m_szName, name.c_str());
  memcpy(created + 4000, "shared", 7);
  EXPECT_STREQ(reinterpret_cast<char*>(opened + 4000), "shared");
  opened[4095] = 0x77;
  EXPECT_EQ(created[4095], 0x77);

  // The name in use: refused without a code, the probe handle closed.
  CTarnSharedMemory again;
  const DWORD before = HandleCount();
  code = 7;
  strcpy(text, "old");
  EXPECT_EQ(again.Create(name.c_str(), 4096, &code, text, sizeof(text)), nullptr);
  EXPECT_EQ(code, 0u);
  EXPECT_STREQ(text, "");
  EXPECT_EQ(again.m_nState, 0);
  EXPECT_EQ(HandleCount(), before);

  // Held objects refuse a second block and keep the first.
  code = 7;
  EXPECT_EQ(creator.Create(UniqueName("other").c_str(), 100, &code, nullptr, 0), nullptr);
  EXPECT_EQ(code, 0u);
  EXPECT_EQ(creator.Open(name.c_str(), &code, nullptr, 0), nullptr);
  EXPECT_EQ(code, 0u);
  EXPECT_EQ(opener.Open(name.c_str(), &code, nullptr, 0), nullptr);
  EXPECT_EQ(static_cast<unsigned char*>(creator), created);
  EXPECT_EQ(creator.Size(), 4096u);
  EXPECT_EQ(creator.m_nState, 2);
  EXPECT_EQ(creator.Exist(UniqueName("other").c_str()), 0);

  // Exist while any holder is left.
  EXPECT_EQ(again.Exist(name.c_str()), 1);
  creator.Close();
  EXPECT_EQ(creator.m_nState, 0);
  EXPECT_EQ(creator.m_szName[0], '\0');
  EXPECT_EQ(static_cast<unsigned char*>(creator), nullptr);
  EXPECT_EQ(creator.Size(), 4096u) << "kept by Close";
  EXPECT_FALSE(IsMapped(created));
  EXPECT_EQ(again.Exist(name.c_str()), 1);
  EXPECT_EQ(opened[4095], 0x77);
  opener.Close();
  EXPECT_EQ(again.Exist(name.c_str()), 0);
  EXPECT_EQ(HandleCount(), handles);

  // Once gone, the name is free again, and the new block is a new one.
  unsigned char* fresh = again.Create(name.c_str(), 8192, nullptr, nullptr, 0);
  ASSERT_NE(fresh, nullptr);
  EXPECT_TRUE(AllZero(fresh, 8192));
}

TEST(SharedMemory, FailuresReportThePlatformCode) {
  const DWORD handles = Baseline();
  CTarnSharedMemory block;
  DWORD code = 0;
  char text[256] = "";
  EXPECT_EQ(block.Open(UniqueName("nobody").c_str(), &code, text, sizeof(text)), nullptr);
  EXPECT_EQ(code, static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
  EXPECT_STRNE(text, "");
  EXPECT_EQ(block.m_nState, 0);
  EXPECT_EQ(block.m_szName[0], '\0');

  const std::string name = UniqueName("empty");
  strcpy(text, "");
  EXPECT_EQ(block.Create(name.c_str(), 0, &code, text, sizeof(text)), nullptr);
  EXPECT_NE(code, 0u) << "a size of 0 cannot be created";
  EXPECT_STRNE(text, "");
  EXPECT_EQ(block.m_nState, 0);
  EXPECT_EQ(block.m_szName[0], '\0');
  EXPECT_EQ(block.Exist(name.c_str()), 0);

  // A failed Create still records the size asked for.
  ASSERT_NE(block.Create(name.c_str(), 100, nullptr, nullptr, 0), nullptr);
  block.Close();
  code = 7;
  EXPECT_EQ(block.Create(nullptr, 300, &code, nullptr, 0), nullptr);
  EXPECT_EQ(code, 0u);
  EXPECT_EQ(block.Size(), 100u) << "a null name is refused before anything";
  EXPECT_EQ(HandleCount(), handles);
}

TEST(SharedMemory, LongestNameFitsTheMember) {
  std::string name = UniqueName("long") + "-";
  name.append(259 - name.size(), 'n');
  ASSERT_EQ(name.size(), 259u);
  CTarnSharedMemory block;
  ASSERT_NE(block.Create(name.c_str(), 64, nullptr, nullptr, 0), nullptr);
  EXPECT_EQ(std::string(block.m_szName), name);
  EXPECT_EQ(block.m_szName[259], '\0');
  CTarnSharedMemory opener;
  ASSERT_NE(opener.Open(name.c_str(), nullptr, nullptr, 0), nullptr);
  EXPECT_EQ(std::string(opener.m_szName), name);
}

// The helper program next to this test opens the block by name, checks and
// inverts its bytes, and holds it until told to let go.
TEST(SharedMemory, ASecondProcessSeesTheSameBytes) {
  char self[MAX_PATH];
  ASSERT_GT(::GetModuleFileNameA(nullptr, self, MAX_PATH), 0u);
  std::string peer = self;
  peer = peer.substr(0, peer.find_last_of('\\') + 1) + "memory_shm_peer.exe";
  ASSERT_NE(::GetFileAttributesA(peer.c_str()), INVALID_FILE_ATTRIBUTES) << peer;

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
      << ::GetLastError();
  ::CloseHandle(process.hThread);
  const HANDLE waits[] = {ready, process.hProcess};
  const DWORD first = ::WaitForMultipleObjects(2, waits, FALSE, 120000);
  EXPECT_EQ(first, WAIT_OBJECT_0) << "the peer ended or hung before opening the block";
  if (first == WAIT_OBJECT_0) {
    bool inverted = true;
    for (int i = 0; i < 4096; ++i)
      inverted = inverted && bytes[i] == static_cast<unsigned char>(~(i * 13 + 5));
    EXPECT_TRUE(inverted) << "the peer's writes are seen here";

    // The creator lets go while the peer holds the block: it stays, and its
    // name stays taken.
    creator.Close();
    CTarnSharedMemory other;
    EXPECT_EQ(other.Exist(name.c_str()), 1);
    DWORD code = 7;
    EXPECT_EQ(other.Create(name.c_str(), 4096, &code, nullptr, 0), nullptr);
    EXPECT_EQ(code, 0u);
  }
  ::SetEvent(go);
  EXPECT_EQ(::WaitForSingleObject(process.hProcess, 120000), WAIT_OBJECT_0);
  DWORD exit = 99;
  ::GetExitCodeProcess(process.hProcess, &exit);
  EXPECT_EQ(exit, 0u) << "the peer's step that failed (see shm_peer.cpp)";
  ::CloseHandle(process.hProcess);
  ::CloseHandle(ready);
  ::CloseHandle(go);
  CTarnSharedMemory after;
  EXPECT_EQ(after.Exist(name.c_str()), 0) << "every holder has closed";
}

TEST(SharedMemory, CopiesReleaseTheBlockOnceInEitherOrder) {
  const std::string name = UniqueName("copies");
  const DWORD handles = Baseline();
  {
    CTarnSharedMemory source;
    unsigned char* view = source.Create(name.c_str(), 4096, nullptr, nullptr, 0);
    ASSERT_NE(view, nullptr);
    {
      CTarnSharedMemory copy(source);
      EXPECT_EQ(static_cast<unsigned char*>(copy), view);
      EXPECT_EQ(copy.m_hMapping, source.m_hMapping);
      EXPECT_EQ(copy.m_nState, 2);
      EXPECT_EQ(copy.Size(), 4096u);
      EXPECT_STREQ(copy.m_szName, name.c_str());
      source.Close();
      EXPECT_EQ(HandleCount(), handles + 1);
      EXPECT_EQ(source.Exist(name.c_str()), 1);
      view[10] = 1;
    }
    EXPECT_EQ(HandleCount(), handles);
    EXPECT_EQ(source.Exist(name.c_str()), 0);
    EXPECT_FALSE(IsMapped(view));
  }
  {
    unsigned char* view = nullptr;
    {
      CTarnSharedMemory source;
      view = source.Create(name.c_str(), 4096, nullptr, nullptr, 0);
      ASSERT_NE(view, nullptr);
      CTarnSharedMemory copy = source;
      CTarnSharedMemory assigned;
      assigned = copy;
      assigned = assigned;
      EXPECT_EQ(static_cast<unsigned char*>(assigned), view);
      copy.Close();
      assigned.Close();
      EXPECT_EQ(HandleCount(), handles + 1);
      EXPECT_EQ(source.Exist(name.c_str()), 1);
      EXPECT_EQ(view[0], 0);
    }
    EXPECT_EQ(HandleCount(), handles);
    EXPECT_FALSE(IsMapped(view));
  }
}

}  // namespace

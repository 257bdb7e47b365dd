// tarn.dll as an application loads it: the module entry, the resource handle
// and the resources reached through it.
#include <gtest/gtest.h>

#include <string>
#include <thread>

#include "tarn/core.h"
#include "tarn/files.h"

namespace {

HMODULE TarnModule() { return ::GetModuleHandleA("tarn.dll"); }

TEST(ModuleEntry, StoresItsOwnInstanceAtLoad) {
  ASSERT_NE(TarnModule(), nullptr);
  EXPECT_EQ(TarnGetResourceHandle(), TarnModule());
}

TEST(ModuleEntry, ThreadStartAndEndRestoreTheInstance) {
  HMODULE self = ::GetModuleHandleA(nullptr);
  TarnSetResourceHandle(self);
  EXPECT_EQ(TarnGetResourceHandle(), self);

  HINSTANCE seenInThread = nullptr;
  std::thread thread([&] { seenInThread = TarnGetResourceHandle(); });
  thread.join();
  EXPECT_EQ(seenInThread, TarnModule()) << "thread attach stored the DLL's instance";
  EXPECT_EQ(TarnGetResourceHandle(), TarnModule());

  // Null is stored as given, until the next thread notification.
  TarnSetResourceHandle(nullptr);
  EXPECT_EQ(TarnGetResourceHandle(), nullptr);
  std::thread([] {}).join();
  EXPECT_EQ(TarnGetResourceHandle(), TarnModule());
}

TEST(ModuleEntry, ResourcesComeFromTheDll) {
  char text[64] = {};
  ASSERT_GT(::LoadStringA(TarnGetResourceHandle(), 1, text, sizeof text), 0);
  EXPECT_STREQ(text, "Not Available");
  HRSRC pif = ::FindResourceA(TarnGetResourceHandle(), MAKEINTRESOURCEA(103), "PIFFILE");
  ASSERT_NE(pif, nullptr);
  EXPECT_EQ(::SizeofResource(TarnGetResourceHandle(), pif), 967u);
}

TEST(ModuleEntry, VersionResourceFollowsTheProjectVersion) {
  char path[MAX_PATH];
  ASSERT_GT(::GetModuleFileNameA(TarnModule(), path, MAX_PATH), 0u);
  DWORD ignored = 0;
  const DWORD size = ::GetFileVersionInfoSizeA(path, &ignored);
  ASSERT_GT(size, 0u);
  std::string block(size, '\0');
  ASSERT_TRUE(::GetFileVersionInfoA(path, 0, size, block.data()));
  VS_FIXEDFILEINFO* fixed = nullptr;
  UINT length = 0;
  ASSERT_TRUE(::VerQueryValueA(block.data(), "\\", reinterpret_cast<void**>(&fixed), &length));
  EXPECT_EQ(HIWORD(fixed->dwFileVersionMS), TARN_TEST_VERSION_MAJOR);
  EXPECT_EQ(LOWORD(fixed->dwFileVersionMS), TARN_TEST_VERSION_MINOR);
  WORD* translation = nullptr;
  ASSERT_TRUE(::VerQueryValueA(block.data(), "\\VarFileInfo\\Translation",
                               reinterpret_cast<void**>(&translation), &length));
  ASSERT_EQ(length, 4u);
  char key[64];
  wsprintfA(key, "\\StringFileInfo\\%04x%04x\\FileVersion", translation[0], translation[1]);
  char* value = nullptr;
  ASSERT_TRUE(::VerQueryValueA(block.data(), key, reinterpret_cast<void**>(&value), &length));
  EXPECT_STREQ(value, TARN_TEST_VERSION);
}

TEST(Exports, PathRulesAnswerThroughTheDll) {
  EXPECT_EQ(TarnFilenameIsValid("report.txt"), 1);
  EXPECT_EQ(TarnIsReservedDeviceName("nul"), 1);
}

}  // namespace

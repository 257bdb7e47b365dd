// tarn.dll as an application loads it: the module entry, the resource handle
// and the resources reached through it, the version resource read with the
// library's own class.
#include <gtest/gtest.h>

#include <string>
#include <thread>

#include "tarn/core.h"
#include "tarn/version.h"

namespace {

HMODULE TarnModule() { return ::GetModuleHandleA("tarn.dll"); }

TEST(ModuleEntry, StoresItsOwnInstanceAtLoadAndAtEveryThreadStartAndEnd) {
  ASSERT_NE(TarnModule(), nullptr);
  EXPECT_EQ(TarnGetResourceHandle(), TarnModule());
  TarnSetResourceHandle(nullptr);
  EXPECT_EQ(TarnGetResourceHandle(), nullptr) << "stored as given";
  HINSTANCE seenInThread = nullptr;
  std::thread([&] { seenInThread = TarnGetResourceHandle(); }).join();
  EXPECT_EQ(seenInThread, TarnModule()) << "thread attach stored the DLL's instance";
  EXPECT_EQ(TarnGetResourceHandle(), TarnModule());
}

std::string Text(CTarnFileVersionInfo& info, int (CTarnFileVersionInfo::*query)(char*, DWORD)) {
  char text[64] = {};
  (info.*query)(text, sizeof text);
  return text;
}

TEST(ModuleEntry, ResourcesAndVersionComeFromTheDll) {
  HRSRC pif = ::FindResourceA(TarnGetResourceHandle(), MAKEINTRESOURCEA(103), "PIFFILE");
  ASSERT_NE(pif, nullptr);
  EXPECT_EQ(::SizeofResource(TarnGetResourceHandle(), pif), 967u);
  CTarnFileVersionInfo info;
  EXPECT_EQ(Text(info, &CTarnFileVersionInfo::GetCompanyName), "Not Available") << "string 1";
  ASSERT_EQ(info.Open(TarnModule()), 1);
  std::string fixed = TARN_TEST_VERSION ",0";
  for (char& c : fixed) c = c == '.' ? ',' : c;
  EXPECT_EQ(Text(info, &CTarnFileVersionInfo::GetFixedFileVersion), fixed);
  EXPECT_EQ(Text(info, &CTarnFileVersionInfo::GetFileVersion), TARN_TEST_VERSION);
  EXPECT_EQ(Text(info, &CTarnFileVersionInfo::GetOriginalFilename), "tarn.dll");
}

}  // namespace

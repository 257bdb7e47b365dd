// Both version classes as an application gets them from tarn.dll: tarn.dll's
// own version resource and its not-available text, copies made across the
// module boundary, and the system's version.
#include <gtest/gtest.h>

#include <string>

#include "tarn/core.h"
#include "tarn/version.h"

namespace {

struct NotAvailable : CTarnFileVersionInfo {
  static std::string Text() { return s_szNotAvailable; }
};

std::string Text(int (CTarnFileVersionInfo::*query)(char*, DWORD), CTarnFileVersionInfo& info) {
  char text[128] = {};
  (info.*query)(text, sizeof text);
  return text;
}

TEST(VersionThroughTheDll, ReadsTarnDllsOwnResource) {
  CTarnFileVersionInfo info;
  EXPECT_EQ(NotAvailable::Text(), "Not Available") << "string 1 of tarn.dll";
  ASSERT_EQ(info.Open(TarnGetResourceHandle()), 1);
  EXPECT_EQ(Text(&CTarnFileVersionInfo::GetCompanyName, info), "Tarn");
  EXPECT_EQ(Text(&CTarnFileVersionInfo::GetFileDescription, info), "Tarn utility library");
  EXPECT_EQ(Text(&CTarnFileVersionInfo::GetFileVersion, info), TARN_TEST_VERSION);
  EXPECT_EQ(Text(&CTarnFileVersionInfo::GetInternalName, info), "tarn");
  EXPECT_EQ(Text(&CTarnFileVersionInfo::GetLegalCopyright, info), "Copyright (C) Tarn");
  EXPECT_EQ(Text(&CTarnFileVersionInfo::GetOriginalFilename, info), "tarn.dll");
  EXPECT_EQ(Text(&CTarnFileVersionInfo::GetProductName, info), "Tarn");
  EXPECT_EQ(Text(&CTarnFileVersionInfo::GetProductVersion, info), TARN_TEST_VERSION);
  // InternalName "tarn" names tarn.dll itself; no tarn.hlp lies beside it.
  EXPECT_EQ(Text(&CTarnFileVersionInfo::GetHelpFileName, info), "");
  std::string fixed = TARN_TEST_VERSION;
  for (char& c : fixed)
    if (c == '.') c = ',';
  EXPECT_EQ(Text(&CTarnFileVersionInfo::GetFixedFileVersion, info), fixed + ",0");
  EXPECT_EQ(Text(&CTarnFileVersionInfo::GetFixedProductVersion, info), fixed + ",0");
  char value[32] = {};
  EXPECT_EQ(info.QueryValue(value, sizeof value, "CompanyName", 0x040904B0), 1);
  EXPECT_STREQ(value, "Tarn");

  CTarnFileVersionInfo copy(info);
  info.Close();
  EXPECT_EQ(Text(&CTarnFileVersionInfo::GetCompanyName, info), "Not Available");
  EXPECT_EQ(Text(&CTarnFileVersionInfo::GetCompanyName, copy), "Tarn");
  info = copy;
  VS_FIXEDFILEINFO record = {};
  EXPECT_EQ(info.GetFixedInfo(record), 1);
  EXPECT_EQ(record.dwSignature, 0xFEEF04BDu);
}

TEST(VersionThroughTheDll, IdentifiesTheSystem) {
  OSVERSIONINFOEXA record = {};
  record.dwOSVersionInfoSize = sizeof record;
  ASSERT_TRUE(::GetVersionExA(reinterpret_cast<OSVERSIONINFOA*>(&record)));
  const CTarnSystemVersionInfo info;
  CTarnSystemVersionInfo copy;
  copy = info;
  EXPECT_EQ(info.IsWinNTPlatform(), 1);
  EXPECT_EQ(copy.GetOperatingSystem(), info.GetOperatingSystem());
  if (record.dwMajorVersion == 6 && record.dwMinorVersion == 1)
    EXPECT_EQ(info.GetOperatingSystem(), CTarnSystemVersionInfo::eWin7);
  if (record.dwMajorVersion == 6 && record.dwMinorVersion == 0) EXPECT_EQ(info.IsWinVista(), 1);
}

}  // namespace

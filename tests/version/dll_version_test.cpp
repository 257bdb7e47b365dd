// Both version classes as an application gets them from tarn.dll: tarn.dll's
// own version resource and its not-available text, copies made across the
// module boundary, and the system's version.
#include <gtest/gtest.h>

#include <string>

#include "tarn/core.h"
#include "tarn/version.h"

namespace {

using Info = CTarnFileVersionInfo;

struct NotAvailable : Info {
  static std::string Text() { return s_szNotAvailable; }
};

std::string Text(Info& info, int (Info::*query)(char*, DWORD)) {
  char text[128] = {};
  (info.*query)(text, sizeof text);
  return text;
}

TEST(VersionThroughTheDll, ReadsTarnDllsOwnResourceAndIdentifiesTheSystem) {
  Info info;
  EXPECT_EQ(NotAvailable::Text(), "Not Available") << "string 1 of tarn.dll";
  ASSERT_EQ(info.Open(TarnGetResourceHandle()), 1);
  std::string fixed = TARN_TEST_VERSION ",0";
  for (char& c : fixed)
    if (c == '.') c = ',';
  EXPECT_EQ(Text(info, &Info::GetFileVersion), TARN_TEST_VERSION);
  EXPECT_EQ(Text(info, &Info::GetFixedFileVersion), fixed);
  EXPECT_EQ(Text(info, &Info::GetOriginalFilename), "tarn.dll");
  EXPECT_EQ(Text(info, &Info::GetHelpFileName), "") << "no tarn.hlp beside tarn.dll";

  Info copy(info);
  info.Close();
  EXPECT_EQ(Text(info, &Info::GetCompanyName), "Not Available");
  EXPECT_EQ(Text(copy, &Info::GetCompanyName), "Tarn");
  info = copy;
  EXPECT_EQ(Text(info, &Info::GetProductName), "Tarn");

  const CTarnSystemVersionInfo system;
  CTarnSystemVersionInfo assigned;
  assigned = system;
  EXPECT_EQ(system.IsWinNTPlatform(), 1);
  EXPECT_EQ(assigned.GetOperatingSystem(), system.GetOperatingSystem());
  EXPECT_EQ(assigned.IsTerminalServer(), system.IsTerminalServer());
}

}  // namespace

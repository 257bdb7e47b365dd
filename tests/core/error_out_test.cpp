// The error out-parameters and the message formatter, against the real
// FormatMessageA and, for "netmsg.dll" (which Wine lacks), through the
// platform seam.
#include <gtest/gtest.h>

#include <string.h>

#include <string>
#include <vector>

#include "core/error_out.h"
#include "core/platform.h"

namespace {

// What the formatter asked of the platform.
struct Recorded {
  std::vector<std::string> loaded;
  DWORD loadFlags = 0;
  DWORD formatFlags = 0;
  HMODULE formatSource = nullptr;
  DWORD formatId = 0;
  DWORD formatLanguage = 0;
  char* formatBuffer = nullptr;
  DWORD formatSize = 0;
  bool formatArgsNull = false;
  std::vector<HMODULE> freed;
};
Recorded g_rec;
HMODULE const kFakeNetmsg = reinterpret_cast<HMODULE>(0x5A5A0000);
bool g_netmsgLoads = true;

HMODULE WINAPI FakeLoad(LPCSTR name, HANDLE file, DWORD flags) {
  g_rec.loaded.push_back(name);
  g_rec.loadFlags = flags;
  EXPECT_EQ(file, nullptr);
  return g_netmsgLoads ? kFakeNetmsg : nullptr;
}
BOOL WINAPI FakeFree(HMODULE module) {
  g_rec.freed.push_back(module);
  return TRUE;
}
DWORD WINAPI FakeFormat(DWORD flags, LPCVOID source, DWORD id, DWORD language, LPSTR buffer,
                        DWORD size, va_list* args) {
  g_rec.formatFlags = flags;
  g_rec.formatSource = static_cast<HMODULE>(const_cast<void*>(source));
  g_rec.formatId = id;
  g_rec.formatLanguage = language;
  g_rec.formatBuffer = buffer;
  g_rec.formatSize = size;
  g_rec.formatArgsNull = args == nullptr;
  static const char kText[] = "net text";
  if (size < sizeof kText) return 0;
  memcpy(buffer, kText, sizeof kText);
  return sizeof kText - 1;
}

class SeamTest : public ::testing::Test {
 protected:
  void SetUp() override {
    g_rec = Recorded();
    g_netmsgLoads = true;
    auto& calls = tarn::Platform();
    calls.LoadLibraryExA = FakeLoad;
    calls.FreeLibrary = FakeFree;
    calls.FormatMessageA = FakeFormat;
  }
  void TearDown() override { tarn::testing::ResetPlatform(); }
};

TEST_F(SeamTest, NetworkRangeIsLookedUpInNetmsgAtItsBoundaries) {
  for (DWORD code : {2100u, 2500u, 2999u}) {
    g_rec = Recorded();
    char buffer[64];
    EXPECT_EQ(tarn::FormatErrorMessage(code, buffer, sizeof buffer), 8u) << code;
    ASSERT_EQ(g_rec.loaded, std::vector<std::string>{"netmsg.dll"}) << code;
    EXPECT_EQ(g_rec.loadFlags, static_cast<DWORD>(LOAD_LIBRARY_AS_DATAFILE));
    EXPECT_EQ(g_rec.formatFlags, 0x1800u) << code;
    EXPECT_EQ(g_rec.formatSource, kFakeNetmsg);
    EXPECT_EQ(g_rec.formatId, code);
    EXPECT_EQ(g_rec.formatLanguage, 0x400u);
    EXPECT_EQ(g_rec.formatBuffer, buffer);
    EXPECT_EQ(g_rec.formatSize, sizeof buffer);
    EXPECT_TRUE(g_rec.formatArgsNull);
    EXPECT_EQ(g_rec.freed, std::vector<HMODULE>{kFakeNetmsg}) << "netmsg.dll is never kept";
    EXPECT_STREQ(buffer, "net text");
  }
}

TEST_F(SeamTest, CodesOutsideTheNetworkRangeUseTheSystemTableOnly) {
  for (DWORD code : {0u, 5u, 2099u, 3000u, 0x80070005u}) {
    g_rec = Recorded();
    char buffer[64];
    tarn::FormatErrorMessage(code, buffer, sizeof buffer);
    EXPECT_TRUE(g_rec.loaded.empty()) << code;
    EXPECT_EQ(g_rec.formatFlags, 0x1000u) << code;
    EXPECT_EQ(g_rec.formatSource, nullptr);
    EXPECT_TRUE(g_rec.freed.empty());
  }
}

TEST_F(SeamTest, MissingNetmsgFallsBackToTheSystemTable) {
  g_netmsgLoads = false;
  char buffer[64];
  tarn::FormatErrorMessage(2102, buffer, sizeof buffer);
  EXPECT_EQ(g_rec.loaded.size(), 1u);
  EXPECT_EQ(g_rec.formatFlags, 0x1000u);
  EXPECT_EQ(g_rec.formatSource, nullptr);
  EXPECT_TRUE(g_rec.freed.empty());
}

TEST_F(SeamTest, FailureFillsCodeAndTextThroughTheFormatter) {
  DWORD code = 77;
  char text[32] = "old";
  tarn::ErrorOut err(&code, text, sizeof text);
  EXPECT_EQ(code, 0u);
  EXPECT_EQ(text[0], '\0');
  EXPECT_EQ(err.Fail(2105, -1), -1);
  EXPECT_EQ(code, 2105u);
  EXPECT_STREQ(text, "net text");
}

std::string SystemText(DWORD code) {
  char buffer[512] = {};
  ::FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM, nullptr, code, 0x400, buffer, sizeof buffer,
                   nullptr);
  return buffer;
}

TEST(ErrorOut, ClearsOnEntryAsTheRulesSay) {
  DWORD code = 1234;
  char text[8] = "abcdefg";
  { tarn::ErrorOut err(&code, text, sizeof text); }
  EXPECT_EQ(code, 0u);
  EXPECT_EQ(std::string(text, 8), std::string("\0bcdefg\0", 8)) << "only the first byte";

  // A buffer of size 0 is neither read nor written.
  char untouched[4] = "xyz";
  { tarn::ErrorOut err(nullptr, untouched, 0); }
  EXPECT_STREQ(untouched, "xyz");

  // Null pointers are fine.
  { tarn::ErrorOut err(nullptr, nullptr, 100); }
}

TEST(ErrorOut, AnAlreadyEmptyBufferIsNotWritten) {
  // A read-only page: any write to it would fault.
  char* page = static_cast<char*>(
      ::VirtualAlloc(nullptr, 4096, MEM_COMMIT | MEM_RESERVE, PAGE_READWRITE));
  ASSERT_NE(page, nullptr);
  page[0] = '\0';
  DWORD old = 0;
  ASSERT_TRUE(::VirtualProtect(page, 4096, PAGE_READONLY, &old));
  { tarn::ErrorOut err(nullptr, page, 4096); }
  ::VirtualFree(page, 0, MEM_RELEASE);
}

TEST(ErrorOut, ReportsTheSystemTextUnchanged) {
  DWORD code = 0;
  char text[256];
  tarn::ErrorOut err(&code, text, sizeof text);
  err.Report(ERROR_FILE_NOT_FOUND);
  EXPECT_EQ(code, static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
  EXPECT_EQ(text, SystemText(ERROR_FILE_NOT_FOUND));
  EXPECT_FALSE(std::string(text).empty());

  // Code stored without a text buffer, text without a code pointer.
  DWORD only = 0;
  tarn::ErrorOut codeOnly(&only, nullptr, 0);
  codeOnly.Report(ERROR_ACCESS_DENIED);
  EXPECT_EQ(only, static_cast<DWORD>(ERROR_ACCESS_DENIED));
  char textOnly[256];
  tarn::ErrorOut(nullptr, textOnly, sizeof textOnly).Report(ERROR_ACCESS_DENIED);
  EXPECT_EQ(textOnly, SystemText(ERROR_ACCESS_DENIED));
}

TEST(ErrorOut, FormatterAtTheExactBufferSize) {
  const std::string expected = SystemText(ERROR_FILE_NOT_FOUND);
  const DWORD n = static_cast<DWORD>(expected.size());
  ASSERT_GT(n, 2u);
  for (DWORD size : {n - 1, n, n + 1}) {
    std::vector<char> buffer(size + 1, '#');
    const DWORD count = tarn::FormatErrorMessage(ERROR_FILE_NOT_FOUND, buffer.data(), size);
    EXPECT_EQ(buffer[size], '#') << "wrote past the size " << size;
    if (size > n) {
      EXPECT_EQ(count, n);
      EXPECT_EQ(std::string(buffer.data()), expected);
    } else {
      EXPECT_EQ(count, 0u) << "no room for the terminator at size " << size;
    }
  }
}

TEST(ErrorOut, NetworkCodeWithoutNetmsgGetsTheSystemTextOrNothing) {
  // Wine ships no netmsg.dll: the real fallback runs.
  if (HMODULE netmsg = ::LoadLibraryExA("netmsg.dll", nullptr, LOAD_LIBRARY_AS_DATAFILE)) {
    ::FreeLibrary(netmsg);
    GTEST_SKIP() << "this system has netmsg.dll";
  }
  char buffer[256] = "";
  const DWORD count = tarn::FormatErrorMessage(2102, buffer, sizeof buffer);
  char expected[256] = "";
  const DWORD expectedCount = ::FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM, nullptr, 2102, 0x400,
                                               expected, sizeof expected, nullptr);
  EXPECT_EQ(count, expectedCount);
  if (count) EXPECT_STREQ(buffer, expected);
}

}  // namespace

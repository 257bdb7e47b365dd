// The call frame: the error out-parameters, the message formatter (for
// "netmsg.dll", which Wine lacks, through the platform seam), the text
// conversions and the library's own resources.
#include <gtest/gtest.h>
#include <stdio.h>
#include <string.h>

#include <string>
#include <utility>

#include "core/error_out.h"
#include "core/platform.h"
#include "core/resource_handle.h"
#include "core/text.h"
#include "support/checks.h"
#include "tarn/core.h"

namespace {

using tarn::ErrorOut;
// What the formatter asked of the platform: the calls, with their arguments
// (buffer and insert arguments only when unexpected).
std::string g_calls;
HMODULE const kNetmsg = reinterpret_cast<HMODULE>(0x5A5A0000);
HMODULE g_loads;  // what loading "netmsg.dll" gives
char g_buffer[64];

std::string Module(LPCVOID module) { return module ? module == kNetmsg ? "netmsg" : "?" : "null"; }
HMODULE WINAPI FakeLoad(LPCSTR name, HANDLE file, DWORD flags) {
  g_calls += "load " + std::string(name) + (file ? " file " : " ") + std::to_string(flags) + "; ";
  return g_loads;
}
BOOL WINAPI FakeFree(HMODULE module) { return g_calls += "free " + Module(module) + "; ", TRUE; }
DWORD WINAPI FakeFormat(DWORD flags, LPCVOID source, DWORD id, DWORD language, LPSTR buffer,
                        DWORD size, va_list* args) {
  char call[128];
  snprintf(call, sizeof call, "format %#lx %s %lu %#lx %lu%s%s; ", flags, Module(source).c_str(),
           id, language, size, buffer == g_buffer ? "" : " elsewhere", args ? " args" : "");
  return g_calls += call, 8;
}

// Network codes are looked up in "netmsg.dll" when it loads; the error
// out-parameters are cleared on entry and filled on failure.
TEST(ErrorOut, FormatterAndOutParameters) {
  const struct { DWORD code; HMODULE loads; const char* calls; } rows[] = {
      {2099, kNetmsg, "format 0x1000 null 2099 0x400 64; "},
      {2100, kNetmsg, "load netmsg.dll 2; format 0x1800 netmsg 2100 0x400 64; free netmsg; "},
      {2999, kNetmsg, "load netmsg.dll 2; format 0x1800 netmsg 2999 0x400 64; free netmsg; "},
      {3000, kNetmsg, "format 0x1000 null 3000 0x400 64; "},
      {2102, nullptr, "load netmsg.dll 2; format 0x1000 null 2102 0x400 64; "}};  // none loads
  tarn::PlatformCalls& platform = tarn::Platform();
  platform.LoadLibraryExA = FakeLoad, platform.FreeLibrary = FakeFree;
  platform.FormatMessageA = FakeFormat;
  for (const auto& row : rows) {
    g_loads = row.loads;
    EXPECT_EQ(tarn::FormatErrorMessage(row.code, g_buffer, sizeof g_buffer), 8u);
    EXPECT_EQ(std::exchange(g_calls, ""), row.calls);
  }
  tarn::testing::ResetPlatform();

  // The out-parameters, with the real platform (code 2: file not found).
  tarn_test::CheckErrorRows({
      {"nothing reported", [](auto c, auto t, auto n) { return ErrorOut(c, t, n), 1LL; }, 1, 0},
      {"failure", [](auto c, auto t, auto n) { return ErrorOut(c, t, n).Fail(2, -1LL); }, -1, 2},
  });
  // An empty buffer is not written: this one is read-only.
  char* empty = static_cast<char*>(::VirtualAlloc(nullptr, 4096, MEM_COMMIT, PAGE_READONLY));
  { ErrorOut err(nullptr, empty, 4096); }
  ::VirtualFree(empty, 0, MEM_RELEASE);
  // The text as the platform gives it: neither trimmed nor cut to fit.
  const std::string text = tarn_test::SystemText(ERROR_FILE_NOT_FOUND);
  tarn_test::CheckTextRows({{"formatter", [](char* buffer, DWORD size) -> long long {
    return tarn::FormatErrorMessage(ERROR_FILE_NOT_FOUND, buffer, size);
  }, text, tarn_test::Short::kUntouched, static_cast<long long>(text.size()), 0}});
}

// Narrow text in the thread's code page, not the system's; results of up to
// 128 units inline, the narrow one's first buffer holding 4 bytes per unit
// (terminator included); the HRESULT of a failure.
TEST(Conversion, CodePageInlineLimitAndFailure) {
  const LCID saved = ::GetThreadLocale();  // 0xC0 is U+0410 in Russian's 1251 only
  ASSERT_TRUE(::GetACP() != 1251 && ::SetThreadLocale(MAKELCID(0x419, SORT_DEFAULT)));
  EXPECT_EQ(std::wstring(tarn::WideText("\xC0")), L"\x0410");
  EXPECT_EQ(std::string(tarn::NarrowText(L"\x0410")), "\xC0");
  ::SetThreadLocale(saved);

  const struct { bool toWide; size_t length; bool heap; } rows[] = {
      {true, 127, false}, {true, 128, true}, {true, 1000, true},
      {false, 31, false}, {false, 32, true}, {false, 1000, true}};
  for (const auto& row : rows) {
    const std::string narrow(row.length, 'a');
    const std::wstring wide(row.length, L'a');
    tarn::WideText toWide(row.toWide ? narrow.c_str() : nullptr);
    tarn::NarrowText toNarrow(row.toWide ? nullptr : wide.c_str());
    EXPECT_EQ(toWide.OnHeap() || toNarrow.OnHeap(), row.heap) << row.toWide << row.length;
    EXPECT_TRUE(row.toWide ? toWide.get() == wide && !toNarrow.get()
                           : toNarrow.get() == narrow && !toWide.get()) << row.length;
  }

  static_assert(sizeof(ATL::CAtlException) == sizeof(HRESULT), "one HRESULT, as ATL's");
  const struct { DWORD code, hr; } codes[] = {
      {1113, 0x80070459}, {0x12345, 0x80072345}, {0, 0}, {0x80004005, 0x80004005}};
  for (const auto& row : codes)
    EXPECT_EQ(tarn::HResultFromError(row.code), static_cast<HRESULT>(row.hr)) << row.code;
}

TEST(Resources, StringsAndTheProgramInformationFile) {
  HMODULE module = TarnGetResourceHandle();
  auto text = [&](UINT id) { char s[64]; return std::string(s, ::LoadStringA(module, id, s, 64)); };
  EXPECT_EQ(text(tarn::kStringNotAvailable), "Not Available");
  EXPECT_EQ(text(tarn::kStringEmptyFileMapping), "Cannot create filemapping for files with size 0");

  HRSRC info = ::FindResourceExA(module, tarn::kPifResourceType,
                                 MAKEINTRESOURCEA(tarn::kPifResourceId), MAKELANGID(9, 1));
  ASSERT_TRUE(info && ::SizeofResource(module, info) == 967);
  const auto* pif = static_cast<const char*>(::LockResource(::LoadResource(module, info)));
  unsigned char sum = 0;
  for (int i = 2; i < 369; ++i) sum += pif[i];
  EXPECT_EQ(static_cast<unsigned char>(pif[1]), sum) << "checksum of the basic section";
  // The chain of extension headings: name, then the next heading's offset,
  // the data's offset and its length.
  const struct { int at; const char* name; uint16_t words[3]; } chain[] = {
      {369, "MICROSOFT PIFEX", {391, 0, 369}},
      {391, "WINDOWS 386 3.0", {517, 413, 104}},
      {517, "WINDOWS VMM 4.0", {0xFFFF, 539, 428}}};
  for (const auto& h : chain)
    EXPECT_TRUE(!strcmp(pif + h.at, h.name) && !memcmp(pif + h.at + 16, h.words, 6)) << h.name;
}

}  // namespace

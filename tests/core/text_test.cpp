// The narrow/wide conversions: the inline limit, the heap path, null, and
// the HRESULT of a failure.
#include <gtest/gtest.h>

#include <string>

#include "core/text.h"
#include "tarn/core.h"

namespace {

TEST(WideText, InlineUpTo127BytesHeapFrom128) {
  const std::string s127(127, 'a');
  const std::string s128(128, 'b');
  tarn::WideText w127(s127.c_str());
  tarn::WideText w128(s128.c_str());
  EXPECT_FALSE(w127.OnHeap());
  EXPECT_TRUE(w128.OnHeap());
  EXPECT_EQ(std::wstring(w127.get()), std::wstring(127, L'a'));
  EXPECT_EQ(std::wstring(w128.get()), std::wstring(128, L'b'));
}

TEST(WideText, NullStaysNullAndEmptyIsEmpty) {
  tarn::WideText none(nullptr);
  EXPECT_EQ(none.get(), nullptr);
  EXPECT_FALSE(none.OnHeap());
  tarn::WideText empty("");
  ASSERT_NE(empty.get(), nullptr);
  EXPECT_EQ(empty.get()[0], L'\0');
}

TEST(WideText, ConvertsInTheThreadCodePage) {
  // 0xE9 is e-acute in code page 1252, Wine's default ANSI code page here.
  if (::GetACP() != 1252) GTEST_SKIP() << "code page " << ::GetACP();
  tarn::WideText w("caf\xE9");
  EXPECT_EQ(std::wstring(w.get()), L"caf\u00E9");
}

TEST(NarrowText, InlineWhileFourBytesPerUnitFit) {
  // The first buffer holds 4 bytes per unit, terminator included: 31
  // characters fit the 128-byte inline buffer, 32 do not.
  const std::wstring w31(31, L'x');
  const std::wstring w32(32, L'y');
  tarn::NarrowText n31(w31.c_str());
  tarn::NarrowText n32(w32.c_str());
  EXPECT_FALSE(n31.OnHeap());
  EXPECT_TRUE(n32.OnHeap());
  EXPECT_EQ(std::string(n31.get()), std::string(31, 'x'));
  EXPECT_EQ(std::string(n32.get()), std::string(32, 'y'));
  EXPECT_EQ(tarn::NarrowText(nullptr).get(), nullptr);
}

TEST(NarrowText, RoundTripsLongText) {
  std::string text;
  for (int i = 0; i < 1000; ++i) text += static_cast<char>('a' + i % 26);
  tarn::WideText wide(text.c_str());
  tarn::NarrowText back(wide.get());
  EXPECT_EQ(text, back.get());
}

TEST(HResultFromError, MapsWin32CodesAndKeepsOthers) {
  EXPECT_EQ(tarn::HResultFromError(ERROR_NO_UNICODE_TRANSLATION),
            static_cast<HRESULT>(0x80070459));
  EXPECT_EQ(tarn::HResultFromError(0x12345), static_cast<HRESULT>(0x80072345));
  EXPECT_EQ(tarn::HResultFromError(0), 0);
  EXPECT_EQ(tarn::HResultFromError(0x80004005u), static_cast<HRESULT>(0x80004005u));
}

TEST(CAtlException, CarriesOneHresult) {
  static_assert(sizeof(ATL::CAtlException) == sizeof(HRESULT), "one HRESULT, nothing else");
  try {
    throw ATL::CAtlException(E_OUTOFMEMORY);
  } catch (const ATL::CAtlException& e) {
    EXPECT_EQ(static_cast<HRESULT>(e), E_OUTOFMEMORY);
    EXPECT_EQ(e.m_hr, E_OUTOFMEMORY);
  }
}

}  // namespace

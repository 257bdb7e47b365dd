// CTarnFileVersionInfo on real version resources: the test program's own
// (the library's resources are linked into it), version_fixture.dll and
// version_notrans.dll.
#include <gtest/gtest.h>

#include <malloc.h>
#include <string.h>

#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "support/wine_env.h"
#include "tarn/version.h"
#include "version/version_test_env.h"

namespace {

using tarn_test::ScratchDir;
using version_test::FixtureModule;
using Info = CTarnFileVersionInfo;
using Answer = std::pair<int, std::string>;
using Query = std::function<int(char*, DWORD)>;
using Getter = int (Info::*)(char*, DWORD);

struct NotAvailable : Info {
  static std::string Text() { return s_szNotAvailable; }
};

const HINSTANCE kProgram = nullptr;

Query Get(Info& info, Getter getter) {
  return [=, &info](char* b, DWORD n) { return (info.*getter)(b, n); };
}

Query Value(Info& info, const char* name, DWORD translation = 0) {
  return [=, &info](char* b, DWORD n) { return info.QueryValue(b, n, name, translation); };
}

// Runs `query` on `size` bytes at the start of a larger block of 'x': every
// byte behind the text must be zero and nothing behind the buffer written.
Answer Ask(const Query& query, DWORD size = 300) {
  std::string block(size + 8, 'x');
  const int result = query(&block[0], size);
  const size_t length = strnlen(block.data(), size);
  EXPECT_LT(length, size) << "text not terminated inside " << size << " bytes";
  EXPECT_EQ(block.substr(length), std::string(size - length, '\0') + std::string(8, 'x'))
      << "the rest of a buffer of " << size;
  return {result, block.substr(0, length)};
}

// Cut to size - 1 bytes with the same result; a buffer of 1 holds the
// terminator alone; no buffer or size 0 gives 0 and nothing is touched.
void ExpectCutAtSize(const Query& query, int result, const std::string& text) {
  SCOPED_TRACE("text \"" + text + "\"");
  const DWORD length = static_cast<DWORD>(text.size());
  EXPECT_EQ(Ask(query, length - 1), Answer(result, text.substr(0, length - 2)));
  EXPECT_EQ(Ask(query, length), Answer(result, text.substr(0, length - 1)));
  EXPECT_EQ(Ask(query, length + 1), Answer(result, text));
  EXPECT_EQ(Ask(query, 1), Answer(result, ""));
  char untouched[4] = {'x', 'x', 'x', 'x'};
  EXPECT_EQ(query(untouched, 0), 0);
  EXPECT_EQ(std::string(untouched, 4), "xxxx");
  EXPECT_EQ(query(nullptr, 16), 0);
}

// The named getters and the fixed version texts, with version_fixture.dll's answers.
const struct {
  Getter getter;
  const char* fixture;
} kGetters[] = {
    {&Info::GetCompanyName, "Fixture Company"},
    {&Info::GetFileDescription, "Version resource fixture"},
    {&Info::GetFileVersion, "2.7.0.1234"},
    {&Info::GetInternalName, "FixtureInternal"},
    {&Info::GetLegalCopyright, "Copyright (C) Fixture Authors"},
    {&Info::GetOriginalFilename, "version_fixture.dll"},
    {&Info::GetProductName, "Fixture Product"},
    {&Info::GetProductVersion, "3.1 beta"},
    {&Info::GetFixedFileVersion, "2,7,0,1234"},
    {&Info::GetFixedProductVersion, "3,1,65535,0"},
};

void ExpectClosed(Info& info) {
  for (const auto& g : kGetters)
    EXPECT_EQ(Ask(Get(info, g.getter)), Answer(0, "Not Available")) << g.fixture;
  EXPECT_EQ(Ask(Get(info, &Info::GetHelpFileName)), Answer(0, ""));
  VS_FIXEDFILEINFO record;
  memset(&record, 0xAB, sizeof record);
  EXPECT_EQ(info.GetFixedInfo(record), 0);
  EXPECT_EQ(std::string(reinterpret_cast<const char*>(&record), sizeof record),
            std::string(sizeof record, '\xAB'));
}

// Everything version_fixture.dll answers, help file aside.
void ExpectFixture(Info& info) {
  for (const auto& g : kGetters) EXPECT_EQ(Ask(Get(info, g.getter)), Answer(1, g.fixture));
  EXPECT_EQ(Ask(Value(info, "Comments")), Answer(1, "0123456789"));
  VS_FIXEDFILEINFO record;
  memset(&record, 0xAB, sizeof record);
  ASSERT_EQ(info.GetFixedInfo(record), 1);
  EXPECT_EQ(record.dwSignature, 0xFEEF04BDu);
  EXPECT_EQ(record.dwFileVersionMS, 0x00020007u);
  EXPECT_EQ(record.dwProductVersionMS, 0x00030001u);
  EXPECT_EQ(record.dwFileDateLS, 0u) << "the last of the 52 bytes";
}

TEST(FileVersionOpen, ByInstanceAndByPathOnlyWhileClosedAndOnAUsableResource) {
  Info own;
  EXPECT_EQ(NotAvailable::Text(), "Not Available") << "string 1 of the program's resources";
  ASSERT_EQ(own.Open(kProgram), 1);
  EXPECT_EQ(Ask(Get(own, &Info::GetFileVersion)), Answer(1, TARN_TEST_VERSION));

  HMODULE module = ::LoadLibraryA(FixtureModule().c_str());
  ASSERT_NE(module, nullptr);
  Info info;
  EXPECT_EQ(info.Open(module), 1);
  ::FreeLibrary(module);
  // A second Open fails and keeps the first file.
  EXPECT_EQ(info.Open(FixtureModule().c_str()), 0);
  EXPECT_EQ(info.Open(kProgram), 0);
  ExpectFixture(info);
  info.Close();
  info.Close();  // harmless twice

  ScratchDir dir;
  tarn_test::WriteFile(dir / "plain.dll", "not a module");
  const std::string noTranslation = version_test::NoTranslationModule();
  DWORD ignored = 0;
  ASSERT_GT(::GetFileVersionInfoSizeA(noTranslation.c_str(), &ignored), 0u)
      << "the module has a version resource, only its translation table is missing";
  EXPECT_EQ(info.Open(static_cast<const char*>(nullptr)), 0);
  EXPECT_EQ(info.Open(""), 0);
  EXPECT_EQ(info.Open(reinterpret_cast<HINSTANCE>(static_cast<INT_PTR>(0x10000))), 0);
  for (const std::string& path : {dir / "missing.dll", dir / "plain.dll", noTranslation})
    EXPECT_EQ(info.Open(path.c_str()), 0) << path;
  ExpectClosed(info);
  // Nothing of the failed attempts is left to stop the next one.
  EXPECT_EQ(info.Open(FixtureModule().c_str()), 1);
  ExpectFixture(info);
}

TEST(FileVersionValues, TranslationsMissingValuesAndCuts) {
  Info info;
  ASSERT_EQ(info.Open(FixtureModule().c_str()), 1);
  // The first pair of the table is the object's own; others only on request.
  EXPECT_EQ(Ask(Value(info, "CompanyName", 0x040904E4)), Answer(1, "Fixture Company"));
  EXPECT_EQ(Ask(Value(info, "ProductName", 0x040704E4)), Answer(1, "Fixture Produkt"));
  EXPECT_EQ(Ask(Value(info, "CompanyName", 0x000904E4)), Answer(1, "Fixture Neutral"));
  EXPECT_EQ(Ask(Value(info, "FileVersion", 0x040704E4)), Answer(0, "")) << "own translation only";
  // A missing value is not the same as no name at all.
  EXPECT_EQ(Ask(Value(info, "NoSuchValue")), Answer(0, ""));
  EXPECT_EQ(Ask(Value(info, std::string(240, 'N').c_str())), Answer(0, "")) << "too long a key";
  EXPECT_EQ(Ask(Value(info, "")), Answer(0, "Not Available"));
  EXPECT_EQ(Ask(Value(info, nullptr)), Answer(0, "Not Available"));

  ExpectCutAtSize(Get(info, &Info::GetCompanyName), 1, "Fixture Company");
  ExpectCutAtSize(Get(info, &Info::GetFixedFileVersion), 1, "2,7,0,1234");
  ExpectCutAtSize(Get(info, &Info::GetFixedProductVersion), 1, "3,1,65535,0");
  EXPECT_EQ(Ask(Value(info, "NoSuchValue"), 1), Answer(0, ""));
  Info closed;
  ExpectCutAtSize(Get(closed, &Info::GetFixedFileVersion), 0, "Not Available");
  ExpectCutAtSize(Get(closed, &Info::GetCompanyName), 0, "Not Available");
}

// version_fixture.dll copied as Tool.dll: its "HelpFileName" is
// Z:\docs\Manual.chm, its "InternalName" FixtureInternal.
TEST(FileVersionHelp, FirstExistingChoiceDecidesAndItsHlpMustExist) {
  ScratchDir dir;
  ASSERT_TRUE(::CopyFileA(FixtureModule().c_str(), (dir / "Tool.dll").c_str(), FALSE));
  Info info;
  ASSERT_EQ(info.Open((dir / "Tool.dll").c_str()), 1);
  auto create = [&](const char* name) { tarn_test::WriteFile(dir / name, "x"); };
  auto remove = [&](const char* name) { ASSERT_TRUE(tarn_test::RemoveTree(dir / name)); };
  auto found = [&](const char* name) { return Answer(1, dir / name); };
  const Query help = Get(info, &Info::GetHelpFileName);
  const Answer none(0, "");

  EXPECT_EQ(Ask(help), none);
  create("Tool.hlp");
  EXPECT_EQ(Ask(help), found("Tool.hlp")) << "the opened file itself";
  // InternalName has no extension and takes the opened file's.
  create("FixtureInternal.dll");
  EXPECT_EQ(Ask(help), none) << "the chosen base has no .hlp; later choices are not tried";
  create("FixtureInternal.hlp");
  EXPECT_EQ(Ask(help), found("FixtureInternal.hlp"));
  // HelpFileName's own drive and directory are ignored: Manual.chm beside Tool.dll.
  ASSERT_TRUE(::CreateDirectoryA((dir / "Manual.chm").c_str(), nullptr));
  EXPECT_EQ(Ask(help), found("FixtureInternal.hlp")) << "a directory is no help base";
  remove("Manual.chm");
  create("Manual.chm");
  EXPECT_EQ(Ask(help), none);
  create("Manual.hlp");
  ExpectCutAtSize(help, 1, dir / "Manual.hlp");
  remove("Manual.chm");
  EXPECT_EQ(Ask(help), found("FixtureInternal.hlp")) << "Manual.hlp alone is not a base";
  remove("FixtureInternal.dll");
  EXPECT_EQ(Ask(help), found("Tool.hlp"));

  // The opened path is kept as given: forward slashes survive into the result.
  info.Close();
  ASSERT_EQ(info.Open((dir.path() + "/Tool.dll").c_str()), 1);
  EXPECT_EQ(Ask(help), Answer(1, dir.path() + "/Tool.hlp"));
}

// Bytes in use on the runtime's heap.
size_t HeapBytesInUse() {
  size_t used = 0;
  _HEAPINFO entry = {};
  while (_heapwalk(&entry) == _HEAPOK)
    if (entry._useflag == _USEDENTRY) used += entry._size;
  return used;
}

TEST(FileVersionCopies, AnswerAsTheirSourceAfterItIsGoneAndEachReleasesOnce) {
  ScratchDir dir;
  ASSERT_TRUE(::CopyFileA(FixtureModule().c_str(), (dir / "Tool.dll").c_str(), FALSE));
  tarn_test::WriteFile(dir / "Tool.hlp", "x");
  const std::string tool = dir / "Tool.dll", noTranslation = version_test::NoTranslationModule();
  auto copies = [&] {
    auto source = std::make_unique<Info>();
    ASSERT_EQ(source->Open(tool.c_str()), 1);
    Info copy(*source), assigned;
    ASSERT_EQ(assigned.Open(kProgram), 1);
    assigned = *source;  // what assigned held goes
    source.reset();
    for (Info* other : {&copy, &assigned}) {
      ExpectFixture(*other);
      EXPECT_EQ(Ask(Get(*other, &Info::GetHelpFileName)), Answer(1, dir / "Tool.hlp"));
    }
    Info closed;
    Info copyOfClosed(closed);
    ExpectClosed(copyOfClosed);
    assigned = closed;
    ExpectClosed(assigned);
    copy = copy;
    // An open copy is a separate object: closing it leaves its sibling open.
    Info sibling(copy);
    copy.Close();
    EXPECT_EQ(copy.Open(kProgram), 1);
    ExpectFixture(sibling);
    EXPECT_EQ(Info().Open(noTranslation.c_str()), 0);
  };
  copies();  // the runtime's own first allocations
  const size_t before = HeapBytesInUse();
  for (int i = 0; i < 10; ++i) copies();
  EXPECT_EQ(HeapBytesInUse(), before);
}

}  // namespace

// CTarnFileVersionInfo on real version resources: the test program's own
// (the library's resources are linked into it), version_fixture.dll and
// version_notrans.dll.
#include <gtest/gtest.h>

#include <malloc.h>
#include <string.h>

#include <functional>
#include <memory>
#include <ostream>
#include <string>

#include "support/wine_env.h"
#include "tarn/version.h"
#include "version/version_test_env.h"

namespace {

using tarn_test::ScratchDir;
using version_test::FixtureModule;
using version_test::NoTranslationModule;

struct NotAvailable : CTarnFileVersionInfo {
  static std::string Text() { return s_szNotAvailable; }
};

std::string ProgramPath() {
  char path[MAX_PATH] = {};
  ::GetModuleFileNameA(nullptr, path, MAX_PATH);
  return path;
}

using Query = std::function<int(char*, DWORD)>;

struct Answer {
  int result;
  std::string text;
  bool operator==(const Answer& other) const {
    return result == other.result && text == other.text;
  }
};

std::ostream& operator<<(std::ostream& out, const Answer& answer) {
  return out << "{" << answer.result << ", \"" << answer.text << "\"}";
}

// Runs `query` on `size` bytes at the start of a larger block of 'x': every
// byte of the buffer behind the text must be zero and nothing behind the
// buffer written.
Answer Ask(const Query& query, DWORD size) {
  std::string block(size + 8, 'x');
  const int result = query(&block[0], size);
  const size_t length = strnlen(block.data(), size);
  EXPECT_LT(length, size) << "text not terminated inside " << size << " bytes";
  for (size_t i = length; i < size; ++i)
    EXPECT_EQ(block[i], '\0') << "byte " << i << " of a buffer of " << size;
  EXPECT_EQ(block.substr(size), std::string(8, 'x')) << "written behind " << size << " bytes";
  return Answer{result, block.substr(0, length)};
}

Answer Ask(const Query& query) { return Ask(query, 300); }

// The text query at and around its length: cut to size - 1 with the same
// result, whole from size = length + 1 on; a buffer of 1 holds the
// terminator alone; a null buffer or size 0 gives 0 and is not touched.
void ExpectCutAtSize(const Query& query, int result, const std::string& text) {
  SCOPED_TRACE("text \"" + text + "\"");
  const DWORD length = static_cast<DWORD>(text.size());
  ASSERT_GT(length, 1u);
  EXPECT_EQ(Ask(query, length - 1), (Answer{result, text.substr(0, length - 2)}));
  EXPECT_EQ(Ask(query, length), (Answer{result, text.substr(0, length - 1)}));
  EXPECT_EQ(Ask(query, length + 1), (Answer{result, text}));
  EXPECT_EQ(Ask(query, length + 2), (Answer{result, text}));
  EXPECT_EQ(Ask(query, 1), (Answer{result, ""}));
  char untouched[4] = {'x', 'x', 'x', 'x'};
  EXPECT_EQ(query(untouched, 0), 0);
  EXPECT_EQ(std::string(untouched, 4), "xxxx");
  EXPECT_EQ(query(nullptr, 16), 0);
}

// Every text query of an object, by name.
struct Queries {
  using Getter = int (CTarnFileVersionInfo::*)(char*, DWORD);
  explicit Queries(CTarnFileVersionInfo& info) : info(info) {}
  CTarnFileVersionInfo& info;
  Query Value(const char* name, DWORD translation = 0) {
    return [this, name, translation](char* b, DWORD n) {
      return info.QueryValue(b, n, name, translation);
    };
  }
  Query Get(Getter getter) {
    return [this, getter](char* b, DWORD n) { return (info.*getter)(b, n); };
  }
  Query Company() { return Get(&CTarnFileVersionInfo::GetCompanyName); }
  Query Description() { return Get(&CTarnFileVersionInfo::GetFileDescription); }
  Query FileVersion() { return Get(&CTarnFileVersionInfo::GetFileVersion); }
  Query Internal() { return Get(&CTarnFileVersionInfo::GetInternalName); }
  Query Copyright() { return Get(&CTarnFileVersionInfo::GetLegalCopyright); }
  Query Original() { return Get(&CTarnFileVersionInfo::GetOriginalFilename); }
  Query Product() { return Get(&CTarnFileVersionInfo::GetProductName); }
  Query ProductVersion() { return Get(&CTarnFileVersionInfo::GetProductVersion); }
  Query Help() { return Get(&CTarnFileVersionInfo::GetHelpFileName); }
  Query FixedFile() { return Get(&CTarnFileVersionInfo::GetFixedFileVersion); }
  Query FixedProduct() { return Get(&CTarnFileVersionInfo::GetFixedProductVersion); }
};

// What a closed object answers to everything.
void ExpectClosed(CTarnFileVersionInfo& info) {
  Queries q(info);
  const Answer notAvailable{0, "Not Available"};
  for (const Query& query :
       {q.Company(), q.Description(), q.FileVersion(), q.Internal(), q.Copyright(), q.Original(),
        q.Product(), q.ProductVersion(), q.FixedFile(), q.FixedProduct(), q.Value("CompanyName"),
        q.Value("CompanyName", 0x040904E4)})
    EXPECT_EQ(Ask(query), notAvailable);
  EXPECT_EQ(Ask(q.Help()), (Answer{0, ""}));
  VS_FIXEDFILEINFO record;
  memset(&record, 0xAB, sizeof record);
  EXPECT_EQ(info.GetFixedInfo(record), 0);
  for (size_t i = 0; i < sizeof record; ++i)
    ASSERT_EQ(reinterpret_cast<const unsigned char*>(&record)[i], 0xAB) << "byte " << i;
}

// Everything version_fixture.dll answers, help file aside.
void ExpectFixture(CTarnFileVersionInfo& info) {
  Queries q(info);
  EXPECT_EQ(Ask(q.Company()), (Answer{1, "Fixture Company"}));
  EXPECT_EQ(Ask(q.Description()), (Answer{1, "Version resource fixture"}));
  EXPECT_EQ(Ask(q.FileVersion()), (Answer{1, "2.7.0.1234"}));
  EXPECT_EQ(Ask(q.Internal()), (Answer{1, "FixtureInternal"}));
  EXPECT_EQ(Ask(q.Copyright()), (Answer{1, "Copyright (C) Fixture Authors"}));
  EXPECT_EQ(Ask(q.Original()), (Answer{1, "version_fixture.dll"}));
  EXPECT_EQ(Ask(q.Product()), (Answer{1, "Fixture Product"}));
  EXPECT_EQ(Ask(q.ProductVersion()), (Answer{1, "3.1 beta"}));
  EXPECT_EQ(Ask(q.Value("Comments")), (Answer{1, "0123456789"}));
  EXPECT_EQ(Ask(q.Value("CompanyName", 0x040704E4)), (Answer{1, "Fixture GmbH"}));
  EXPECT_EQ(Ask(q.FixedFile()), (Answer{1, "2,7,0,1234"}));
  EXPECT_EQ(Ask(q.FixedProduct()), (Answer{1, "3,1,65535,0"}));
  VS_FIXEDFILEINFO record = {};
  ASSERT_EQ(info.GetFixedInfo(record), 1);
  EXPECT_EQ(record.dwFileVersionMS, 0x00020007u);
  EXPECT_EQ(record.dwFileVersionLS, 0x000004D2u);
}

TEST(FileVersionOpen, ReadsTheProgramAndAModuleByInstanceAndByPath) {
  CTarnFileVersionInfo own;
  EXPECT_EQ(NotAvailable::Text(), "Not Available") << "string 1 of the program's resources";
  ASSERT_EQ(own.Open(static_cast<HINSTANCE>(nullptr)), 1);
  Queries q(own);
  EXPECT_EQ(Ask(q.FileVersion()), (Answer{1, TARN_TEST_VERSION}));
  EXPECT_EQ(Ask(q.Company()), (Answer{1, "Tarn"}));
  EXPECT_EQ(Ask(q.Original()), (Answer{1, "tarn.dll"}));

  HMODULE module = ::LoadLibraryA(FixtureModule().c_str());
  ASSERT_NE(module, nullptr);
  CTarnFileVersionInfo byInstance;
  EXPECT_EQ(byInstance.Open(module), 1);
  ExpectFixture(byInstance);
  ::FreeLibrary(module);

  CTarnFileVersionInfo byPath;
  EXPECT_EQ(byPath.Open(FixtureModule().c_str()), 1);
  ExpectFixture(byPath);
}

TEST(FileVersionOpen, SecondOpenFailsAndKeepsTheFirstFile) {
  CTarnFileVersionInfo info;
  ASSERT_EQ(info.Open(FixtureModule().c_str()), 1);
  EXPECT_EQ(info.Open(ProgramPath().c_str()), 0);
  EXPECT_EQ(info.Open(static_cast<HINSTANCE>(nullptr)), 0);
  ExpectFixture(info);

  info.Close();
  ExpectClosed(info);
  info.Close();  // harmless twice
  ASSERT_EQ(info.Open(ProgramPath().c_str()), 1);
  EXPECT_EQ(Ask(Queries(info).Company()), (Answer{1, "Tarn"}));
}

TEST(FileVersionOpen, FilesWithoutAUsableResourceLeaveTheObjectClosed) {
  ScratchDir dir;
  tarn_test::WriteFile(dir / "plain.dll", "not a module");
  DWORD ignored = 0;
  ASSERT_GT(::GetFileVersionInfoSizeA(NoTranslationModule().c_str(), &ignored), 0u)
      << "the module has a version resource, only its translation table is missing";

  CTarnFileVersionInfo info;
  EXPECT_EQ(info.Open(static_cast<const char*>(nullptr)), 0);
  EXPECT_EQ(info.Open(""), 0);
  EXPECT_EQ(info.Open(reinterpret_cast<HINSTANCE>(static_cast<INT_PTR>(0x10000))), 0)
      << "not a module: no file name";
  EXPECT_EQ(info.Open((dir / "missing.dll").c_str()), 0);
  EXPECT_EQ(info.Open((dir / "plain.dll").c_str()), 0);
  EXPECT_EQ(info.Open(NoTranslationModule().c_str()), 0);
  ExpectClosed(info);

  // Nothing of the failed attempts is left to stop the next one.
  EXPECT_EQ(info.Open(FixtureModule().c_str()), 1);
  ExpectFixture(info);
}

TEST(FileVersionValues, TranslationsAndMissingValues) {
  CTarnFileVersionInfo info;
  ASSERT_EQ(info.Open(FixtureModule().c_str()), 1);
  Queries q(info);

  // The first pair of the table is the object's own; others only on request.
  EXPECT_EQ(Ask(q.Value("CompanyName", 0x040904E4)), (Answer{1, "Fixture Company"}));
  EXPECT_EQ(Ask(q.Value("ProductName", 0x040704E4)), (Answer{1, "Fixture Produkt"}));
  // Eight digits whatever the language: the key is ...\000904e4\...
  EXPECT_EQ(Ask(q.Value("CompanyName", 0x000904E4)), (Answer{1, "Fixture Neutral"}));
  EXPECT_EQ(Ask(q.Value("FileVersion", 0x040704E4)), (Answer{0, ""}))
      << "present under the own translation only";
  EXPECT_EQ(Ask(q.Value("CompanyName", 0x041104E4)), (Answer{0, ""}));

  // A missing value is not the same as no name at all.
  EXPECT_EQ(Ask(q.Value("NoSuchValue")), (Answer{0, ""}));
  EXPECT_EQ(Ask(q.Value("")), (Answer{0, "Not Available"}));
  EXPECT_EQ(Ask(q.Value(nullptr)), (Answer{0, "Not Available"}));
  EXPECT_EQ(Ask(q.Value(nullptr, 0x040704E4)), (Answer{0, "Not Available"}));
  // A name longer than any key can hold names no value.
  const std::string longName(240, 'N');
  EXPECT_EQ(Ask(q.Value(longName.c_str())), (Answer{0, ""}));
}

TEST(FileVersionValues, TextIsCutAtTheBufferSize) {
  CTarnFileVersionInfo info;
  ASSERT_EQ(info.Open(FixtureModule().c_str()), 1);
  Queries q(info);
  ExpectCutAtSize(q.Value("Comments"), 1, "0123456789");
  ExpectCutAtSize(q.Value("CompanyName", 0x040704E4), 1, "Fixture GmbH");
  ExpectCutAtSize(q.Company(), 1, "Fixture Company");
  ExpectCutAtSize(q.FixedFile(), 1, "2,7,0,1234");
  ExpectCutAtSize(q.FixedProduct(), 1, "3,1,65535,0");
  ExpectCutAtSize(q.Value(""), 0, "Not Available");
  EXPECT_EQ(Ask(q.Value("NoSuchValue"), 1), (Answer{0, ""}));

  CTarnFileVersionInfo closed;
  Queries c(closed);
  ExpectCutAtSize(c.FixedFile(), 0, "Not Available");
  ExpectCutAtSize(c.Company(), 0, "Not Available");
}

TEST(FileVersionFixed, RecordAndTextsWithCommas) {
  CTarnFileVersionInfo info;
  ASSERT_EQ(info.Open(FixtureModule().c_str()), 1);
  VS_FIXEDFILEINFO record;
  memset(&record, 0xAB, sizeof record);
  ASSERT_EQ(info.GetFixedInfo(record), 1);
  EXPECT_EQ(record.dwSignature, 0xFEEF04BDu);
  EXPECT_EQ(record.dwFileVersionMS, 0x00020007u);
  EXPECT_EQ(record.dwFileVersionLS, 0x000004D2u);
  EXPECT_EQ(record.dwProductVersionMS, 0x00030001u);
  EXPECT_EQ(record.dwProductVersionLS, 0xFFFF0000u);
  EXPECT_EQ(record.dwFileOS, static_cast<DWORD>(VOS_NT_WINDOWS32));
  EXPECT_EQ(record.dwFileType, static_cast<DWORD>(VFT_DLL));
  EXPECT_EQ(record.dwFileDateMS, 0u);
  EXPECT_EQ(record.dwFileDateLS, 0u) << "the last of the 52 bytes";

  CTarnFileVersionInfo own;
  ASSERT_EQ(own.Open(static_cast<HINSTANCE>(nullptr)), 1);
  std::string expected = TARN_TEST_VERSION;
  for (char& c : expected)
    if (c == '.') c = ',';
  EXPECT_EQ(Ask(Queries(own).FixedFile()), (Answer{1, expected + ",0"}));
}

// version_fixture.dll copied as Tool.dll: its "HelpFileName" is
// Z:\docs\Manual.chm, its "InternalName" FixtureInternal.
class HelpFile : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(::CopyFileA(FixtureModule().c_str(), (dir / "Tool.dll").c_str(), FALSE));
    ASSERT_EQ(info.Open((dir / "Tool.dll").c_str()), 1);
  }
  void Create(const char* name) { tarn_test::WriteFile(dir / name, "x"); }
  void Remove(const char* name) { ASSERT_TRUE(tarn_test::RemoveTree(dir / name)); }
  Answer Help() { return Ask(Queries(info).Help()); }
  Answer Found(const char* name) { return Answer{1, dir / name}; }

  ScratchDir dir;
  CTarnFileVersionInfo info;
};

TEST_F(HelpFile, FirstExistingChoiceDecidesAndItsHlpMustExist) {
  const Answer none{0, ""};
  EXPECT_EQ(Help(), none);
  Create("Tool.hlp");
  EXPECT_EQ(Help(), Found("Tool.hlp")) << "the opened file itself";

  // InternalName has no extension and takes the opened file's.
  Create("FixtureInternal.dll");
  EXPECT_EQ(Help(), none) << "the chosen base has no .hlp; later choices are not tried";
  Create("FixtureInternal.hlp");
  EXPECT_EQ(Help(), Found("FixtureInternal.hlp"));

  // HelpFileName's own drive and directory are ignored: Manual.chm beside Tool.dll.
  ASSERT_TRUE(::CreateDirectoryA((dir / "Manual.chm").c_str(), nullptr));
  EXPECT_EQ(Help(), Found("FixtureInternal.hlp")) << "a directory is no help base";
  Remove("Manual.chm");
  Create("Manual.chm");
  EXPECT_EQ(Help(), none);
  Create("Manual.hlp");
  EXPECT_EQ(Help(), Found("Manual.hlp"));

  Remove("Manual.chm");
  EXPECT_EQ(Help(), Found("FixtureInternal.hlp")) << "Manual.hlp alone is not a base";
  Remove("FixtureInternal.dll");
  EXPECT_EQ(Help(), Found("Tool.hlp"));
  Remove("Tool.hlp");
  EXPECT_EQ(Help(), none);
}

TEST_F(HelpFile, PathIsCutAtTheBufferSize) {
  Create("Manual.chm");
  Create("Manual.hlp");
  ExpectCutAtSize(Queries(info).Help(), 1, dir / "Manual.hlp");
}

TEST_F(HelpFile, OpenedPathIsKeptAsGiven) {
  info.Close();
  // Forward slashes and a relative directory survive into the result.
  const std::string forward = dir.path() + "/Tool.dll";
  ASSERT_EQ(info.Open(forward.c_str()), 1);
  Create("Tool.hlp");
  EXPECT_EQ(Help(), (Answer{1, dir.path() + "/Tool.hlp"}));
}

// Bytes in use on the runtime's heap.
size_t HeapBytesInUse() {
  size_t used = 0;
  _HEAPINFO entry = {};
  while (_heapwalk(&entry) == _HEAPOK)
    if (entry._useflag == _USEDENTRY) used += entry._size;
  return used;
}

TEST(FileVersionCopies, CopiesAnswerAsTheirSourceAfterItIsGone) {
  auto source = std::make_unique<CTarnFileVersionInfo>();
  ASSERT_EQ(source->Open(FixtureModule().c_str()), 1);
  CTarnFileVersionInfo copy(*source);
  CTarnFileVersionInfo assigned;
  ASSERT_EQ(assigned.Open(ProgramPath().c_str()), 1);
  assigned = *source;
  source->Close();
  source.reset();
  ExpectFixture(copy);
  ExpectFixture(assigned);

  CTarnFileVersionInfo closed;
  CTarnFileVersionInfo copyOfClosed(closed);
  ExpectClosed(copyOfClosed);
  assigned = closed;
  ExpectClosed(assigned);
  copy = copy;
  ExpectFixture(copy);
  // An open copy is a separate object: closing it leaves its sibling open.
  CTarnFileVersionInfo sibling(copy);
  copy.Close();
  ExpectFixture(sibling);
  EXPECT_EQ(copy.Open(ProgramPath().c_str()), 1);
  EXPECT_EQ(Ask(Queries(copy).Company()), (Answer{1, "Tarn"}));
  ExpectFixture(sibling);
}

TEST(FileVersionCopies, CopiesHelpFileAsTheSource) {
  ScratchDir dir;
  ASSERT_TRUE(::CopyFileA(FixtureModule().c_str(), (dir / "Tool.dll").c_str(), FALSE));
  tarn_test::WriteFile(dir / "Tool.hlp", "x");
  CTarnFileVersionInfo source;
  ASSERT_EQ(source.Open((dir / "Tool.dll").c_str()), 1);
  CTarnFileVersionInfo copy(source);
  source.Close();
  EXPECT_EQ(Ask(Queries(copy).Help()), (Answer{1, dir / "Tool.hlp"}));
}

TEST(FileVersionCopies, EverythingOwnedIsReleased) {
  const std::string fixture = FixtureModule();
  const std::string program = ProgramPath();
  auto cycle = [&] {
    CTarnFileVersionInfo a;
    a.Open(fixture.c_str());
    CTarnFileVersionInfo b(a);
    CTarnFileVersionInfo c;
    c.Open(program.c_str());
    c = b;  // what c held goes
    b = CTarnFileVersionInfo();
    a.Close();
    a.Open(program.c_str());
    CTarnFileVersionInfo failed;
    failed.Open(version_test::NoTranslationModule().c_str());
  };
  cycle();  // the runtime's own first allocations
  const size_t before = HeapBytesInUse();
  for (int i = 0; i < 20; ++i) cycle();
  EXPECT_EQ(HeapBytesInUse(), before);
}

}  // namespace

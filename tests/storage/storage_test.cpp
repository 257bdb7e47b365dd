// Structured storage on real compound files: the mode words seen through
// what the platform then allows, the result-code out-parameters, Stat records,
// element search and snapshots, class identifiers as text, narrow names.
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <utility>

#include "support/checks.h"
#include "support/wine_env.h"
#include "tarn/storage.h"

namespace {

using namespace tarn_test;
// An operation given the out-parameters as CheckErrorRows passes them: code
// h (as a result code), text t of size n.
#define CALL(expression)                                 \
  [&](DWORD* c, char* t, DWORD n) -> long long {         \
    HRESULT* h = reinterpret_cast<HRESULT*>(c);          \
    return expression;                                   \
  }
constexpr HRESULT kDenied = STG_E_ACCESSDENIED;

std::wstring Wide(const std::string& s) { return std::wstring(s.begin(), s.end()); }
// 1 for an interface (released), 0 for null.
long long Got(IUnknown* p) { return p ? (p->Release(), 1) : 0; }
std::wstring Take(STATSTG& stat) {
  std::wstring name = stat.pwcsName ? stat.pwcsName : L"(none)";
  ::CoTaskMemFree(stat.pwcsName);
  return name;
}

// A compound file with the storage "Sub" (empty) and the streams "Data"
// (ten bytes) and "Second", whose root stays open read-write.
class Storage : public testing::Test {
 protected:
  void SetUp() override {
    IStorage* made = TarnOleCreateStgFile(file.c_str(), nullptr, nullptr, 0);
    Got(TarnOleCreateStorage(made, L"Sub", nullptr, nullptr, nullptr, 0));
    IStream* data = TarnOleCreateStream(made, "Data", nullptr, nullptr, nullptr, 0);
    TarnOleWriteStream(data, "0123456789", 10, nullptr, nullptr, 0);
    Got(data);
    Got(TarnOleCreateStream(made, L"Second", nullptr, nullptr, nullptr, 0));
    Got(made);
    root = TarnOleOpenStgFile(1, file.c_str(), nullptr, nullptr, 0);
    ASSERT_TRUE(root);
  }
  void TearDown() override { Got(root); }
  ScratchDir dir;
  const std::string file = dir / "test.stg";
  IStorage* root = nullptr;
};

TEST_F(Storage, ModesSeenThroughBehaviour) {
  Got(root);
  for (int access : {0, 1, 2}) {  // 0 read-only, any other value read-write
    SCOPED_TRACE(access);
    root = TarnOleOpenStgFile(access, Wide(file).c_str(), nullptr, nullptr, 0);
    IStream* data = TarnOleOpenStream(access, root, L"Data", nullptr, nullptr, nullptr, 0);
    HRESULT hr = 1;
    EXPECT_EQ(TarnOleWriteStream(data, "x", 1, &hr, nullptr, 0), access ? 1 : 0);
    EXPECT_EQ(hr, access ? S_OK : kDenied);
    // Exclusive sharing: no second open of the root, a stream or a storage.
    EXPECT_EQ(Got(TarnOleOpenStgFile(access, file.c_str(), &hr, nullptr, 0)), 0);
    EXPECT_EQ(hr, STG_E_SHAREVIOLATION);
    EXPECT_EQ(Got(TarnOleOpenStream(access, root, "Data", nullptr, &hr, nullptr, 0)), 0);
    EXPECT_EQ(hr, kDenied);
    IStorage* sub = TarnOleOpenStorage(access, root, "Sub", nullptr, nullptr, nullptr, 0);
    EXPECT_EQ(Got(TarnOleOpenStorage(access, root, L"Sub", nullptr, &hr, nullptr, 0)), 0);
    EXPECT_EQ(hr, kDenied);
    Got(sub), Got(data), Got(root);
  }
  // Every create replaces: a file that is no compound file, a storage, a stream.
  WriteFile(file, "plain text");
  root = TarnOleCreateStgFile(Wide(file).c_str(), nullptr, nullptr, 0);
  ASSERT_TRUE(root);
  for (int i = 0; i < 2; ++i) {
    STATSTG stat;
    IStorage* sub = TarnOleCreateStorage(root, "Sub", nullptr, nullptr, nullptr, 0);
    EXPECT_EQ(TarnOleFindElement(sub, L"Inner", 0, stat, nullptr, nullptr, 0), 0);
    Got(TarnOleCreateStream(sub, "Inner", nullptr, nullptr, nullptr, 0));
    IStream* data = TarnOleCreateStream(root, L"Data", &stat, nullptr, nullptr, 0);
    EXPECT_EQ(stat.cbSize.QuadPart, 0u);
    Take(stat);
    EXPECT_EQ(TarnOleWriteStream(data, "ab", 2, nullptr, nullptr, 0), 1);
    Got(data), Got(sub);
  }
}

// Writes a byte through the stream "Second" opened with `access`.
long long WriteOne(IStorage* parent, int access, HRESULT* h, char* t, DWORD n) {
  IStream* stream = TarnOleOpenStream(access, parent, L"Second", nullptr, nullptr, nullptr, 0);
  const int result = TarnOleWriteStream(stream, "x", 1, h, t, n);
  return Got(stream), result;
}

TEST_F(Storage, ResultCodeOutParameters) {
  WriteFile(dir / "plain.txt", "not a compound file");
  STATSTG stat;
  CTarnOleEnumElements list;
  const std::wstring missing = Wide(dir / "missing.stg");
  CheckErrorRows({
      {"missing file", CALL(Got(TarnOleOpenStgFile(0, missing.c_str(), h, t, n))), 0,
       0x80030002, 2},
      {"missing file, narrow", CALL(Got(TarnOleOpenStgFile(0, (dir / "m.stg").c_str(), h, t, n))),
       0, 0x80030002, 2},
      {"missing directory", CALL(Got(TarnOleOpenStgFile(1, (dir / "no\\a.stg").c_str(), h, t, n))),
       0, 0x80030003, 3},
      {"no compound file", CALL(Got(TarnOleOpenStgFile(0, (dir / "plain.txt").c_str(), h, t, n))),
       0, 0x80030050, 0x50},
      {"root open twice", CALL(Got(TarnOleOpenStgFile(0, file.c_str(), h, t, n))), 0, 0x80030020,
       0x20},
      {"missing stream", CALL(Got(TarnOleOpenStream(1, root, L"None", nullptr, h, t, n))), 0,
       0x80030002, 2},
      {"missing storage", CALL(Got(TarnOleOpenStorage(0, root, "None", &stat, h, t, n))), 0,
       0x80030002, 2},
      {"delete missing", CALL(TarnOleDeleteElement(root, "None", h, t, n)), 0, 0x80030002, 2},
      {"write read-only", CALL(WriteOne(root, 0, h, t, n)), 0, 0x80030005, 5},
      {"written", CALL(WriteOne(root, 1, h, t, n)), 1, 0},
      {"opened", CALL(Got(TarnOleOpenStream(0, root, L"Second", nullptr, h, t, n))), 1, 0},
      {"not found", CALL(TarnOleFindElement(root, L"None", 0, stat, h, t, n)), 0, 0},
      {"enumerated", CALL(list.EnumElements(root, h, t, n)), 1, 0},
      {"null storage", CALL(list.EnumElements(nullptr, h, t, n)), 0, 0x80070057, 0},
  });
}

TEST_F(Storage, StreamsAndStatRecords) {
  STATSTG stat;
  IStream* data = TarnOleOpenStream(0, root, L"Data", &stat, nullptr, nullptr, 0);
  EXPECT_EQ(std::make_pair(Take(stat), stat.type), std::make_pair(std::wstring(L"Data"), 2ul));
  EXPECT_EQ(stat.cbSize.QuadPart, 10u);
  char bytes[12] = "";
  EXPECT_EQ(TarnOleReadStream(data, bytes, 12, nullptr, nullptr, 0), 1);
  EXPECT_STREQ(bytes, "0123456789");
  EXPECT_EQ(TarnOleReadStream(data, bytes, 12, nullptr, nullptr, 0), 1) << "at the end";
  // Null data: nothing happens, an earlier code and text stay.
  HRESULT hr = 0;
  char text[256] = "";
  TarnOleWriteStream(data, "x", 1, &hr, text, sizeof text);
  const std::string earlier = text;
  EXPECT_EQ(hr, kDenied);
  EXPECT_EQ(TarnOleWriteStream(data, nullptr, 1, &hr, text, sizeof text), 0);
  EXPECT_EQ(TarnOleReadStream(data, nullptr, 1, &hr, text, sizeof text), 0);
  EXPECT_EQ(TarnOleReadStream(nullptr, bytes, 1, &hr, text, sizeof text), 0);
  EXPECT_EQ(std::make_pair(hr, std::string(text)), std::make_pair(kDenied, earlier));
  Got(data);
  Got(TarnOleOpenStorage(0, root, "Sub", &stat, nullptr, nullptr, 0));
  EXPECT_EQ(std::make_pair(Take(stat), stat.type), std::make_pair(std::wstring(L"Sub"), 1ul));
}

TEST_F(Storage, FindElement) {
  const struct {
    const wchar_t* name;
    DWORD type;
    int found;
  } rows[] = {{L"Data", 0, 1}, {L"Data", 2, 1}, {L"Data", 1, 0}, {L"data", 0, 0},
              {L"Dat", 0, 0},  {L"Datax", 0, 0}, {L"Sub", 0, 1},  {L"Sub", 1, 1},
              {L"Sub", 2, 0}};
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::Message() << std::string(row.name, row.name + wcslen(row.name))
                                    << " type " << row.type);
    STATSTG stat = {};
    HRESULT hr = 1;
    EXPECT_EQ(TarnOleFindElement(root, row.name, row.type, stat, &hr, nullptr, 0), row.found);
    EXPECT_EQ(hr, S_OK);
    if (row.found) EXPECT_EQ(Take(stat), row.name);
  }
  STATSTG stat;
  IStorage* empty = TarnOleOpenStorage(1, root, L"Sub", nullptr, nullptr, nullptr, 0);
  EXPECT_EQ(TarnOleFindElement(empty, "Data", 0, stat, nullptr, nullptr, 0), 0);
  CTarnOleEnumElements list;
  EXPECT_EQ(list.EnumElements(empty, nullptr, nullptr, 0), 1);
  EXPECT_EQ(list.Size(), 0u);
  Got(empty);
}

TEST_F(Storage, Snapshots) {
  // The platform's own order: compared with a direct enumeration.
  IEnumSTATSTG* direct = nullptr;
  ASSERT_EQ(root->EnumElements(0, nullptr, 0, &direct), S_OK);
  std::vector<std::pair<std::wstring, DWORD>> expected, seen;
  STATSTG stat;
  while (direct->Next(1, &stat, nullptr) == S_OK) expected.emplace_back(Take(stat), stat.type);
  direct->Release();
  CTarnOleEnumElements list;
  ASSERT_EQ(list.EnumElements(root, nullptr, nullptr, 0), 1);
  for (int i = 0; i < static_cast<int>(list.Size()); ++i)
    seen.emplace_back(list.GetAt(i).pwcsName, list.GetAt(i).type);
  EXPECT_EQ(seen, expected);
  EXPECT_EQ(seen.size(), 3u);
  EXPECT_EQ(list.EnumElements(nullptr, nullptr, nullptr, 0), 0);
  EXPECT_EQ(std::wstring(list.GetAt(0).pwcsName), expected[0].first) << "kept";
  list.FreeElements();
  EXPECT_EQ(list.Size(), 0u);
  // Nothing left behind: no enumerator (it would hold the file open), no
  // name of a replaced snapshot or of an element passed over.
  Got(root);
  root = nullptr;
  ExpectBalanced("enumerate and find", [&] {
    IStorage* again = TarnOleOpenStgFile(0, file.c_str(), nullptr, nullptr, 0);
    list.EnumElements(again, nullptr, nullptr, 0);
    TarnOleFindElement(again, L"None", 0, stat, nullptr, nullptr, 0);
    Got(again);
  }, 5000);
}

TEST(StorageText, ClassIdentifierAndNarrowNames) {
  const GUID id = {0x12345678, 0x9ABC, 0xDEF0, {0x01, 0x23, 0x45, 0x67, 0x89, 0xAB, 0xCD, 0xEF}};
  CheckTextRows({{"class identifier", [&](char* b, DWORD n) { return TarnOleCLSIDAsString(id, b, n); },
                  "{12345678-9ABC-DEF0-0123-456789ABCDEF}", Short::kEmpty, 1, 0, true}});
  // The thread's code page becomes 1251, the system's stays 1252: "\xC0" is
  // U+00C0 in the system's, U+0410 in the thread's.
  ScratchDir dir;
  const LCID locale = ::GetThreadLocale();
  ::SetThreadLocale(0x419);
  IStorage* root = TarnOleCreateStgFile((dir / "\xC0.stg").c_str(), nullptr, nullptr, 0);
  STATSTG stat;
  Got(TarnOleCreateStream(root, "\xC0", &stat, nullptr, nullptr, 0));
  EXPECT_EQ(Take(stat), L"\u00C0");
  EXPECT_EQ(TarnOleFindElement(root, "\xC0", 2, stat, nullptr, nullptr, 0), 1);
  Take(stat);
  Got(TarnOleCreateStorage(root, "\xC0s", &stat, nullptr, nullptr, 0));
  EXPECT_EQ(Take(stat), L"\u00C0s");
  EXPECT_EQ(TarnOleDeleteElement(root, "\xC0s", nullptr, nullptr, 0), 1);
  Got(root);
  ::SetThreadLocale(locale);
  EXPECT_NE(::GetFileAttributesW(Wide(dir / "").append(L"\u00C0.stg").c_str()),
            INVALID_FILE_ATTRIBUTES);
}

}  // namespace

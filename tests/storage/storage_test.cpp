// Structured storage on real compound files: the mode words seen through
// what the platform then allows, the result-code out-parameters, Stat records,
// element search and snapshots, class identifiers as text, narrow names.
#include <gtest/gtest.h>
#include <string.h>

#include <string>
#include <utility>
#include <vector>

#include "support/checks.h"
#include "support/wine_env.h"
#include "tarn/storage.h"

namespace {

using namespace tarn_test;
using Element = std::pair<std::wstring, DWORD>;  // name, type
constexpr HRESULT kDenied = STG_E_ACCESSDENIED;
// An operation given the out-parameters as CheckErrorRows passes them: result
// code h, text t of size n.
#define CALL(expression) [&](DWORD* c, char* t, DWORD n) -> long long { \
    auto h = reinterpret_cast<HRESULT*>(c); return expression; }

std::wstring Wide(const std::string& s) { return std::wstring(s.begin(), s.end()); }
// 1 for an interface (released), 0 for null.
long long Got(IUnknown* p) { return p ? (p->Release(), 1) : 0; }
// The record's name and type; the name is freed.
Element Take(STATSTG& stat) {
  Element element(stat.pwcsName ? stat.pwcsName : L"(none)", stat.type);
  return ::CoTaskMemFree(stat.pwcsName), element;
}
// Writes a byte through the stream "Second" opened with `access`.
long long WriteOne(IStorage* parent, int access, HRESULT* h, char* t, DWORD n) {
  IStream* stream = TarnOleOpenStream(access, parent, L"Second", nullptr, nullptr, nullptr, 0);
  const int result = TarnOleWriteStream(stream, "x", 1, h, t, n);
  return Got(stream), result;
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
    Got(data), Got(TarnOleCreateStream(made, L"Second", nullptr, nullptr, nullptr, 0)), Got(made);
    ASSERT_TRUE(root = TarnOleOpenStgFile(1, file.c_str(), nullptr, nullptr, 0));
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
    EXPECT_EQ(WriteOne(root, access, nullptr, nullptr, 0), access ? 1 : 0);
    // Exclusive sharing: no second open of the root or of a storage.
    IStorage* sub = TarnOleOpenStorage(access, root, "Sub", nullptr, nullptr, nullptr, 0);
    HRESULT twice[2];
    Got(TarnOleOpenStgFile(access, file.c_str(), &twice[0], nullptr, 0));
    Got(TarnOleOpenStorage(access, root, L"Sub", nullptr, &twice[1], nullptr, 0));
    EXPECT_EQ(std::make_pair(twice[0], twice[1]), std::make_pair(STG_E_SHAREVIOLATION, kDenied));
    Got(sub), Got(root);
  }
  // Every create replaces: a file that is no compound file, a storage, a stream.
  WriteFile(file, "plain text");
  ASSERT_TRUE(root = TarnOleCreateStgFile(Wide(file).c_str(), nullptr, nullptr, 0));
  for (int i = 0; i < 2; ++i) {
    STATSTG stat;
    IStorage* sub = TarnOleCreateStorage(root, "Sub", nullptr, nullptr, nullptr, 0);
    EXPECT_EQ(TarnOleFindElement(sub, L"Inner", 0, stat, nullptr, nullptr, 0), 0);
    Got(TarnOleCreateStream(sub, "Inner", nullptr, nullptr, nullptr, 0)), Got(sub);
    Got(TarnOleCreateStream(root, L"Second", &stat, nullptr, nullptr, 0));
    EXPECT_EQ(stat.cbSize.QuadPart, 0u);
    Take(stat), WriteOne(root, 1, nullptr, nullptr, 0);
  }
}

TEST_F(Storage, ResultCodeOutParameters) {
  WriteFile(dir / "plain.txt", "not a compound file");
  STATSTG stat;
  CTarnOleEnumElements list;
  CheckErrorRows({
      {"no directory", CALL(Got(TarnOleOpenStgFile(1, (dir / "a\\b").c_str(), h, t, n))), 0,
       0x80030003, 3},
      {"no compound file", CALL(Got(TarnOleOpenStgFile(0, (dir / "plain.txt").c_str(), h, t, n))),
       0, 0x80030050, 0x50},
      {"no stream", CALL(Got(TarnOleOpenStream(1, root, L"None", nullptr, h, t, n))), 0,
       0x80030002, 2},
      {"no storage", CALL(Got(TarnOleOpenStorage(0, root, "None", &stat, h, t, n))), 0,
       0x80030002, 2},
      {"delete missing", CALL(TarnOleDeleteElement(root, "None", h, t, n)), 0, 0x80030002, 2},
      {"deleted", CALL((Got(TarnOleCreateStorage(root, "Gone", nullptr, h, t, n)),
                        TarnOleDeleteElement(root, L"Gone", h, t, n))), 1, 0},
      {"write read-only", CALL(WriteOne(root, 0, h, t, n)), 0, 0x80030005, 5},
      {"not found", CALL(TarnOleFindElement(root, L"None", 0, stat, h, t, n)), 0, 0},
      {"enumerated", CALL(list.EnumElements(root, h, t, n)), 1, 0},
      {"null storage", CALL(list.EnumElements(nullptr, h, t, n)), 0, 0x80070057, 0},
  });
}

TEST_F(Storage, StreamsAndStatRecords) {
  STATSTG stat;
  IStream* data = TarnOleOpenStream(0, root, L"Data", &stat, nullptr, nullptr, 0);
  EXPECT_EQ(stat.cbSize.QuadPart, 10u);
  EXPECT_EQ(Take(stat), Element(L"Data", STGTY_STREAM));
  char bytes[12] = "";
  EXPECT_EQ(TarnOleReadStream(data, bytes, 12, nullptr, nullptr, 0), 1);
  EXPECT_STREQ(bytes, "0123456789");
  EXPECT_EQ(TarnOleReadStream(data, bytes, 12, nullptr, nullptr, 0), 1) << "at the end";
  // Null data: nothing happens, an earlier code and text stay.
  HRESULT hr = 0;
  char text[256] = "", earlier[256];
  TarnOleWriteStream(data, "x", 1, &hr, text, sizeof text);
  memcpy(earlier, text, sizeof text);
  EXPECT_EQ(TarnOleWriteStream(data, nullptr, 1, &hr, text, sizeof text) +
                TarnOleReadStream(data, nullptr, 1, &hr, text, sizeof text) +
                TarnOleReadStream(nullptr, bytes, 1, &hr, text, sizeof text), 0);
  EXPECT_EQ(std::make_pair(hr, std::string(text)), std::make_pair(kDenied, std::string(earlier)));
  Got(data);
}

TEST_F(Storage, FindElement) {
  const struct { const wchar_t* name; DWORD type; int found; } rows[] = {
      {L"Data", 0, 1}, {L"Data", 2, 1}, {L"Data", 1, 0}, {L"data", 0, 0}, {L"Dat", 0, 0},
      {L"Datax", 0, 0}, {L"Sub", 0, 1}, {L"Sub", 1, 1}, {L"Sub", 2, 0}};
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::Message() << "row " << (&row - rows));
    STATSTG stat;
    EXPECT_EQ(TarnOleFindElement(root, row.name, row.type, stat, nullptr, nullptr, 0), row.found);
    if (row.found) EXPECT_EQ(Take(stat).first, row.name);
  }
  STATSTG stat;
  IStorage* sub = TarnOleOpenStorage(1, root, L"Sub", &stat, nullptr, nullptr, 0);
  EXPECT_EQ(Take(stat), Element(L"Sub", STGTY_STORAGE));
  Got(sub);
}

TEST_F(Storage, Snapshots) {
  // The platform's own order: compared with a direct enumeration.
  IEnumSTATSTG* direct = nullptr;
  ASSERT_EQ(root->EnumElements(0, nullptr, 0, &direct), S_OK);
  std::vector<Element> expected, seen;
  STATSTG stat;
  while (direct->Next(1, &stat, nullptr) == S_OK) expected.push_back(Take(stat));
  direct->Release();
  CTarnOleEnumElements list;
  ASSERT_EQ(list.EnumElements(root, nullptr, nullptr, 0), 1);
  for (int i = 0; i < static_cast<int>(list.Size()); ++i)
    seen.emplace_back(list.GetAt(i).pwcsName, list.GetAt(i).type);
  EXPECT_EQ(seen, expected);
  EXPECT_EQ(list.EnumElements(nullptr, nullptr, nullptr, 0), 0);
  EXPECT_EQ(std::wstring(list.GetAt(0).pwcsName), expected[0].first) << "kept";
  list.FreeElements();
  EXPECT_EQ(list.Size(), 0u);
  // Nothing left behind: no enumerator (it would hold the file open), no
  // name of a replaced snapshot or of an element passed over.
  Got(root), root = nullptr;
  ExpectBalanced("enumerate and find", [&] {
    IStorage* again = TarnOleOpenStgFile(0, file.c_str(), nullptr, nullptr, 0);
    list.EnumElements(again, nullptr, nullptr, 0);
    TarnOleFindElement(again, L"None", 0, stat, nullptr, nullptr, 0);
    Got(again);
  }, 5000);
}

TEST(StorageText, ClassIdentifierAndNarrowNames) {
  const GUID id = {0x12345678, 0x9ABC, 0xDEF0, {0x01, 0x23, 0x45, 0x67, 0x89, 0xAB, 0xCD, 0xEF}};
  auto format = [&](char* b, DWORD n) { return TarnOleCLSIDAsString(id, b, n); };
  CheckTextRows({{"class identifier", format, "{12345678-9ABC-DEF0-0123-456789ABCDEF}",
                  Short::kEmpty, 1, 0, true}});
  // The thread's code page becomes 1251, the system's stays 1252: "\xC0" is
  // U+00C0 in the system's, U+0410 in the thread's.
  ScratchDir dir;
  const LCID locale = ::GetThreadLocale();
  ::SetThreadLocale(0x419);
  IStorage* root = TarnOleCreateStgFile((dir / "\xC0.stg").c_str(), nullptr, nullptr, 0);
  STATSTG stat;
  Got(TarnOleCreateStream(root, "\xC0", &stat, nullptr, nullptr, 0));
  EXPECT_EQ(Take(stat).first, L"\u00C0");
  Got(root), ::SetThreadLocale(locale);
}

}  // namespace

// Directory links and free disk space. Wine's volumes have no reparse points
// and all its drives report one host file system: the volume check, the
// reparse attribute, the request and the cluster query are stood in for at
// the platform calls where a row needs them.
#include <gtest/gtest.h>

#include "core/platform.h"
#include "support/checks.h"
#include "support/wine_env.h"
#include "tarn/files.h"

namespace {

DWORD g_flags;              // the volume's flags; 0: Wine's own answer
std::wstring g_reparse;     // a directory marked as a reparse point
BOOL g_answer;              // the request's answer
std::vector<std::string> g_sent;  // each request: code, whether on a directory, bytes

BOOL WINAPI Volume(LPCWSTR r, LPWSTR n, DWORD s, LPDWORD i, LPDWORD m, LPDWORD f, LPWSTR t, DWORD c) {
  return g_flags ? (*f = g_flags, TRUE) : ::GetVolumeInformationW(r, n, s, i, m, f, t, c);
}
DWORD WINAPI Attributes(LPCWSTR path) {
  return ::GetFileAttributesW(path) | (path == g_reparse ? FILE_ATTRIBUTE_REPARSE_POINT : 0);
}
BOOL WINAPI Request(HANDLE h, DWORD code, LPVOID in, DWORD size, LPVOID, DWORD, LPDWORD,
                    LPOVERLAPPED) {
  BY_HANDLE_FILE_INFORMATION info = {};
  ::GetFileInformationByHandle(h, &info);
  g_sent.push_back(std::to_string(code) + " " + std::to_string(info.dwFileAttributes & 0x10) +
                   std::string(static_cast<const char*>(in), size));
  return g_answer || (::SetLastError(ERROR_DIR_NOT_EMPTY), FALSE);
}

// FSCTL_SET_REPARSE_POINT on a directory: tag, lengths, name, two terminators.
std::string MountPoint(const wchar_t* text) {
  const std::wstring name = text ? text : L"";
  const WORD bytes = static_cast<WORD>(name.size() * 2);
  const WORD header[] = {0x0003, 0xA000, WORD(bytes + 12), 0, 0, bytes, WORD(bytes + 2), 0};
  return "589988 16" + std::string(reinterpret_cast<const char*>(header), sizeof header) +
         std::string(reinterpret_cast<const char*>(name.c_str()), bytes) + std::string(4, '\0');
}

TEST(DirectoryLink, VolumeCheckRequestBytesAndCleanUp) {
  tarn::PlatformCalls& platform = tarn::Platform();
  platform.GetVolumeInformationW = Volume, platform.GetFileAttributesW = Attributes;
  platform.DeviceIoControl = Request;
  enum { kAbsent, kEmpty, kFull, kReparse };
  const wchar_t* kData = L"\\??\\T:\\data";  // 11 units: 22, 24, 34, and 42 bytes sent
  const struct { const char* link; const char* target; int trial; DWORD flags; int before;
                 BOOL answer; int result; const wchar_t* sent = nullptr; bool remains = false;
  } kRows[] = {
      {"L", "T:\\data", 0, 0, kAbsent, 1, 0, nullptr, false},  // Wine's volume
      {"L", "T:\\data", 0, 0, kFull, 1, 0, nullptr, true},
      {"L", "T:\\data", 0, 0x8a, kAbsent, 1, 1, kData, true},
      {"L", "T:\\data\\", 0, 0x8a, kEmpty, 1, 1, kData, true},
      {"L", "T:\\", 0, 0x8a, kAbsent, 1, 1, L"\\??\\T:\\", true},
      {"L", "T:\\data", 1, 0x8a, kAbsent, 1, 1, nullptr, false},
      {"L", "T:\\data", 1, 0x8a, kEmpty, 1, 1, nullptr, true},
      {"L", "T:\\data", 0, 0x8a, kAbsent, 0, 0, kData, false},
      {"L", "T:\\data", 0, 0x8a, kFull, 0, 0, kData, true},
      {"L", "T:\\data", 0, 0x8a, kReparse, 1, 0, nullptr, true},
      {"L", "", 0, 0x8a, kAbsent, 1, 0, nullptr, false}, {"L", nullptr, 0, 0x8a, kAbsent, 1, 0},
      {"", "T:\\data", 0, 0x8a, kAbsent, 1, 0}, {"bare", "T:\\data", 0, 0x8a, kAbsent, 1, 0}};
  tarn_test::ScratchDir t;
  for (const auto& row : kRows) {
    const std::string link = row.link == std::string("L") ? t / "L" : row.link;
    SCOPED_TRACE(link + " -> " + (row.target ? row.target : "null") + " trial " +
                 std::to_string(row.trial) + " before " + std::to_string(row.before));
    if (row.before != kAbsent) ::CreateDirectoryA(link.c_str(), nullptr);
    if (row.before == kFull) tarn_test::WriteFile(link + "\\kept", "x");
    g_reparse = row.before == kReparse ? std::wstring(link.begin(), link.end()) : L"";
    g_flags = row.flags, g_answer = row.answer, g_sent.clear();
    // Twice: the second call meets what the first left and answers the same.
    const DWORD handles = tarn_test::HandleCount();
    for (int call = 0; call < 2; ++call) {
      EXPECT_EQ(TarnMakeDirectoryLink(link.c_str(), row.target, row.trial), row.result);
    }
    EXPECT_EQ(tarn_test::HandleCount(), handles);
    EXPECT_EQ(g_sent, std::vector<std::string>(row.sent ? 2 : 0, MountPoint(row.sent)));
    EXPECT_EQ(::GetFileAttributesA(link.c_str()) != INVALID_FILE_ATTRIBUTES, row.remains);
    if (row.before == kFull) EXPECT_NE(::GetFileAttributesA((link + "\\kept").c_str()), ~0u);
    tarn_test::RemoveTree(link);
  }
  tarn::testing::ResetPlatform();
}

DWORD g_cluster[3];   // sectors per cluster, bytes per sector, free clusters
std::string g_roots;  // the roots the cluster query was asked about

BOOL WINAPI Clusters(LPCSTR root, LPDWORD sectors, LPDWORD bytes, LPDWORD free, LPDWORD total) {
  g_roots += std::string(root) + " ";
  return *sectors = g_cluster[0], *bytes = g_cluster[1], *free = g_cluster[2], TRUE;
}
template <typename Out, int (*Op)(const char*, Out*, DWORD*, char*, DWORD)>
tarn_test::ErrorRow Row(const char* path, DWORD code) {
  return {path ? path : "null", [=](DWORD* c, char* t, DWORD s) -> long long {
    Out out;
    return Op(path, path ? &out : nullptr, c, t, s);
  }, 0, code};
}
ULONGLONG Bytes(int (*op)(const char*, ULARGE_INTEGER*), const char* path) {
  ULARGE_INTEGER bytes = {};
  return op(path, &bytes) ? bytes.QuadPart : ~0ull;
}
int Plain(const char* path, ULARGE_INTEGER* out) { return TarnFreeDiskSpace(path, out, 0, 0, 0); }

// The look-ups happen on the first calls that pass the argument checks, so
// one test makes every call of the four operations, in this order.
TEST(DiskSpace, OneLookUpPerPairDriveFormsMebibytesAndErrors) {
  // Without "GetDiskFreeSpaceExA" the C pair takes the cluster query for good.
  tarn::testing::HideFunction("kernel32.dll", "GetDiskFreeSpaceExA");
  DWORD sectors = 0, bytes = 0, free = 0, total = 0;
  ASSERT_TRUE(::GetDiskFreeSpaceA("T:\\", &sectors, &bytes, &free, &total));
  EXPECT_EQ(Bytes(TarnFreeDiskSpaceC, "T:\\x"), ULONGLONG(sectors * bytes) * free);
  tarn::testing::ResetPlatform();
  tarn::Platform().GetDiskFreeSpaceA = Clusters;
  const struct { DWORD cluster[3]; ULONGLONG bytes; DWORD mebibytes; } kFigures[] = {
      {{1, 1, 1572863}, 1572863, 1}, {{1, 1, 1048575}, 1048575, 0},
      {{8, 512, 1342177280}, 5ull << 40, 5242880}};  // 5 TiB
  for (const auto& row : kFigures) {
    std::copy(row.cluster, row.cluster + 3, g_cluster), g_roots.clear();
    DWORD mebibytes = 77;
    EXPECT_EQ(Bytes(TarnFreeDiskSpaceC, "T:\\x"), row.bytes);
    EXPECT_EQ(TarnFreeDiskSpaceMBC("t:", &mebibytes), 1);
    EXPECT_EQ(mebibytes, row.mebibytes);
    EXPECT_EQ(g_roots, "T:\\ t:\\ ");
  }
  // The other pair looks up now and keeps the 64-bit query when it is hidden
  // afterwards; the C pair never looks again. Other tests write to the same
  // host disk meanwhile.
  ULARGE_INTEGER own, all, allFree;
  ASSERT_TRUE(::GetDiskFreeSpaceExA("T:\\", &own, &all, &allFree));
  for (const char* path : {"T:\\x", "T:", "t:\\"}) {
    EXPECT_NEAR(Bytes(Plain, path), own.QuadPart, 1 << 28) << path;
  }
  tarn::testing::HideFunction(nullptr, "GetDiskFreeSpaceExA");
  EXPECT_NEAR(Bytes(Plain, "T:\\x"), own.QuadPart, 1 << 28) << "still the 64-bit query";
  EXPECT_EQ(Bytes(TarnFreeDiskSpaceC, "T:\\x"), 5ull << 40) << "still the cluster query";
  tarn::testing::ResetPlatform();

  ::SetLastError(ERROR_INVALID_DRIVE);  // reported by the MB form, read afresh
  DWORD code = 0, mb = 77;
  EXPECT_EQ(TarnFreeDiskSpaceMB("dir\\file", &mb, &code, nullptr, 0) + mb, 0u);
  EXPECT_EQ(code, DWORD(ERROR_INVALID_DRIVE));
  const auto inBytes = Row<ULARGE_INTEGER, TarnFreeDiskSpace>, inMB = Row<DWORD, TarnFreeDiskSpaceMB>;
  tarn_test::CheckErrorRows({inBytes("J:\\x", 3), inBytes("\\\\server\\share\\d", 0),
                             inBytes("dir\\file", 0), inBytes("", 0), inBytes(nullptr, 0),
                             inMB("J:", 3), inMB(nullptr, 0)});
  EXPECT_EQ(TarnFreeDiskSpaceC("J:\\x", &own) + TarnFreeDiskSpaceC("dir", &own) +
                TarnFreeDiskSpaceMBC("J:", &code) + TarnFreeDiskSpaceMBC("T:\\", nullptr), 0);
}

}  // namespace

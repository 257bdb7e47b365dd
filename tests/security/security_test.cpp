// Access-control entries merged into the lists of registry keys (which Wine
// keeps) and files (which it turns into mode bits), membership checks against
// the platform's own answer, and the access probe's verdicts.
#include <gtest/gtest.h>
#include <aclapi.h>

#include "core/platform.h"
#include "support/checks.h"
#include "support/wine_env.h"
#include "tarn/security.h"

namespace {

using namespace tarn_test;
using tarn::testing::HideFunction;
const std::string kKey = "Software\\tarn-security-" + std::to_string(::GetTickCount64());
const std::string kNamed = "CURRENT_USER\\" + kKey;
const SID_IDENTIFIER_AUTHORITY kNT = SECURITY_NT_AUTHORITY, kWorld = SECURITY_WORLD_SID_AUTHORITY;

// A call's result and the verdict it stored, read after the call.
int Answer(int result, const int& verdict) { return result * 10 + verdict; }

// The list of key `name`, or (with a SID) the list the platform merges the entry into.
std::string Dacl(const std::string& name, PSID sid = nullptr, DWORD mask = 0, ACCESS_MODE mode = GRANT_ACCESS, DWORD inheritance = 0) {
  PACL acl = nullptr, merged = nullptr; PSECURITY_DESCRIPTOR sd = nullptr;
  if (::GetNamedSecurityInfoA(name.c_str(), SE_REGISTRY_KEY, DACL_SECURITY_INFORMATION, 0, 0, &acl, 0, &sd)) return "(none)";
  EXPLICIT_ACCESS_A entry = {mask, mode, inheritance};
  ::BuildTrusteeWithSidA(&entry.Trustee, sid);
  if (sid) ::SetEntriesInAclA(1, &entry, acl, &merged);
  const PACL list = sid ? merged : acl;
  ACL_SIZE_INFORMATION size = {};  // the bytes in use, from the entry count on (the size counts slack)
  ::GetAclInformation(list, &size, sizeof size, AclSizeInformation);
  const std::string text(reinterpret_cast<char*>(list) + 4, size.AclBytesInUse - 4);
  ::LocalFree(merged), ::LocalFree(sd);
  return text;
}

struct Sid {
  SID_IDENTIFIER_AUTHORITY authority; BYTE count; DWORD s[8];
  PSID get() {  // valid until the next call
    static PSID sid;
    return ::FreeSid(sid), ::AllocateAndInitializeSid(&authority, count, s[0], s[1], s[2], s[3], s[4], s[5], s[6], s[7], &sid), sid;
  }
};

TEST(EntryOnKey, MergedAsThePlatformMergesAndNothingChangedOnFailure) {
  std::string longName = kNamed;  // 515 characters, in keys of up to 200
  while (longName.size() < 515) longName += "\\" + std::string(std::min<size_t>(200, 514 - longName.size()), 'k');
  const std::wstring wide(longName.begin() + 13, longName.end());  // the narrow call stops at 260
  HKEY key;
  ASSERT_EQ(::RegCreateKeyExW(HKEY_CURRENT_USER, wide.c_str(), 0, 0, 0, KEY_ALL_ACCESS, 0, &key, 0) + ::RegCloseKey(key), 0);
  struct Row { std::string name; Sid sid; DWORD mask; ACCESS_MODE mode; DWORD inheritance; bool group; };
  const Row rows[] = {{kNamed, {kNT, 2, {0x20, 0x221}}, GENERIC_READ, GRANT_ACCESS, 3, true},
                      {kNamed, {kNT, 2, {0x20, 0x221}}, KEY_SET_VALUE, GRANT_ACCESS, 0, false},
                      {kNamed, {kWorld, 8, {0, 1, 2, 3, 4, 5, 6, 7}}, KEY_CREATE_SUB_KEY, DENY_ACCESS, 2, false},
                      {kNamed, {kNT, 0, {9}}, KEY_READ, SET_ACCESS, 1, false},
                      {longName, {kNT, 2, {0x20, 0x220}}, GENERIC_ALL, GRANT_ACCESS, 0, true},
                      {kNamed, {kNT, 2, {0x20, 0x221}}, 0, REVOKE_ACCESS, 0, true}};
  for (Row row : rows) {
    const std::string merged = Dacl(row.name, row.sid.get(), row.mask, row.mode, row.inheritance);
    EXPECT_EQ(row.group ? TarnSetRegistryKeyGroupSecurityInfo(row.name.c_str(), row.sid.s[1], row.mask, row.mode, row.inheritance)
                        : TarnSetRegistryKeySecurityInfo(row.name.c_str(), &row.sid.authority, row.sid.s, row.sid.count, row.mask, row.mode, row.inheritance), 1);
    EXPECT_EQ(Dacl(row.name), merged) << &row - rows;
  }
  const std::string before = Dacl(kNamed);
  Sid users = {kNT, 2, {0x20, 0x221}};
  auto grant = [&](const std::string& name, BYTE count = 2, bool noSub = false) {
    return TarnSetRegistryKeySecurityInfo(name.c_str(), &users.authority, noSub ? nullptr : users.s, count, GENERIC_READ, GRANT_ACCESS, 0);
  };
  for (int failed : {grant(kNamed, 9), grant(kNamed, 2, true), grant(""), grant(kNamed + "\\missing"), grant("HKEY_" + kNamed),
                     grant(longName + "k"), TarnSetRegistryKeyGroupSecurityInfo(nullptr, 0x221, GENERIC_READ, GRANT_ACCESS, 0),
                     TarnSetNamedSecurityInfo("T:\\missing", SE_FILE_OBJECT, &users.authority, users.s, 2, GENERIC_READ, GRANT_ACCESS, 0)})
    EXPECT_EQ(failed, 0);
  for (const char* hidden : {"GetNamedSecurityInfoA", "AllocateAndInitializeSid", "BuildTrusteeWithSidA", "SetEntriesInAclA", "SetNamedSecurityInfoA"}) {
    HideFunction("advapi32.dll", hidden);
    EXPECT_EQ(grant(kNamed), 0) << hidden;
    tarn::testing::ResetPlatform();
  }
  EXPECT_EQ(Dacl(kNamed), before);
  ::RegDeleteTreeA(HKEY_CURRENT_USER, kKey.c_str());
}

// Wine keeps no list on files: denying Users write makes a file read-only,
// granting Everyone everything makes it writable again.
TEST(EntryOnFile, ReachesTheFileAndTheFolderFormAddsOneBackslash) {
  ScratchDir dir;
  const std::string file = dir / "f", folder = dir / "d", slashed = dir / "e\\";
  WriteFile(file, "x"), ::CreateDirectoryA(folder.c_str(), nullptr), ::CreateDirectoryA(slashed.c_str(), nullptr);
  Sid everyone = {kWorld, 1, {0}};
  auto readOnly = [](const std::string& path) { return ::GetFileAttributesA(path.c_str()) & FILE_ATTRIBUTE_READONLY ? 1 : 0; };
  for (const std::string& path : {file, folder, slashed}) {  // a file with a backslash gives 123
    EXPECT_EQ(TarnSetFileGroupSecurityInfo(path.c_str(), 0x221, GENERIC_WRITE, DENY_ACCESS, 0), path != file) << path;
    EXPECT_EQ(readOnly(path), path != file) << path;
    EXPECT_EQ(TarnSetFileSecurityInfo(path.c_str(), 0x221, GENERIC_WRITE, DENY_ACCESS, 0) + readOnly(path), 2) << path;
    EXPECT_EQ(TarnSetNamedSecurityInfo(path.c_str(), SE_FILE_OBJECT, &everyone.authority, everyone.s, 1, GENERIC_ALL, GRANT_ACCESS, 0) - readOnly(path), 1) << path;
  }
}

TEST(Membership, BothChecksAgreeWithThePlatformAndLeaveNoTokenBehind) {
  HANDLE other = ::CreateThread(nullptr, 0, [](void*) -> DWORD { return 0; }, nullptr, CREATE_SUSPENDED, nullptr);
  HANDLE primary, token, self = ::GetCurrentThread(), bogus = reinterpret_cast<HANDLE>(0xDEAD0);
  ASSERT_TRUE(::OpenProcessToken(::GetCurrentProcess(), TOKEN_QUERY, &primary));
  // OpenThreadToken fails with 1008.
  auto noToken = [&](const char* what) { EXPECT_TRUE(!::OpenThreadToken(self, TOKEN_QUERY, FALSE, &token) && ::GetLastError() == ERROR_NO_TOKEN) << what; };
  int v = -1;
  ExpectBalanced("membership checks", [&] {
    for (DWORD rid : {0x220, 0x221, 0x222}) {
      Sid group = {kNT, 2, {0x20, rid}};
      BOOL held = -1, inPrimary = -1;
      ASSERT_TRUE(::ImpersonateSelf(SecurityImpersonation) && ::OpenThreadToken(self, TOKEN_QUERY, FALSE, &token) &&
                  ::CheckTokenMembership(token, group.get(), &held));
      // token, result, verdict; the by-hand walk (CheckTokenMembership hidden) gives 4 for enabled
      const std::tuple<HANDLE, int, int> rows[] = {{token, 1, held}, {nullptr, 1, held}, {primary, ::CheckTokenMembership(primary, group.get(), &inPrimary), inPrimary}};
      for (auto [handle, result, verdict] : rows) {
        EXPECT_EQ(Answer(TarnCheckTokenMembership(handle, rid, &v), v), result * 10 + verdict) << rid;
        HideFunction("advapi32.dll", "CheckTokenMembership");
        EXPECT_EQ(Answer(TarnCheckTokenMembership(handle, rid, &v), v), 10 + held * 4) << rid;
        tarn::testing::ResetPlatform();
      }
      ::CloseHandle(token), ::RevertToSelf();
      // fallback thread, thread, result; the verdict is the platform's when 1
      const std::tuple<HANDLE, HANDLE, int> threads[] = {{nullptr, nullptr, 0}, {nullptr, self, 1}, {self, nullptr, 1},
                                                         {self, other, 1}, {self, bogus, 0}, {nullptr, other, 0}};
      for (auto [fallback, thread, result] : threads) {
        EXPECT_EQ(Answer(TarnCheckProcessGroupSecurityInfo(fallback, thread, rid, GENERIC_READ, v), v), result * (10 + held)) << rid;
        noToken("after a check");
      }
      for (const char* hidden : {"ImpersonateSelf", "OpenThreadToken", "AllocateAndInitializeSid", "InitializeAcl", "AccessCheck"}) {
        HideFunction("advapi32.dll", hidden);
        EXPECT_EQ(Answer(TarnCheckProcessGroupSecurityInfo(nullptr, self, rid, GENERIC_READ, v), v), 0) << hidden;
        noToken(hidden), tarn::testing::ResetPlatform();
      }
    }
    HideFunction("advapi32.dll", "CheckTokenMembership"), HideFunction("advapi32.dll", "GetTokenInformation");
    EXPECT_EQ(Answer(TarnCheckTokenMembership(nullptr, 0x221, &v), v), 10) << "the groups cannot be read";
    tarn::testing::ResetPlatform();
    EXPECT_EQ(TarnCheckTokenMembership(nullptr, 0x221, nullptr), 0);
  }, 20);
  ::CloseHandle(primary), ::TerminateThread(other, 0), ::CloseHandle(other);
}

// Outside the NT platform every caller passes the group check and the
// membership check cannot be made.
TEST(NonNT, GroupCheckPassesMembershipFails) {
  const int win98 = ::GetVersion() >> 31, nt = !win98;
  int v = -1;
  EXPECT_EQ(Answer(TarnCheckProcessGroupSecurityInfo(nullptr, nullptr, 0x222, GENERIC_READ, v), v), win98 * 11);
  EXPECT_EQ(Answer(TarnCheckTokenMembership(nullptr, 0x220, &v), v), nt * 11);
  if (nt) EXPECT_EQ(RunUnderWindowsVersion("win98", "--gtest_filter=NonNT.*"), 0);
}

TEST(DesiredAccess, VerdictsOfPathsAndNoHandleLeftOpen) {
  ScratchDir dir;
  const std::string file = dir / "f", held = dir / "held";
  WriteFile(file, "x"), WriteFile(held, "x");
  HANDLE holder = ::CreateFileA(held.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0, nullptr);
  char unused[] = "A:\\x";  // a drive letter without a volume
  while (::GetLogicalDrives() & (1u << (unused[0] - 'A'))) ++unused[0];
  std::string share = "Z:" + std::string(getenv("WINEPREFIX")) + "/dosdevices/unc/tarnsrv";  // \\tarnsrv\share
  std::replace(share.begin(), share.end(), '/', '\\');
  ::CreateDirectoryA(share.c_str(), nullptr), ::CreateDirectoryA((share + "\\share").c_str(), nullptr);
  const std::tuple<const char*, DWORD, TARN_CHKDESIREDACCESS> rows[] = {
      {nullptr, GENERIC_READ, TARN_DESIREDACCESS_ERROR}, {"", GENERIC_READ, TARN_DESIREDACCESS_ERROR},
      {file.c_str(), GENERIC_READ, TARN_DESIREDACCESS_GRANTED}, {file.c_str(), GENERIC_WRITE, TARN_DESIREDACCESS_GRANTED},
      {held.c_str(), GENERIC_READ, TARN_DESIREDACCESS_INUSE}, {dir.path().c_str(), GENERIC_READ, TARN_DESIREDACCESS_DENIED},
      {"C:\\tarn-missing.txt", GENERIC_READ, TARN_DESIREDACCESS_ERROR}, {"C:\\tarn-missing\\x", GENERIC_READ, TARN_DESIREDACCESS_ERROR},
      {unused, GENERIC_READ, TARN_DESIREDACCESS_UNAVAILABLE}, {"tarn-missing\\x", GENERIC_READ, TARN_DESIREDACCESS_UNAVAILABLE},
      {"\\\\tarnsrv\\share\\missing.txt", GENERIC_READ, TARN_DESIREDACCESS_ERROR}};
  ExpectBalanced("access probes", [&] {
    for (auto [path, access, verdict] : rows) EXPECT_EQ(TarnChkDesiredAccess(path, access), verdict) << (path ? path : "(null)");
  });
  ::CloseHandle(holder), RemoveTree(share);
}

}  // namespace

// Access-control entries merged into the lists of registry keys (which Wine
// keeps) and files (which it turns into mode bits), membership checks against
// the platform's own answer, and the access probe's verdicts.
#include <gtest/gtest.h>
#include <aclapi.h>
#include <sddl.h>

#include "core/platform.h"
#include "support/checks.h"
#include "support/wine_env.h"
#include "tarn/security.h"

namespace {

using namespace tarn_test;
const std::string kKey = "Software\\tarn-security-" + std::to_string(::GetTickCount64());
const std::string kNamed = "CURRENT_USER\\" + kKey;

// A list as text, an entry a line: type, flags, mask, trustee.
std::string Text(PACL acl) {
  std::string text;
  void* ace = nullptr;
  for (DWORD i = 0; acl && ::GetAce(acl, i, &ace); ++i) {
    const auto* entry = static_cast<ACCESS_ALLOWED_ACE*>(ace);
    char* sid = nullptr;
    ::ConvertSidToStringSidA(const_cast<DWORD*>(&entry->SidStart), &sid);
    text += std::to_string(entry->Header.AceType) + " " + std::to_string(entry->Header.AceFlags) +
            " " + std::to_string(entry->Mask) + " " + sid + "\n";
    ::LocalFree(sid);
  }
  return text;
}

// The list of `name`, and (with a SID) the list the platform merges the entry into.
std::string Dacl(const std::string& name, PSID sid = nullptr, DWORD mask = 0,
                 ACCESS_MODE mode = GRANT_ACCESS, DWORD inheritance = 0) {
  PACL acl = nullptr, merged = nullptr;
  PSECURITY_DESCRIPTOR sd = nullptr;
  if (::GetNamedSecurityInfoA(name.c_str(), SE_REGISTRY_KEY, DACL_SECURITY_INFORMATION, nullptr,
                              nullptr, &acl, nullptr, &sd))
    return "(none)";
  EXPLICIT_ACCESS_A entry = {mask, mode, inheritance};
  ::BuildTrusteeWithSidA(&entry.Trustee, sid);
  if (sid) ::SetEntriesInAclA(1, &entry, acl, &merged);
  const std::string text = Text(sid ? merged : acl);
  ::LocalFree(merged), ::LocalFree(sd);
  return text;
}

struct Sid {
  SID_IDENTIFIER_AUTHORITY authority;
  BYTE count;
  DWORD s[8];
  PSID get() {
    static PSID sid;
    ::FreeSid(sid);
    ::AllocateAndInitializeSid(&authority, count, s[0], s[1], s[2], s[3], s[4], s[5], s[6], s[7], &sid);
    return sid;
  }
};
const SID_IDENTIFIER_AUTHORITY kNT = SECURITY_NT_AUTHORITY, kWorld = SECURITY_WORLD_SID_AUTHORITY;

TEST(EntryOnKey, MergedAsThePlatformMergesAndNothingChangedOnFailure) {
  std::string longName = kNamed;  // 515 characters, in keys of up to 200
  while (longName.size() < 515) longName += "\\" + std::string(std::min<size_t>(200, 514 - longName.size()), 'k');
  ASSERT_EQ(longName.size(), 515u);
  HKEY key;
  const std::wstring wide(longName.begin() + 13, longName.end());  // the narrow call stops at 260
  ASSERT_EQ(::RegCreateKeyExW(HKEY_CURRENT_USER, wide.c_str(), 0, 0, 0, KEY_ALL_ACCESS, 0, &key, 0), 0);
  ::RegCloseKey(key);
  struct Row { std::string name; Sid sid; DWORD mask; ACCESS_MODE mode; DWORD inheritance; bool group; };
  const Row rows[] = {
      {kNamed, {kNT, 2, {0x20, 0x221}}, GENERIC_READ, GRANT_ACCESS, 3, true},
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
  ASSERT_NE(before.find("S-1-5-32-544"), std::string::npos);
  SID_IDENTIFIER_AUTHORITY nt = kNT;
  const DWORD users[] = {0x20, 0x221};
  auto grant = [&](const std::string& name, BYTE count = 2, bool noSub = false) {
    return TarnSetRegistryKeySecurityInfo(name.c_str(), &nt, noSub ? nullptr : users, count, GENERIC_READ, GRANT_ACCESS, 0);
  };
  {
    EXPECT_EQ(grant(kNamed, 9), 0);
    EXPECT_EQ(grant(kNamed, 2, true), 0);
    EXPECT_EQ(grant(""), 0);
    EXPECT_EQ(TarnSetRegistryKeyGroupSecurityInfo(nullptr, 0x221, GENERIC_READ, GRANT_ACCESS, 0), 0);
    EXPECT_EQ(grant(kNamed + "\\missing"), 0);
    EXPECT_EQ(grant("HKEY_" + kNamed), 0);
    EXPECT_EQ(grant(longName + "k"), 0);
    EXPECT_EQ(TarnSetNamedSecurityInfo("T:\\missing", SE_FILE_OBJECT, &nt, users, 2, GENERIC_READ, GRANT_ACCESS, 0), 0);
    for (const char* hidden : {"GetNamedSecurityInfoA", "AllocateAndInitializeSid", "BuildTrusteeWithSidA", "SetEntriesInAclA", "SetNamedSecurityInfoA"}) {
      tarn::testing::HideFunction("advapi32.dll", hidden);
      EXPECT_EQ(grant(kNamed), 0) << hidden;
      tarn::testing::ResetPlatform();
    }
    EXPECT_EQ(Dacl(kNamed), before);
  }
  ::RegDeleteTreeA(HKEY_CURRENT_USER, kKey.c_str());
}

// Wine keeps no list on files: denying Users write makes a file read-only,
// granting the token's user everything makes it writable again.
TEST(EntryOnFile, ReachesTheFileAndTheFolderFormAddsOneBackslash) {
  ScratchDir dir;
  const std::string file = dir / "f", folder = dir / "d";
  WriteFile(file, "x");
  ::CreateDirectoryA(folder.c_str(), nullptr);
  HANDLE token;
  ASSERT_TRUE(::OpenProcessToken(::GetCurrentProcess(), TOKEN_QUERY, &token));
  union { TOKEN_USER user; BYTE bytes[256]; } user;
  DWORD size;
  ASSERT_TRUE(::GetTokenInformation(token, TokenUser, &user, sizeof user, &size));
  ::CloseHandle(token);
  const PSID me = user.user.User.Sid;
  Sid mine = {*::GetSidIdentifierAuthority(me), *::GetSidSubAuthorityCount(me)};
  for (BYTE i = 0; i < mine.count; ++i) mine.s[i] = *::GetSidSubAuthority(me, i);
  auto readOnly = [](const std::string& path) { return ::GetFileAttributesA(path.c_str()) & FILE_ATTRIBUTE_READONLY ? 1 : 0; };
  for (const std::string& path : {file, folder, folder + "\\"}) {
    const bool isFile = path == file;
    EXPECT_EQ(TarnSetFileGroupSecurityInfo(path.c_str(), 0x221, GENERIC_WRITE, DENY_ACCESS, 0), !isFile) << path;
    EXPECT_EQ(readOnly(path), !isFile) << path;
    EXPECT_EQ(TarnSetFileSecurityInfo(path.c_str(), 0x221, GENERIC_WRITE, DENY_ACCESS, 0), 1) << path;
    EXPECT_EQ(readOnly(path), 1) << path;
    EXPECT_EQ(TarnSetNamedSecurityInfo(path.c_str(), SE_FILE_OBJECT, &mine.authority, mine.s, mine.count, GENERIC_ALL, GRANT_ACCESS, 0), 1) << path;
    EXPECT_EQ(readOnly(path), 0) << path;
  }
}

// No token is left on the thread (1008 from OpenThreadToken) and no handle open.
void ExpectNoThreadToken(const char* what) {
  HANDLE token = nullptr;
  EXPECT_FALSE(::OpenThreadToken(::GetCurrentThread(), TOKEN_QUERY, FALSE, &token)) << what;
  EXPECT_EQ(::GetLastError(), DWORD{ERROR_NO_TOKEN}) << what;
}

TEST(Membership, BothChecksAgreeWithThePlatformAndLeaveNoTokenBehind) {
  HANDLE other = ::CreateThread(nullptr, 0, [](void*) -> DWORD { return 0; }, nullptr, CREATE_SUSPENDED, nullptr);
  HANDLE primary, self = ::GetCurrentThread(), bogus = reinterpret_cast<HANDLE>(0xDEAD0);
  ASSERT_TRUE(::OpenProcessToken(::GetCurrentProcess(), TOKEN_QUERY, &primary));
  ExpectBalanced("membership checks", [&] {
    for (DWORD rid : {0x220, 0x221, 0x222}) {
      ASSERT_TRUE(::ImpersonateSelf(SecurityImpersonation));
      HANDLE token;
      ASSERT_TRUE(::OpenThreadToken(self, TOKEN_QUERY, FALSE, &token));
      Sid group = {kNT, 2, {0x20, rid}};
      BOOL held = -1, inPrimary = -1;
      ASSERT_TRUE(::CheckTokenMembership(token, group.get(), &held));
      const BOOL primaryResult = ::CheckTokenMembership(primary, group.get(), &inPrimary);
      // token, result, verdict; the same with CheckTokenMembership hidden
      const std::tuple<HANDLE, int, int, int, int> rows[] = {
          {token, 1, held, 1, held * 4}, {nullptr, 1, held, 1, held * 4},
          {primary, primaryResult, inPrimary, 1, held * 4}};
      for (auto [handle, result, verdict, byHand, byHandVerdict] : rows) {
        int v = -1;
        EXPECT_EQ(TarnCheckTokenMembership(handle, rid, &v), result) << rid;
        EXPECT_EQ(v, verdict) << rid;
        tarn::testing::HideFunction("advapi32.dll", "CheckTokenMembership");
        EXPECT_EQ(TarnCheckTokenMembership(handle, rid, &v), byHand) << rid;
        EXPECT_EQ(v, byHandVerdict) << rid;
        tarn::testing::ResetPlatform();
      }
      ::CloseHandle(token);
      ::RevertToSelf();
      // fallback thread, thread, result; the verdict is the platform's when 1
      const std::tuple<HANDLE, HANDLE, int> threads[] = {
          {nullptr, nullptr, 0}, {nullptr, self, 1}, {self, nullptr, 1}, {self, other, 1},
          {self, bogus, 0}, {nullptr, other, 0}};
      for (auto [fallback, thread, result] : threads) {
        int v = -1;
        EXPECT_EQ(TarnCheckProcessGroupSecurityInfo(fallback, thread, rid, GENERIC_READ, v), result) << rid;
        EXPECT_EQ(v, result ? held : 0) << rid << " " << (fallback == self) << (thread == self);
        ExpectNoThreadToken("after a check");
      }
      for (const char* hidden : {"ImpersonateSelf", "OpenThreadToken", "AllocateAndInitializeSid", "InitializeAcl", "AccessCheck"}) {
        tarn::testing::HideFunction("advapi32.dll", hidden);
        int v = -1;
        EXPECT_EQ(TarnCheckProcessGroupSecurityInfo(nullptr, self, rid, GENERIC_READ, v), 0) << hidden;
        EXPECT_EQ(v, 0) << hidden;
        ExpectNoThreadToken(hidden);
        tarn::testing::ResetPlatform();
      }
    }
    tarn::testing::HideFunction("advapi32.dll", "CheckTokenMembership");
    tarn::testing::HideFunction("advapi32.dll", "GetTokenInformation");
    int v = -1;
    EXPECT_EQ(TarnCheckTokenMembership(nullptr, 0x221, &v), 1) << "the groups cannot be read";
    EXPECT_EQ(v, 0);
    tarn::testing::ResetPlatform();
    EXPECT_EQ(TarnCheckTokenMembership(nullptr, 0x221, nullptr), 0);
  }, 20);
  ::CloseHandle(primary);
  ::TerminateThread(other, 0);
  ::CloseHandle(other);
}

// Outside the NT platform every caller passes the group check and the
// membership check cannot be made.
TEST(NonNT, GroupCheckPassesMembershipFails) {
  const bool win98 = ::GetVersion() >> 31;
  int v = -1;
  EXPECT_EQ(TarnCheckProcessGroupSecurityInfo(nullptr, nullptr, 0x222, GENERIC_READ, v), win98);
  EXPECT_EQ(v, win98);
  EXPECT_EQ(TarnCheckTokenMembership(nullptr, 0x220, &v), !win98);
  EXPECT_EQ(v, !win98);
  if (!win98) EXPECT_EQ(RunUnderWindowsVersion("win98", "--gtest_filter=NonNT.*"), 0);
}

TEST(DesiredAccess, VerdictsOfPathsAndNoHandleLeftOpen) {
  ScratchDir dir;
  const std::string file = dir / "f", held = dir / "held";
  WriteFile(file, "x"), WriteFile(held, "x");
  HANDLE holder = ::CreateFileA(held.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0, nullptr);
  char unused[] = "A:\\x";  // a drive letter without a volume
  while (::GetLogicalDrives() & (1u << (unused[0] - 'A'))) ++unused[0];
  // The share \\tarnsrv\share is a folder in the prefix's dosdevices\unc.
  std::string share = "Z:" + std::string(getenv("WINEPREFIX")) + "/dosdevices/unc/tarnsrv";
  std::replace(share.begin(), share.end(), '/', '\\');
  ::CreateDirectoryA(share.c_str(), nullptr), ::CreateDirectoryA((share + "\\share").c_str(), nullptr);
  const std::tuple<const char*, DWORD, TARN_CHKDESIREDACCESS> rows[] = {
      {nullptr, GENERIC_READ, TARN_DESIREDACCESS_ERROR},
      {"", GENERIC_READ, TARN_DESIREDACCESS_ERROR},
      {file.c_str(), GENERIC_READ, TARN_DESIREDACCESS_GRANTED},
      {file.c_str(), GENERIC_WRITE, TARN_DESIREDACCESS_GRANTED},
      {held.c_str(), GENERIC_READ, TARN_DESIREDACCESS_INUSE},
      {dir.path().c_str(), GENERIC_READ, TARN_DESIREDACCESS_DENIED},
      {"C:\\tarn-missing.txt", GENERIC_READ, TARN_DESIREDACCESS_ERROR},
      {"C:\\tarn-missing\\x.txt", GENERIC_READ, TARN_DESIREDACCESS_ERROR},
      {unused, GENERIC_READ, TARN_DESIREDACCESS_UNAVAILABLE},
      {"tarn-missing\\x.txt", GENERIC_READ, TARN_DESIREDACCESS_UNAVAILABLE},
      {"\\\\tarnsrv\\share\\missing.txt", GENERIC_READ, TARN_DESIREDACCESS_ERROR}};
  ExpectBalanced("access probes", [&] {
    for (auto [path, access, verdict] : rows)
      EXPECT_EQ(TarnChkDesiredAccess(path, access), verdict) << (path ? path : "(null)") << " " << access;
  });
  ::CloseHandle(holder);
  RemoveTree(share);
}

}  // namespace

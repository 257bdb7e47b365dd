// Paths, files, directories, temporary files and known folders on the drives
// of the test prefix: T: and U: fixed, R: removable with a medium, Q:
// removable without one, S: not mapped.
#include <gtest/gtest.h>
#include <mbctype.h>
#include <shlobj.h>
#include <shlwapi.h>

#include "core/platform.h"
#include "files/find_record.h"
#include "support/checks.h"
#include "support/wine_env.h"
#include "tarn/files.h"

namespace {

using tarn_test::ScratchDir;
using tarn_test::Short;
using PathOp = int (*)(const char*, DWORD*, char*, DWORD);

// Row bodies; the operation takes the error out-parameters as OUTS.
#define OUTS code, text, size
#define CALL(...) [=](DWORD* code, char* text, DWORD size) -> long long { __VA_ARGS__; }
#define ON(...) [](HANDLE h, DWORD* code, char* text, DWORD size) { return 0LL + (__VA_ARGS__); }
#define ROW(op, ...) {#op, op, __VA_ARGS__}
#define WRITES(...) [](char* b, DWORD n) -> long long { return __VA_ARGS__; }

// kShareAll: reading, writing and deleting; kRS: read-only and system.
constexpr DWORD kHidden = FILE_ATTRIBUTE_HIDDEN, kShareAll = 7, kRS = 5;
const HANDLE kBad = INVALID_HANDLE_VALUE;
char g_bytes[16];

DWORD Attributes(const std::string& path) { return ::GetFileAttributesA(path.c_str()); }
bool Exists(const std::string& path) { return Attributes(path) != INVALID_FILE_ATTRIBUTES; }
bool Has(const std::string& p, DWORD bits) { return Exists(p) && (Attributes(p) & bits) == bits; }
HANDLE Open(const std::string& path, DWORD access, DWORD share) {
  return ::CreateFileA(path.c_str(), access, share, nullptr, OPEN_EXISTING, 0, nullptr);
}
LONGLONG Pos(HANDLE file) { return ::SetFilePointer(file, 0, nullptr, FILE_CURRENT); }
void Put(const char* name, const std::string& value) { _putenv((name + ("=" + value)).c_str()); }
std::string Variable(const char* name) { return getenv(name) ? getenv(name) : ""; }

// A file handle as a number, closed: 0 when invalid, else 1, plus 2 when the
// file is hidden, plus 4 when others may open `path` to read.
long long Probe(HANDLE file, const std::string& path = std::string()) {
  if (file == kBad) return 0;
  BY_HANDLE_FILE_INFORMATION info = {};
  ::GetFileInformationByHandle(file, &info);
  const HANDLE reader = path.empty() ? kBad : Open(path, GENERIC_READ, kShareAll);
  const long long result = 1 | (info.dwFileAttributes & kHidden) | (reader != kBad ? 4 : 0);
  return ::CloseHandle(reader), ::CloseHandle(file), result;
}
int OpenRW(const char* path, DWORD* code, char* text, DWORD size) {
  return Probe(TarnFileOpen(path, GENERIC_READ | GENERIC_WRITE, OPEN_EXISTING, 0, kShareAll, OUTS));
}
int MoveAway(const char* path, DWORD* code, char* text, DWORD size) {
  return TarnFileMove(path, "T:\\tarn-moved", OUTS);
}
// 1 for a directory (its search closed), else the size in the record.
int FindDir(const char* path, DWORD* code, char* text, DWORD size) {
  WIN32_FIND_DATAA record = {};
  const HANDLE find = TarnDirectoryFind(path, &record, OUTS);
  return find != kBad ? ::FindClose(find) : record.nFileSizeLow;
}

// A temporary name of `length` bytes. Wine's names hold the low 16 bits of
// the tick count in hexadecimal without leading zeros: for 4 seconds in 65
// they are one byte shorter.
long long TempName(char* buffer, DWORD size, long long length) {
  long long result = 0;
  for (int tries = 0; tries < 100 && result != length; ++tries) {
    if (tries) ::Sleep(50);
    result = TarnTempFilename(buffer, size, nullptr, "tst");
  }
  return result;
}

// Wine answers for every mapped drive, even one without a medium: the empty
// drive is stood in for at the platform call, which notes the error mode.
UINT g_mode = 0;
BOOL WINAPI EmptyDrive(LPCWSTR, LPWSTR, DWORD, LPDWORD, LPDWORD, LPDWORD, LPWSTR, DWORD) {
  return g_mode = ::GetErrorMode(), ::SetLastError(ERROR_NOT_READY), FALSE;
}

TEST(PathRules, Rows) {
  const std::string longest = "T:\\" + std::string(252, 'a') + "\\bcd";  // 259 bytes
  const std::string tooLong = "T:\\" + std::string(300, 'a');
  const struct { const char* path; int allowRemovable, valid, removable; } kRows[] = {
      {"T:\\d\\f.txt", 0, 1, 0}, {"T:\\a\\..\\b", 0, 1, 0}, {"T:", 0, 1, 0}, {"T:\\*.t", 1, 0, 0},
      {longest.c_str(), 0, 1, 0}, {tooLong.c_str(), 1, 0, 0}, {"T:\\f?e", 1, 0, 0},
      {"T:dir", 1, 0, 0}, {"T:\\a|b", 1, 0, 0}, {"T:\\a\"b", 1, 0, 0}, {"T:\\a\\\\b", 1, 0, 0},
      {"T:\\a:b", 1, 0, 0}, {"\\\\:a\\b", 1, 0, 0}, {"S:\\d", 1, 0, 0}, {nullptr, 1, 0, 0},
      {"", 1, 0, 0}, {"   ", 1, 0, 0}, {"\\\\s\\h\\f", 0, 1, 0}, {"\\\\s\\h\\\\f", 0, 0, 0},
      {"\\\\\\s\\h", 0, 0, 0}, {"R:\\f", 0, 0, 1}, {"R:\\f", 1, 1, 1}};
  for (const auto& row : kRows) {
    int removable = 7;
    EXPECT_EQ(TarnPathIsValid(row.path, row.allowRemovable, &removable), row.valid) << row.path;
    EXPECT_EQ(removable, row.removable) << row.path;
    EXPECT_EQ(TarnPathIsValid(row.path, row.allowRemovable, nullptr), row.valid) << row.path;
  }
  const struct { const char* name; int valid, reserved; } kNames[] = {
      {"report.txt", 1, 0}, {" a", 1, 0}, {"   ", 0, 0}, {"", 0, 0}, {nullptr, 0, 0},
      {"a\\b", 0, 0}, {"a:b", 0, 0}, {"a*b", 0, 0}, {"a?b", 0, 0}, {"a|b", 0, 0}, {"a/b", 0, 0},
      {"aux", 1, 1}, {"CON", 1, 1}, {"clock$", 1, 1}, {"Prn", 1, 1}, {"NUL", 1, 1}, {"ept", 1, 1},
      {"Com", 1, 1}, {"COM1", 1, 1}, {"com2", 1, 1}, {"Com3", 1, 1}, {"COM4", 1, 1}, {"lpt", 1, 1},
      {"LPT1", 1, 1}, {"lpt2", 1, 1}, {"Lpt3", 1, 1}, {"LPT4", 1, 1}, {"COM5", 1, 0},
      {"LPT9", 1, 0}, {"CON.txt", 1, 0}, {"con1", 1, 0}, {"NULL", 1, 0}, {"CLOCK", 1, 0}};
  for (const auto& row : kNames) {
    EXPECT_EQ(TarnFilenameIsValid(row.name), row.valid) << row.name;
    EXPECT_EQ(TarnIsReservedDeviceName(row.name), row.reserved) << row.name;
  }
  // Classes accepted: 3 long and short name characters, 5 long name characters and wildcards.
  const struct { std::string name; UINT accept; std::string result; UINT count; } kReplaced[] = {
      {"x:y*z", 3, "x_y_z", 2}, {"ab", 0, "__", 2}, {"", 0, "", 0}, {"a*\\b", 5, "a*_b", 1}};
  for (auto row : kReplaced) {
    EXPECT_EQ(TarnReplaceInvalidFilenameCharacters(&row.name[0], '_', row.accept), row.count);
    EXPECT_EQ(row.name, row.result);
  }
  EXPECT_EQ(TarnReplaceInvalidFilenameCharacters(nullptr, '_', 0), 0u);
  // Existing paths are compared in their short form.
  const std::string beyond = "D:\\" + std::string(400, 'x'), huge = "C:\\" + std::string(300, 'n');
  const char* longDir = "C:\\Program Files";
  char shortDir[MAX_PATH] = {};
  ::GetShortPathNameA(longDir, shortDir, MAX_PATH);
  const struct { const char *a, *b; int drive, path, name; } kPairs[] = {
      {"D:\\x", "D:\\y", 1, 0, 0}, {"d:", "D:\\y", 1, 0, 0}, {"D:\\x", "E:\\x", 0, 0, 1},
      {"D", "D:\\x", 0, 0, 0}, {nullptr, "D:\\x", 0, 0, 0}, {"D:\\x", nullptr, 0, 0, 0},
      {"\\\\s\\h\\a", "\\\\s\\h\\b", 1, 0, 0}, {"\\\\s\\h\\a", "\\\\s\\x\\a", 0, 0, 1},
      {beyond.c_str(), "D:\\y", 1, 0, 0}, {huge.c_str(), huge.c_str(), 1, 0, 0},
      {"T:\\D\\F.TXT", "T:\\d\\f.txt", 1, 1, 1}, {"T:\\d\\f", "T:\\d\\f.", 1, 1, 1},
      {"T:\\d\\f", "U:\\d\\f", 0, 0, 1}, {"T:\\d\\f.a", "T:\\d\\f.b", 1, 0, 0},
      {"T:\\d\\f", "T:\\e\\f", 1, 0, 1}, {"T:\\a\\..\\b\\f", "T:\\b\\f", 1, 0, 1},
      {"C:\\a.b.c", "C:\\a.c", 1, 0, 0}, {longDir, shortDir, 1, 1, 0},
      {shortDir, longDir, 1, 1, 0}};
  for (const auto& row : kPairs) {
    SCOPED_TRACE(std::string(row.a ? row.a : "null") + " / " + (row.b ? row.b : "null"));
    EXPECT_EQ(TarnDriveIsEqual(row.a, row.b), row.drive);
    EXPECT_EQ(TarnPathIsEqual(row.a, row.b), row.path);
    EXPECT_EQ(TarnFilenameIsEqual(row.a, row.b), row.name);
  }
  EXPECT_TRUE(TarnDeviceIsReady("T:\\") && TarnDeviceIsReady("R:\\") && !TarnDeviceIsReady("S:\\"));
  tarn::Platform().GetVolumeInformationW = EmptyDrive;
  ::SetErrorMode(SEM_NOOPENFILEERRORBOX);
  EXPECT_EQ(TarnDeviceIsReady("Q:\\"), 0);
  EXPECT_EQ(g_mode, static_cast<UINT>(SEM_FAILCRITICALERRORS)) << "no prompt";
  EXPECT_EQ(::GetErrorMode(), static_cast<UINT>(SEM_NOOPENFILEERRORBOX)) << "mode restored";
  ::SetErrorMode(0), tarn::testing::ResetPlatform();
}

// Every operation with error out-parameters, each way out. "held" is held
// open for reading, sharing only reading; "written" for writing.
std::vector<tarn_test::ErrorRow> ErrorRows(const ScratchDir& t, const ScratchDir& u) {
  const std::string f = t / "digits", file = t / "written", sub = t / "sub", gone = t / "gone",
                    p = t / "new", from = t / "from", to = t / "to", across = u / "to",
                    x = t / "x", hid = t / "hidden", held = t / "held", temp = t.path();
  tarn_test::WriteFile(hid, "x");
  ::CreateDirectoryA(sub.c_str(), nullptr), ::CreateDirectoryA(x.c_str(), nullptr);
  std::string deep = sub;  // beyond MAX_PATH
  while (deep.size() < 300) deep += "\\.";
  std::vector<tarn_test::ErrorRow> rows = {
      // Hidden replaces the whole set; an entry already hidden keeps its own.
      {"hide", CALL(::SetFileAttributesA(hid.c_str(), kRS); return TarnFileHide(hid.c_str(), OUTS)
          ? Attributes(hid) & (kHidden | kRS) : -1), kHidden, 0},
      {"hide hidden", CALL(::SetFileAttributesA(hid.c_str(), kHidden | 1); return TarnFileHide(
          hid.c_str(), OUTS) ? Attributes(hid) & (kHidden | kRS) : -1), kHidden | 1, 0},
      {"rename", CALL(tarn_test::WriteFile(from, "a"), ::DeleteFileA(to.c_str());
          return TarnFileMove(from.c_str(), to.c_str(), OUTS) && !Exists(from)), 1, 0},
      {"rename onto a file", CALL(tarn_test::WriteFile(from, "a"), tarn_test::WriteFile(to, "b");
          return TarnFileMove(from.c_str(), to.c_str(), OUTS)), 0, ERROR_ALREADY_EXISTS},
      {"move across onto a file", CALL(tarn_test::WriteFile(from, "new"), tarn_test::WriteFile(
          across, "older"); return TarnFileMove(from.c_str(), across.c_str(), OUTS) &&
          !Exists(from) && TarnFileSize(across.c_str(), nullptr, nullptr, 0) == 3), 1, 0},
      // The copy succeeds, the delete does not: 0, and both files are there.
      {"move held across", CALL(return TarnFileMove(held.c_str(), across.c_str(), OUTS) +
          Exists(held) + Exists(across)), 2, ERROR_SHARING_VIOLATION},
      {"no record", CALL(return Probe(TarnDirectoryFind(sub.c_str(), nullptr, OUTS))), 0, 0},
      // Attributes change on the levels created, cleared then set, never on
      // those that existed.
      {"create levels", CALL(tarn_test::RemoveTree(x + "\\y"); return TarnDirectoryCreateAttr((x +
          "\\y\\z").c_str(), kHidden | 4, 4, OUTS) && Has(x + "\\y\\z", kHidden | 4) && Has(x +
          "\\y", kHidden | 4) && !Has(x, kHidden)), 1, 0},
      {"temp file", CALL(return Probe(TarnCreateTempFile(temp.c_str(), "tst", GENERIC_WRITE,
          CREATE_NEW, kHidden, 0, OUTS))), 1 | 2, 0}};
  // Any two of disposition (1), flags (2) and share mode (5) swapped change
  // what comes out.
  for (auto open : {TarnFileCreate, TarnFileOpen})
    rows.push_back({"create", CALL(::DeleteFileA(p.c_str()); return Probe(open(p.c_str(),
        GENERIC_WRITE, CREATE_NEW, kHidden, FILE_SHARE_READ | FILE_SHARE_DELETE, OUTS), p)), 7, 0});
  const PathOp size = TarnFileSize, find = TarnFileFind, hide = TarnFileHide,
               exists = TarnDirectoryExist, mkdir = TarnDirectoryCreate;
  const struct { const char* what; PathOp op; std::string path; int result; DWORD code; }
  kPathRows[] = {
      ROW(OpenRW, gone, 0, 2), ROW(OpenRW, sub, 0, 5), ROW(OpenRW, held, 0, 32),
      ROW(OpenRW, t / "a|b", 0, 123), ROW(size, file, 5, 0), ROW(size, gone, -1, 2),
      ROW(size, sub, -1, 5), ROW(find, file, 1, 0), ROW(find, t / "w*", 1, 0), ROW(find, sub, 0, 0),
      ROW(find, gone + "\\x", 0, 3), ROW(hide, gone, 0, 2), ROW(MoveAway, sub, 0, 0),
      ROW(MoveAway, gone, 0, 2), ROW(FindDir, sub + "\\", 1, 0), ROW(FindDir, t / "s*", 1, 0),
      ROW(FindDir, file, 5, 0), ROW(FindDir, gone, 0, 2), ROW(exists, sub + "\\", 1, 0),
      ROW(exists, deep, 1, 0), ROW(exists, file, 0, 0), ROW(exists, gone, 0, 2),
      ROW(mkdir, sub, 1, 0), ROW(mkdir, file, 1, 0), ROW(mkdir, x + "\\n\\", 1, 0),
      ROW(mkdir, file + "\\s", 0, 3), ROW(mkdir, t / "a|b", 0, 123), ROW(mkdir, "newdir", 0, 0),
      // Bare drives succeed at once.
      ROW(mkdir, "T:", 1, 0), ROW(mkdir, "S:\\", 1, 0)};
  for (const auto& row : kPathRows)
    rows.push_back({row.what + (" " + row.path), CALL(return row.op(row.path.c_str(), OUTS)),
                    row.result, row.code});
  for (const char* none : {"", static_cast<const char*>(nullptr)})
    for (PathOp op : {find, hide, exists, mkdir, MoveAway, FindDir})
      rows.push_back({"no path", CALL(return op(none, OUTS)), 0, 0});
  // On a file of ten digits, and on no file.
  const struct { const char* what; long long (*op)(HANDLE, DWORD*, char*, DWORD); long long result,
                 failed; } kHandleRows[] = {
      {"read", ON(TarnFileRead(h, g_bytes, 10, OUTS)), 1, 0},
      {"read short", ON(TarnFileSeek(h, 4, 0, 0, 0), TarnFileRead(h, g_bytes, 10, OUTS)), 0, 0},
      {"write", ON(TarnFileWrite(h, "abc", 3, OUTS) ? Pos(h) : -1), 3, -1},
      {"seek", ON(TarnFileSeek(h, 3, 0, 0, 0), TarnFileSeek(h, 4, OUTS) ? Pos(h) : -1), 4, -1},
      {"seek end", ON(TarnFileSeekEnd(h, OUTS) ? Pos(h) : -1), 10, -1},
      {"size", ON(TarnFileSize(h, OUTS)), 10, -1}};
  for (const auto& row : kHandleRows) {
    rows.push_back({row.what, CALL(tarn_test::WriteFile(f, "0123456789"); HANDLE h = Open(f,
        GENERIC_READ | GENERIC_WRITE, 0); const long long result = row.op(h, OUTS);
        return ::CloseHandle(h), result), row.result, 0});
    rows.push_back({row.what, CALL(return row.op(kBad, OUTS)), row.failed, ERROR_INVALID_HANDLE});
  }
  return rows;
}

TEST(Files, EveryOperationAndNothingLeftBehind) {
  const ScratchDir t, u(tarn_test::kSecondFixedDrive);
  Put("TMP", t.path());  // where _tempnam looks first
  tarn_test::WriteFile(t / "held", "held"), tarn_test::WriteFile(t / "written", "12345");
  HANDLE held = Open(t / "held", GENERIC_READ, FILE_SHARE_READ);
  HANDLE written = Open(t / "written", GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE);
  const auto errorRows = ErrorRows(t, u);
  // Every operation writing text into a caller buffer.
  char exe[MAX_PATH] = {}, name[MAX_PATH] = {}, appData[MAX_PATH] = {};
  ::GetModuleFileNameA(nullptr, exe, MAX_PATH);
  ::SHGetFolderPathA(nullptr, CSIDL_APPDATA, nullptr, SHGFP_TYPE_CURRENT, appData);
  const std::string start = t / "tst", exeDir(exe, strrchr(exe, '\\') - exe);
  const long long length = start.size() + 8, n = t.path().size();  // "tstXXXX.tmp"
  const std::vector<tarn_test::TextRow> textRows = {
      {"TarnTempDirectory", WRITES(TarnTempDirectory(b, n)), t.path(), Short::kCut, n, n, true},
      {"TarnTempFilename", [=](char* b, DWORD n) { return TempName(b, n, length); },
       start + std::string(
       length - start.size(), '?'), Short::kCut, length, length, true, std::string::npos,
       start.size()},
      {"TarnGetModulePath", WRITES(TarnGetModulePath(nullptr, b, n)), exeDir, Short::kEmpty, 1, 0},
      {"TarnGetFolderPath", WRITES(TarnGetFolderPath(CSIDL_APPDATA, b, n)), appData +
       std::string("\\"), Short::kUntouched, 1, 0, false, MAX_PATH - 1}};
  tarn_test::CheckErrorRows(errorRows);
  tarn_test::CheckTextRows(textRows);
  tarn_test::ExpectBalanced("every operation", [&] {
    for (const auto& row : errorRows) row.call(nullptr, name, sizeof name);
    for (const auto& row : textRows) row.call(name, sizeof name);
  }, 10);
  ::CloseHandle(held), ::CloseHandle(written), ::RemoveDirectoryA("T:\\tarn-moved");
}

TEST(ThreadCodePage, NamesConvertedAndLevelsFoundByCharacters) {
  const LCID locale = ::GetThreadLocale();
  const int mbcp = _getmbcp();
  ::SetThreadLocale(MAKELCID(MAKELANGID(LANG_JAPANESE, SUBLANG_JAPANESE_JAPAN), SORT_DEFAULT));
  _setmbcp(932);
  WIN32_FIND_DATAW wide = {};
  WIN32_FIND_DATAA narrow;
  const wchar_t kA = 0x3042;  // two bytes in code page 932
  const struct { bool alternate; std::wstring name; int kept; } kRows[] = {
      {false, std::wstring(130, kA), 259}, {true, std::wstring(6, kA) + L"a", 13}};
  for (const auto& row : kRows) {
    wcscpy(row.alternate ? wide.cAlternateFileName : wide.cFileName, row.name.c_str());
    tarn::CopyFindRecord(wide, &narrow);
    char expected[600] = {};
    ::WideCharToMultiByte(932, 0, row.name.c_str(), -1, expected, 600, nullptr, nullptr);
    EXPECT_EQ(row.alternate ? narrow.cAlternateFileName : narrow.cFileName,
              std::string(expected, row.kept));
  }
  // U+8868 is 0x95 0x5C: its second byte is a backslash that separates nothing.
  const ScratchDir dir;
  const std::string j = dir / "j";
  const std::wstring table = std::wstring(j.begin(), j.end()) + L"\\\x8868";
  EXPECT_EQ(TarnDirectoryCreate((j + "\\\x95\\\\inner").c_str(), nullptr, nullptr, 0), 1);
  // Cut after its lead byte, a level would come out as U+30FB.
  EXPECT_FALSE(::RemoveDirectoryW((table.substr(0, table.size() - 1) + L"\x30FB").c_str()));
  EXPECT_TRUE(::RemoveDirectoryW((table + L"\\inner").c_str()) &&
              ::RemoveDirectoryW(table.c_str()) && ::RemoveDirectoryA(j.c_str()))
      << "the levels asked for and no others";
  ::SetThreadLocale(locale), _setmbcp(mbcp);
}

TEST(TempFiles, TmpThenTempThenTheSystemDirectoryAndNoNameOf260Bytes) {
  const ScratchDir dir;
  const std::string longForm = dir / "A long directory name", missing = dir / "missing";
  char shortName[MAX_PATH] = {}, system[MAX_PATH] = {}, buffer[600], text[] = "earlier";
  ::CreateDirectoryA(longForm.c_str(), nullptr);
  ::GetShortPathNameA(longForm.c_str(), shortName, MAX_PATH);
  ::GetSystemDirectoryA(system, MAX_PATH);
  const std::string shortForm = shortName, made = system + std::string("\\~Temp");
  const bool existed = Exists(made);
  // TMP and TEMP; the answer, then TMP and TEMP as the runtime sees them.
  const struct { std::string tmp, temp, text, after; } kRows[] = {
      {shortForm, missing, longForm, shortForm + " " + missing},
      {missing, "", missing, missing + " "}, {"", "", made, made + " " + made},
      {"", shortForm, longForm, shortForm + " " + shortForm}};
  for (const auto& row : kRows) {
    Put("TMP", row.tmp), Put("TEMP", row.temp);
    EXPECT_EQ(TarnTempDirectory(buffer, sizeof buffer), row.text.size());
    EXPECT_EQ(buffer + (" " + Variable("TMP") + " " + Variable("TEMP")), row.text + " " +
              row.after);
  }
  EXPECT_TRUE(Has(made, FILE_ATTRIBUTE_DIRECTORY));
  if (!existed) ::RemoveDirectoryA(made.c_str());
  // A temporary file name of 260 bytes is refused before the create, and the
  // out-parameters are not even cleared. This directory makes it 260 long:
  Put("TMP", dir.path());
  const size_t length = 260 - (TarnTempFilename(buffer, 300, nullptr, "tst") - dir.path().size());
  const std::string deep = dir / std::string(200, 'd') + "\\" +
                           std::string(length - dir.path().size() - 202, 'e');
  TarnDirectoryCreate(deep.c_str(), nullptr, nullptr, 0);
  Put("TMP", deep);
  EXPECT_EQ(TarnTempFilename(buffer, 300, deep.c_str(), "tst"), 260u);
  DWORD code = 1234;
  EXPECT_EQ(Probe(TarnCreateTempFile(deep.c_str(), "tst", GENERIC_WRITE, CREATE_NEW, 0, 0, &code,
                                     text, sizeof text)), 0);
  EXPECT_EQ(std::to_string(code) + text, "1234earlier");
  // The runtime leaves files of such names behind, beyond the narrow calls.
  const std::wstring wide = L"\\\\?\\" + std::wstring(deep.begin(), deep.end()) + L"\\";
  WIN32_FIND_DATAW found;
  const HANDLE search = ::FindFirstFileW((wide + L"*").c_str(), &found);
  for (BOOL more = search != kBad; more; more = ::FindNextFileW(search, &found))
    ::DeleteFileW((wide + found.cFileName).c_str());
  ::FindClose(search);
}

}  // namespace

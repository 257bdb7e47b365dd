// Resources copied out of resource_fixture.dll into memory, files and the
// registry; the program itself started as a child and waited for; the 16-bit
// form's program-information file under Windows versions of both families.
#include <gtest/gtest.h>
#include <stdlib.h>

#include <fstream>
#include <iterator>
#include <string>

#include "support/checks.h"
#include "support/wine_env.h"
#include "tarn/memory.h"
#include "tarn/process.h"

namespace {

using namespace tarn_test;
// An operation given the error out-parameters as CheckErrorRows passes them.
#define CALL(expression) [&](DWORD* c, char* t, DWORD n) -> long long { return expression; }

// "process_test child X": exits with X, or with its show state (1000 without
// STARTF_USESHOWWINDOW) plus 100 for a console of its own when X is "show";
// when X is "sleep", holds the mutex "tarn-sleeper" for 2 s first.
const int kChild = [] {
  if (__argc != 3 || strcmp(__argv[1], "child") != 0) return 0;
  STARTUPINFOA s;
  ::GetStartupInfoA(&s);
  if (!strcmp(__argv[2], "sleep")) ::CreateMutexA(nullptr, FALSE, "tarn-sleeper"), ::Sleep(2000);
  const int show = s.dwFlags & STARTF_USESHOWWINDOW ? s.wShowWindow : 1000;
  ::ExitProcess(strcmp(__argv[2], "show") ? atoi(__argv[2]) : show + !!::GetConsoleWindow() * 100);
}();

std::string Read(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return file ? std::string(std::istreambuf_iterator<char>(file), {}) : "(none)";
}
std::string Bytes(const void* bytes, const DWORD& size) {
  return bytes ? std::string(static_cast<const char*>(bytes), size) : "(none)";
}

// The registry text is written in TMP, where nothing of it may stay.
TEST(Resources, ToMemoryFilesAndTheRegistry) {
  ScratchDir dir, tmp;
  const std::string out = dir / "out", saved = getenv("TMP"), numbered = "numbered resource";
  const char kType[] = "TARNDATA", kKey[] = "Software\\Tarn\\Import", *temp = tmp.path().c_str();
  _putenv_s("TMP", temp);
  const HMODULE m = ::LoadLibraryA(BesideProgram("resource_fixture.dll").c_str());
  DWORD size = 0;
  const std::vector<ErrorRow> rows = {
      {"0x10065: 101", CALL(Bytes(TarnLoadFromResource(m, 0x10065, kType, &size, c, t, n), size)
                            == numbered), 1, 0},
      {"missing: size kept", CALL(TarnLoadFromResource(m, 105, kType, &(size = 7), c, t, n) ||
                                  size != 7), 0, ERROR_RESOURCE_NAME_NOT_FOUND},
      // No call fails: the thread's last error stays what it was.
      {"empty: size 0", CALL((::SetLastError(ERROR_INVALID_DATA), TarnLoadFromResource(
           m, 102, kType, &(size = 7), c, t, n)) || size), 0, ERROR_INVALID_DATA},
      {"no size pointer", CALL(!!TarnLoadFromResource(m, 101, kType, 0, c, t, n)), 0, 0},
      {"file replacing a longer one", CALL((WriteFile(out, std::string(99, 'x')),
           TarnCreateFileFromResource(out.c_str(), m, 0x10065, kType, c, t, n)) &&
           Read(out) == numbered), 1, 0},
      {"file in a missing directory", CALL(TarnCreateFileFromResource(
           (dir / "no\\out").c_str(), m, "NAMED", kType, c, t, n)), 0, ERROR_PATH_NOT_FOUND},
      {"registry text imported, its file gone", CALL((::RegDeleteKeyA(HKEY_CURRENT_USER, kKey),
           TarnRegisterFileFromResource(m, 0x10068, kType, c, t, n)) && ::RemoveDirectoryA(temp)
           && !::RegGetValueA(HKEY_CURRENT_USER, kKey, "Imported", RRF_RT_REG_SZ, 0, 0, 0) &&
           ::CreateDirectoryA(temp, 0)), 1, 0},
  };
  ExpectBalanced("every row", [&] { CheckErrorRows(rows); }, 2);
  _putenv_s("TMP", saved.c_str());
  ::RegDeleteKeyA(HKEY_CURRENT_USER, kKey);
}

// `result` when the process `handle`, left open, ends with code 9; closes it.
long long Ended(long long result, const HANDLE& handle) {
  DWORD code = 0;
  if (!::WaitForSingleObject(handle, 20000)) ::GetExitCodeProcess(handle, &code);
  return ::CloseHandle(handle), code == 9 ? result : -1;
}
// `result` once the mutex of a sleeping child shows that one runs.
long long Running(long long result) {
  for (int wait = 0; wait < 500; ++wait, ::Sleep(20))
    if (HANDLE mutex = ::OpenMutexA(SYNCHRONIZE, FALSE, "tarn-sleeper"))
      return ::CloseHandle(mutex), result;
  return -1;
}

// Command lines are literals, in pages that cannot be written.
TEST(ExecWait, StartsWaitsAndReports) {
  HANDLE h = nullptr;
  const std::vector<ErrorRow> rows = {
      {"the program the command line names", CALL(TarnWinExecWait32(
           nullptr, "process_test child 7", SW_HIDE, 0, 0, INFINITE, c, t, n)), 7, 0},
      {"exit code 0", CALL(TarnWinExecWait32(_pgmptr, "x child 0", 0, &h, 0, 9000, c, t, n)), 0, 0},
      {"16-bit form: show state, own console", CALL(TarnWinExecWait16(
           _pgmptr, "x child show", 2, 0, CREATE_NEW_CONSOLE, INFINITE, c, t, n)), 102, 0},
      {"not waited for", CALL(Ended(TarnWinExecWait32(_pgmptr, "x child 9", 0, &(h = 0), 0, 0,
                                                      c, t, n), h)), 1, 0},
      {"time-out: it runs on", CALL(Running(TarnWinExecWait32(_pgmptr, "x child sleep", 0, 0, 0,
                                                              100, c, t, n))), 258, 0},
      {"missing program", CALL(TarnWinExecWait32("T:\\none.exe", "none", 0, &h, 0, 0, c, t, n)),
       -1, ERROR_FILE_NOT_FOUND},
  };
  ExpectBalanced("every row", [&] { CheckErrorRows(rows); }, 1);
}

// Under the NT family no file is made. Under Windows 98 (the program reruns
// itself so, with "win98" on its command line) NAME.pif in the Windows
// directory is written from resource 103 (of the program) when missing, else
// kept.
TEST(ExecWait16, ProgramInformationFileOnTheWindows95FamilyOnly) {
  const bool win98 = ::GetVersion() >> 31;  // the Windows 95 family
  ASSERT_EQ(win98, strstr(::GetCommandLineA(), " win98") != nullptr) << "the version asked for";
  const std::string name = "tarn" + std::to_string(::GetCurrentProcessId());
  const std::string pif = "C:\\windows\\" + name + ".pif", program = "T:\\no\\" + name + ".exe";
  DWORD size = 0;
  const std::string resource = Bytes(TarnLoadFromResource(0, 103, "PIFFILE", &size, 0, 0, 0), size);
  ASSERT_EQ(size, 967u);
  for (const std::string before : {"(none)", "kept"}) {
    if (before == "kept") WriteFile(pif, before);
    EXPECT_EQ(TarnWinExecWait16(program.c_str(), 0, 0, 0, 0, 0, 0, 0, 0), -1);
    EXPECT_EQ(Read(pif), win98 && before == "(none)" ? resource : before);
  }
  ::DeleteFileA(pif.c_str());
  if (win98) return;
  EXPECT_EQ(RunUnderWindowsVersion("win98", "--gtest_filter=ExecWait16.* win98"), 0);
}

}  // namespace

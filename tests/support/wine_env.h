// Facts about the Wine prefix that scripts/wine-run prepares for the tests,
// and small helpers for tests that touch the file system.
#ifndef TARN_TESTS_WINE_ENV_H
#define TARN_TESTS_WINE_ENV_H

#include <windows.h>

#include <string>

namespace tarn_test {

// Drives mapped by scripts/wine-run (see its header).
constexpr char kFixedDrive = 'T';           // fixed, empty directory at start
constexpr char kSecondFixedDrive = 'U';     // fixed, another directory
constexpr char kRemovableDrive = 'R';       // removable, with a medium
constexpr char kEmptyRemovableDrive = 'Q';  // removable, no medium

// "T:\" for 'T'.
std::string Root(char drive);

// A fresh empty directory for one test (on `drive`), removed with its
// contents by the destructor.
class ScratchDir {
 public:
  explicit ScratchDir(char drive = kFixedDrive);
  ~ScratchDir();
  ScratchDir(const ScratchDir&) = delete;
  ScratchDir& operator=(const ScratchDir&) = delete;
  const std::string& path() const { return path_; }
  // path() + "\" + name
  std::string operator/(const std::string& name) const { return path_ + "\\" + name; }

 private:
  std::string path_;
};

// Removes a file or a directory tree; true if nothing is left.
bool RemoveTree(const std::string& path);

// Writes `bytes` to a new file (replacing an old one).
void WriteFile(const std::string& path, const std::string& bytes);

// `name` in the directory of the running program.
std::string BesideProgram(const std::string& name);

// Runs the running program again with `arguments` while Wine reports Windows
// `version` ("win98", "winxp64", ...) to it: the program's key under
// HKCU\Software\Wine\AppDefaults says so for that run. Returns system()'s
// result (0: the run passed).
int RunUnderWindowsVersion(const std::string& version, const std::string& arguments);

// The number of handles the process holds: GetProcessHandleCount where it
// answers; Wine's answers 0 whatever is open, so there the process's entries
// in the system's handle table (NtQuerySystemInformation) are counted.
DWORD HandleCount();

}  // namespace tarn_test

#endif  // TARN_TESTS_WINE_ENV_H

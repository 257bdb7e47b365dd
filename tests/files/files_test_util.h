// Helpers of the file tests: error out-parameters prefilled with junk (so
// that every test also sees them cleared on entry), and clean-up of paths
// longer than the narrow calls take.
#ifndef TARN_TESTS_FILES_FILES_TEST_UTIL_H
#define TARN_TESTS_FILES_FILES_TEST_UTIL_H

#include <gtest/gtest.h>
#include <windows.h>

#include <stdlib.h>
#include <wchar.h>

#include <fstream>
#include <iterator>
#include <string>

namespace files_test {

struct ErrorOut {
  DWORD code = 0xDEADBEEF;
  char text[512] = "junk from an earlier call";
  DWORD size = sizeof(text);
};

inline DWORD Attributes(const std::string& path) { return ::GetFileAttributesA(path.c_str()); }
inline bool Exists(const std::string& path) { return Attributes(path) != INVALID_FILE_ATTRIBUTES; }
inline bool Has(const std::string& path, DWORD bits) {
  return Exists(path) && (Attributes(path) & bits) == bits;
}
inline bool IsDirectory(const std::string& path) { return Has(path, FILE_ATTRIBUTE_DIRECTORY); }

// Code 0: nothing reported (code 0, empty text). Otherwise `code` and the
// platform's own text for it, looked up independently.
inline ::testing::AssertionResult Outcome(const ErrorOut& err, DWORD code) {
  char expected[512] = {};
  if (code)
    ::FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM, nullptr, code, 0x400, expected, sizeof(expected),
                     nullptr);
  if (err.code == code && (code == 0 || expected[0]) && std::string(expected) == err.text)
    return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << "code " << err.code << " (expected " << code
                                       << "), text \"" << err.text << "\" (expected \""
                                       << expected << "\")";
}

inline std::string ReadAll(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

// Sets (or, with "", removes) an environment variable for one scope.
class ScopedVariable {
 public:
  ScopedVariable(const char* name, const std::string& value)
      : name_(name), old_(getenv(name) ? getenv(name) : "") {
    _putenv((name_ + "=" + value).c_str());
  }
  ~ScopedVariable() { _putenv((name_ + "=" + old_).c_str()); }

 private:
  std::string name_;
  std::string old_;
};

// Removes a tree whose paths may pass MAX_PATH (narrow clean-up stops
// there): through the wide calls and the \\?\ prefix.
inline void RemoveLongTree(const std::wstring& full) {
  const DWORD attributes = ::GetFileAttributesW(full.c_str());
  ::SetFileAttributesW(full.c_str(), FILE_ATTRIBUTE_NORMAL);
  if (!(attributes & FILE_ATTRIBUTE_DIRECTORY) || attributes == INVALID_FILE_ATTRIBUTES) {
    ::DeleteFileW(full.c_str());
    return;
  }
  WIN32_FIND_DATAW data;
  HANDLE find = ::FindFirstFileW((full + L"\\*").c_str(), &data);
  for (BOOL more = find != INVALID_HANDLE_VALUE; more; more = ::FindNextFileW(find, &data))
    if (wcscmp(data.cFileName, L".") && wcscmp(data.cFileName, L".."))
      RemoveLongTree(full + L"\\" + data.cFileName);
  ::FindClose(find);
  ::RemoveDirectoryW(full.c_str());
}

// Runs RemoveLongTree on a scratch directory before the scratch directory's
// own (narrow) clean-up. Declare it after the ScratchDir.
struct LongTreeCleanup {
  std::string path;
  ~LongTreeCleanup() { RemoveLongTree(L"\\\\?\\" + std::wstring(path.begin(), path.end())); }
};

}  // namespace files_test

// The three trailing arguments of an operation, from an ErrorOut.
#define ERR(e) &(e).code, (e).text, (e).size

// op(args..., out-parameters full of junk) returns `result` and reports
// `code` (0: nothing).
#define EXPECT_REPORT(result, code, op, ...)                  \
  do {                                                        \
    files_test::ErrorOut err_;                                \
    EXPECT_EQ(op(__VA_ARGS__, ERR(err_)), result);            \
    EXPECT_TRUE(files_test::Outcome(err_, code)) << #op;      \
  } while (0)

#endif  // TARN_TESTS_FILES_FILES_TEST_UTIL_H

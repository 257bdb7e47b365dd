// Helpers of the file tests: error out-parameters prefilled with junk (so
// that every test also sees them cleared on entry), and clean-up of paths
// longer than the narrow calls take.
#ifndef TARN_TESTS_FILES_FILES_TEST_UTIL_H
#define TARN_TESTS_FILES_FILES_TEST_UTIL_H

#include <gtest/gtest.h>
#include <windows.h>

#include <string.h>

#include <string>

namespace files_test {

struct ErrorOut {
  DWORD code = 0xDEADBEEF;
  char text[512] = "junk from an earlier call";
  DWORD size = sizeof(text);
};

inline DWORD Attributes(const std::string& path) { return ::GetFileAttributesA(path.c_str()); }

inline bool Exists(const std::string& path) {
  return Attributes(path) != INVALID_FILE_ATTRIBUTES;
}

inline bool IsDirectory(const std::string& path) {
  const DWORD attributes = Attributes(path);
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY);
}

// The platform's own text for `code`, looked up independently.
inline std::string SystemText(DWORD code) {
  char text[512] = {};
  ::FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM, nullptr, code, 0x400, text, sizeof(text), nullptr);
  return text;
}

// Code 0 and an empty text: nothing reported (or a self-detected failure).
inline ::testing::AssertionResult NothingReported(const ErrorOut& err) {
  if (err.code == 0 && err.text[0] == '\0') return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << "code " << err.code << ", text \"" << err.text << "\"";
}

// `code` and the system's text for it.
inline ::testing::AssertionResult Reported(const ErrorOut& err, DWORD code) {
  const std::string expected = SystemText(code);
  if (err.code == code && !expected.empty() && expected == err.text)
    return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << "code " << err.code << " (expected " << code
                                       << "), text \"" << err.text << "\" (expected \""
                                       << expected << "\")";
}

// Removes a tree whose paths may pass MAX_PATH (narrow clean-up stops
// there): through the wide calls and the \\?\ prefix.
inline void RemoveLongTree(const std::wstring& path) {
  const std::wstring full = path.compare(0, 4, L"\\\\?\\") == 0 ? path : L"\\\\?\\" + path;
  const DWORD attributes = ::GetFileAttributesW(full.c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES) return;
  ::SetFileAttributesW(full.c_str(), FILE_ATTRIBUTE_NORMAL);
  if (!(attributes & FILE_ATTRIBUTE_DIRECTORY)) {
    ::DeleteFileW(full.c_str());
    return;
  }
  WIN32_FIND_DATAW data;
  HANDLE find = ::FindFirstFileW((full + L"\\*").c_str(), &data);
  if (find != INVALID_HANDLE_VALUE) {
    do {
      const std::wstring name = data.cFileName;
      if (name != L"." && name != L"..") RemoveLongTree(full + L"\\" + name);
    } while (::FindNextFileW(find, &data));
    ::FindClose(find);
  }
  ::RemoveDirectoryW(full.c_str());
}

inline void RemoveLongTree(const std::string& path) {
  RemoveLongTree(std::wstring(path.begin(), path.end()));
}

// Runs RemoveLongTree on a scratch directory before the scratch directory's
// own (narrow) clean-up. Declare it after the ScratchDir.
class LongTreeCleanup {
 public:
  explicit LongTreeCleanup(const std::string& path) : path_(path) {}
  ~LongTreeCleanup() { RemoveLongTree(path_); }
  LongTreeCleanup(const LongTreeCleanup&) = delete;
  LongTreeCleanup& operator=(const LongTreeCleanup&) = delete;

 private:
  std::string path_;
};

}  // namespace files_test

// The three trailing arguments of an operation, from an ErrorOut.
#define ERR(e) &(e).code, (e).text, (e).size

#endif  // TARN_TESTS_FILES_FILES_TEST_UTIL_H

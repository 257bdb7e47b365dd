#include "support/wine_env.h"

#include <gtest/gtest.h>

#include <atomic>

namespace tarn_test {

std::string Root(char drive) { return std::string(1, drive) + ":\\"; }

ScratchDir::ScratchDir(char drive) {
  static std::atomic<unsigned> counter{0};
  path_ = Root(drive) + "tarn-" + std::to_string(::GetCurrentProcessId()) + "-" +
          std::to_string(counter++);
  RemoveTree(path_);
  if (!::CreateDirectoryA(path_.c_str(), nullptr))
    ADD_FAILURE() << "cannot create " << path_ << ": " << ::GetLastError();
}

ScratchDir::~ScratchDir() { RemoveTree(path_); }

bool RemoveTree(const std::string& path) {
  const DWORD attributes = ::GetFileAttributesA(path.c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES) return true;
  ::SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_NORMAL);
  if (!(attributes & FILE_ATTRIBUTE_DIRECTORY) || (attributes & FILE_ATTRIBUTE_REPARSE_POINT))
    return ::DeleteFileA(path.c_str()) || ::RemoveDirectoryA(path.c_str());
  WIN32_FIND_DATAA data;
  HANDLE find = ::FindFirstFileA((path + "\\*").c_str(), &data);
  if (find != INVALID_HANDLE_VALUE) {
    do {
      const std::string name = data.cFileName;
      if (name != "." && name != "..") RemoveTree(path + "\\" + name);
    } while (::FindNextFileA(find, &data));
    ::FindClose(find);
  }
  return ::RemoveDirectoryA(path.c_str()) != 0;
}

void WriteFile(const std::string& path, const std::string& bytes) {
  HANDLE file = ::CreateFileA(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                              FILE_ATTRIBUTE_NORMAL, nullptr);
  ASSERT_NE(file, INVALID_HANDLE_VALUE) << path;
  DWORD written = 0;
  ::WriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
  ::CloseHandle(file);
  ASSERT_EQ(written, bytes.size());
}

DWORD HandleCount() {
  DWORD count = 0;
  ::GetProcessHandleCount(::GetCurrentProcess(), &count);
  return count;
}

}  // namespace tarn_test

#include "support/wine_env.h"

#include <gtest/gtest.h>

#include <stdlib.h>
#include <string.h>

#include <atomic>
#include <vector>

namespace tarn_test {
namespace {

constexpr ULONG kSystemExtendedHandleInformation = 64;
constexpr LONG kInfoLengthMismatch = static_cast<LONG>(0xC0000004);

// The platform's SYSTEM_HANDLE_TABLE_ENTRY_INFO_EX and its table.
struct HandleEntry {
  void* object;
  ULONG_PTR process_id;
  ULONG_PTR handle;
  ULONG access;
  USHORT creator_back_trace;
  USHORT object_type;
  ULONG attributes;
  ULONG reserved;
};
struct HandleTable {
  ULONG_PTR count;
  ULONG_PTR reserved;
  HandleEntry entries[1];
};

using QuerySystemInformation = LONG(WINAPI*)(ULONG, void*, ULONG, ULONG*);

}  // namespace

std::string Root(char drive) { return std::string(1, drive) + ":\\"; }

std::string BesideProgram(const std::string& name) {
  char path[MAX_PATH] = {};
  ::GetModuleFileNameA(nullptr, path, MAX_PATH);
  return std::string(path, strrchr(path, '\\') + 1) + name;
}

int RunUnderWindowsVersion(const std::string& version, const std::string& arguments) {
  char path[MAX_PATH] = {};
  ::GetModuleFileNameA(nullptr, path, MAX_PATH);
  const std::string key = std::string("Software\\Wine\\AppDefaults\\") + (strrchr(path, '\\') + 1);
  if (::RegSetKeyValueA(HKEY_CURRENT_USER, key.c_str(), "Version", REG_SZ, version.c_str(),
                        static_cast<DWORD>(version.size() + 1)) != ERROR_SUCCESS)
    return -1;
  const int result = system(("\"" + std::string(path) + "\" " + arguments).c_str());
  ::RegDeleteKeyA(HKEY_CURRENT_USER, key.c_str());
  return result;
}

ScratchDir::ScratchDir(char drive) {
  static std::atomic<unsigned> counter{0};
  // Wine reuses process ids: the tick count keeps a name from meeting what
  // an earlier, failed run may have left behind.
  path_ = Root(drive) + "tarn-" + std::to_string(::GetCurrentProcessId()) + "-" +
          std::to_string(::GetTickCount64()) + "-" + std::to_string(counter++);
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
  DWORD reported = 0;
  ::GetProcessHandleCount(::GetCurrentProcess(), &reported);
  if (reported != 0) return reported;
  const auto query = reinterpret_cast<QuerySystemInformation>(reinterpret_cast<void (*)()>(
      ::GetProcAddress(::GetModuleHandleA("ntdll.dll"), "NtQuerySystemInformation")));
  if (!query) {
    ADD_FAILURE() << "no way to count handles";
    return 0;
  }
  std::vector<char> buffer(1 << 16);
  LONG status;
  ULONG returned = 0;
  while ((status = query(kSystemExtendedHandleInformation, buffer.data(),
                         static_cast<ULONG>(buffer.size()), &returned)) == kInfoLengthMismatch)
    buffer.resize(buffer.size() * 2);
  if (status != 0) {
    ADD_FAILURE() << "handle table: status " << std::hex << status;
    return 0;
  }
  const auto* table = reinterpret_cast<const HandleTable*>(buffer.data());
  const ULONG_PTR self = ::GetCurrentProcessId();
  DWORD count = 0;
  for (ULONG_PTR i = 0; i < table->count; ++i)
    if (table->entries[i].process_id == self) ++count;
  return count;
}

}  // namespace tarn_test

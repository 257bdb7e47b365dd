#include "open_handles.h"

#include <gtest/gtest.h>

#include <vector>

#include "support/wine_env.h"

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

DWORD OpenHandles() {
  const DWORD reported = HandleCount();
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

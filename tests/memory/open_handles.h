// The number of handles this process holds, for checks that a failure or a
// Close leaves nothing open.
#ifndef TARN_TESTS_MEMORY_OPEN_HANDLES_H
#define TARN_TESTS_MEMORY_OPEN_HANDLES_H

#include <windows.h>

namespace tarn_test {

// GetProcessHandleCount (tarn_test::HandleCount) where it answers. Wine's
// answers 0 whatever is open, so then the process's entries in the system's
// handle table (NtQuerySystemInformation, SystemExtendedHandleInformation)
// are counted instead.
DWORD OpenHandles();

}  // namespace tarn_test

#endif  // TARN_TESTS_MEMORY_OPEN_HANDLES_H

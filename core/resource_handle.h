// The process-wide module instance through which the library loads its own
// resources (string table, "PIFFILE" 103). Declared publicly in tarn/core.h.
#ifndef TARN_CORE_RESOURCE_HANDLE_H
#define TARN_CORE_RESOURCE_HANDLE_H

#include <windows.h>

namespace tarn {
// Identifiers of the library's own string resources.
constexpr UINT kStringNotAvailable = 1;      // "Not Available"
constexpr UINT kStringEmptyFileMapping = 2;  // "Cannot create filemapping for files with size 0"
// The program-information file written for 16-bit programs.
constexpr WORD kPifResourceId = 103;
constexpr const char* kPifResourceType = "PIFFILE";
}  // namespace tarn

#endif  // TARN_CORE_RESOURCE_HANDLE_H

// Free disk space of the drive of a path, for the calling user: the 64-bit
// query looked up once per process, else the older cluster-based query.
#include <stdlib.h>
#include <string.h>

#include "core/error_out.h"
#include "core/platform.h"
#include "tarn/files.h"

namespace {

using GetDiskFreeSpaceExAFn = BOOL(WINAPI*)(LPCSTR, PULARGE_INTEGER, PULARGE_INTEGER,
                                            PULARGE_INTEGER);

// A once-only look-up. Written without a lock: two first calls at once store
// the same pointer and flag.
struct FreeSpaceLookup {
  bool done;
  GetDiskFreeSpaceExAFn function;
};

// One cache for TarnFreeDiskSpace and TarnFreeDiskSpaceMB, one for the forms
// without error out-parameters.
FreeSpaceLookup g_reportingLookup;
FreeSpaceLookup g_silentLookup;

constexpr unsigned kMebibyteShift = 20;

GetDiskFreeSpaceExAFn LookUp(FreeSpaceLookup& cache) {
  if (!cache.done) {
    // Kernel32 stays loaded for the life of the process.
    const HMODULE kernel = tarn::LoadModule("KERNEL32.DLL").release();
    if (kernel) {
      cache.function = tarn::FindFunction<GetDiskFreeSpaceExAFn>(kernel, "GetDiskFreeSpaceExA");
    }
    cache.done = true;
  }
  return cache.function;
}

enum class Query { kDone, kNoDrive, kFailed };

// The free bytes of the drive of `path` ("D:" from _splitpath_s). kNoDrive
// for a null or empty path, a null out pointer or a path without a drive
// letter (UNC, relative); kFailed when the platform's query failed, with its
// last error still the thread's.
Query FreeBytes(const char* path, ULARGE_INTEGER* freeBytes, FreeSpaceLookup& cache) {
  if (!path || !*path || !freeBytes) return Query::kNoDrive;
  char drive[4] = {};  // "D:", and room for the backslash of the older query
  if (_splitpath_s(path, drive, sizeof drive, nullptr, 0, nullptr, 0, nullptr, 0) != 0 ||
      !drive[0]) {
    return Query::kNoDrive;
  }
  if (GetDiskFreeSpaceExAFn getFreeSpaceEx = LookUp(cache)) {
    ULARGE_INTEGER total, totalFree;
    return getFreeSpaceEx(drive, freeBytes, &total, &totalFree) ? Query::kDone : Query::kFailed;
  }
  if (strlen(drive) == 2 && drive[1] == ':') strcat(drive, "\\");
  DWORD sectorsPerCluster = 0, bytesPerSector = 0, freeClusters = 0, totalClusters = 0;
  if (!tarn::Platform().GetDiskFreeSpaceA(drive, &sectorsPerCluster, &bytesPerSector,
                                          &freeClusters, &totalClusters)) {
    return Query::kFailed;
  }
  const DWORD clusterBytes = bytesPerSector * sectorsPerCluster;
  freeBytes->QuadPart = static_cast<ULONGLONG>(clusterBytes) * freeClusters;
  return Query::kDone;
}

DWORD WholeMebibytes(const ULARGE_INTEGER& bytes) {
  return static_cast<DWORD>(bytes.QuadPart >> kMebibyteShift);
}

}  // namespace

int TarnFreeDiskSpace(const char* pszPath, ULARGE_INTEGER* pFreeBytes, DWORD* pdwError,
                      char* pszError, DWORD cchError) {
  tarn::ErrorOut err(pdwError, pszError, cchError);
  switch (FreeBytes(pszPath, pFreeBytes, g_reportingLookup)) {
    case Query::kDone: return 1;
    case Query::kFailed: return err.Fail(::GetLastError(), 0);
    default: return 0;
  }
}

int TarnFreeDiskSpaceMB(const char* pszPath, DWORD* pdwFreeMB, DWORD* pdwError, char* pszError,
                        DWORD cchError) {
  tarn::ErrorOut err(pdwError, pszError, cchError);
  if (!pdwFreeMB) return 0;
  *pdwFreeMB = 0;
  ULARGE_INTEGER bytes;
  if (!TarnFreeDiskSpace(pszPath, &bytes, pdwError, pszError, cchError)) {
    // The thread's last error, whatever it is (also after a path without a
    // drive, which the byte form reports without a code).
    return err.Fail(::GetLastError(), 0);
  }
  *pdwFreeMB = WholeMebibytes(bytes);
  return 1;
}

extern "C" int TarnFreeDiskSpaceC(const char* pszPath, ULARGE_INTEGER* pFreeBytes) {
  return FreeBytes(pszPath, pFreeBytes, g_silentLookup) == Query::kDone;
}

extern "C" int TarnFreeDiskSpaceMBC(const char* pszPath, DWORD* pdwFreeMB) {
  if (!pdwFreeMB) return 0;
  *pdwFreeMB = 0;
  ULARGE_INTEGER bytes;
  if (!TarnFreeDiskSpaceC(pszPath, &bytes)) return 0;
  *pdwFreeMB = WholeMebibytes(bytes);
  return 1;
}

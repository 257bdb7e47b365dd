// How CTarnSystemVersionInfo reads a version record, apart from the query
// itself, so that every row of the table can be checked on records alone.
#ifndef TARN_VERSION_SYSTEM_VERSION_H
#define TARN_VERSION_SYSTEM_VERSION_H

#include <windows.h>

#include "tarn/version.h"

namespace tarn {

// The system named by the record's platform identifier, major and minor
// version; the first matching row of the table decides, and neither the
// product type nor the suite mask plays a part.
CTarnSystemVersionInfo::eOperatingSystem IdentifyOperatingSystem(
    const OSVERSIONINFOEXA& record) noexcept;

// 1 when the suite mask shows terminal services without the single-session
// limit (VER_SUITE_TERMINAL set, VER_SUITE_SINGLEUSERTS clear), else 0.
BOOL IsMultiUserTerminalServer(const OSVERSIONINFOEXA& record) noexcept;

}  // namespace tarn

#endif  // TARN_VERSION_SYSTEM_VERSION_H

// The narrow find record that TarnDirectoryFind hands out, filled from the
// wide record of the platform's search.
#ifndef TARN_FILES_FIND_RECORD_H
#define TARN_FILES_FIND_RECORD_H

#include <windows.h>

namespace tarn {

// Copies attributes, times and size as they are and both names through the
// narrow conversion, each cut to its field (259 and 13 bytes) and terminated.
// dwReserved0 and dwReserved1 of `narrow` are left as they were. May throw
// ATL::CAtlException from the conversion.
void CopyFindRecord(const WIN32_FIND_DATAW& wide, WIN32_FIND_DATAA* narrow);

}  // namespace tarn

#endif  // TARN_FILES_FIND_RECORD_H

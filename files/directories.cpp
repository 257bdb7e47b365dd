// Directories: looked up through the platform's search, created level by
// level along the path.
#include <mbstring.h>
#include <shlwapi.h>
#include <string.h>

#include <algorithm>
#include <memory>

#include "core/error_out.h"
#include "core/handle.h"
#include "core/text.h"
#include "files/find_record.h"
#include "tarn/files.h"

namespace {

bool IsEmpty(const char* text) { return !text || !*text; }

bool IsDirectory(const WIN32_FIND_DATAW& data) {
  return (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

// A private, writable copy of a path. Paths that fit MAX_PATH stay inside the
// object, so the common case allocates nothing.
class PathCopy {
 public:
  explicit PathCopy(const char* path) {
    const size_t size = strlen(path) + 1;
    if (size > sizeof(inline_)) {
      heap_.reset(new char[size]);
      data_ = heap_.get();
    }
    memcpy(data_, path, size);
  }
  PathCopy(const PathCopy&) = delete;
  PathCopy& operator=(const PathCopy&) = delete;

  char* get() noexcept { return data_; }

 private:
  char inline_[MAX_PATH];
  std::unique_ptr<char[]> heap_;
  char* data_ = inline_;
};

// The search behind TarnDirectoryFind and TarnDirectoryExist. The platform
// finds nothing for "D:\dir\", so one trailing backslash goes first. False
// (with the failure reported) when nothing was found; otherwise `data`
// describes the entry and `find` holds the open search.
bool SearchEntry(const char* path, WIN32_FIND_DATAW& data, tarn::UniqueFind& find,
                 const tarn::ErrorOut& err) {
  PathCopy copy(path);
  ::PathRemoveBackslashA(copy.get());
  find.reset(::FindFirstFileW(tarn::WideText(copy.get()), &data));
  if (!find) {
    err.Report(::GetLastError());
    return false;
  }
  return true;
}

void CopyName(char* field, size_t fieldSize, const wchar_t* name) {
  const tarn::NarrowText narrow(name);
  const size_t length = std::min(strlen(narrow), fieldSize - 1);
  memcpy(field, narrow.get(), length);
  field[length] = '\0';
}

}  // namespace

namespace tarn {

void CopyFindRecord(const WIN32_FIND_DATAW& wide, WIN32_FIND_DATAA* narrow) {
  narrow->dwFileAttributes = wide.dwFileAttributes;
  narrow->ftCreationTime = wide.ftCreationTime;
  narrow->ftLastAccessTime = wide.ftLastAccessTime;
  narrow->ftLastWriteTime = wide.ftLastWriteTime;
  narrow->nFileSizeHigh = wide.nFileSizeHigh;
  narrow->nFileSizeLow = wide.nFileSizeLow;
  CopyName(narrow->cFileName, sizeof(narrow->cFileName), wide.cFileName);
  CopyName(narrow->cAlternateFileName, sizeof(narrow->cAlternateFileName),
           wide.cAlternateFileName);
}

}  // namespace tarn

HANDLE TarnDirectoryFind(const char* pszPath, WIN32_FIND_DATAA* pFindData, DWORD* pdwError,
                         char* pszError, DWORD cchError) {
  tarn::ErrorOut err(pdwError, pszError, cchError);
  if (IsEmpty(pszPath) || !pFindData) return INVALID_HANDLE_VALUE;
  WIN32_FIND_DATAW data;
  tarn::UniqueFind find;
  if (!SearchEntry(pszPath, data, find, err)) return INVALID_HANDLE_VALUE;
  tarn::CopyFindRecord(data, pFindData);
  // A file: the record describes it, but there is no directory to hand out.
  if (!IsDirectory(data)) return INVALID_HANDLE_VALUE;
  return find.release();
}

int TarnDirectoryExist(const char* pszPath, DWORD* pdwError, char* pszError, DWORD cchError) {
  tarn::ErrorOut err(pdwError, pszError, cchError);
  if (IsEmpty(pszPath)) return 0;
  // No narrow record is needed here, so the names are not converted.
  WIN32_FIND_DATAW data;
  tarn::UniqueFind find;
  return SearchEntry(pszPath, data, find, err) && IsDirectory(data) ? 1 : 0;
}

int TarnDirectoryCreateAttr(const char* pszPath, DWORD dwSet, DWORD dwClear, DWORD* pdwError,
                            char* pszError, DWORD cchError) {
  tarn::ErrorOut err(pdwError, pszError, cchError);
  if (!pszPath) return 0;
  const size_t length = strlen(pszPath);
  if (length < 2) return 0;
  if (length <= 3 && strchr(pszPath, ':')) return 1;  // a bare drive

  PathCopy copy(pszPath);
  unsigned char* const text = reinterpret_cast<unsigned char*>(copy.get());
  // By characters: a backslash byte inside a double-byte character does not
  // separate anything.
  unsigned char* const first = _mbschr(text, '\\');
  if (!first) return 0;
  // Cut at every later backslash. The copy then reads as the first level;
  // putting a cut's backslash back extends it to the next level. What comes
  // before the first backslash (a drive, or nothing) is never a level.
  for (unsigned char* p = _mbschr(first + 1, '\\'); p; p = _mbschr(p + 1, '\\')) *p = '\0';

  char* const level = copy.get();
  for (;;) {
    const size_t end = strlen(level);
    const bool last = end == length;
    if (!::CreateDirectoryW(tarn::WideText(level), nullptr)) {
      // Levels above the last may fail for any reason (\, \\server, a
      // directory that exists); the last one only counts when it is missing.
      const DWORD error = ::GetLastError();
      if (last && error != ERROR_ALREADY_EXISTS) return err.Fail(error, 0);
    } else if (dwSet || dwClear) {
      // Only directories this call created change attributes.
      ::SetFileAttributesA(level, (::GetFileAttributesA(level) & ~dwClear) | dwSet);
    }
    if (last) return 1;
    level[end] = '\\';
  }
}

int TarnDirectoryCreate(const char* pszPath, DWORD* pdwError, char* pszError, DWORD cchError) {
  return TarnDirectoryCreateAttr(pszPath, 0, 0, pdwError, pszError, cchError);
}

// tarn temp, tarn folder CSIDL..., tarn dir DIR...: temporary files, known
// folders and directory listings.
#include <windows.h>

#include <shlobj.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <string>

#include "commands.h"
#include "tarn/files.h"

namespace {

struct KnownFolder {
  const char* name;
  int csidl;
};

const KnownFolder kFolders[] = {
    {"desktop", CSIDL_DESKTOPDIRECTORY},  {"documents", CSIDL_PERSONAL},
    {"appdata", CSIDL_APPDATA},           {"localappdata", CSIDL_LOCAL_APPDATA},
    {"commonappdata", CSIDL_COMMON_APPDATA}, {"programfiles", CSIDL_PROGRAM_FILES},
    {"windows", CSIDL_WINDOWS},           {"system", CSIDL_SYSTEM},
    {"fonts", CSIDL_FONTS},               {"startup", CSIDL_STARTUP},
};

// A folder name from the table, or a CSIDL number (decimal or 0x...).
bool ParseFolder(const char* text, int* csidl) {
  for (const KnownFolder& f : kFolders) {
    if (_stricmp(text, f.name) == 0) {
      *csidl = f.csidl;
      return true;
    }
  }
  char* end = nullptr;
  const long value = strtol(text, &end, 0);
  if (!*text || *end) return false;
  *csidl = static_cast<int>(value);
  return true;
}

std::string Attributes(DWORD attributes) {
  std::string text;
  text += (attributes & FILE_ATTRIBUTE_DIRECTORY) ? 'd' : '-';
  text += (attributes & FILE_ATTRIBUTE_READONLY) ? 'r' : '-';
  text += (attributes & FILE_ATTRIBUTE_HIDDEN) ? 'h' : '-';
  text += (attributes & FILE_ATTRIBUTE_SYSTEM) ? 's' : '-';
  text += (attributes & FILE_ATTRIBUTE_ARCHIVE) ? 'a' : '-';
  return text;
}

void PrintEntry(const WIN32_FIND_DATAA& entry) {
  SYSTEMTIME time = {};
  FILETIME local;
  ::FileTimeToLocalFileTime(&entry.ftLastWriteTime, &local);
  ::FileTimeToSystemTime(&local, &time);
  const unsigned long long size =
      (static_cast<unsigned long long>(entry.nFileSizeHigh) << 32) | entry.nFileSizeLow;
  printf("  %s %04u-%02u-%02u %02u:%02u %12llu  %s", Attributes(entry.dwFileAttributes).c_str(),
         time.wYear, time.wMonth, time.wDay, time.wHour, time.wMinute, size, entry.cFileName);
  if (entry.cAlternateFileName[0]) printf("  (%s)", entry.cAlternateFileName);
  printf("\n");
}

// Lists one directory: TarnDirectoryFind on DIR\* hands back the search when
// its first entry is a directory ("." usually); the rest follows with
// FindNextFileA.
int ListDirectory(const char* dir) {
  std::string pattern = dir;
  if (!pattern.empty() && pattern.back() != '\\' && pattern.back() != ':') pattern += '\\';
  pattern += '*';
  DWORD code = 0;
  char text[256] = "";
  WIN32_FIND_DATAA entry;
  HANDLE find = TarnDirectoryFind(pattern.c_str(), &entry, &code, text, sizeof(text));
  printf("%s\n", dir);
  if (find == INVALID_HANDLE_VALUE) {
    if (code) {
      fprintf(stderr, "%s: error %lu: %s", dir, code, text);
      return 1;
    }
    // The first entry is a file: its record is there, but no search.
    PrintEntry(entry);
    printf("  (a file came first: no search to continue)\n");
    return 0;
  }
  int count = 0;
  do {
    PrintEntry(entry);
    ++count;
  } while (::FindNextFileA(find, &entry));
  ::FindClose(find);
  printf("  %d entries\n", count);
  return 0;
}

}  // namespace

int CmdTemp(int argc, char** argv) {
  char buffer[MAX_PATH + 1];
  const DWORD length = TarnTempDirectory(buffer, sizeof(buffer));
  if (length == 0) {
    fprintf(stderr, "no temporary directory\n");
    return 1;
  }
  printf("temporary directory  %s%s\n", buffer, length >= sizeof(buffer) ? " (cut)" : "");
  const char* prefix = argc > 0 ? argv[0] : "trn";
  if (TarnTempFilename(buffer, sizeof(buffer), nullptr, prefix))
    printf("a fresh name         %s\n", buffer);
  if (TarnGetModulePath(nullptr, buffer, sizeof(buffer)))
    printf("tarn.exe is in       %s\n", buffer);
  if (TarnGetModulePath(::GetModuleHandleA("tarn.dll"), buffer, sizeof(buffer)))
    printf("tarn.dll is in       %s\n", buffer);
  return 0;
}

int CmdFolder(int argc, char** argv) {
  if (argc < 1) {
    fprintf(stderr, "usage: tarn folder NAME|CSIDL...\n  names:");
    for (const KnownFolder& f : kFolders) fprintf(stderr, " %s", f.name);
    fprintf(stderr, "\n");
    return 2;
  }
  int failures = 0;
  for (int i = 0; i < argc; ++i) {
    int csidl = 0;
    char path[MAX_PATH];
    if (!ParseFolder(argv[i], &csidl)) {
      fprintf(stderr, "%s: not a folder name or number\n", argv[i]);
      ++failures;
    } else if (TarnGetFolderPath(csidl, path, sizeof(path))) {
      printf("%-14s %s\n", argv[i], path);
    } else {
      printf("%-14s (none)\n", argv[i]);
      ++failures;
    }
  }
  return failures ? 1 : 0;
}

int CmdDir(int argc, char** argv) {
  if (argc < 1) {
    fprintf(stderr, "usage: tarn dir DIR...\n");
    return 2;
  }
  int failures = 0;
  for (int i = 0; i < argc; ++i) failures += ListDirectory(argv[i]);
  return failures ? 1 : 0;
}

// tarn temp, tarn folder, tarn dir: temporary files, known folders and
// directory listings.
#include <windows.h>

#include <shlobj.h>

#include "commands.h"
#include "tarn/files.h"

namespace tarn_tool {
namespace {

const std::map<std::string, int> kFolders = {
    {"desktop", CSIDL_DESKTOPDIRECTORY}, {"documents", CSIDL_PERSONAL},
    {"appdata", CSIDL_APPDATA},          {"localappdata", CSIDL_LOCAL_APPDATA},
    {"commonappdata", CSIDL_COMMON_APPDATA}, {"programfiles", CSIDL_PROGRAM_FILES},
    {"windows", CSIDL_WINDOWS},          {"system", CSIDL_SYSTEM},
    {"fonts", CSIDL_FONTS},              {"startup", CSIDL_STARTUP},
};

Json Optional(bool present, const char* text) { return present ? Json(text) : Json(); }

// --- tarn temp [PREFIX] ------------------------------------------------------

struct TempArguments {
  std::string prefix = "trn";
  bool json = false;
};

int RunTemp(const TempArguments& args) {
  char directory[MAX_PATH + 1];
  const DWORD length = TarnTempDirectory(directory, sizeof directory);
  if (length == 0 || length >= sizeof directory)
    return Fail("TMP", length ? "the temporary directory's path is too long"
                              : "no temporary directory");
  char name[MAX_PATH + 1], exe[MAX_PATH], dll[MAX_PATH];
  const bool named = TarnTempFilename(name, sizeof name, nullptr, args.prefix.c_str()) != 0;
  const bool exe_found = TarnGetModulePath(nullptr, exe, sizeof exe) != 0;
  const bool dll_found = TarnGetModulePath(::GetModuleHandleA("tarn.dll"), dll, sizeof dll) != 0;
  PrintRecords(Json::array({{{"directory", directory},
                             {"freshName", Optional(named, name)},
                             {"exeDirectory", Optional(exe_found, exe)},
                             {"dllDirectory", Optional(dll_found, dll)}}}),
               args.json, Layout::kLines);
  return 0;
}

// --- tarn folder NAME|CSIDL... -----------------------------------------------

struct FolderArguments {
  std::vector<int> folders;  // CSIDL numbers (names are replaced by theirs)
  bool json = false;
};

int RunFolder(const FolderArguments& args) {
  Json records = Json::array();
  int result = 0;
  for (const int csidl : args.folders) {
    char path[MAX_PATH];
    if (TarnGetFolderPath(csidl, path, sizeof path))
      records.push_back({{"csidl", csidl}, {"path", path}});
    else
      result = Fail(std::to_string(csidl), "the system has no path for this folder");
  }
  PrintRecords(records, args.json, Layout::kRow);
  return result;
}

// --- tarn dir DIR... -----------------------------------------------------------

std::string Attributes(DWORD attributes) {
  std::string text;
  text += (attributes & FILE_ATTRIBUTE_DIRECTORY) ? 'd' : '-';
  text += (attributes & FILE_ATTRIBUTE_READONLY) ? 'r' : '-';
  text += (attributes & FILE_ATTRIBUTE_HIDDEN) ? 'h' : '-';
  text += (attributes & FILE_ATTRIBUTE_SYSTEM) ? 's' : '-';
  text += (attributes & FILE_ATTRIBUTE_ARCHIVE) ? 'a' : '-';
  return text;
}

Json Entry(const std::string& directory, const WIN32_FIND_DATAA& entry) {
  SYSTEMTIME time = {};
  FILETIME local;
  ::FileTimeToLocalFileTime(&entry.ftLastWriteTime, &local);
  ::FileTimeToSystemTime(&local, &time);
  char written[32];
  snprintf(written, sizeof written, "%04u-%02u-%02uT%02u:%02u:%02u", time.wYear, time.wMonth,
           time.wDay, time.wHour, time.wMinute, time.wSecond);
  const unsigned long long size =
      (static_cast<unsigned long long>(entry.nFileSizeHigh) << 32) | entry.nFileSizeLow;
  return {{"directory", directory}, {"attributes", Attributes(entry.dwFileAttributes)},
          {"written", written},     {"size", size},
          {"name", entry.cFileName}, {"shortName", entry.cAlternateFileName}};
}

struct DirArguments {
  std::vector<std::string> directories;
  bool json = false;
};

// Every entry of each directory (a drive's root has no "." and ".."), as the
// platform's search of DIR\* gives them.
int RunDir(const DirArguments& args) {
  Json records = Json::array();
  int result = 0;
  for (const std::string& directory : args.directories) {
    const DWORD attributes = ::GetFileAttributesA(directory.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) {
      result = Fail(directory, SystemText(::GetLastError()));
      continue;
    }
    if (!(attributes & FILE_ATTRIBUTE_DIRECTORY)) {
      result = Fail(directory, "not a directory");
      continue;
    }
    std::string pattern = directory;
    if (pattern.back() != '\\' && pattern.back() != '/' && pattern.back() != ':') pattern += '\\';
    pattern += '*';
    WIN32_FIND_DATAA entry;
    const HANDLE find = ::FindFirstFileA(pattern.c_str(), &entry);
    if (find == INVALID_HANDLE_VALUE) continue;  // an empty root has no entry at all
    do records.push_back(Entry(directory, entry));
    while (::FindNextFileA(find, &entry));
    ::FindClose(find);
  }
  PrintRecords(records, args.json, Layout::kRow);
  return result;
}

}  // namespace

Runner DeclareTemp(CLI::App& command) {
  auto args = std::make_shared<TempArguments>();
  command.add_option("prefix", args->prefix, "prefix of the fresh name")->capture_default_str();
  AddJsonFlag(command, args->json);
  return [args] { return RunTemp(*args); };
}

Runner DeclareFolder(CLI::App& command) {
  auto args = std::make_shared<FolderArguments>();
  command.add_option("folder", args->folders, "appdata, documents, fonts, ... or a CSIDL number")
      ->required()
      ->type_name("NAME|CSIDL")
      ->transform(CLI::Transformer(kFolders, CLI::ignore_case).description(""))
      ->check(CLI::Range(0, 0xFF));
  AddJsonFlag(command, args->json);
  return [args] { return RunFolder(*args); };
}

Runner DeclareDir(CLI::App& command) {
  auto args = std::make_shared<DirArguments>();
  command.add_option("directory", args->directories, "directories to list")->required();
  AddJsonFlag(command, args->json);
  return [args] { return RunDir(*args); };
}

}  // namespace tarn_tool

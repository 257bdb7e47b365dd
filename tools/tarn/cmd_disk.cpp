// tarn link, tarn df: directory links (junctions) and free disk space.
#include <windows.h>

#include "commands.h"
#include "tarn/files.h"

namespace tarn_tool {
namespace {

// --- tarn link LINK TARGET [--try] -------------------------------------------

struct LinkArguments {
  std::string link, target;
  bool trial = false;
};

// The link's full path: the library wants one with a backslash, and a
// user's "newlink" means the one in the current directory.
std::string FullPath(const std::string& path) {
  char full[MAX_PATH];
  const DWORD length = ::GetFullPathNameA(path.c_str(), MAX_PATH, full, nullptr);
  return length && length < MAX_PATH ? full : path;
}

int RunLink(const LinkArguments& args) {
  if (!TarnMakeDirectoryLink(FullPath(args.link).c_str(), args.target.c_str(), args.trial)) {
    return Fail(args.link, "no link to " + args.target +
                               " can be made here: the volume has no reparse points, the "
                               "directory is a link already or not empty, or a path is unusable");
  }
  printf("%s -> %s%s\n", args.link.c_str(), args.target.c_str(),
         args.trial ? " (can be made; nothing changed)" : "");
  return 0;
}

// --- tarn df PATH... -------------------------------------------------------------

struct DfArguments {
  std::vector<std::string> paths;
  bool json = false;
};

int RunDf(const DfArguments& args) {
  Json records = Json::array();
  int result = 0;
  for (const std::string& path : args.paths) {
    ULARGE_INTEGER bytes = {};
    DWORD code = 0;
    char text[512];
    if (!TarnFreeDiskSpace(path.c_str(), &bytes, &code, text, sizeof text)) {
      result = Fail(path, code ? text : "no drive letter in the path");
      continue;
    }
    records.push_back({{"path", path}, {"bytes", bytes.QuadPart},
                       {"mebibytes", bytes.QuadPart >> 20}});
  }
  PrintRecords(records, args.json, Layout::kRow);
  return result;
}

}  // namespace

Runner DeclareLink(CLI::App& command) {
  auto args = std::make_shared<LinkArguments>();
  command.add_option("link", args->link, "the directory that becomes the link")->required();
  command.add_option("target", args->target, "the directory it leads to")->required();
  command.add_flag("--try", args->trial, "check every step but make no link");
  return [args] { return RunLink(*args); };
}

Runner DeclareDf(CLI::App& command) {
  auto args = std::make_shared<DfArguments>();
  command.add_option("path", args->paths, "paths whose drive is asked about")->required();
  AddJsonFlag(command, args->json);
  return [args] { return RunDf(*args); };
}

}  // namespace tarn_tool

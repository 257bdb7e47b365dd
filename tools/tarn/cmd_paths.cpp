// tarn path PATH...: the answers of the path rules for each path, the later
// ones compared with the first.
#include <windows.h>

#include "commands.h"
#include "tarn/files.h"

namespace tarn_tool {
namespace {

std::string FileNamePart(const std::string& path) {
  const size_t slash = path.find_last_of("\\/:");
  return slash == std::string::npos ? path : path.substr(slash + 1);
}

struct Arguments {
  std::vector<std::string> paths;
  bool json = false;
};

int Run(const Arguments& args) {
  Json records = Json::array();
  const std::string& first = args.paths.front();
  for (const std::string& path : args.paths) {
    int removable = 0;
    const int valid = TarnPathIsValid(path.c_str(), 1, &removable);
    const std::string name = FileNamePart(path);
    Json record = {{"path", path},
                   {"valid", valid != 0},
                   {"removable", removable != 0},
                   {"name", name},
                   {"validName", TarnFilenameIsValid(name.c_str()) != 0},
                   {"reservedName", TarnIsReservedDeviceName(name.c_str()) != 0}};
    if (&path != &first) {
      record["sameDrive"] = TarnDriveIsEqual(first.c_str(), path.c_str()) != 0;
      record["samePath"] = TarnPathIsEqual(first.c_str(), path.c_str()) != 0;
      record["sameName"] = TarnFilenameIsEqual(first.c_str(), path.c_str()) != 0;
    }
    records.push_back(record);
  }
  PrintRecords(records, args.json, Layout::kLines);
  return 0;
}

}  // namespace

Runner DeclarePath(CLI::App& command) {
  auto args = std::make_shared<Arguments>();
  command.add_option("path", args->paths, "paths; the second and later compared with the first")
      ->required();
  AddJsonFlag(command, args->json);
  return [args] { return Run(*args); };
}

}  // namespace tarn_tool

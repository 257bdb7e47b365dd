// tarn path PATH...: the answers of the path rules for each path.
#include <stdio.h>

#include <string>

#include "commands.h"
#include "tarn/files.h"

namespace {

std::string FileNamePart(const char* path) {
  std::string s(path);
  const size_t slash = s.find_last_of("\\/:");
  return slash == std::string::npos ? s : s.substr(slash + 1);
}

}  // namespace

int CmdPaths(int argc, char** argv) {
  if (argc < 1) {
    fprintf(stderr, "usage: tarn path PATH...\n");
    return 2;
  }
  for (int i = 0; i < argc; ++i) {
    const char* path = argv[i];
    int removable = 0;
    const int valid = TarnPathIsValid(path, 1, &removable);
    const std::string name = FileNamePart(path);
    printf("%s\n", path);
    printf("  valid path          %d%s\n", valid, removable ? " (removable drive)" : "");
    printf("  valid file name     %d (%s)\n", TarnFilenameIsValid(name.c_str()), name.c_str());
    printf("  reserved name       %d\n", TarnIsReservedDeviceName(name.c_str()));
    if (i > 0) {
      printf("  same drive as %s  %d\n", argv[0], TarnDriveIsEqual(argv[0], path));
      printf("  same path as %s   %d\n", argv[0], TarnPathIsEqual(argv[0], path));
    }
  }
  return 0;
}

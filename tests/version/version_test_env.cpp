#include "version/version_test_env.h"

#include <string.h>

namespace version_test {

std::string BesideProgram(const char* name) {
  char path[MAX_PATH] = {};
  ::GetModuleFileNameA(nullptr, path, MAX_PATH);
  char* slash = strrchr(path, '\\');
  std::string result(path, slash ? slash + 1 : path);
  return result + name;
}

}  // namespace version_test

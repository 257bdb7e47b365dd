// main() of the internal test programs: the library's objects and resources
// are linked into the program itself, so its resource handle is the program.
#include <gtest/gtest.h>

#ifdef _WIN32
#include "tarn/core.h"
#endif

int main(int argc, char** argv) {
#ifdef _WIN32
  TarnSetResourceHandle(::GetModuleHandleW(nullptr));
#endif
  ::testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}

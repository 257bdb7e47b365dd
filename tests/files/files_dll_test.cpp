// Through tarn.dll itself: the library finds its own directory.
#include <gtest/gtest.h>
#include <string.h>

#include <string>

#include "tarn/files.h"

TEST(GetModulePathOfTheLibrary, DirectoryItWasLoadedFrom) {
  const HMODULE library = ::GetModuleHandleA("tarn.dll");
  char full[MAX_PATH] = {}, buffer[MAX_PATH];
  ASSERT_GT(::GetModuleFileNameA(library, full, MAX_PATH), 0u);
  EXPECT_EQ(TarnGetModulePath(library, buffer, sizeof buffer), 1);
  EXPECT_EQ(buffer, std::string(full, strrchr(full, '\\') - full));
}

// Through tarn.dll itself: the library finds its own directory.
#include <gtest/gtest.h>
#include <windows.h>

#include <string.h>

#include <string>

#include "tarn/files.h"

namespace {

TEST(GetModulePathOfTheLibrary, DirectoryItWasLoadedFrom) {
  const HMODULE library = ::GetModuleHandleA("tarn.dll");
  ASSERT_NE(library, nullptr);
  char full[MAX_PATH] = {};
  ASSERT_GT(::GetModuleFileNameA(library, full, MAX_PATH), 0u);
  char buffer[MAX_PATH];
  EXPECT_EQ(TarnGetModulePath(library, buffer, sizeof(buffer)), 1);
  EXPECT_EQ(buffer, std::string(full, strrchr(full, '\\') - full));
}

}  // namespace

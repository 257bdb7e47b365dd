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
  const std::string expected(full, strrchr(full, '\\') - full);
  char buffer[MAX_PATH];
  EXPECT_EQ(TarnGetModulePath(library, buffer, sizeof(buffer)), 1);
  EXPECT_EQ(buffer, expected);
  EXPECT_NE(buffer[strlen(buffer) - 1], '\\');

  // Beside this program, where the loader found it.
  char program[MAX_PATH] = {};
  EXPECT_EQ(TarnGetModulePath(nullptr, program, sizeof(program)), 1);
  EXPECT_EQ(_stricmp(program, buffer), 0) << program;
}

}  // namespace

// The not-available text is loaded once per process, from the module the
// resource handle names at the first construction, even when several threads
// construct their first objects at the same moment. Alone in its program:
// no object may be constructed before this test runs.
#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "tarn/core.h"
#include "tarn/version.h"
#include "version/version_test_env.h"

namespace {

struct NotAvailable : CTarnFileVersionInfo {
  static std::string Text() { return s_szNotAvailable; }
};

// What a closed object gives out for a value it cannot have.
std::string GivenOut() {
  CTarnFileVersionInfo info;
  char text[64] = {};
  info.GetCompanyName(text, sizeof text);
  return text;
}

TEST(NotAvailableText, LoadedOnceFromTheFirstResourceHandleByConcurrentFirstObjects) {
  EXPECT_EQ(NotAvailable::Text(), "") << "empty until the first construction";
  HMODULE fixture = ::LoadLibraryA(version_test::FixtureModule().c_str());
  ASSERT_NE(fixture, nullptr);
  TarnSetResourceHandle(fixture);

  HANDLE start = ::CreateEventA(nullptr, TRUE, FALSE, nullptr);
  std::vector<std::string> seen(8);
  std::vector<std::thread> threads;
  for (std::string& text : seen)
    threads.emplace_back([&] {
      ::WaitForSingleObject(start, INFINITE);
      text = GivenOut();
    });
  ::SetEvent(start);
  for (std::thread& thread : threads) thread.join();
  ::CloseHandle(start);
  for (const std::string& text : seen) EXPECT_EQ(text, "Fixture: no value");

  // Neither later objects nor Initialize load it again from another module.
  TarnSetResourceHandle(::GetModuleHandleA(nullptr));
  CTarnFileVersionInfo::Initialize();
  EXPECT_EQ(GivenOut(), "Fixture: no value");
  ::FreeLibrary(fixture);
}

}  // namespace

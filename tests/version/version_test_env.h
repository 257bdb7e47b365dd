// Where the version tests find their fixture modules and helper programs:
// beside the test program itself.
#ifndef TARN_TESTS_VERSION_TEST_ENV_H
#define TARN_TESTS_VERSION_TEST_ENV_H

#include <windows.h>

#include <string>

namespace version_test {

// The full path of `name` in the directory of the running program.
std::string BesideProgram(const char* name);

// The fixture modules built with the tests.
inline std::string FixtureModule() { return BesideProgram("version_fixture.dll"); }
inline std::string NoTranslationModule() { return BesideProgram("version_notrans.dll"); }

}  // namespace version_test

#endif  // TARN_TESTS_VERSION_TEST_ENV_H

// No file operation keeps a handle it does not hand to the caller, on its
// way to success or to failure.
#include <gtest/gtest.h>

#include <shlobj.h>
#include <stdlib.h>

#include <string>
#include <vector>

#include "files/files_test_util.h"
#include "support/wine_env.h"
#include "tarn/files.h"

namespace {

using files_test::ErrorOut;
using tarn_test::ScratchDir;

// One round of every operation, each way out taken at least once.
void EveryOperation(const ScratchDir& t, const ScratchDir& u) {
  ErrorOut err;
  const std::string file = t / "file.txt";
  const std::string missing = t / "missing";

  HANDLE handle = TarnFileCreate(file.c_str(), GENERIC_READ | GENERIC_WRITE, CREATE_ALWAYS, 0, 0,
                                 ERR(err));
  char buffer[64];
  TarnFileWrite(handle, "0123456789", 10, ERR(err));
  TarnFileSeek(handle, 5, ERR(err));
  TarnFileRead(handle, buffer, 10, ERR(err));  // short
  TarnFileSeek(handle, -1, ERR(err));           // fails
  TarnFileSeekEnd(handle, ERR(err));
  TarnFileSize(handle, ERR(err));
  ::CloseHandle(handle);
  TarnFileOpen(missing.c_str(), GENERIC_READ, OPEN_EXISTING, 0, 0, ERR(err));
  TarnFileSize(file.c_str(), ERR(err));
  TarnFileSize(missing.c_str(), ERR(err));
  TarnFileFind(file.c_str(), ERR(err));
  TarnFileFind(t.path().c_str(), ERR(err));  // a directory
  TarnFileFind(missing.c_str(), ERR(err));
  TarnFileHide(file.c_str(), ERR(err));
  TarnFileHide(missing.c_str(), ERR(err));
  ::SetFileAttributesA(file.c_str(), FILE_ATTRIBUTE_NORMAL);

  TarnFileMove(file.c_str(), (t / "moved").c_str(), ERR(err));
  tarn_test::WriteFile(file, "again");
  TarnFileMove(file.c_str(), (t / "moved").c_str(), ERR(err));  // exists
  TarnFileMove(file.c_str(), (u / "moved").c_str(), ERR(err));  // across drives
  TarnFileMove((u / "moved").c_str(), (t / "moved").c_str(), ERR(err));
  TarnFileMove(missing.c_str(), (t / "x").c_str(), ERR(err));
  TarnFileMove(t.path().c_str(), (t / "x").c_str(), ERR(err));  // a directory
  ::DeleteFileA((t / "moved").c_str());
  ::DeleteFileA((u / "moved").c_str());

  WIN32_FIND_DATAA record;
  ::FindClose(TarnDirectoryFind(t.path().c_str(), &record, ERR(err)));
  TarnDirectoryFind((t / "sub\\file").c_str(), &record, ERR(err));  // a file after creation
  TarnDirectoryFind(missing.c_str(), &record, ERR(err));
  TarnDirectoryExist(t.path().c_str(), ERR(err));
  TarnDirectoryExist(missing.c_str(), ERR(err));
  TarnDirectoryCreateAttr((t / "sub\\deeper").c_str(), FILE_ATTRIBUTE_HIDDEN, 0, ERR(err));
  TarnDirectoryCreate((t / "sub\\deeper").c_str(), ERR(err));
  TarnDirectoryCreate((t / "bad|name").c_str(), ERR(err));
  TarnDirectoryCreate("\\\\tarn-no-server\\share\\dir", ERR(err));

  char text[MAX_PATH];
  TarnTempDirectory(text, sizeof(text));
  TarnTempFilename(text, sizeof(text), t.path().c_str(), "tst");
  handle = TarnCreateTempFile(t.path().c_str(), "tst", GENERIC_WRITE, CREATE_NEW, 0, 0, ERR(err));
  ::CloseHandle(handle);
  TarnCreateTempFile(missing.c_str(), "tst", GENERIC_WRITE, OPEN_EXISTING, 0, 0, ERR(err));
  TarnGetModulePath(nullptr, text, sizeof(text));
  TarnGetFolderPath(CSIDL_APPDATA, text, sizeof(text));
  TarnGetFolderPath(0x7E, text, sizeof(text));
}

TEST(Handles, NoneLeftOpenByAnyOperation) {
  ScratchDir t;
  ScratchDir u(tarn_test::kSecondFixedDrive);
  // Temporary files go where _tempnam looks first.
  const char* tmp = getenv("TMP");
  const std::string oldTmp = tmp ? tmp : "";
  _putenv(("TMP=" + t.path()).c_str());
  ASSERT_TRUE(::CreateDirectoryA((t / "sub").c_str(), nullptr));
  tarn_test::WriteFile(t / "sub\\file", "x");
  EveryOperation(t, u);  // first-time loads and caches
  const DWORD before = tarn_test::HandleCount();
  ASSERT_GT(before, 0u) << "no way to count handles";
  for (int i = 0; i < 20; ++i) EveryOperation(t, u);
  EXPECT_EQ(tarn_test::HandleCount(), before);
  _putenv(("TMP=" + oldTmp).c_str());
}

}  // namespace

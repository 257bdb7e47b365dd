// A first program over three parts of tarn.dll: an angle as text, a file
// operation that fails the library's way (a code and the system's text for
// it), and the version resource of the tarn.dll it runs with, compared with
// the version of the headers it was compiled against.
#include <windows.h>

#include <cstdio>
#include <cstring>

#include "tarn/angles.h"
#include "tarn/files.h"
#include "tarn/tarn_version.h"
#include "tarn/version.h"

int main(int argc, char** argv) {
  CTarnAngle angle(30.5, CTarnAngle::eDeg);
  char text[64];
  angle.AngleToString(text, sizeof text, CTarnAngle::eDmsMarked, 2);
  std::printf("angle     %s\n", text);

  const char* missing = argc > 1 ? argv[1] : "no-such-file.txt";
  DWORD error = 0;
  char message[256];
  if (!TarnFileFind(missing, &error, message, sizeof message))
    std::printf("%s  code %lu: %s\n", missing, error, message);

  CTarnFileVersionInfo info;
  char version[64] = "";
  if (!info.Open(GetModuleHandleA("tarn.dll")) || !info.GetFileVersion(version, sizeof version)) {
    std::fprintf(stderr, "tour: tarn.dll has no version resource\n");
    return 1;
  }
  std::printf("tarn.dll  %s (headers %s)\n", version, TARN_VERSION_STRING);
  return std::strcmp(version, TARN_VERSION_STRING) == 0 ? 0 : 1;
}

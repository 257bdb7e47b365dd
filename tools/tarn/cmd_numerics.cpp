// tarn dms / gccc: an angle as packed DD.MMSS or GG.CCCC and as parts.
// tarn crc32 FILE...: the CRC-32 of files, read in large chunks, each chunk
// continuing the checksum of the ones before.
#include <errno.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <vector>

#include "commands.h"
#include "tarn/angles.h"

namespace {

// VALUE [UNIT [DECIMALS [WRAP]]]: the decimals are those of the seconds (or
// centi-centigon) shown; the packed number gets four more.
struct AngleArgs {
  double value;
  const char* unit;
  int decimals;
  int wrap;
};

bool ParseAngleArgs(int argc, char** argv, const char* default_unit, AngleArgs& args) {
  if (argc < 1 || argc > 4) return false;
  char* end = nullptr;
  args.value = strtod(argv[0], &end);
  if (end == argv[0] || *end) return false;
  args.unit = argc > 1 ? argv[1] : default_unit;
  args.decimals = argc > 2 ? atoi(argv[2]) : 2;
  args.wrap = argc > 3 ? atoi(argv[3]) : 0;
  return true;
}

void PrintParts(const char* format, int sign, int whole, int minor, double fine, int decimals) {
  printf(format, sign < 0 ? '-' : '+', whole, minor, decimals < 0 ? 6 : decimals, fine);
}

}  // namespace

int CmdDms(int argc, char** argv) {
  AngleArgs a{};
  if (!ParseAngleArgs(argc, argv, "deg", a)) {
    fprintf(stderr, "usage: tarn dms VALUE [deg|rad|dms [DECIMALS [WRAP]]]\n");
    return 2;
  }
  int sign = 0, degrees = 0, minutes = 0;
  double seconds = 0;
  if (strcmp(a.unit, "deg") == 0) {
    TarnDeg2DMS(a.value, sign, degrees, minutes, seconds, a.decimals, a.wrap);
  } else if (strcmp(a.unit, "rad") == 0) {
    TarnRad2DMS(a.value, sign, degrees, minutes, seconds, a.decimals, a.wrap);
  } else if (strcmp(a.unit, "dms") == 0) {
    TarnDMS2DMS(a.value, sign, degrees, minutes, seconds, a.decimals, a.wrap);
  } else {
    fprintf(stderr, "tarn dms: unknown unit %s (deg, rad or dms)\n", a.unit);
    return 2;
  }
  const int packed_decimals = a.decimals < 0 ? -1 : a.decimals + 4;
  const double packed = strcmp(a.unit, "rad") == 0
                            ? TarnRad2DMS(a.value, packed_decimals, a.wrap)
                            : TarnDMS2DMS(sign, degrees, minutes, seconds, packed_decimals, a.wrap);
  printf("input    %.15g %s\n", a.value, a.unit);
  PrintParts("parts    %c%d deg %02d' %.*f\"\n", sign, degrees, minutes, seconds, a.decimals);
  printf("packed   %.*f\n", packed_decimals < 0 ? 10 : packed_decimals, packed);
  printf("degrees  %.15g\n", TarnDMS2Deg(sign, degrees, minutes, seconds));
  printf("radians  %.15g\n", strcmp(a.unit, "dms") == 0
                                 ? TarnDMS2Rad(a.value)
                                 : TarnDMS2Rad(sign, degrees, minutes, seconds));
  return 0;
}

int CmdGccc(int argc, char** argv) {
  AngleArgs a{};
  if (!ParseAngleArgs(argc, argv, "gon", a)) {
    fprintf(stderr, "usage: tarn gccc VALUE [gon|rad|gccc [DECIMALS [WRAP]]]\n");
    return 2;
  }
  int sign = 0, gon = 0, centigon = 0;
  double centi_centigon = 0;
  if (strcmp(a.unit, "gon") == 0) {
    TarnGrad2GCCC(a.value, sign, gon, centigon, centi_centigon, a.decimals, a.wrap);
  } else if (strcmp(a.unit, "rad") == 0) {
    TarnRad2GCCC(a.value, sign, gon, centigon, centi_centigon, a.decimals, a.wrap);
  } else if (strcmp(a.unit, "gccc") == 0) {
    TarnGCCC2GCCC(a.value, sign, gon, centigon, centi_centigon, a.decimals, a.wrap);
  } else {
    fprintf(stderr, "tarn gccc: unknown unit %s (gon, rad or gccc)\n", a.unit);
    return 2;
  }
  const int packed_decimals = a.decimals < 0 ? -1 : a.decimals + 4;
  const double packed =
      strcmp(a.unit, "rad") == 0
          ? TarnRad2GCCC(a.value, packed_decimals, a.wrap)
          : TarnGCCC2GCCC(sign, gon, centigon, centi_centigon, packed_decimals, a.wrap);
  printf("input    %.15g %s\n", a.value, a.unit);
  PrintParts("parts    %c%d g %02d c %.*f cc\n", sign, gon, centigon, centi_centigon, a.decimals);
  printf("packed   %.*f\n", packed_decimals < 0 ? 10 : packed_decimals, packed);
  printf("gon      %.15g\n", TarnGCCC2Grad(sign, gon, centigon, centi_centigon));
  printf("radians  %.15g\n", strcmp(a.unit, "gccc") == 0
                                 ? TarnGCCC2Rad(a.value)
                                 : TarnGCCC2Rad(sign, gon, centigon, centi_centigon));
  return 0;
}

int CmdCrc32(int argc, char** argv) {
  if (argc < 1) {
    fprintf(stderr, "usage: tarn crc32 FILE...\n");
    return 2;
  }
  // Large chunks keep the vector paths in their main loops.
  std::vector<unsigned char> chunk(8u << 20);
  int result = 0;
  for (int i = 0; i < argc; ++i) {
    FILE* file = fopen(argv[i], "rb");
    if (!file) {
      fprintf(stderr, "%s: %s\n", argv[i], strerror(errno));
      result = 1;
      continue;
    }
    unsigned int crc = 0;
    size_t got = 0;
    while ((got = fread(chunk.data(), 1, chunk.size(), file)) > 0)
      crc = TarnCrcMemory(chunk.data(), static_cast<int>(got), crc);
    if (ferror(file)) {
      fprintf(stderr, "%s: read error\n", argv[i]);
      result = 1;
    } else {
      printf("%08x  %s\n", crc, argv[i]);
    }
    fclose(file);
  }
  return result;
}

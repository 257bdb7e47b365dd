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

using PartsFrom = void (*)(double value, int& sign, int& whole, int& minor, double& fine,
                           int decimals, int wrap);
using PackedFromParts = double (*)(int sign, int whole, int minor, double fine, int decimals,
                                   int wrap);
using FromParts = double (*)(int sign, int whole, int minor, double fine);

// The converters of one packed notation and how tarn shows it.
struct Notation {
  const char* command;       // and the name of the packed unit
  const char* unit;          // the decimal unit
  const char* parts_format;  // sign character, whole, minor, width, decimals, fine
  PartsFrom from_unit, from_rad, from_packed;
  double (*rad_to_packed)(double rad, int decimals, int wrap);
  PackedFromParts parts_to_packed;
  FromParts parts_to_unit, parts_to_rad;
  double (*packed_to_rad)(double packed);
};

const Notation kDms{"dms", "deg", "parts    %c%d deg %02d' %0*.*f\"\n",
                    TarnDeg2DMS, TarnRad2DMS, TarnDMS2DMS,  // parts from deg, rad, packed
                    TarnRad2DMS, TarnDMS2DMS,               // packed from rad, parts
                    TarnDMS2Deg, TarnDMS2Rad, TarnDMS2Rad};
const Notation kGccc{"gccc", "gon", "parts    %c%d g %02d c %0*.*f cc\n",
                     TarnGrad2GCCC, TarnRad2GCCC, TarnGCCC2GCCC,  // parts from gon, rad, packed
                     TarnRad2GCCC, TarnGCCC2GCCC,                 // packed from rad, parts
                     TarnGCCC2Grad, TarnGCCC2Rad, TarnGCCC2Rad};

// VALUE [UNIT [DECIMALS [WRAP]]]: the decimals are those of the seconds (or
// centi-centigon) shown; the packed number gets four more.
int ShowPacked(const Notation& n, int argc, char** argv) {
  char* end = nullptr;
  const double value = argc >= 1 ? strtod(argv[0], &end) : 0;
  if (argc < 1 || argc > 4 || end == argv[0] || *end) {
    fprintf(stderr, "usage: tarn %s VALUE [%s|rad|%s [DECIMALS [WRAP]]]\n", n.command, n.unit,
            n.command);
    return 2;
  }
  const char* unit = argc > 1 ? argv[1] : n.unit;
  const int decimals = argc > 2 ? atoi(argv[2]) : 2;
  const int wrap = argc > 3 ? atoi(argv[3]) : 0;
  const bool rad = strcmp(unit, "rad") == 0, packed = strcmp(unit, n.command) == 0;
  if (!rad && !packed && strcmp(unit, n.unit) != 0) {
    fprintf(stderr, "tarn %s: unknown unit %s (%s, rad or %s)\n", n.command, unit, n.unit,
            n.command);
    return 2;
  }

  int sign = 0, whole = 0, minor = 0;
  double fine = 0;
  (rad      ? n.from_rad
   : packed ? n.from_packed
            : n.from_unit)(value, sign, whole, minor, fine, decimals, wrap);
  const int packed_decimals = decimals < 0 ? -1 : decimals + 4;
  printf("input    %.15g %s\n", value, unit);
  const int shown = decimals < 0 ? 6 : decimals;
  printf(n.parts_format, sign < 0 ? '-' : '+', whole, minor, shown ? shown + 3 : 2, shown, fine);
  printf("packed   %.*f\n", packed_decimals < 0 ? 10 : packed_decimals,
         rad ? n.rad_to_packed(value, packed_decimals, wrap)
             : n.parts_to_packed(sign, whole, minor, fine, packed_decimals, wrap));
  printf("%-8s %.15g\n", n.unit, n.parts_to_unit(sign, whole, minor, fine));
  printf("radians  %.15g\n",
         packed ? n.packed_to_rad(value) : n.parts_to_rad(sign, whole, minor, fine));
  return 0;
}

}  // namespace

int CmdDms(int argc, char** argv) { return ShowPacked(kDms, argc, argv); }

int CmdGccc(int argc, char** argv) { return ShowPacked(kGccc, argc, argv); }

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

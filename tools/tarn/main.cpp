// tarn.exe: shows the library at work from the command line.
#include <stdio.h>
#include <string.h>

#include "commands.h"

namespace {

const Command kCommands[] = {
    {"version", "version [MODULE]        version values of MODULE (tarn.dll by default), the system",
     CmdVersion},
    {"path", "path PATH...            path rules: valid, reserved, same drive as the first",
     CmdPaths},
    {"temp", "temp [PREFIX]           temporary directory, a fresh name, module directories",
     CmdTemp},
    {"folder", "folder NAME|CSIDL...    known folders (appdata, documents, fonts, ... or numbers)",
     CmdFolder},
    {"dir", "dir DIR...              directory listing through TarnDirectoryFind", CmdDir},
    {"angle", "angle VALUE UNIT        an angle in every unit and text form (rad, deg, gon, D:M:S dms)",
     CmdAngle},
    {"dms", "dms VALUE [deg|rad|dms [DECIMALS [WRAP]]]  packed DD.MMSS and parts of an angle",
     CmdDms},
    {"gccc", "gccc VALUE [gon|rad|gccc [DECIMALS [WRAP]]] packed GG.CCCC and parts of an angle",
     CmdGccc},
    {"crc32", "crc32 FILE...           CRC-32 of each file (zlib's checksum)", CmdCrc32},
};

int Usage() {
  fprintf(stderr, "usage: tarn COMMAND [ARGS]\n");
  for (const Command& c : kCommands) fprintf(stderr, "  tarn %s\n", c.usage);
  return 2;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) return Usage();
  for (const Command& c : kCommands)
    if (strcmp(argv[1], c.name) == 0) return c.run(argc - 2, argv + 2);
  return Usage();
}

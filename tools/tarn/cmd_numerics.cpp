// tarn dms / gccc: an angle as packed DD.MMSS or GG.CCCC and as parts.
// tarn crc32 FILE...: the CRC-32 of files ("-" standard input), read in large
// chunks, each chunk continuing the checksum of the ones before.
#include <windows.h>

#include <fcntl.h>
#include <io.h>
#include <stdio.h>

#include "commands.h"
#include "tarn/angles.h"
#include "tarn/files.h"

namespace tarn_tool {
namespace {

using PartsFrom = void (*)(double value, int& sign, int& whole, int& minor, double& fine,
                           int decimals, int wrap);
using PackedFromParts = double (*)(int sign, int whole, int minor, double fine, int decimals,
                                   int wrap);
using FromParts = double (*)(int sign, int whole, int minor, double fine);

// The converters of one packed notation and the names of its fields.
struct Notation {
  const char* command;  // and the name of the packed unit
  const char* unit;     // the decimal unit
  const char* whole;    // the names of the parts
  const char* minor;
  const char* fine;
  const char* decimal;  // the name of the angle in the decimal unit
  PartsFrom from_unit, from_rad, from_packed;
  double (*rad_to_packed)(double rad, int decimals, int wrap);
  PackedFromParts parts_to_packed;
  FromParts parts_to_unit, parts_to_rad;
  double (*packed_to_rad)(double packed);
};

const Notation kDms{"dms", "deg", "degrees", "minutes", "seconds", "decimalDegrees",
                    TarnDeg2DMS, TarnRad2DMS, TarnDMS2DMS,  // parts from deg, rad, packed
                    TarnRad2DMS, TarnDMS2DMS,               // packed from rad, parts
                    TarnDMS2Deg, TarnDMS2Rad, TarnDMS2Rad};
const Notation kGccc{"gccc", "gon", "gon", "centigon", "centiCentigon", "decimalGon",
                     TarnGrad2GCCC, TarnRad2GCCC, TarnGCCC2GCCC,  // parts from gon, rad, packed
                     TarnRad2GCCC, TarnGCCC2GCCC,                 // packed from rad, parts
                     TarnGCCC2Grad, TarnGCCC2Rad, TarnGCCC2Rad};

struct PackedArguments {
  double value = 0;
  std::string unit;
  int decimals = 2;
  int wrap = 0;
  bool json = false;
};

// The decimals are those of the finest part; the packed number gets four more.
int RunPacked(const Notation& n, const PackedArguments& args) {
  const bool rad = args.unit == "rad", packed = args.unit == n.command;
  int sign = 0, whole = 0, minor = 0;
  double fine = 0;
  (rad      ? n.from_rad
   : packed ? n.from_packed
            : n.from_unit)(args.value, sign, whole, minor, fine, args.decimals, args.wrap);
  const int packed_decimals = args.decimals + 4;
  const double packed_value =
      rad ? n.rad_to_packed(args.value, packed_decimals, args.wrap)
          : n.parts_to_packed(sign, whole, minor, fine, packed_decimals, args.wrap);
  PrintRecords(Json::array({{{"sign", sign},
                             {n.whole, whole},
                             {n.minor, minor},
                             {n.fine, fine},
                             {"packed", packed_value},
                             {n.decimal, n.parts_to_unit(sign, whole, minor, fine)},
                             {"radians", packed ? n.packed_to_rad(args.value)
                                                : n.parts_to_rad(sign, whole, minor, fine)}}}),
               args.json, Layout::kLines);
  return 0;
}

Runner DeclarePacked(CLI::App& command, const Notation& n) {
  auto args = std::make_shared<PackedArguments>();
  args->unit = n.unit;
  command.add_option("value", args->value, "the angle")->required()->check(kFinite);
  command.add_option("unit", args->unit, std::string("its unit: ") + n.unit + ", rad or " +
                                             n.command + " (packed)")
      ->check(CLI::IsMember({n.unit, "rad", n.command}))
      ->capture_default_str();
  command.add_option("decimals", args->decimals, "decimals the finest part is carried for")
      ->check(CLI::Range(0, 15))
      ->capture_default_str();
  command.add_option("wrap", args->wrap, "1: bring the angle below a full circle")
      ->check(CLI::Range(0, 1))
      ->capture_default_str();
  AddJsonFlag(command, args->json);
  return [&n, args] { return RunPacked(n, *args); };
}

// --- tarn crc32 FILE... --------------------------------------------------------

struct CrcArguments {
  std::vector<std::string> files;
  bool json = false;
};

// Reads `file` to its end in large chunks (they keep the vector paths in
// their main loops). False with the system's code when a read fails.
bool Checksum(HANDLE file, std::vector<unsigned char>& chunk, unsigned int* crc, DWORD* code) {
  for (;;) {
    DWORD got = 0;
    if (!::ReadFile(file, chunk.data(), static_cast<DWORD>(chunk.size()), &got, nullptr)) {
      *code = ::GetLastError();
      return *code == ERROR_BROKEN_PIPE;  // the end of a pipe
    }
    if (got == 0) return true;
    *crc = TarnCrcMemory(chunk.data(), static_cast<int>(got), *crc);
  }
}

int RunCrc32(const CrcArguments& args) {
  std::vector<unsigned char> chunk(8u << 20);
  Json records = Json::array();
  int result = 0;
  for (const std::string& name : args.files) {
    const bool stdin_ = name == "-";
    DWORD code = 0;
    char text[512] = "";
    // Files are opened through the library, sharing reading and writing.
    const HANDLE file =
        stdin_ ? ::GetStdHandle(STD_INPUT_HANDLE)
               : TarnFileOpen(name.c_str(), GENERIC_READ, OPEN_EXISTING, FILE_FLAG_SEQUENTIAL_SCAN,
                              FILE_SHARE_READ | FILE_SHARE_WRITE, &code, text, sizeof text);
    if (file == INVALID_HANDLE_VALUE) {
      result = Fail(name, text);
      continue;
    }
    unsigned int crc = 0;
    const bool read = Checksum(file, chunk, &crc, &code);
    if (!stdin_) ::CloseHandle(file);
    if (!read) {
      result = Fail(name, SystemText(code));
      continue;
    }
    char hex[9];
    snprintf(hex, sizeof hex, "%08x", crc);
    records.push_back({{"crc32", hex}, {"file", name}});
  }
  PrintRecords(records, args.json, Layout::kRow);
  return result;
}

}  // namespace

Runner DeclareDms(CLI::App& command) { return DeclarePacked(command, kDms); }

Runner DeclareGccc(CLI::App& command) { return DeclarePacked(command, kGccc); }

Runner DeclareCrc32(CLI::App& command) {
  auto args = std::make_shared<CrcArguments>();
  command.add_option("file", args->files, "files; - is standard input")->required();
  AddJsonFlag(command, args->json);
  return [args] { return RunCrc32(*args); };
}

}  // namespace tarn_tool

// CRC-32 (ISO-HDLC, reflected polynomial 0xEDB88320) in several ways that
// give the same results: the byte table (the reference), slicing by 8 bytes,
// and carry-less multiplication folding on 128-bit and 512-bit vectors.
//
// The functions here work on the CRC register itself: the public functions
// invert it on the way in and out.
#ifndef TARN_ANGLES_CRC32_H
#define TARN_ANGLES_CRC32_H

#include <cstddef>
#include <cstdint>

namespace tarn::crc32 {

// Row 0 is the byte table: row[0][b] is the register after byte b from 0.
// Row k is the contribution of a byte followed by k more bytes, for slicing.
struct Tables {
  std::uint32_t row[8][256];
};
extern const Tables kTables;

// The ways to compute the checksum, slowest first.
enum class Path { kTable = 0, kSlice8 = 1, kPclmul = 2, kVpclmul = 3 };

using UpdateFn = std::uint32_t (*)(std::uint32_t reg, const unsigned char* data, std::size_t size);

// One table lookup per byte.
std::uint32_t UpdateByTable(std::uint32_t reg, const unsigned char* data, std::size_t size);
// Eight bytes per step through the eight table rows; the rest by the byte
// table.
std::uint32_t UpdateBySlice8(std::uint32_t reg, const unsigned char* data, std::size_t size);

// The fastest path the processor and the system support (CPUID and XGETBV).
Path BestPath();
// The path a value of TARN_CRC32_PATH selects when `best` is the fastest
// available: the named one if it is not faster than `best`, else `best`.
// Null or an unknown name selects `best`.
Path PathFromSetting(const char* setting, Path best);
// The path in use, chosen once at the first call from BestPath() and the
// environment.
Path ActivePath();
// The update function of `path`, null when this build has none for it
// (where the compiler lacks the instructions). It may only be called when
// `path` is not faster than BestPath().
UpdateFn UpdateFor(Path path);
const char* PathName(Path path);

// The vector paths; in their own files, compiled for their instructions.
std::uint32_t UpdateByPclmul(std::uint32_t reg, const unsigned char* data, std::size_t size);
std::uint32_t UpdateByVpclmul(std::uint32_t reg, const unsigned char* data, std::size_t size);

}  // namespace tarn::crc32

#endif  // TARN_ANGLES_CRC32_H

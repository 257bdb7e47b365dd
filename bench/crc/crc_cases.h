// The cases both CRC-32 benchmarks measure: TarnCrcMemory as the library
// offers it, each of its paths this machine can run, the byte table as the
// reference, and zlib's crc32, at 64 B, 4 KiB, 1 MiB and 64 MiB.
#ifndef TARN_BENCH_CRC_CASES_H
#define TARN_BENCH_CRC_CASES_H

#include <zlib.h>

#include <cstddef>
#include <cstdint>
#include <vector>

#include "angles/crc32.h"
#include "tarn/angles.h"

namespace crc_bench {

using Checksum = std::uint32_t (*)(const unsigned char* data, std::size_t size, std::uint32_t crc);

struct Case {
  const char* name;
  Checksum run;
};

inline const std::size_t kSizes[] = {64, 4u << 10, 1u << 20, 64u << 20};

template <tarn::crc32::Path path>
std::uint32_t ByPath(const unsigned char* data, std::size_t size, std::uint32_t crc) {
  return ~tarn::crc32::UpdateFor(path)(~crc, data, size);
}

inline std::vector<Case> Cases() {
  using tarn::crc32::Path;
  std::vector<Case> cases{
      {"TarnCrcMemory",
       [](const unsigned char* data, std::size_t size, std::uint32_t crc) -> std::uint32_t {
         return TarnCrcMemory(data, static_cast<int>(size), crc);
       }},
      {"table", &ByPath<Path::kTable>},
      {"slice8", &ByPath<Path::kSlice8>},
  };
  const Path best = tarn::crc32::BestPath();
  if (best >= Path::kPclmul) cases.push_back({"pclmul", &ByPath<Path::kPclmul>});
  if (best >= Path::kVpclmul) cases.push_back({"vpclmul", &ByPath<Path::kVpclmul>});
  cases.push_back(
      {"zlib", [](const unsigned char* data, std::size_t size, std::uint32_t crc) -> std::uint32_t {
         return static_cast<std::uint32_t>(crc32(crc, data, static_cast<uInt>(size)));
       }});
  return cases;
}

// Random-looking bytes, the same in every run.
inline std::vector<unsigned char> Data(std::size_t size) {
  std::vector<unsigned char> data(size);
  std::uint32_t x = 2463534242u;
  for (auto& b : data) {
    x ^= x << 13;
    x ^= x >> 17;
    x ^= x << 5;
    b = static_cast<unsigned char>(x);
  }
  return data;
}

}  // namespace crc_bench

#endif  // TARN_BENCH_CRC_CASES_H

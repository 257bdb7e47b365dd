// CRC-32 measured under Wine, where Google Benchmark is not built: the same
// cases as crc_benchmark.cpp, each size repeated for at least 0.2 s in
// rounds, the best round reported.
#include <chrono>
#include <cstdio>

#include "crc_cases.h"

namespace {

struct Result {
  double ns_per_call;
  double gb_per_s;
};

Result Measure(crc_bench::Checksum run, const unsigned char* data, std::size_t size) {
  using Clock = std::chrono::steady_clock;
  // Calls per round: about 16 MiB of data, at least one call.
  const std::size_t calls = size >= (16u << 20) ? 1 : (16u << 20) / size;
  double best = 1e300;
  std::uint32_t crc = 0;
  const auto start = Clock::now();
  for (int round = 0; round < 5 || Clock::now() - start < std::chrono::milliseconds(200); ++round) {
    const auto t0 = Clock::now();
    for (std::size_t i = 0; i < calls; ++i) crc = run(data, size, crc);
    const double ns = std::chrono::duration<double, std::nano>(Clock::now() - t0).count();
    if (ns < best) best = ns;
  }
  static volatile std::uint32_t sink;
  sink = crc;
  const double per_call = best / static_cast<double>(calls);
  return {per_call, static_cast<double>(size) / per_call};
}

}  // namespace

int main() {
  const std::vector<unsigned char> data = crc_bench::Data(crc_bench::kSizes[3]);
  std::printf("TarnCrcMemory path: %s\n", PathName(tarn::crc32::ActivePath()));
  std::printf("%-14s %10s %14s %10s\n", "case", "bytes", "ns/call", "GB/s");
  for (const crc_bench::Case& c : crc_bench::Cases()) {
    for (std::size_t size : crc_bench::kSizes) {
      const Result r = Measure(c.run, data.data(), size);
      std::printf("%-14s %10zu %14.1f %10.2f\n", c.name, size, r.ns_per_call, r.gb_per_s);
    }
  }
}

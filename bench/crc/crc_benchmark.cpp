// CRC-32 with Google Benchmark (host build). Throughput in GB/s (10^9 bytes)
// as the counter "GB/s"; Time is the time of one call.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <string>

#include "crc_cases.h"

namespace {

void Run(benchmark::State& state, crc_bench::Checksum run) {
  const std::size_t size = static_cast<std::size_t>(state.range(0));
  static const std::vector<unsigned char> data = crc_bench::Data(crc_bench::kSizes[3]);
  std::uint32_t crc = 0;
  for (auto _ : state) {
    crc = run(data.data(), size, crc);
    benchmark::DoNotOptimize(crc);
  }
  state.counters["GB/s"] =
      benchmark::Counter(static_cast<double>(state.iterations()) * static_cast<double>(size),
                         benchmark::Counter::kIsRate, benchmark::Counter::OneK::kIs1000);
}

}  // namespace

int main(int argc, char** argv) {
  for (const crc_bench::Case& c : crc_bench::Cases()) {
    auto* bench = benchmark::RegisterBenchmark(c.name, Run, c.run);
    for (std::size_t size : crc_bench::kSizes) bench->Arg(static_cast<std::int64_t>(size));
  }
  std::printf("TarnCrcMemory path: %s\n", PathName(tarn::crc32::ActivePath()));
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
}

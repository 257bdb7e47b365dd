// The clock of the Wine-build benchmarks: the performance counter, in seconds.
#ifndef TARN_BENCH_CLOCK_H
#define TARN_BENCH_CLOCK_H

#include <windows.h>

namespace tarn_bench {

inline double Seconds() {
  static const LARGE_INTEGER frequency = [] {
    LARGE_INTEGER f;
    ::QueryPerformanceFrequency(&f);
    return f;
  }();
  LARGE_INTEGER now;
  ::QueryPerformanceCounter(&now);
  return static_cast<double>(now.QuadPart) / static_cast<double>(frequency.QuadPart);
}

}  // namespace tarn_bench

#endif  // TARN_BENCH_CLOCK_H

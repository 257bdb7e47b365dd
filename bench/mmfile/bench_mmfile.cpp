// Reads one 256 MiB file twice per round: through the view of a CTarnMmFile
// and through TarnFileRead in 1 MiB chunks, summing every 64-bit word so that
// each byte is touched, and prints both throughputs. The file is written
// first, so both read from the system's file cache: the numbers compare the
// two ways of getting cached bytes, not the disk.
//
//   bench_mmfile [DIR]     (default: the temporary directory)
#include <windows.h>

#include <stdint.h>
#include <stdio.h>
#include <string.h>

#include <algorithm>
#include <string>
#include <vector>

#include "bench_clock.h"
#include "tarn/files.h"
#include "tarn/memory.h"

namespace {

constexpr DWORD kChunk = 1 << 20;
constexpr DWORD kChunks = 256;
constexpr ULONGLONG kFileSize = static_cast<ULONGLONG>(kChunk) * kChunks;
constexpr int kRounds = 5;


uint64_t Sum(const unsigned char* bytes, size_t size) {
  uint64_t sum = 0;
  for (size_t i = 0; i + 8 <= size; i += 8) {
    uint64_t word;
    memcpy(&word, bytes + i, 8);
    sum += word ^ i;
  }
  return sum;
}

bool WriteTestFile(const std::string& path) {
  HANDLE file = ::CreateFileA(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                              FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) return false;
  std::vector<unsigned char> chunk(kChunk);
  bool ok = true;
  for (DWORD c = 0; c < kChunks && ok; ++c) {
    for (DWORD i = 0; i < kChunk; ++i) chunk[i] = static_cast<unsigned char>((c * 7 + i) % 253);
    DWORD written = 0;
    ok = ::WriteFile(file, chunk.data(), kChunk, &written, nullptr) && written == kChunk;
  }
  ::CloseHandle(file);
  return ok;
}

// Seconds for one pass, or a negative value on failure. *again receives the
// seconds of a second pass over the same view, whose pages are then in place:
// the difference is the cost of bringing the view's pages in.
double ReadMapped(const std::string& path, uint64_t* sum, double* again) {
  const double start = tarn_bench::Seconds();
  CTarnMmFile file;
  DWORD code = 0;
  const unsigned char* view =
      file.Open(CTarnMmFile::eOpenRead, path.c_str(), &code, nullptr, 0);
  if (!view) {
    fprintf(stderr, "CTarnMmFile::Open failed: %lu\n", code);
    return -1;
  }
  *sum = 0;
  // In 1 MiB pieces, as the other reader sums them.
  for (DWORD c = 0; c < kChunks; ++c) *sum += Sum(view + static_cast<size_t>(c) * kChunk, kChunk);
  const double first = tarn_bench::Seconds() - start;
  const double second_start = tarn_bench::Seconds();
  uint64_t second = 0;
  for (DWORD c = 0; c < kChunks; ++c) second += Sum(view + static_cast<size_t>(c) * kChunk, kChunk);
  *again = second == *sum ? tarn_bench::Seconds() - second_start : -1;
  file.Close();
  return first;
}

double ReadChunks(const std::string& path, std::vector<unsigned char>& buffer, uint64_t* sum) {
  const double start = tarn_bench::Seconds();
  DWORD code = 0;
  HANDLE file = TarnFileOpen(path.c_str(), GENERIC_READ, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL,
                             FILE_SHARE_READ, &code, nullptr, 0);
  if (file == INVALID_HANDLE_VALUE) {
    fprintf(stderr, "TarnFileOpen failed: %lu\n", code);
    return -1;
  }
  *sum = 0;
  bool ok = true;
  for (DWORD c = 0; c < kChunks && ok; ++c) {
    ok = TarnFileRead(file, buffer.data(), kChunk, &code, nullptr, 0) == 1;
    if (ok) *sum += Sum(buffer.data(), kChunk);
  }
  ::CloseHandle(file);
  if (!ok) {
    fprintf(stderr, "TarnFileRead failed: %lu\n", code);
    return -1;
  }
  return tarn_bench::Seconds() - start;
}

double MiBPerSecond(double seconds) {
  return static_cast<double>(kFileSize) / (1024.0 * 1024.0) / seconds;
}

void Report(const char* what, std::vector<double> seconds) {
  std::sort(seconds.begin(), seconds.end());
  printf("%-34s best %8.1f MiB/s   median %8.1f MiB/s\n", what, MiBPerSecond(seconds.front()),
         MiBPerSecond(seconds[seconds.size() / 2]));
}

}  // namespace

int main(int argc, char** argv) {
  std::string dir;
  if (argc > 1) {
    dir = argv[1];
  } else {
    char temp[MAX_PATH];
    const DWORD length = ::GetTempPathA(MAX_PATH, temp);
    if (length == 0 || length >= MAX_PATH) return 2;
    dir = temp;
  }
  if (!dir.empty() && dir.back() != '\\' && dir.back() != '/') dir += '\\';
  const std::string path = dir + "tarn-bench-mmfile-" + std::to_string(::GetCurrentProcessId());

  printf("file: %s, %llu MiB\n", path.c_str(), kFileSize >> 20);
  if (!WriteTestFile(path)) {
    fprintf(stderr, "cannot write %s: %lu\n", path.c_str(), ::GetLastError());
    ::DeleteFileA(path.c_str());
    return 1;
  }
  std::vector<unsigned char> buffer(kChunk);
  std::vector<double> mapped, remapped, chunked;
  uint64_t expected = 0;
  bool ok = true;
  // Alternating order, so that neither reader always runs on the cache the
  // other has just warmed.
  for (int round = 0; round < kRounds && ok; ++round) {
    for (int which = 0; which < 2 && ok; ++which) {
      uint64_t sum = 0;
      const bool map = (round + which) % 2 == 0;
      double again = 1;
      const double seconds = map ? ReadMapped(path, &sum, &again) : ReadChunks(path, buffer, &sum);
      ok = seconds > 0 && again > 0;
      if (!ok) break;
      if (round == 0 && which == 0) expected = sum;
      if (sum != expected) {
        fprintf(stderr, "checksums differ: %llx, %llx\n", static_cast<unsigned long long>(sum),
                static_cast<unsigned long long>(expected));
        ok = false;
      }
      (map ? mapped : chunked).push_back(seconds);
      if (map) remapped.push_back(again);
    }
  }
  ::DeleteFileA(path.c_str());
  if (!ok) return 1;
  printf("%d rounds, each byte summed once per pass\n", kRounds);
  Report("CTarnMmFile (one view)", mapped);
  Report("  same view, pages already in", remapped);
  Report("TarnFileRead (1 MiB chunks)", chunked);
  return 0;
}

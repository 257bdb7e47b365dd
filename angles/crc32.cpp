// CRC-32: the tables, the portable paths, the choice of path and the public
// functions.
#include "angles/crc32.h"

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <initializer_list>

#include "tarn/angles.h"

#if defined(_M_X64) || defined(__x86_64__)
#define TARN_CRC32_X86 1
#if defined(_MSC_VER)
#include <immintrin.h>
#include <intrin.h>
#else
#include <cpuid.h>
#endif
#endif

namespace tarn::crc32 {
namespace {

constexpr std::uint32_t kReflectedPolynomial = 0xEDB88320u;

constexpr Tables MakeTables() {
  Tables t{};
  for (std::uint32_t b = 0; b < 256; ++b) {
    std::uint32_t r = b;
    for (int bit = 0; bit < 8; ++bit) r = (r & 1) ? (r >> 1) ^ kReflectedPolynomial : r >> 1;
    t.row[0][b] = r;
  }
  // A byte followed by k more bytes: its row-(k-1) value run through one
  // more (zero) byte.
  for (int k = 1; k < 8; ++k)
    for (int b = 0; b < 256; ++b)
      t.row[k][b] = (t.row[k - 1][b] >> 8) ^ t.row[0][t.row[k - 1][b] & 0xFF];
  return t;
}

#if defined(TARN_CRC32_X86)
struct CpuidRegs {
  unsigned eax, ebx, ecx, edx;
};

CpuidRegs Cpuid(unsigned leaf, unsigned subleaf) {
  CpuidRegs r{};
#if defined(_MSC_VER)
  int regs[4];
  __cpuidex(regs, static_cast<int>(leaf), static_cast<int>(subleaf));
  r = {static_cast<unsigned>(regs[0]), static_cast<unsigned>(regs[1]),
       static_cast<unsigned>(regs[2]), static_cast<unsigned>(regs[3])};
#else
  __cpuid_count(leaf, subleaf, r.eax, r.ebx, r.ecx, r.edx);
#endif
  return r;
}

// The register state the system saves on context switches (XCR0); only to be
// read when CPUID reports OSXSAVE.
std::uint64_t EnabledStateMask() {
#if defined(_MSC_VER)
  return _xgetbv(0);
#else
  unsigned lo = 0, hi = 0;
  __asm__ volatile("xgetbv" : "=a"(lo), "=d"(hi) : "c"(0));
  return (static_cast<std::uint64_t>(hi) << 32) | lo;
#endif
}

bool Bit(unsigned value, int bit) { return (value >> bit) & 1u; }
#endif

std::uint32_t Resolve(std::uint32_t reg, const unsigned char* data, std::size_t size);

// The update function in use: Resolve until the first call has chosen.
std::atomic<UpdateFn> g_update{&Resolve};

std::uint32_t Resolve(std::uint32_t reg, const unsigned char* data, std::size_t size) {
  const UpdateFn update = UpdateFor(ActivePath());
  g_update.store(update, std::memory_order_relaxed);
  return update(reg, data, size);
}

}  // namespace

const Tables kTables = MakeTables();
static_assert(MakeTables().row[0][1] == 0x77073096u, "not the table of 0xEDB88320");

std::uint32_t UpdateByTable(std::uint32_t reg, const unsigned char* data, std::size_t size) {
  const std::uint32_t* table = kTables.row[0];
  for (std::size_t i = 0; i < size; ++i) reg = table[(reg ^ data[i]) & 0xFF] ^ (reg >> 8);
  return reg;
}

std::uint32_t UpdateBySlice8(std::uint32_t reg, const unsigned char* data, std::size_t size) {
  const auto& t = kTables.row;
  for (; size >= 8; data += 8, size -= 8) {
    // Assembled byte by byte, so the order does not depend on the host's;
    // compilers turn this into one load on little-endian machines.
    const std::uint32_t lo =
        (data[0] | data[1] << 8 | data[2] << 16 | static_cast<std::uint32_t>(data[3]) << 24) ^ reg;
    const std::uint32_t hi =
        data[4] | data[5] << 8 | data[6] << 16 | static_cast<std::uint32_t>(data[7]) << 24;
    reg = t[7][lo & 0xFF] ^ t[6][(lo >> 8) & 0xFF] ^ t[5][(lo >> 16) & 0xFF] ^ t[4][lo >> 24] ^
          t[3][hi & 0xFF] ^ t[2][(hi >> 8) & 0xFF] ^ t[1][(hi >> 16) & 0xFF] ^ t[0][hi >> 24];
  }
  return UpdateByTable(reg, data, size);
}

Path BestPath() {
  Path best = Path::kSlice8;
#if defined(TARN_CRC32_X86)
  const unsigned max_leaf = Cpuid(0, 0).eax;
  const CpuidRegs leaf1 = Cpuid(1, 0);
  const bool pclmul = Bit(leaf1.ecx, 1) && Bit(leaf1.ecx, 19);  // PCLMULQDQ, SSE4.1
#if defined(TARN_CRC32_HAVE_PCLMUL)
  if (pclmul) best = Path::kPclmul;
#endif
#if defined(TARN_CRC32_HAVE_VPCLMUL)
  if (pclmul && max_leaf >= 7 && Bit(leaf1.ecx, 27)) {  // OSXSAVE: XGETBV is there
    // The system must save the SSE, AVX and all three AVX-512 states
    // (opmask, upper halves of zmm0-15, zmm16-31).
    const bool system_saves_zmm = (EnabledStateMask() & 0xE6) == 0xE6;
    const CpuidRegs leaf7 = Cpuid(7, 0);
    const bool avx512 = Bit(leaf7.ebx, 16) && Bit(leaf7.ebx, 30);  // AVX512F, AVX512BW
    if (system_saves_zmm && avx512 && Bit(leaf7.ecx, 10))          // VPCLMULQDQ
      best = Path::kVpclmul;
  }
#else
  (void)max_leaf;
#endif
#endif
  return best;
}

Path PathFromSetting(const char* setting, Path best) {
  if (!setting) return best;
  for (Path path : {Path::kTable, Path::kSlice8, Path::kPclmul, Path::kVpclmul})
    if (std::strcmp(setting, PathName(path)) == 0) return path < best ? path : best;
  return best;
}

Path ActivePath() {
  static const Path path = PathFromSetting(std::getenv("TARN_CRC32_PATH"), BestPath());
  return path;
}

UpdateFn UpdateFor(Path path) {
  switch (path) {
    case Path::kTable:
      return &UpdateByTable;
    case Path::kSlice8:
      return &UpdateBySlice8;
    case Path::kPclmul:
#if defined(TARN_CRC32_HAVE_PCLMUL)
      return &UpdateByPclmul;
#else
      return nullptr;
#endif
    case Path::kVpclmul:
#if defined(TARN_CRC32_HAVE_VPCLMUL)
      return &UpdateByVpclmul;
#else
      return nullptr;
#endif
  }
  return nullptr;
}

const char* PathName(Path path) {
  switch (path) {
    case Path::kTable:
      return "table";
    case Path::kSlice8:
      return "slice8";
    case Path::kPclmul:
      return "pclmul";
    case Path::kVpclmul:
      return "vpclmul";
  }
  return "";
}

}  // namespace tarn::crc32

unsigned int TarnCrcMemory(const void* pData, int nLength, unsigned int nCrc) {
  if (nLength <= 0) return nCrc;
  const auto update = tarn::crc32::g_update.load(std::memory_order_relaxed);
  return ~update(~nCrc, static_cast<const unsigned char*>(pData),
                 static_cast<std::size_t>(nLength));
}

unsigned int TarnCrcString(const char* pszText, unsigned int nCrc) {
  if (!pszText) return nCrc;
  // The length as a 32-bit signed count, as TarnCrcMemory takes it.
  return TarnCrcMemory(pszText, static_cast<int>(std::strlen(pszText)), nCrc);
}

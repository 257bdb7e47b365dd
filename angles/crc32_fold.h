// Carry-less multiplication folding for CRC-32, shared by the 128-bit and the
// 512-bit paths. Included only by those paths' files, each compiled for its
// own instructions: everything here has internal linkage, so no copy built
// for AVX-512 can be picked by the linker for the 128-bit path.
//
// The reflected view: a 128-bit block loaded from memory holds the message
// polynomial with bit i as the coefficient of x^(127 - i), so its low 64 bits
// are the higher-degree half. Carry-less multiplication of two 64-bit lanes
// in this view yields the product times x^-1; the constants compensate:
// lane constant K(n) holds x^n mod P in its upper 32 bits (bit 32 + i is the
// coefficient of x^(31 - i)), and multiplying a lane by K(n - 1) multiplies
// its polynomial by x^n mod P.
//
// Folding an accumulator A = H * x^64 + L forward over d bits (to be added to
// the block d bits later): A * x^d = H * x^(d + 64) + L * x^d, that is
// H times K(d + 63) plus L times K(d - 1).
#ifndef TARN_ANGLES_CRC32_FOLD_H
#define TARN_ANGLES_CRC32_FOLD_H

#include <immintrin.h>

#include <cstddef>
#include <cstdint>

#include "angles/crc32.h"

#if defined(_MSC_VER)
#define TARN_CRC32_INLINE __forceinline
#else
#define TARN_CRC32_INLINE inline __attribute__((always_inline))
#endif

namespace tarn::crc32 {
namespace {

// x^n mod P in the reflected 32-bit form (bit i is the coefficient of
// x^(31 - i)).
constexpr std::uint32_t XPowerModP(int n) {
  std::uint32_t v = 0x80000000u;  // x^0
  for (; n > 0; --n) v = (v & 1) ? (v >> 1) ^ 0xEDB88320u : v >> 1;
  return v;
}

// A variable, so that the loop above runs at compile time.
template <int n>
constexpr std::uint64_t K = static_cast<std::uint64_t>(XPowerModP(n)) << 32;

// Barrett reduction: mu = floor(x^64 / P) and P itself, both of degree 32,
// reflected into bits 31 to 63 of a lane.
constexpr std::uint64_t kBarrettMu = 0xFB808B2080000000u;
constexpr std::uint64_t kBarrettP = 0xEDB8832080000000u;

TARN_CRC32_INLINE __m128i FoldConstants(std::uint64_t low, std::uint64_t high) {
  return _mm_set_epi64x(static_cast<long long>(high), static_cast<long long>(low));
}
// The constants that fold an accumulator forward by `bits`: the low lane's
// for the higher-degree half, the high lane's for the lower.
template <int bits>
TARN_CRC32_INLINE __m128i FoldBy() {
  return FoldConstants(K<bits + 63>, K<bits - 1>);
}

TARN_CRC32_INLINE __m128i Load128(const unsigned char* p) {
  return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
}

TARN_CRC32_INLINE __m128i Fold(__m128i x, __m128i k) {
  return _mm_xor_si128(_mm_clmulepi64_si128(x, k, 0x00), _mm_clmulepi64_si128(x, k, 0x11));
}

// The CRC register of a message whose folded remainder is the 128-bit a:
// (a * x^32) mod P. a * x^32 = H * x^96 + L * x^32 is first brought to 96
// bits, then to 64 bits W, and W mod P follows by Barrett reduction.
TARN_CRC32_INLINE std::uint32_t Reduce128(__m128i a) {
  const __m128i k = FoldConstants(K<95>, K<63>);
  // S = H * (x^96 mod P) + L * x^32, in bits 32 to 127.
  const __m128i s =
      _mm_xor_si128(_mm_clmulepi64_si128(a, k, 0x00), _mm_slli_si128(_mm_srli_si128(a, 8), 4));
  // W = (S's top 32 bits) * (x^64 mod P) + S's lower 64 bits, in the high
  // lane.
  const __m128i w = _mm_xor_si128(_mm_clmulepi64_si128(s, k, 0x10), s);
  const __m128i barrett = FoldConstants(kBarrettMu, kBarrettP);
  // q = floor(W_hi * mu / x^32), W_hi being the 32 higher-degree bits of W.
  const __m128i w_hi = _mm_and_si128(_mm_srli_si128(w, 8), _mm_set_epi64x(0, 0xFFFFFFFF));
  const __m128i q = _mm_and_si128(_mm_clmulepi64_si128(w_hi, barrett, 0x00),
                                  _mm_set_epi64x(0, 0x7FFFFFFF80000000));
  // W mod P = W_lo + (q * P mod x^32).
  const __m128i qp = _mm_clmulepi64_si128(q, barrett, 0x10);
  const std::uint64_t w_bits = static_cast<std::uint64_t>(_mm_extract_epi64(w, 1));
  const std::uint64_t qp_bits = static_cast<std::uint64_t>(_mm_extract_epi64(qp, 1));
  return static_cast<std::uint32_t>(w_bits >> 32) ^ static_cast<std::uint32_t>(qp_bits >> 30);
}

// Folds the whole 16-byte blocks of data into x, reduces, and runs the last
// bytes (fewer than 16) through the tables.
TARN_CRC32_INLINE std::uint32_t Finish(__m128i x, const unsigned char* data, std::size_t size) {
  const __m128i k128 = FoldBy<128>();
  for (; size >= 16; data += 16, size -= 16) x = _mm_xor_si128(Fold(x, k128), Load128(data));
  return UpdateBySlice8(Reduce128(x), data, size);
}

}  // namespace
}  // namespace tarn::crc32

#endif  // TARN_ANGLES_CRC32_FOLD_H

// CRC-32 by folding 512-bit blocks with VPCLMULQDQ on AVX-512 registers.
// Compiled with AVX-512 (F, BW), VPCLMULQDQ and PCLMULQDQ enabled; called
// only where CPUID and XGETBV report them usable.
//
// GCC for 64-bit Windows cannot align the stack beyond 16 bytes, yet moves
// spilled 64-byte vectors with aligned instructions. So every __m512i here
// lives in one function, in registers (4 accumulators, 4 constant vectors
// and the temporaries fit the 32 zmm registers), and the build also assembles
// this file with unaligned vector moves under MinGW.
#include "angles/crc32_fold.h"

namespace tarn::crc32 {
namespace {

TARN_CRC32_INLINE __m512i Load512(const unsigned char* p) { return _mm512_loadu_si512(p); }

// FoldBy for all four lanes.
template <int bits>
TARN_CRC32_INLINE __m512i FoldBy4() {
  const auto low = static_cast<long long>(K<bits + 63>);
  const auto high = static_cast<long long>(K<bits - 1>);
  return _mm512_set_epi64(high, low, high, low, high, low, high, low);
}

// One 128-bit lane. The zero-masking form with all four lanes selected: the
// plain one trips GCC 12's uninitialized-value warning in its own header.
#define Lane(z, i) _mm512_maskz_extracti32x4_epi32(0xF, (z), (i))

// Four 128-bit lanes folded at once by the same distance, with the next data
// added by a three-way exclusive or.
#define TARN_CRC32_FOLD512(z, k, next)                                \
  _mm512_ternarylogic_epi64(_mm512_clmulepi64_epi128((z), (k), 0x00), \
                            _mm512_clmulepi64_epi128((z), (k), 0x11), (next), 0x96)

}  // namespace

std::uint32_t UpdateByVpclmul(std::uint32_t reg, const unsigned char* data, std::size_t size) {
  if (size < 256) return UpdateByPclmul(reg, data, size);

  // Four accumulators of 64 bytes each, 256 bytes apart.
  __m512i z0 = _mm512_xor_si512(Load512(data), _mm512_maskz_set1_epi32(1, static_cast<int>(reg)));
  __m512i z1 = Load512(data + 64);
  __m512i z2 = Load512(data + 128);
  __m512i z3 = Load512(data + 192);
  data += 256;
  size -= 256;

  const __m512i k2048 = FoldBy4<2048>();
  for (; size >= 256; data += 256, size -= 256) {
    z0 = TARN_CRC32_FOLD512(z0, k2048, Load512(data));
    z1 = TARN_CRC32_FOLD512(z1, k2048, Load512(data + 64));
    z2 = TARN_CRC32_FOLD512(z2, k2048, Load512(data + 128));
    z3 = TARN_CRC32_FOLD512(z3, k2048, Load512(data + 192));
  }

  // The accumulators folded onto the last one, then 64-byte blocks.
  const __m512i k512 = FoldBy4<512>();
  z3 = TARN_CRC32_FOLD512(z0, FoldBy4<1536>(), z3);
  z3 = TARN_CRC32_FOLD512(z1, FoldBy4<1024>(), z3);
  z3 = TARN_CRC32_FOLD512(z2, k512, z3);
  for (; size >= 64; data += 64, size -= 64) z3 = TARN_CRC32_FOLD512(z3, k512, Load512(data));

  // The four lanes of z3 folded onto its last one: lane i by (3 - i) * 128
  // bits; the last lane's constants are 0 and it is added as it stands.
  const __m512i lanes =
      _mm512_set_epi64(0, 0, static_cast<long long>(K<127>), static_cast<long long>(K<191>),
                       static_cast<long long>(K<255>), static_cast<long long>(K<319>),
                       static_cast<long long>(K<383>), static_cast<long long>(K<447>));
  const __m512i t = _mm512_xor_si512(_mm512_clmulepi64_epi128(z3, lanes, 0x00),
                                     _mm512_clmulepi64_epi128(z3, lanes, 0x11));
  const __m128i x =
      _mm_xor_si128(_mm_xor_si128(Lane(t, 0), Lane(t, 1)), _mm_xor_si128(Lane(t, 2), Lane(z3, 3)));
  return Finish(x, data, size);
}

}  // namespace tarn::crc32

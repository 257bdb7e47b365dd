// CRC-32 by folding 128-bit blocks with PCLMULQDQ. Compiled with PCLMULQDQ
// and SSE4.1 enabled; called only where CPUID reports both.
#include "angles/crc32_fold.h"

namespace tarn::crc32 {

std::uint32_t UpdateByPclmul(std::uint32_t reg, const unsigned char* data, std::size_t size) {
  // Below 64 bytes the setup and the reduction cost more than slicing.
  if (size < 64) return UpdateBySlice8(reg, data, size);

  // Four independent accumulators, 64 bytes apart, hide the multiplier's
  // latency. The register enters as the first 32 message bits.
  __m128i x0 = _mm_xor_si128(Load128(data), _mm_cvtsi32_si128(static_cast<int>(reg)));
  __m128i x1 = Load128(data + 16);
  __m128i x2 = Load128(data + 32);
  __m128i x3 = Load128(data + 48);
  data += 64;
  size -= 64;

  const __m128i k512 = FoldBy<512>();
  for (; size >= 64; data += 64, size -= 64) {
    x0 = _mm_xor_si128(Fold(x0, k512), Load128(data));
    x1 = _mm_xor_si128(Fold(x1, k512), Load128(data + 16));
    x2 = _mm_xor_si128(Fold(x2, k512), Load128(data + 32));
    x3 = _mm_xor_si128(Fold(x3, k512), Load128(data + 48));
  }

  // Each accumulator folded onto the last one, in parallel.
  const __m128i x = _mm_xor_si128(_mm_xor_si128(Fold(x0, FoldBy<384>()), Fold(x1, FoldBy<256>())),
                                  _mm_xor_si128(Fold(x2, FoldBy<128>()), x3));
  return Finish(x, data, size);
}

}  // namespace tarn::crc32

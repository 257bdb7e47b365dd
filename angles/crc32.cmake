# The vector paths of CRC-32, each in its own file compiled for its own
# instructions; crc32.cpp chooses among them at run time (CPUID, XGETBV). A
# compiler that cannot build a path leaves it out, and the portable paths
# remain.
include(CheckCXXSourceCompiles)

if(NOT CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|AMD64|amd64)$")
  return()
endif()

if(MSVC)
  set(_crc_pclmul_flags "")
  set(_crc_vpclmul_flags "")
else()
  set(_crc_pclmul_flags -mpclmul -msse4.1)
  set(_crc_vpclmul_flags -mavx512f -mavx512bw -mvpclmulqdq -mpclmul -msse4.1)
endif()

function(_tarn_crc_check result flags source)
  list(JOIN flags " " CMAKE_REQUIRED_FLAGS)
  check_cxx_source_compiles("${source}" ${result})
  set(${result} ${${result}} PARENT_SCOPE)
endfunction()

# Builds one vector path when the compiler can compile `probe` with `flags`:
# `file` gets those flags and the dispatcher sees `define`. Sets `result`.
function(_tarn_crc_path result flags probe file define)
  _tarn_crc_check(${result} "${flags}" "${probe}")
  set(${result} ${${result}} PARENT_SCOPE)
  if(NOT ${result})
    return()
  endif()
  target_sources(tarn_portable PRIVATE ${CMAKE_CURRENT_LIST_DIR}/${file})
  set_source_files_properties(${CMAKE_CURRENT_LIST_DIR}/${file}
    TARGET_DIRECTORY tarn_portable PROPERTIES COMPILE_OPTIONS "${flags}")
  target_compile_definitions(tarn_portable PRIVATE ${define})
endfunction()

if(WIN32 AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # GCC for 64-bit Windows cannot align its stack beyond 16 bytes but moves
  # spilled 64-byte vectors with aligned instructions; the code keeps its
  # vectors in registers, and the assembler turns any aligned move unaligned.
  _tarn_crc_check(TARN_CRC32_CAN_UNALIGNED_MOVES "-Wa,-muse-unaligned-vector-move"
                  "int main() { return 0; }")
  if(TARN_CRC32_CAN_UNALIGNED_MOVES)
    list(APPEND _crc_vpclmul_flags -Wa,-muse-unaligned-vector-move)
  endif()
endif()

_tarn_crc_path(TARN_CRC32_CAN_PCLMUL "${_crc_pclmul_flags}" "
#include <immintrin.h>
int main() {
  __m128i a = _mm_setzero_si128();
  a = _mm_clmulepi64_si128(a, a, 0x11);
  return static_cast<int>(_mm_extract_epi64(a, 1));
}" crc32_pclmul.cpp TARN_CRC32_HAVE_PCLMUL)

# The 512-bit path falls back on the 128-bit one for short inputs.
if(TARN_CRC32_CAN_PCLMUL)
  _tarn_crc_path(TARN_CRC32_CAN_VPCLMUL "${_crc_vpclmul_flags}" "
#include <immintrin.h>
int main() {
  __m512i a = _mm512_maskz_set1_epi32(1, 3);
  a = _mm512_clmulepi64_epi128(a, a, 0x11);
  a = _mm512_ternarylogic_epi64(a, a, a, 0x96);
  return _mm_cvtsi128_si32(_mm512_extracti32x4_epi32(a, 1));
}" crc32_vpclmul.cpp TARN_CRC32_HAVE_VPCLMUL)
endif()

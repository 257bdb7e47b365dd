// The parts that the packed DMS and GCCC converters fill, for their tests.
#ifndef TARN_TESTS_ANGLES_PACKED_PARTS_H
#define TARN_TESTS_ANGLES_PACKED_PARTS_H

#include <gtest/gtest.h>

namespace packed_test {

// Sign, degrees or gon, minutes or centigon, seconds or centi-centigon.
struct Parts {
  int sign, whole, minor;
  double fine;
};

using PartsConverter = void (*)(double value, int& sign, int& whole, int& minor, double& fine,
                                int decimals, int wrap);

inline Parts PartsOf(PartsConverter convert, double value, int decimals, int wrap = 0) {
  Parts p{7, 7, 7, 7.0};  // all overwritten
  convert(value, p.sign, p.whole, p.minor, p.fine, decimals, wrap);
  return p;
}

inline void ExpectParts(const Parts& p, int sign, int whole, int minor, double fine) {
  EXPECT_EQ(p.sign, sign);
  EXPECT_EQ(p.whole, whole);
  EXPECT_EQ(p.minor, minor);
  EXPECT_NEAR(p.fine, fine, 1e-9);
}

}  // namespace packed_test

#endif  // TARN_TESTS_ANGLES_PACKED_PARTS_H

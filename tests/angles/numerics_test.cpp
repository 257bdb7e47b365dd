// Temperature, greatest common divisor and least common multiple.
#include <gtest/gtest.h>

#include <climits>

#include "tarn/angles.h"

namespace {

constexpr double kEpsilon = 2.220446049250313e-16;

TEST(Numerics, Temperature) {
  EXPECT_EQ(TarnC2K(0), 273.15);
  EXPECT_EQ(TarnK2C(0), -273.15);
  EXPECT_EQ(TarnK2C(293.15), 20.0);
}

// The int and the long forms must agree; the signs follow the truncating
// remainders, no absolute value is taken.
TEST(Numerics, IntegerDivisors) {
  const struct { int a, b, gcd, lcm; } kCases[] = {
      {12, 18, 6, 36},
      {-4, 6, 2, -12},   // (6, -4) (-4, 2) (2, 0); -24 / 2
      {4, -6, -2, 12},   // (-6, 4) (4, -2) (-2, 0); -24 / -2
      {-4, -6, -2, -12},
      {18, -12, 6, -36},  // (-12, 6) (6, 0)
      {0, 5, 5, 0},
      {5, 0, 5, 0},
      {0, -5, -5, 0},
      {0, 0, 0, 0},
      {46340, 46341, 1, 46340 * 46341},  // the product just fits
      {INT_MIN, -1, -1, INT_MIN},  // the overflowing quotient is not computed
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(testing::Message() << "(" << c.a << ", " << c.b << ")");
    EXPECT_EQ(__TarnGcdi(c.a, c.b), c.gcd);
    EXPECT_EQ(__TarnGcdl(c.a, c.b), static_cast<long>(c.gcd));
    EXPECT_EQ(__TarnLcmi(c.a, c.b), c.lcm);
    EXPECT_EQ(__TarnLcml(c.a, c.b), static_cast<long>(c.lcm));
  }
}

// Only a second operand above epsilon goes on; inexact fractions end there.
TEST(Numerics, DoubleDivisors) {
  const struct { double x, y, gcd, lcm; } kCases[] = {
      {4, 6, 2, 12},
      {1.5, 0.25, 0.25, 1.5},
      {0.5, 0.75, 0.25, 1.5},
      {0.3, 0.1, 0.09999999999999998, 0.30000000000000004},
      {0.1, 0.3, 0.09999999999999998, 0.30000000000000004},
      {5, -2, 5, -2},  // 5 * -2 / 5
      {-12, 18, 18, -12},  // (18, -12): -12 ends it
      {5, 0, 5, 0},
      {0, 5, 5, 0},
      {0, 0, 0, 0},
      {5, kEpsilon, 5, kEpsilon},
      {5, 2 * kEpsilon, 2 * kEpsilon, 5},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(testing::Message() << "(" << c.x << ", " << c.y << ")");
    EXPECT_EQ(__TarnGcdd(c.x, c.y), c.gcd);
    EXPECT_EQ(__TarnLcmd(c.x, c.y), c.lcm);
  }
}

}  // namespace

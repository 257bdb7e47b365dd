// Temperature, greatest common divisor and least common multiple.
#include <gtest/gtest.h>

#include <climits>

#include "tarn/angles.h"

namespace {

constexpr double kEpsilon = 2.220446049250313e-16;

TEST(Temperature, OffsetIs273_15) {
  EXPECT_EQ(TarnC2K(0), 273.15);
  EXPECT_EQ(TarnK2C(0), -273.15);
  EXPECT_EQ(TarnC2K(-273.15), 0.0);
  EXPECT_EQ(TarnK2C(293.15), 20.0);
  EXPECT_EQ(TarnC2K(100), 373.15);
}

// The int and the long forms, which must agree.
void ExpectGcd(int a, int b, int expected) {
  EXPECT_EQ(__TarnGcdi(a, b), expected) << "gcd(" << a << ", " << b << ")";
  EXPECT_EQ(__TarnGcdl(a, b), static_cast<long>(expected)) << "long gcd(" << a << ", " << b << ")";
}

void ExpectLcm(int a, int b, int expected) {
  EXPECT_EQ(__TarnLcmi(a, b), expected) << "lcm(" << a << ", " << b << ")";
  EXPECT_EQ(__TarnLcml(a, b), static_cast<long>(expected)) << "long lcm(" << a << ", " << b << ")";
}

TEST(IntegerDivisors, SignFollowsTheTruncatingRemainders) {
  ExpectGcd(12, 18, 6);
  ExpectGcd(18, 12, 6);
  ExpectGcd(-4, 6, 2);   // (6, -4) (-4, 2) (2, 0)
  ExpectGcd(4, -6, -2);  // (-6, 4) (4, -2) (-2, 0)
  ExpectGcd(-12, -18, -6);
  ExpectGcd(18, -12, 6);  // (-12, 6) (6, 0)
  ExpectGcd(0, 5, 5);
  ExpectGcd(5, 0, 5);
  ExpectGcd(0, -5, -5);
  ExpectGcd(-5, 0, -5);
  ExpectGcd(0, 0, 0);
  ExpectGcd(17, 5, 1);
  ExpectGcd(INT_MAX, INT_MAX - 1, 1);
  // The one remainder whose quotient overflows is just 0, not a fault.
  ExpectGcd(INT_MIN, -1, -1);
  ExpectGcd(INT_MIN, INT_MIN, INT_MIN);
}

TEST(IntegerDivisors, LeastCommonMultiple) {
  ExpectLcm(4, 6, 12);
  ExpectLcm(6, 4, 12);
  ExpectLcm(-4, 6, -12);   // -24 / 2
  ExpectLcm(4, -6, 12);    // -24 / -2
  ExpectLcm(-4, -6, -12);  // 24 / -2
  ExpectLcm(0, 5, 0);
  ExpectLcm(5, 0, 0);
  ExpectLcm(0, 0, 0);
  ExpectLcm(7, 7, 7);
  ExpectLcm(46340, 46341, 46340 * 46341);       // the product just fits
  EXPECT_EQ(__TarnLcmi(INT_MIN, -1), INT_MIN);  // wraps, does not fault
}

TEST(DoubleDivisors, ToleranceEndsTheLoop) {
  EXPECT_EQ(__TarnGcdd(12, 18), 6.0);
  EXPECT_EQ(__TarnGcdd(1.5, 0.25), 0.25);
  EXPECT_EQ(__TarnGcdd(0.3, 0.1), 0.09999999999999998);
  EXPECT_EQ(__TarnGcdd(0.1, 0.3), 0.09999999999999998);
  EXPECT_EQ(__TarnGcdd(7, 2.5), 0.5);
  // Only a second operand above epsilon goes on.
  EXPECT_EQ(__TarnGcdd(5, -2), 5.0);
  EXPECT_EQ(__TarnGcdd(5, 0), 5.0);
  EXPECT_EQ(__TarnGcdd(5, kEpsilon), 5.0);
  EXPECT_EQ(__TarnGcdd(5, 2 * kEpsilon), 2 * kEpsilon);
  EXPECT_EQ(__TarnGcdd(0, 5), 5.0);
  EXPECT_EQ(__TarnGcdd(1e-17, 5), 5.0);
  EXPECT_EQ(__TarnGcdd(-12, 18), 18.0);  // (18, -12): -12 ends it

  EXPECT_EQ(__TarnLcmd(4, 6), 12.0);
  EXPECT_EQ(__TarnLcmd(0.5, 0.75), 1.5);
  EXPECT_EQ(__TarnLcmd(0.3, 0.1), 0.30000000000000004);
  EXPECT_EQ(__TarnLcmd(0, 5), 0.0);
  EXPECT_EQ(__TarnLcmd(5, 0), 0.0);
  EXPECT_EQ(__TarnLcmd(0, 0), 0.0);
  EXPECT_EQ(__TarnLcmd(5, -2), -2.0);  // 5 * -2 / 5
  EXPECT_EQ(__TarnLcmd(5, kEpsilon), kEpsilon);
}

}  // namespace

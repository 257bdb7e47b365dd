// Packed DMS and GCCC conversions; temperature, greatest common divisor and
// least common multiple.
#include <gtest/gtest.h>

#include <climits>
#include <cmath>

#include "tarn/angles.h"

namespace {

constexpr double kPi = 3.141592653589793, kRadPerDeg = 0.017453292519943295;
constexpr double kEpsilon = 2.220446049250313e-16;
double (*const Dms)(int, int, int, double, int, int) = TarnDMS2DMS;
double (*const Gccc)(int, int, int, double, int, int) = TarnGCCC2GCCC;

TEST(PackedConvert, ToParts) {
  using ToParts = void (*)(double, int&, int&, int&, double&, int, int);
  const struct { ToParts to; double value; int decimals, wrap, sign, whole, minor; double fine; }
      kRows[] = {
      {TarnDeg2DMS, -12.5125, 2, 0, -1, 12, 30, 45}, {TarnDeg2DMS, -0.0, 2, 0, 1, 0, 0, 0},
      {TarnRad2DMS, 1.0, 6, 0, 1, 57, 17, 44.80624709636}, {TarnRad2GCCC, kPi, 2, 0, 1, 200, 0, 0},
      // The seconds carry, on into the degrees; wrap from 360 on, after the carry.
      {TarnDeg2DMS, 10.999999, 2, 0, 1, 11, 0, 0}, {TarnDMS2DMS, 12.9960, 2, 0, 1, 13, 0, 0},
      {TarnDeg2DMS, 360.0, -1, 1, 1, 0, 0, 0}, {TarnDeg2DMS, 360.0, -1, 0, 1, 360, 0, 0},
      {TarnDeg2DMS, 720.5, 2, 1, 1, 0, 30, 0}, {TarnDeg2DMS, 359.9999999, 2, 1, 1, 0, 0, 0},
      // The minutes' bias: 12.1 is 10 minutes, not 9 and 99.99... seconds.
      {TarnDMS2DMS, 12.1, -1, 0, 1, 12, 10, 0}, {TarnDMS2DMS, -0.0030, -1, 0, -1, 0, 0, 30},
      // Minutes of 100 move on, even without a carry; GCCC keeps them.
      {TarnDMS2DMS, 12.99999999999, -1, 0, 1, 13, 0, 0},
      {TarnGCCC2GCCC, 12.99999999999, 2, 0, 1, 12, 100, 0},
      // Minutes of 60 to 99 stay; seconds of 60 to 99 carry only with decimals.
      {TarnDMS2DMS, 12.3075, -1, 0, 1, 12, 30, 75}, {TarnDMS2DMS, 12.3075, 2, 0, 1, 12, 31, 0},
      {TarnGrad2GCCC, 12.999999, 1, 0, 1, 13, 0, 0}, {TarnGrad2GCCC, 400, -1, 1, 1, 0, 0, 0},
      {TarnGrad2GCCC, 12.999999, 2, 0, 1, 12, 99, 99.99},  // 99.995 stays below the limit
      {TarnGrad2GCCC, -360.5, -1, 1, -1, 360, 50, 0},
  };
  int s, w, m;  // sign, whole units, minor units and fine units
  double f;
  for (const auto& r : kRows) {
    r.to(r.value, s = 7, w = 7, m = 7, f = 7, r.decimals, r.wrap);
    EXPECT_TRUE(s == r.sign && w == r.whole && m == r.minor && fabs(f - r.fine) < 1e-9)
        << "row " << (&r - kRows) << ": " << s << " " << w << " " << m << " " << f;
  }
}

// Every function that returns a number, the small numerics too. Tolerance 0:
// within 4 units in the last place; -1: exactly.
TEST(PackedConvert, ToNumber) {
  const struct { double actual, expected, tolerance = 0; } kRows[] = {
      {Dms(1, 12, 30, 45.678, -1, 0), 12.3045678, 1e-12}, {Dms(1, 12, 30, 45.678, 4, 0), 12.3046},
      {Dms(1, 10, 75, 125, 4, 0), 11.1705},  // fields of 60 and more move on first
      // The carries that keep 60 from showing, at the digit rounding looks at:
      // the half step of the last decimal from 4 decimals on, tens of seconds
      // with 3, half minutes with 2, tens of minutes with 1, minutes with 0.
      {Dms(1, 10, 0, 59.49, 4, 0), 10.0059}, {Dms(1, 10, 0, 59.5, 4, 0), 10.01},
      {Dms(1, 10, 0, 59.999999999999986, 30, 0), 10.006},  // the limit: 60 - 2 ulp
      {Dms(1, 10, 0, std::nextafter(59.999999999999986, 60.0), 30, 0), 10.01},
      {Dms(1, 30, 0, 54.9, 3, 0), 30.005}, {Dms(1, 10, 0, 54.99999999999999, 3, 0), 10.01},
      {Dms(1, 10, 0, 49.99, 2, 0), 10.0}, {Dms(1, 10, 0, 49.99999999999999, 2, 0), 10.01},
      {Dms(1, 10, 59, 50, 2, 0), 11.0}, {Dms(1, 10, 54, 59.99, 1, 0), 10.5},
      {Dms(1, 10, 55, 0, 1, 0), 11.0}, {Dms(1, 10, 50, 0, 0, 0), 11.0},
      // Sign 0 is positive; the degrees count as magnitude, the minutes with
      // their own sign, negative seconds as 0.
      {Dms(0, -12, 30, 45, 4, 0), 12.3045}, {Dms(-5, 12, -30, -5, 4, 0), -11.7},
      {Gccc(0, -12, -34, -5, 4, 0), 11.66}, {TarnDMS2Deg(0, -12, -30, -45), 11.5},
      {TarnGCCC2Rad(-1, 12, 34, 56.78), -12.345678 * kPi / 200, 1e-15},
      // The wrap loop from exactly one turn on.
      {Dms(1, 360, 0, 0, 4, 1), 0.0, -1}, {Dms(1, 359, 59, 59, 4, 1), 359.5959},
      {Dms(-1, 725, 0, 0, 4, 1), -5.0}, {Dms(1, 359, 55, 0, 1, 1), 0.0, -1},
      {Gccc(1, 399, 99, 99.99, 2, 1), 0.0, -1}, {Gccc(1, 400, 0, 0, -1, 0), 400.0, -1},
      {Gccc(-1, 812, 0, 0, 0, 1), -12.0},
      // GCCC only rounds; fields of 100 and more simply add.
      {Gccc(1, 12, 34, 56.78, 2, 0), 12.35, 1e-12}, {Gccc(1, 12, 150, 150, 4, 0), 13.515},
      // Radians to packed: the seconds carry, then the carry table.
      {TarnRad2DMS(kPi / 3, 4, 0), 60.0, -1}, {TarnRad2DMS(kPi / 3, -1, 0), 59.596, 1e-12},
      {TarnRad2DMS(1.0, 6, 0), 57.174481}, {TarnRad2DMS(359.9999 * kPi / 180, 2, 1), 0.0, -1},
      {TarnRad2GCCC(kPi / 3, 4, 0), 66.6667}, {TarnRad2GCCC(5 * kPi, 2, 1), 200.0},
      // Packed DMS is parsed (75 minutes are taken as they stand); packed GCCC
      // is decimal gon already.
      {TarnDMS2Rad(10.75), 11.25 * kRadPerDeg, 1e-15}, {TarnGCCC2Rad(100.0), kPi / 2, 1e-15},
      {TarnDMS2Rad(-12.99999999999), -13 * kRadPerDeg, 1e-15},
      // Divisors of doubles: only a second operand above epsilon goes on, and
      // inexact fractions end there.
      {__TarnGcdd(0.5, 0.75), 0.25, -1}, {__TarnLcmd(0.5, 0.75), 1.5, -1},
      {__TarnGcdd(0.3, 0.1), 0.09999999999999998, -1}, {__TarnGcdd(5, kEpsilon), 5, -1},
      {__TarnLcmd(0.3, 0.1), 0.30000000000000004, -1}, {__TarnGcdd(5, -2), 5, -1},
      {__TarnGcdd(5, 2 * kEpsilon), 2 * kEpsilon, -1}, {__TarnLcmd(0, 0), 0, -1},
      {TarnC2K(0), 273.15, -1}, {TarnK2C(293.15), 20.0, -1},
  };
  for (const auto& r : kRows) {
    const double ulps = r.tolerance < 0 ? 0 : 4 * fabs(r.expected) * kEpsilon;
    EXPECT_NEAR(r.actual, r.expected, r.tolerance > 0 ? r.tolerance : ulps) << (&r - kRows);
  }
}

// The signs follow the truncating remainders; no absolute value is taken.
TEST(Numerics, IntegerDivisors) {
  const struct { int a, b, gcd, lcm; } kInts[] = {
      {12, 18, 6, 36}, {-4, 6, 2, -12}, {4, -6, -2, 12}, {0, -5, -5, 0}, {0, 0, 0, 0},
      {46340, 46341, 1, 46340 * 46341}, {INT_MIN, -1, -1, INT_MIN},  // no overflowing quotient
  };
  for (const auto& r : kInts) {
    SCOPED_TRACE(testing::Message() << r.a << ", " << r.b);
    EXPECT_EQ(std::pair(__TarnGcdi(r.a, r.b), __TarnLcmi(r.a, r.b)), std::pair(r.gcd, r.lcm));
    EXPECT_EQ(std::pair(__TarnGcdl(r.a, r.b), __TarnLcml(r.a, r.b)),
              std::pair(1L * r.gcd, 1L * r.lcm));
  }
}

}  // namespace

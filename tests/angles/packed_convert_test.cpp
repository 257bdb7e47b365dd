// Packed DMS and GCCC conversions and the rules they share.
#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <string>

#include "angles/packed_rules.h"
#include "tarn/angles.h"

namespace {

constexpr double kPi = 3.141592653589793;
// Spelt out: the tests check the values.
constexpr double kBelowSixty = 59.999999999999986;
constexpr double kBelowHundred = 99.99999999999997;

using ToParts = void (*)(double, int&, int&, int&, double&, int, int);
const ToParts kDeg2Dms = TarnDeg2DMS, kRad2Dms = TarnRad2DMS, kDms2Dms = TarnDMS2DMS;
const ToParts kGrad2Gccc = TarnGrad2GCCC, kRad2Gccc = TarnRad2GCCC, kGccc2Gccc = TarnGCCC2GCCC;

// Within `tolerance`; 0: within 4 units in the last place; kExact: exactly.
constexpr double kExact = -1;
void ExpectValue(double actual, double expected, double tolerance) {
  if (tolerance == kExact)
    EXPECT_EQ(actual, expected);
  else if (tolerance == 0)
    EXPECT_DOUBLE_EQ(actual, expected);
  else
    EXPECT_NEAR(actual, expected, tolerance);
}

TEST(PackedRules, SharedRules) {
  using namespace tarn::packed;
  EXPECT_TRUE(NearlyEqual(0, 2e-16));
  EXPECT_FALSE(NearlyEqual(0, 2.3e-16));
  EXPECT_TRUE(NearlyEqual(55, 54.99999999999999));  // 7e-15 apart, limit 1.2e-14
  EXPECT_FALSE(NearlyEqual(55, 54.99999999999998));

  // Steps are correctly rounded powers of ten, whatever the runtime's pow.
  for (int k = -2; k <= 15; ++k) EXPECT_EQ(DecimalStep(k), std::stod("1e" + std::to_string(-k)));
  EXPECT_EQ(RoundToStep(2.5, 1), 3.0);  // halves away from zero
  EXPECT_EQ(RoundToStep(-2.5, 1), -3.0);
  // From 16 decimals on the step counts as 0.
  EXPECT_EQ(RoundToStep(1.23456789012345678, DecimalStep(16)), 1.23456789012345678);
  EXPECT_NE(RoundToStep(1.23456789012345678, DecimalStep(15)), 1.23456789012345678);

  EXPECT_EQ(Truncate(-2.99), -2);
  EXPECT_EQ(Truncate(2147483647.5), INT_MAX);
  EXPECT_EQ(Truncate(3e9), INT_MIN);
  EXPECT_EQ(Truncate(NAN), INT_MIN);

  // One below a turn by the nearly-equal test is a turn.
  EXPECT_NEAR(WrapPacked(std::nextafter(360.0, 0.0), 1, kSexagesimal), 0.0, 1e-12);
  EXPECT_EQ(WrapPacked(359.9999999, 1, kSexagesimal), 359.9999999);

  // Both carries at two units in the last place below 60 and 100, with 20
  // decimals so that the half step vanishes.
  const struct { Fields in; const Notation& notation; int decimals; Fields out; } kCarries[] = {
      {{10, 59, kBelowSixty}, kSexagesimal, 20, {10, 59, kBelowSixty}},
      {{10, 59, std::nextafter(kBelowSixty, 60.0)}, kSexagesimal, 20, {11, 0, 0}},
      {{10, 58, 59.996}, kSexagesimal, 2, {10, 59, 0}},
      {{12, 99, kBelowHundred}, kCentesimal, 20, {12, 99, kBelowHundred}},
      {{12, 99, std::nextafter(kBelowHundred, 100.0)}, kCentesimal, 20, {13, 0, 0}},
      {{12, 59, 99.996}, kCentesimal, 2, {12, 60, 0}},  // 60 c is nothing special
  };
  for (const auto& c : kCarries) {
    Fields f = c.in;
    CarryFine(f, c.decimals, c.notation);
    SCOPED_TRACE(testing::Message() << "row " << (&c - kCarries));
    EXPECT_EQ(f.whole, c.out.whole);
    EXPECT_EQ(f.minor, c.out.minor);
    EXPECT_EQ(f.fine, c.out.fine);
  }

  // The minutes' bias: 12.30 is 30 minutes, not 29 and 99.99... seconds.
  Fields f = ParsePacked(12.30);
  EXPECT_EQ(f.minor, 30);
  EXPECT_NEAR(f.fine, 0, 1e-9);
}

TEST(PackedConvert, ToParts) {
  const struct { ToParts convert; double value; int decimals, wrap, sign, whole, minor; double fine; }
      kCases[] = {
      {kDeg2Dms, 12.5125, 2, 0, 1, 12, 30, 45},
      {kDeg2Dms, -12.5125, 2, 0, -1, 12, 30, 45},
      {kDeg2Dms, 10.999999, 2, 0, 1, 11, 0, 0},
      {kDeg2Dms, -0.0, 2, 0, 1, 0, 0, 0},
      // Wrap only from 360 on, by whole turns, after the carry.
      {kDeg2Dms, 720.5, 2, 1, 1, 0, 30, 0},
      {kDeg2Dms, 360.0, -1, 1, 1, 0, 0, 0},
      {kDeg2Dms, 360.0, -1, 0, 1, 360, 0, 0},
      {kDeg2Dms, -725.25, -1, 1, -1, 5, 15, 0},
      {kDeg2Dms, 359.9999999, 2, 1, 1, 0, 0, 0},
      {kRad2Dms, kPi, 2, 0, 1, 180, 0, 0},
      {kRad2Dms, 1.0, 6, 0, 1, 57, 17, 44.80624709636},
      {kDms2Dms, -0.0030, -1, 0, -1, 0, 0, 30},
      {kDms2Dms, 12.9960, 2, 0, 1, 13, 0, 0},
      // Minutes of 100 move on, even without a carry; GCCC keeps them.
      {kDms2Dms, 12.99999999999, -1, 0, 1, 13, 0, 0},
      {kGccc2Gccc, 12.99999999999, -1, 0, 1, 12, 100, 0},
      {kGccc2Gccc, 12.99999999999, 2, 0, 1, 12, 100, 0},
      // Minutes of 60 to 99 stay; seconds of 60 to 99 carry only with decimals.
      {kDms2Dms, 12.3075, -1, 0, 1, 12, 30, 75},
      {kDms2Dms, 12.3075, 2, 0, 1, 12, 31, 0},
      {kDms2Dms, 359.5959999, 2, 1, 1, 0, 0, 0},

      {kGrad2Gccc, 12.999999, 1, 0, 1, 13, 0, 0},
      {kGrad2Gccc, 12.999999, 2, 0, 1, 12, 99, 99.99},  // 99.995 stays below
      {kGrad2Gccc, -250.5, 0, 0, -1, 250, 50, 0},
      {kGrad2Gccc, 400, -1, 1, 1, 0, 0, 0},
      {kGrad2Gccc, -360.5, -1, 1, -1, 360, 50, 0},  // below 400: kept
      {kRad2Gccc, kPi, 2, 0, 1, 200, 0, 0},
      {kGccc2Gccc, 123.4567, 2, 0, 1, 123, 45, 67},
      {kGccc2Gccc, -0.0050, -1, 0, -1, 0, 0, 50},
      {kGccc2Gccc, 450.5, -1, 1, 1, 50, 50, 0},
      {kGccc2Gccc, 12.999999, 1, 0, 1, 13, 0, 0},
  };
  for (const auto& c : kCases) {
    int sign = 7, whole = 7, minor = 7;
    double fine = 7;
    c.convert(c.value, sign, whole, minor, fine, c.decimals, c.wrap);
    SCOPED_TRACE(testing::Message() << "row " << (&c - kCases) << ": " << c.value);
    EXPECT_EQ(sign, c.sign);
    EXPECT_EQ(whole, c.whole);
    EXPECT_EQ(minor, c.minor);
    EXPECT_NEAR(fine, c.fine, 1e-9);
  }
}

// Every function that returns a packed number, degrees, gon or radians.
TEST(PackedConvert, ToNumber) {
  const struct { double (*convert)(); double expected, tolerance = 0; } kCases[] = {
      // Rounding after the carry table.
      {[] { return TarnDMS2DMS(1, 12, 30, 45.678, -1, 0); }, 12.3045678, 1e-12},
      {[] { return TarnDMS2DMS(1, 12, 30, 45.678, 4, 0); }, 12.3046},
      {[] { return TarnDMS2DMS(1, 12, 59, 59.96, 6, 0); }, 12.595996},  // 59.965 is no carry
      // Fields of 60 and more move on first.
      {[] { return TarnDMS2DMS(1, 10, 75, 0, 4, 0); }, 11.15},
      {[] { return TarnDMS2DMS(1, 10, 0, 125, 4, 0); }, 10.0205},
      // The carry table. 4 decimals and more: the half step of the last one.
      {[] { return TarnDMS2DMS(1, 10, 0, 59.49, 4, 0); }, 10.0059},
      {[] { return TarnDMS2DMS(1, 10, 0, 59.5, 4, 0); }, 10.01},
      {[] { return TarnDMS2DMS(1, 10, 0, 59.95, 5, 0); }, 10.01},
      {[] { return TarnDMS2DMS(1, 10, 0, kBelowSixty, 30, 0); }, 10.006},  // rounds nothing
      {[] { return TarnDMS2DMS(1, 10, 0, std::nextafter(kBelowSixty, 60.0), 30, 0); }, 10.01},
      // 3 decimals: tens of seconds, 55 and nearly 55 carry.
      {[] { return TarnDMS2DMS(1, 30, 0, 54.9, 3, 0); }, 30.005},
      {[] { return TarnDMS2DMS(1, 30, 0, 55, 3, 0); }, 30.01},
      {[] { return TarnDMS2DMS(1, 10, 0, 54.99999999999999, 3, 0); }, 10.01},
      // 2 decimals: 50 seconds and more.
      {[] { return TarnDMS2DMS(1, 10, 0, 49.99, 2, 0); }, 10.0},
      {[] { return TarnDMS2DMS(1, 30, 0, 50, 2, 0); }, 30.01},
      {[] { return TarnDMS2DMS(1, 10, 0, 49.99999999999999, 2, 0); }, 10.01},
      {[] { return TarnDMS2DMS(1, 10, 59, 50, 2, 0); }, 11.0},
      // 1 decimal: minutes of 55 and more make the next degree.
      {[] { return TarnDMS2DMS(1, 10, 54, 59.99, 1, 0); }, 10.5},
      {[] { return TarnDMS2DMS(1, 10, 55, 0, 1, 0); }, 11.0},
      {[] { return TarnDMS2DMS(1, 359, 55, 0, 1, 1); }, 0.0, kExact},
      // 0 decimals: minutes of 50 and more round the degrees up.
      {[] { return TarnDMS2DMS(1, 10, 49, 59.9, 0, 0); }, 10.0},
      {[] { return TarnDMS2DMS(1, 10, 50, 0, 0, 0); }, 11.0},
      {[] { return TarnDMS2DMS(1, 10, 59, 59.99999, -1, 0); }, 10.595999999},  // none below 0
      // Sign 0 is positive; the degrees count as magnitude, the minutes with
      // their own sign, negative seconds as 0.
      {[] { return TarnDMS2DMS(0, 12, 30, 45, 4, 0); }, 12.3045},
      {[] { return TarnDMS2DMS(-5, 12, 30, 45, 4, 0); }, -12.3045},
      {[] { return TarnDMS2DMS(1, -12, 30, 45, 4, 0); }, 12.3045},
      {[] { return TarnDMS2DMS(1, 12, -30, 0, 4, 0); }, 11.7},
      {[] { return TarnDMS2DMS(1, 12, 30, -5, 4, 0); }, 12.3},
      // The wrap loop from exactly 360 on.
      {[] { return TarnDMS2DMS(1, 360, 0, 0, 4, 1); }, 0.0, kExact},
      {[] { return TarnDMS2DMS(1, 360, 0, 0, 4, 0); }, 360.0, kExact},
      {[] { return TarnDMS2DMS(1, 359, 59, 59, 4, 1); }, 359.5959},
      {[] { return TarnDMS2DMS(-1, 725, 0, 0, 4, 1); }, -5.0},

      // GCCC only rounds: no carry table.
      {[] { return TarnGCCC2GCCC(1, 12, 34, 56.78, -1, 0); }, 12.345678, 1e-12},
      {[] { return TarnGCCC2GCCC(1, 12, 34, 56.78, 2, 0); }, 12.35, 1e-12},
      {[] { return TarnGCCC2GCCC(1, 12, 99, 99.99, 2, 0); }, 13.0},
      {[] { return TarnGCCC2GCCC(1, 12, 55, 0, 1, 0); }, 12.6},
      {[] { return TarnGCCC2GCCC(1, 12, 150, 0, 4, 0); }, 13.5},  // 100 and more add
      {[] { return TarnGCCC2GCCC(1, 12, 0, 150, 4, 0); }, 12.015},
      {[] { return TarnGCCC2GCCC(0, -12, 34, 56, 4, 0); }, 12.3456},
      {[] { return TarnGCCC2GCCC(-3, 12, 34, 56, 4, 0); }, -12.3456},
      {[] { return TarnGCCC2GCCC(1, 12, -34, 0, 4, 0); }, 11.66},
      {[] { return TarnGCCC2GCCC(1, 12, 34, -5, 4, 0); }, 12.34},
      // The wrap loop from exactly 400 on; nearly 400 unrounded is a turn too.
      {[] { return TarnGCCC2GCCC(1, 399, 99, 99.99, 2, 1); }, 0.0, kExact},
      {[] { return TarnGCCC2GCCC(1, 399, 99, 99.99, -1, 1); }, 399.999999},
      {[] { return TarnGCCC2GCCC(1, 400, 0, 0, -1, 1); }, 0.0, kExact},
      {[] { return TarnGCCC2GCCC(1, 400, 0, 0, -1, 0); }, 400.0, kExact},
      {[] { return TarnGCCC2GCCC(-1, 812, 0, 0, 0, 1); }, -12.0},
      {[] { return TarnGCCC2GCCC(1, 399, 99, 99.9999999999, -1, 1); }, 0.0, 1e-12},
      // Radians to packed: the seconds carry, then the carry table.
      {[] { return TarnRad2DMS(kPi / 3, 4, 0); }, 60.0, kExact},
      {[] { return TarnRad2DMS(kPi / 3, -1, 0); }, 59.596, 1e-12},  // 59.99999999999999 degrees
      {[] { return TarnRad2DMS(1.0, 6, 0); }, 57.174481},
      {[] { return TarnRad2DMS(359.9999 * kPi / 180, 2, 0); }, 360.0, kExact},
      {[] { return TarnRad2DMS(359.9999 * kPi / 180, 2, 1); }, 0.0, kExact},
      {[] { return TarnRad2DMS(370 * kPi / 180, 2, 1); }, 10.0},
      {[] { return TarnRad2GCCC(kPi / 3, 4, 0); }, 66.6667},
      {[] { return TarnRad2GCCC(kPi / 3, -1, 0); }, 66.66666666666666, 1e-12},
      {[] { return TarnRad2GCCC(2 * kPi, 2, 1); }, 0.0, kExact},
      {[] { return TarnRad2GCCC(2 * kPi, 2, 0); }, 400.0, kExact},
      {[] { return TarnRad2GCCC(5 * kPi, 2, 1); }, 200.0},
      // Consumed parts to a number, with the sign rules above.
      {[] { return TarnDMS2Deg(1, 12, 30, 45); }, 12.5125},
      {[] { return TarnDMS2Deg(-1, 12, 30, 45); }, -12.5125},
      {[] { return TarnDMS2Deg(0, -12, 30, 45); }, 12.5125},
      {[] { return TarnDMS2Deg(1, 12, 30, -5); }, 12.5},
      {[] { return TarnDMS2Deg(1, 12, -30, 0); }, 11.5},
      {[] { return TarnDMS2Rad(-1, 12, 30, 45); }, -12.5125 * 0.017453292519943295},
      {[] { return TarnGCCC2Grad(-1, 12, 34, 56.78); }, -12.345678},
      {[] { return TarnGCCC2Grad(0, -12, 34, 56); }, 12.3456},
      {[] { return TarnGCCC2Rad(-1, 100, 0, 0); }, -kPi / 2},
      {[] { return TarnDMS2Rad(1, 180, 0, 0); }, 180 * 0.017453292519943295, kExact},
      // Packed DMS is parsed (75 minutes are not rejected); packed GCCC is
      // decimal gon already.
      {[] { return TarnDMS2Rad(12.3045); }, 12.5125 * 0.017453292519943295, 1e-15},
      {[] { return TarnDMS2Rad(10.75); }, 11.25 * 0.017453292519943295, 1e-15},
      {[] { return TarnDMS2Rad(12.99999999999); }, 13 * 0.017453292519943295, 1e-15},
      {[] { return TarnGCCC2Rad(100.0); }, kPi / 2, 1e-15},
      {[] { return TarnGCCC2Rad(12.99999999999); }, 12.99999999999 * 0.015707963267948967, kExact},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(testing::Message() << "row " << (&c - kCases));
    ExpectValue(c.convert(), c.expected, c.tolerance);
  }
}

}  // namespace

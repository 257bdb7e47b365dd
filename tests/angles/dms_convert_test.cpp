// Packed DMS conversions and the rules they share with packed GCCC.
#include <gtest/gtest.h>

#include <climits>
#include <cmath>

#include "angles/packed_rules.h"
#include "packed_parts.h"
#include "tarn/angles.h"

namespace {

constexpr double kPi = 3.141592653589793;
constexpr double kBelowSixty = 59.999999999999986;  // spelt out: the test checks the value

using packed_test::ExpectParts;
using packed_test::PartsOf;

TEST(PackedRules, NearlyEqualRoundTruncate) {
  using namespace tarn::packed;
  EXPECT_TRUE(NearlyEqual(0, 2e-16));
  EXPECT_FALSE(NearlyEqual(0, 2.3e-16));
  EXPECT_TRUE(NearlyEqual(55, 54.99999999999999));  // 7e-15 apart, limit 1.2e-14
  EXPECT_FALSE(NearlyEqual(55, 54.99999999999998));
  EXPECT_TRUE(NearlyEqual(360, std::nextafter(360.0, 0.0)));

  // Steps are correctly rounded powers of ten, whatever the runtime's pow.
  EXPECT_EQ(DecimalStep(0), 1.0);
  EXPECT_EQ(DecimalStep(3), 0.001);
  EXPECT_EQ(DecimalStep(4), 0.0001);
  EXPECT_EQ(DecimalStep(6), 0.000001);
  EXPECT_EQ(DecimalStep(15), 1e-15);
  EXPECT_EQ(DecimalStep(-2), 100.0);
  EXPECT_EQ(RoundToStep(360, DecimalStep(4)), 360.0);

  EXPECT_EQ(RoundToStep(2.5, 1), 3.0);  // halves away from zero
  EXPECT_EQ(RoundToStep(-2.5, 1), -3.0);
  EXPECT_EQ(RoundToStep(2.4999, 1), 2.0);
  EXPECT_TRUE(std::signbit(RoundToStep(-0.4, 1)));
  EXPECT_EQ(RoundToStep(2.5, -1), 2.5);
  EXPECT_DOUBLE_EQ(RoundToStep(12.3045678, DecimalStep(4)), 12.3046);
  // From 16 decimals on the step counts as 0.
  EXPECT_EQ(RoundToStep(1.23456789012345678, DecimalStep(16)), 1.23456789012345678);
  EXPECT_NE(RoundToStep(1.23456789012345678, DecimalStep(15)), 1.23456789012345678);

  EXPECT_EQ(Truncate(2.99), 2);
  EXPECT_EQ(Truncate(-2.99), -2);
  EXPECT_EQ(Truncate(2147483647.5), INT_MAX);
  EXPECT_EQ(Truncate(-2147483648.5), INT_MIN);
  EXPECT_EQ(Truncate(3e9), INT_MIN);
  EXPECT_EQ(Truncate(NAN), INT_MIN);
}

TEST(PackedRules, ParseAndSplit) {
  using tarn::packed::Fields;
  // The minutes' bias: 12.30 is 30 minutes, not 29 and 99.99... seconds.
  Fields f = tarn::packed::ParsePacked(12.30);
  EXPECT_EQ(f.whole, 12);
  EXPECT_EQ(f.minor, 30);
  EXPECT_NEAR(f.fine, 0, 1e-9);
  f = tarn::packed::ParsePacked(10.7530);
  EXPECT_EQ(f.minor, 75);
  EXPECT_NEAR(f.fine, 30, 1e-9);
  f = tarn::packed::ParsePacked(12.99999999999);
  EXPECT_EQ(f.whole, 12);
  EXPECT_EQ(f.minor, 100);
  EXPECT_LT(f.fine, 0);

  f = tarn::packed::SplitMagnitude(12.5125, tarn::packed::kSexagesimal);
  EXPECT_EQ(f.whole, 12);
  EXPECT_EQ(f.minor, 30);
  EXPECT_NEAR(f.fine, 45, 1e-9);
  f = tarn::packed::SplitMagnitude(12.345678, tarn::packed::kCentesimal);
  EXPECT_EQ(f.minor, 34);
  EXPECT_NEAR(f.fine, 56.78, 1e-9);
}

TEST(PackedRules, SecondsCarryAtTwoUnitsInTheLastPlaceBelowSixty) {
  using tarn::packed::Fields;
  // With 20 decimals the half step vanishes: the seconds meet the limit
  // themselves.
  Fields f{10, 59, kBelowSixty};
  tarn::packed::SecondsCarry(f, 20);
  EXPECT_EQ(f.whole, 10);
  EXPECT_EQ(f.minor, 59);
  f.fine = std::nextafter(kBelowSixty, 60.0);
  tarn::packed::SecondsCarry(f, 20);
  EXPECT_EQ(f.whole, 11);
  EXPECT_EQ(f.minor, 0);
  EXPECT_EQ(f.fine, 0.0);
  // The minutes carry on only past 59.
  f = {10, 58, 59.996};
  tarn::packed::SecondsCarry(f, 2);
  EXPECT_EQ(f.whole, 10);
  EXPECT_EQ(f.minor, 59);
  f = {10, 58, 59.996};
  tarn::packed::SecondsCarry(f, -1);
  EXPECT_EQ(f.minor, 58);
  EXPECT_EQ(f.fine, 59.996);
}

TEST(DegToDms, SplitCarryAndWrap) {
  ExpectParts(PartsOf(TarnDeg2DMS, 12.5125, 2), 1, 12, 30, 45);
  ExpectParts(PartsOf(TarnDeg2DMS, -12.5125, 2), -1, 12, 30, 45);
  ExpectParts(PartsOf(TarnDeg2DMS, 10.999999, 2), 1, 11, 0, 0);
  ExpectParts(PartsOf(TarnDeg2DMS, 10.999999, 3), 1, 10, 59, 59.9964);  // 59.9969 shows as 59.997
  ExpectParts(PartsOf(TarnDeg2DMS, 10.999999, -1), 1, 10, 59, 59.9964);
  ExpectParts(PartsOf(TarnDeg2DMS, -0.0, 2), 1, 0, 0, 0);
  // Wrap only from 360 on, by whole turns.
  ExpectParts(PartsOf(TarnDeg2DMS, 720.5, 2, 1), 1, 0, 30, 0);
  ExpectParts(PartsOf(TarnDeg2DMS, 359.5, -1, 1), 1, 359, 30, 0);
  ExpectParts(PartsOf(TarnDeg2DMS, 360.0, -1, 1), 1, 0, 0, 0);
  ExpectParts(PartsOf(TarnDeg2DMS, 360.0, -1, 0), 1, 360, 0, 0);
  ExpectParts(PartsOf(TarnDeg2DMS, -725.25, -1, 1), -1, 5, 15, 0);
  // The carry reaches 360 before the wrap looks.
  ExpectParts(PartsOf(TarnDeg2DMS, 359.9999999, 2, 1), 1, 0, 0, 0);
  ExpectParts(PartsOf(TarnDeg2DMS, 359.9999999, 2, 0), 1, 360, 0, 0);

  ExpectParts(PartsOf(TarnRad2DMS, kPi, 2), 1, 180, 0, 0);
  ExpectParts(PartsOf(TarnRad2DMS, -kPi / 2, 0), -1, 90, 0, 0);
  ExpectParts(PartsOf(TarnRad2DMS, 1.0, 6), 1, 57, 17, 44.80624709636);
}

TEST(RadToDms, PackedNumber) {
  EXPECT_EQ(TarnRad2DMS(kPi / 3, 4, 0), 60.0);
  EXPECT_NEAR(TarnRad2DMS(kPi / 3, -1, 0), 59.596, 1e-12);
  EXPECT_DOUBLE_EQ(TarnRad2DMS(1.0, 4, 0), 57.1745);
  EXPECT_DOUBLE_EQ(TarnRad2DMS(1.0, 6, 0), 57.174481);
  EXPECT_DOUBLE_EQ(TarnRad2DMS(-1.0, 4, 0), -57.1745);
  EXPECT_EQ(TarnRad2DMS(359.9999 * kPi / 180, 2, 0), 360.0);
  EXPECT_EQ(TarnRad2DMS(359.9999 * kPi / 180, 2, 1), 0.0);
  EXPECT_DOUBLE_EQ(TarnRad2DMS(370 * kPi / 180, 2, 1), 10.0);
  EXPECT_EQ(TarnRad2DMS(4 * kPi, 4, 1), 0.0);
  EXPECT_EQ(TarnRad2DMS(4 * kPi, 4, 0), 720.0);
  EXPECT_EQ(TarnRad2DMS(-kPi / 2, 2, 0), -90.0);
}

TEST(DmsToDms, PackedToParts) {
  ExpectParts(PartsOf(TarnDMS2DMS, 12.3045, 2), 1, 12, 30, 45);
  ExpectParts(PartsOf(TarnDMS2DMS, -0.0030, -1), -1, 0, 0, 30);
  ExpectParts(PartsOf(TarnDMS2DMS, 12.9960, 2), 1, 13, 0, 0);
  // Minutes of 100 move on, even without a carry; GCCC keeps them.
  ExpectParts(PartsOf(TarnDMS2DMS, 12.99999999999, -1), 1, 13, 0, 0);
  // Minutes of 60 to 99 stay; seconds of 60 to 99 carry only with decimals.
  ExpectParts(PartsOf(TarnDMS2DMS, 12.7530, -1), 1, 12, 75, 30);
  ExpectParts(PartsOf(TarnDMS2DMS, 12.3075, -1), 1, 12, 30, 75);
  ExpectParts(PartsOf(TarnDMS2DMS, 12.3075, 2), 1, 12, 31, 0);
  ExpectParts(PartsOf(TarnDMS2DMS, 359.5959999, 2, 0), 1, 360, 0, 0);
  ExpectParts(PartsOf(TarnDMS2DMS, 359.5959999, 2, 1), 1, 0, 0, 0);
  ExpectParts(PartsOf(TarnDMS2DMS, 720.30, 4, 1), 1, 0, 30, 0);
}

TEST(DmsToDms, PartsToPackedRoundsAfterTheCarryTable) {
  const double s = 45.678;
  EXPECT_NEAR(TarnDMS2DMS(1, 12, 30, s, -1, 0), 12.3045678, 1e-12);
  EXPECT_DOUBLE_EQ(TarnDMS2DMS(1, 12, 30, s, 0, 0), 12.0);
  EXPECT_DOUBLE_EQ(TarnDMS2DMS(1, 12, 30, s, 1, 0), 12.3);
  EXPECT_DOUBLE_EQ(TarnDMS2DMS(1, 12, 30, s, 2, 0), 12.3);
  EXPECT_DOUBLE_EQ(TarnDMS2DMS(1, 12, 30, s, 3, 0), 12.305);
  EXPECT_DOUBLE_EQ(TarnDMS2DMS(1, 12, 30, s, 4, 0), 12.3046);
  EXPECT_DOUBLE_EQ(TarnDMS2DMS(1, 12, 30, s, 6, 0), 12.304568);

  EXPECT_DOUBLE_EQ(TarnDMS2DMS(1, 12, 59, 59.96, 2, 0), 13.0);
  EXPECT_DOUBLE_EQ(TarnDMS2DMS(1, 12, 59, 59.96, 4, 0), 13.0);
  EXPECT_DOUBLE_EQ(TarnDMS2DMS(1, 12, 59, 59.96, 6, 0), 12.595996);
  EXPECT_DOUBLE_EQ(TarnDMS2DMS(1, 12, 59, 59.96, -1, 0), 12.595996);
  EXPECT_DOUBLE_EQ(TarnDMS2DMS(1, 12, 56, 10, 0, 0), 13.0);
  EXPECT_DOUBLE_EQ(TarnDMS2DMS(1, 12, 56, 10, 1, 0), 13.0);
  EXPECT_DOUBLE_EQ(TarnDMS2DMS(1, 12, 56, 10, 2, 0), 12.56);
  // Fields of 60 and more move on first.
  EXPECT_DOUBLE_EQ(TarnDMS2DMS(1, 10, 75, 0, 4, 0), 11.15);
  EXPECT_DOUBLE_EQ(TarnDMS2DMS(1, 10, 0, 125, 4, 0), 10.0205);
}

TEST(DmsToDms, EveryRowOfTheCarryTable) {
  // 4 decimals and more: the seconds' half step of the last decimal.
  EXPECT_DOUBLE_EQ(TarnDMS2DMS(1, 10, 0, 59.49, 4, 0), 10.0059);
  EXPECT_DOUBLE_EQ(TarnDMS2DMS(1, 10, 0, 59.5, 4, 0), 10.01);
  EXPECT_DOUBLE_EQ(TarnDMS2DMS(1, 10, 0, 59.94, 5, 0), 10.00599);
  EXPECT_DOUBLE_EQ(TarnDMS2DMS(1, 10, 0, 59.95, 5, 0), 10.01);
  // The limit is 59.999999999999986, not 60 (30 decimals round nothing).
  EXPECT_DOUBLE_EQ(TarnDMS2DMS(1, 10, 0, kBelowSixty, 30, 0), 10.006);
  EXPECT_DOUBLE_EQ(TarnDMS2DMS(1, 10, 0, std::nextafter(kBelowSixty, 60.0), 30, 0), 10.01);
  // 3 decimals: tens of seconds, 55 and nearly 55 carry.
  EXPECT_DOUBLE_EQ(TarnDMS2DMS(1, 30, 0, 54.9, 3, 0), 30.005);
  EXPECT_DOUBLE_EQ(TarnDMS2DMS(1, 30, 0, 55, 3, 0), 30.01);
  EXPECT_DOUBLE_EQ(TarnDMS2DMS(1, 10, 0, 54.99999999999999, 3, 0), 10.01);
  EXPECT_DOUBLE_EQ(TarnDMS2DMS(1, 10, 0, 54.9999999999999, 3, 0), 10.006);
  // 2 decimals: 50 seconds and more.
  EXPECT_DOUBLE_EQ(TarnDMS2DMS(1, 30, 0, 45, 2, 0), 30.0);
  EXPECT_DOUBLE_EQ(TarnDMS2DMS(1, 10, 0, 49.99, 2, 0), 10.0);
  EXPECT_DOUBLE_EQ(TarnDMS2DMS(1, 30, 0, 50, 2, 0), 30.01);
  EXPECT_DOUBLE_EQ(TarnDMS2DMS(1, 10, 0, 49.99999999999999, 2, 0), 10.01);
  EXPECT_DOUBLE_EQ(TarnDMS2DMS(1, 10, 59, 50, 2, 0), 11.0);
  // 1 decimal: minutes of 55 and more make the next degree, seconds dropped.
  EXPECT_DOUBLE_EQ(TarnDMS2DMS(1, 10, 54, 59.99, 1, 0), 10.5);
  EXPECT_DOUBLE_EQ(TarnDMS2DMS(1, 10, 55, 0, 1, 0), 11.0);
  EXPECT_DOUBLE_EQ(TarnDMS2DMS(1, 10, 55, 30, 1, 0), 11.0);
  EXPECT_EQ(TarnDMS2DMS(1, 359, 55, 0, 1, 1), 0.0);
  // 0 decimals: minutes of 50 and more round the degrees up.
  EXPECT_DOUBLE_EQ(TarnDMS2DMS(1, 10, 49, 59.9, 0, 0), 10.0);
  EXPECT_DOUBLE_EQ(TarnDMS2DMS(1, 10, 50, 0, 0, 0), 11.0);
  EXPECT_DOUBLE_EQ(TarnDMS2DMS(1, 10, 59, 0, 0, 0), 11.0);
  // Below 0: neither carry nor rounding.
  EXPECT_DOUBLE_EQ(TarnDMS2DMS(1, 10, 59, 59.99999, -1, 0), 10.595999999);
}

TEST(DmsToDms, SignsOfConsumedParts) {
  // Sign 0 is positive; the degrees count as magnitude, the minutes with
  // their own sign, negative seconds as 0.
  EXPECT_DOUBLE_EQ(TarnDMS2DMS(0, 12, 30, 45, 4, 0), 12.3045);
  EXPECT_DOUBLE_EQ(TarnDMS2DMS(-5, 12, 30, 45, 4, 0), -12.3045);
  EXPECT_DOUBLE_EQ(TarnDMS2DMS(1, -12, 30, 45, 4, 0), 12.3045);
  EXPECT_DOUBLE_EQ(TarnDMS2DMS(1, 12, -30, 0, 4, 0), 11.7);
  EXPECT_DOUBLE_EQ(TarnDMS2DMS(1, 12, 30, -5, 4, 0), 12.3);

  EXPECT_DOUBLE_EQ(TarnDMS2Deg(1, 12, 30, 45), 12.5125);
  EXPECT_DOUBLE_EQ(TarnDMS2Deg(-1, 12, 30, 45), -12.5125);
  EXPECT_DOUBLE_EQ(TarnDMS2Deg(0, -12, 30, 45), 12.5125);
  EXPECT_DOUBLE_EQ(TarnDMS2Deg(-1, -12, 30, 45), -12.5125);
  EXPECT_DOUBLE_EQ(TarnDMS2Deg(1, 12, 30, -5), 12.5);
  EXPECT_DOUBLE_EQ(TarnDMS2Deg(1, 12, -30, 0), 11.5);
  EXPECT_DOUBLE_EQ(TarnDMS2Rad(-1, 12, 30, 45), -12.5125 * 0.017453292519943295);
}

TEST(DmsToDms, WrapLoopAtExactly360) {
  EXPECT_EQ(TarnDMS2DMS(1, 360, 0, 0, 4, 1), 0.0);
  EXPECT_EQ(TarnDMS2DMS(1, 360, 0, 0, 4, 0), 360.0);
  EXPECT_DOUBLE_EQ(TarnDMS2DMS(1, 359, 59, 59, 4, 1), 359.5959);
  EXPECT_EQ(TarnDMS2DMS(1, 359, 59, 59.9, 2, 1), 0.0);
  EXPECT_EQ(TarnDMS2DMS(1, 720, 0, 0, 4, 1), 0.0);
  EXPECT_DOUBLE_EQ(TarnDMS2DMS(-1, 725, 0, 0, 4, 1), -5.0);
  EXPECT_DOUBLE_EQ(TarnDMS2DMS(1, -370, 0, 0, 4, 1), 10.0);
  // One below a turn by the nearly-equal test is a turn.
  EXPECT_NEAR(tarn::packed::WrapPacked(std::nextafter(360.0, 0.0), 1, tarn::packed::kSexagesimal),
              0.0, 1e-12);
  EXPECT_EQ(tarn::packed::WrapPacked(359.9999999, 1, tarn::packed::kSexagesimal), 359.9999999);
}

TEST(DmsToRad, PackedAndParts) {
  EXPECT_NEAR(TarnDMS2Rad(12.3045), 12.5125 * 0.017453292519943295, 1e-15);
  EXPECT_NEAR(TarnDMS2Rad(-12.3045), -12.5125 * 0.017453292519943295, 1e-15);
  // 75 minutes are not rejected: 10.75 is 11.25 degrees.
  EXPECT_NEAR(TarnDMS2Rad(10.75), 11.25 * 0.017453292519943295, 1e-15);
  EXPECT_NEAR(TarnDMS2Rad(12.99999999999), 13 * 0.017453292519943295, 1e-15);
  EXPECT_EQ(TarnDMS2Rad(1, 180, 0, 0), 180 * 0.017453292519943295);
  EXPECT_EQ(TarnDMS2Rad(0.0), 0.0);
}

}  // namespace

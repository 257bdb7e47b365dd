// Packed GCCC conversions.
#include <gtest/gtest.h>

#include <cmath>

#include "angles/packed_rules.h"
#include "packed_parts.h"
#include "tarn/angles.h"

namespace {

constexpr double kPi = 3.141592653589793;
constexpr double kBelowHundred = 99.99999999999997;  // spelt out: the test checks the value

using packed_test::ExpectParts;
using packed_test::PartsOf;

TEST(PackedRules, CentesimalCarryAtTwoUnitsInTheLastPlaceBelowHundred) {
  tarn::packed::Fields f{12, 99, kBelowHundred};
  tarn::packed::CentesimalCarry(f, 20);
  EXPECT_EQ(f.whole, 12);
  EXPECT_EQ(f.minor, 99);
  f.fine = std::nextafter(kBelowHundred, 100.0);
  tarn::packed::CentesimalCarry(f, 20);
  EXPECT_EQ(f.whole, 13);
  EXPECT_EQ(f.minor, 0);
  EXPECT_EQ(f.fine, 0.0);
  // Centigon carry on only past 99: 59 and 60 are nothing special.
  f = {12, 59, 99.996};
  tarn::packed::CentesimalCarry(f, 2);
  EXPECT_EQ(f.whole, 12);
  EXPECT_EQ(f.minor, 60);
}

TEST(GradToGccc, SplitCarryAndWrap) {
  ExpectParts(PartsOf(TarnGrad2GCCC, 12.999999, 1), 1, 13, 0, 0);
  ExpectParts(PartsOf(TarnGrad2GCCC, 12.999999, 2), 1, 12, 99, 99.99);  // 99.995 stays below
  ExpectParts(PartsOf(TarnGrad2GCCC, -250.5, 0), -1, 250, 50, 0);
  ExpectParts(PartsOf(TarnGrad2GCCC, 12.345678, -1), 1, 12, 34, 56.78);
  // Wrap from 400 on, by whole turns.
  ExpectParts(PartsOf(TarnGrad2GCCC, 399.5, -1, 1), 1, 399, 50, 0);
  ExpectParts(PartsOf(TarnGrad2GCCC, 400, -1, 1), 1, 0, 0, 0);
  ExpectParts(PartsOf(TarnGrad2GCCC, 400, -1, 0), 1, 400, 0, 0);
  ExpectParts(PartsOf(TarnGrad2GCCC, 800.25, -1, 1), 1, 0, 25, 0);
  ExpectParts(PartsOf(TarnGrad2GCCC, -360.5, -1, 1), -1, 360, 50, 0);  // below 400: kept

  ExpectParts(PartsOf(TarnRad2GCCC, kPi, 2), 1, 200, 0, 0);
  ExpectParts(PartsOf(TarnRad2GCCC, -kPi / 2, 2), -1, 100, 0, 0);
}

TEST(RadToGccc, PackedNumber) {
  EXPECT_DOUBLE_EQ(TarnRad2GCCC(kPi / 3, 4, 0), 66.6667);
  EXPECT_DOUBLE_EQ(TarnRad2GCCC(kPi / 3, 6, 0), 66.666667);
  EXPECT_NEAR(TarnRad2GCCC(kPi / 3, -1, 0), 66.66666666666666, 1e-12);
  EXPECT_EQ(TarnRad2GCCC(2 * kPi, 2, 1), 0.0);
  EXPECT_EQ(TarnRad2GCCC(2 * kPi, 2, 0), 400.0);
  EXPECT_NEAR(TarnRad2GCCC(1.0, 4, 0), 63.662, 1e-12);
  EXPECT_DOUBLE_EQ(TarnRad2GCCC(-1.0, 4, 0), -63.662);
  EXPECT_DOUBLE_EQ(TarnRad2GCCC(5 * kPi, 2, 1), 200.0);
}

TEST(GcccToGccc, PackedToPartsKeeps100Centigon) {
  ExpectParts(PartsOf(TarnGCCC2GCCC, 123.4567, 2), 1, 123, 45, 67);
  ExpectParts(PartsOf(TarnGCCC2GCCC, -0.0050, -1), -1, 0, 0, 50);
  ExpectParts(PartsOf(TarnGCCC2GCCC, 450.5, -1, 1), 1, 50, 50, 0);
  // Where packed DMS moves the minutes on, GCCC keeps 100 centigon, with and
  // without a carry.
  ExpectParts(PartsOf(TarnGCCC2GCCC, 12.99999999999, -1), 1, 12, 100, 0);
  ExpectParts(PartsOf(TarnGCCC2GCCC, 12.99999999999, 2), 1, 12, 100, 0);
  ExpectParts(PartsOf(TarnDMS2DMS, 12.99999999999, -1), 1, 13, 0, 0);
  // 60 to 99 are ordinary centigon and centi-centigon.
  ExpectParts(PartsOf(TarnGCCC2GCCC, 12.7585, 2), 1, 12, 75, 85);
  ExpectParts(PartsOf(TarnGCCC2GCCC, 12.999999, 1), 1, 13, 0, 0);
}

TEST(GcccToGccc, PartsToPackedOnlyRounds) {
  const double cc = 56.78;
  EXPECT_NEAR(TarnGCCC2GCCC(1, 12, 34, cc, -1, 0), 12.345678, 1e-12);
  EXPECT_NEAR(TarnGCCC2GCCC(1, 12, 34, cc, 0, 0), 12.0, 1e-12);
  EXPECT_NEAR(TarnGCCC2GCCC(1, 12, 34, cc, 1, 0), 12.3, 1e-12);
  EXPECT_NEAR(TarnGCCC2GCCC(1, 12, 34, cc, 2, 0), 12.35, 1e-12);
  EXPECT_NEAR(TarnGCCC2GCCC(1, 12, 34, cc, 3, 0), 12.346, 1e-12);
  EXPECT_NEAR(TarnGCCC2GCCC(1, 12, 34, cc, 4, 0), 12.3457, 1e-12);
  EXPECT_NEAR(TarnGCCC2GCCC(1, 12, 34, cc, 6, 0), 12.345678, 1e-12);
  EXPECT_DOUBLE_EQ(TarnGCCC2GCCC(1, 12, 99, 99.99, 2, 0), 13.0);
  // No carry table: 55 c with one decimal round as decimals do.
  EXPECT_DOUBLE_EQ(TarnGCCC2GCCC(1, 12, 55, 0, 1, 0), 12.6);
  EXPECT_DOUBLE_EQ(TarnGCCC2GCCC(1, 12, 50, 0, 0, 0), 13.0);
  EXPECT_DOUBLE_EQ(TarnGCCC2GCCC(1, 12, 49, 99.99, 0, 0), 12.0);
  // Fields of 100 and more simply add.
  EXPECT_DOUBLE_EQ(TarnGCCC2GCCC(1, 12, 150, 0, 4, 0), 13.5);
  EXPECT_DOUBLE_EQ(TarnGCCC2GCCC(1, 12, 0, 150, 4, 0), 12.015);
  // Consumed signs: 0 positive, gon as magnitude, centigon signed,
  // negative centi-centigon as 0.
  EXPECT_DOUBLE_EQ(TarnGCCC2GCCC(0, -12, 34, 56, 4, 0), 12.3456);
  EXPECT_DOUBLE_EQ(TarnGCCC2GCCC(-3, 12, 34, 56, 4, 0), -12.3456);
  EXPECT_DOUBLE_EQ(TarnGCCC2GCCC(1, 12, -34, 0, 4, 0), 11.66);
  EXPECT_DOUBLE_EQ(TarnGCCC2GCCC(1, 12, 34, -5, 4, 0), 12.34);
}

TEST(GcccToGccc, WrapLoopAtExactly400) {
  EXPECT_EQ(TarnGCCC2GCCC(1, 399, 99, 99.99, 2, 1), 0.0);
  EXPECT_DOUBLE_EQ(TarnGCCC2GCCC(1, 399, 99, 99.99, -1, 1), 399.999999);
  EXPECT_EQ(TarnGCCC2GCCC(1, 400, 0, 0, -1, 1), 0.0);
  EXPECT_EQ(TarnGCCC2GCCC(1, 400, 0, 0, -1, 0), 400.0);
  EXPECT_DOUBLE_EQ(TarnGCCC2GCCC(-1, 812, 0, 0, 0, 1), -12.0);
  // Nearly 400 unrounded is a turn too.
  EXPECT_NEAR(TarnGCCC2GCCC(1, 399, 99, 99.9999999999, -1, 1), 0.0, 1e-12);
}

TEST(GcccToRadAndGrad, PackedIsDecimalGon) {
  EXPECT_NEAR(TarnGCCC2Rad(100.0), kPi / 2, 1e-15);
  EXPECT_EQ(TarnGCCC2Rad(-12.3456), -12.3456 * 0.015707963267948967);
  // The packed number is not parsed: 60 to 99 centigon are plain decimals.
  EXPECT_EQ(TarnGCCC2Rad(12.99999999999), 12.99999999999 * 0.015707963267948967);

  EXPECT_DOUBLE_EQ(TarnGCCC2Grad(-1, 12, 34, 56.78), -12.345678);
  EXPECT_DOUBLE_EQ(TarnGCCC2Grad(1, 12, -34, 0), 11.66);
  EXPECT_DOUBLE_EQ(TarnGCCC2Grad(0, -12, 34, 56), 12.3456);
  EXPECT_DOUBLE_EQ(TarnGCCC2Grad(1, 12, 34, -5), 12.34);
  EXPECT_DOUBLE_EQ(TarnGCCC2Rad(-1, 100, 0, 0), -kPi / 2);
}

}  // namespace

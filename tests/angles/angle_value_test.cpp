// CTarnAngle: unit conversions to the last bit, the range rule, setters,
// add operations and the DMS fields with their seconds carry.
#include <gtest/gtest.h>
#include <math.h>

#include <type_traits>

#include "tarn/angles.h"

namespace {

using A = CTarnAngle;
constexpr double kPi = 3.141592653589793;
constexpr double kTwoPi = 6.283185307179586;

// Multiply-then-divide results; x * (180 / pi), x / pi * 180 and
// x / (pi / 180) (and the gon and inverse counterparts) all differ from them.
constexpr double kDegOf0_001Rad = 0x1.d55df566a3f74p-5;  // 0.001 * 180 / pi
constexpr double kGonOf0_3Rad = 0x1.3193d66ed2bfbp+4;    // 0.3 * 200 / pi
constexpr double kRadOf359Deg = 0x1.9101c0da1da7ap+2;    // 359 * pi / 180
constexpr double kRadOf359Gon = 0x1.68e7fa5de77d4p+2;    // 359 * pi / 200

A Deg(double degrees) { return A(degrees, A::eDeg); }
A Signed(double degrees) { return A(degrees, A::eDeg, A::eRangeSigned); }

static_assert(std::has_virtual_destructor<A>::value, "virtual destructor");
static_assert(sizeof(A) == sizeof(void*) + 2 * sizeof(double), "vtable, value, range");

// Each row through the setter of its unit and through the constructor.
TEST(AngleValue, RangeRule) {
  const A::eAngleRange kPos = A::eRangePositive, kSigned = A::eRangeSigned;
  const struct { A::eAngleType unit; double value; A::eAngleRange range; double rad; } kCases[] = {
      {A::eDeg, -90.0, kPos, 270.0 * kPi / 180.0},
      {A::eRad, -kPi / 2, kPos, 0x1.2d97c7f3321d2p+2},  // 4.71238898038469
      {A::eGon, -100.0, kPos, 300.0 * kPi / 200.0},
      // Negative whole turns land on the full circle, positive ones on 0.
      {A::eDeg, -360.0, kPos, kTwoPi},
      {A::eRad, -kTwoPi, kPos, kTwoPi},
      {A::eDeg, 360.0, kPos, 0.0},
      {A::eRad, -0.0, kPos, 0.0},
      {A::eDeg, -1.0, kPos, kRadOf359Deg},  // in the argument's unit first
      {A::eGon, 359.0, kPos, kRadOf359Gon},
      // A remainder of the half circle, not a wrap into (-180, 180].
      {A::eDeg, 190.0, kSigned, 10.0 * kPi / 180.0},
      {A::eDeg, -190.0, kSigned, -10.0 * kPi / 180.0},
      {A::eDeg, 180.0, kSigned, 0.0},
      {A::eDeg, -180.0, kSigned, -0.0},
      {A::eGon, -250.0, kSigned, -50.0 * kPi / 200.0},
      {A::eRad, -4.0, kSigned, -(4.0 - kPi)},
      {A::eDeg, 1000.0, A::eRangeDefault, 1000.0 * kPi / 180.0},
      {A::eRad, -1000.0, A::eRangeUnlimited, -1000.0},
      {A::eRad, -7.0, static_cast<A::eAngleRange>(7), -7.0},
      // The text-only types take the value as radians.
      {A::eDmsMarked, -7.0, kSigned, -(7.0 - kTwoPi)},
      {static_cast<A::eAngleType>(42), -1.0, kPos, kTwoPi - 1.0},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(testing::Message() << c.value << " in unit " << c.unit << " range " << c.range);
    A set;
    if (c.unit == A::eDeg)
      set.Deg(c.value, c.range);
    else if (c.unit == A::eGon)
      set.Gon(c.value, c.range);
    else
      set.Rad(c.value, c.range);
    for (const A& a : {set, A(c.value, c.unit, c.range)}) {
      EXPECT_EQ(a.Rad(), c.rad);
      EXPECT_EQ(signbit(a.Rad()), signbit(c.rad));
      EXPECT_EQ(a.AngleRange(), c.range);
    }
  }
}

// Conversions in every direction, SetDms, the stored range and the add
// operations, which treat negative increments differently.
TEST(AngleValue, SettersAndAddOperations) {
  const struct {
    A (*make)();
    double (A::*read)() const;
    double expected, tolerance = 0;
  } kCases[] = {
      {[] { return A(0.001, A::eRad); }, &A::Deg, kDegOf0_001Rad},
      {[] { return A(0.3, A::eRad); }, &A::Gon, kGonOf0_3Rad},
      {[] { A a; a.SetDms(359, 0, 0.0); return a; }, &A::Rad, kRadOf359Deg},
      {[] { return A(359, 0, 0.0); }, &A::Rad, kRadOf359Deg},
      {[] { A a(1.0, A::eRad); a.AddDeg(-1.0); return a; }, &A::Rad, kRadOf359Deg + 1.0},
      {[] { A a(1.0, A::eRad); a.AddGon(-41.0); return a; }, &A::Rad, kRadOf359Gon + 1.0},
      {[] { A a; a.AddDms(359, 0, 0.0); return a; }, &A::Rad, kRadOf359Deg},
      // The sign sits on the most significant non-zero field.
      {[] { A a; a.SetDms(-10, 30, 0.0); return a; }, &A::Deg, -10.5, 1e-12},
      {[] { A a; a.SetDms(0, -30, 0.0); return a; }, &A::Deg, -0.5},
      {[] { A a; a.SetDms(0, 0, -36.0); return a; }, &A::Deg, -0.01, 1e-15},
      {[] { A a; a.SetDms(0, -30, 15.0); return a; }, &A::Deg, -0.5 - 15.0 / 3600.0, 1e-15},
      {[] { A a; a.SetDms(10, 30, -36.0); return a; }, &A::Deg, 10.49, 1e-12},
      {[] { return A(-10, 30, 0.0, A::eRangePositive); }, &A::Deg, 349.5, 1e-12},
      // A setter with eRangeDefault keeps the stored range; changing the
      // range alone leaves the value, the next change applies it.
      {[] { A a = Signed(10.0); a.Deg(190.0); return a; }, &A::Deg, 10.0, 1e-12},
      {[] { A a = Signed(0.0); a.SetDms(-190, 0, 0.0); return a; }, &A::Deg, -10.0, 1e-12},
      {[] { A a(-1.0, A::eRad); a.AngleRange(A::eRangePositive); return a; }, &A::Rad, -1.0},
      {[] { A a(-1.0, A::eRad); a.AngleRange(A::eRangePositive); a.AddDeg(0.0); return a; },
       &A::Rad, kTwoPi - 1.0},
      // No range: AddDeg and AddGon lift a negative increment by one turn,
      // AddRad a negative sum, AddDms nothing.
      {[] { A a; a.AddDeg(-30.0); return a; }, &A::Deg, 330.0, 1e-12},
      {[] { A a; a.AddRad(-kPi / 6); return a; }, &A::Deg, 330.0, 1e-12},
      {[] { A a; a.AddDeg(-400.0); return a; }, &A::Deg, -40.0, 1e-12},
      {[] { A a; a.AddGon(-100.0); return a; }, &A::Gon, 300.0, 1e-12},
      {[] { A a; a.AddGon(-500.0); return a; }, &A::Gon, -100.0, 1e-12},
      {[] { A a(0.0, A::eRad, A::eRangeUnlimited); a.AddRad(-10.0); return a; }, &A::Rad,
       -10.0 + kTwoPi},
      {[] { A a; a.AddDms(0, -30, 0.0); return a; }, &A::Deg, -0.5},
      {[] { A a(-7.0, A::eRad, static_cast<A::eAngleRange>(7)); a.AddRad(-1.0); return a; },
       &A::Rad, -8.0 + kTwoPi},
      // Signed from 10 degrees: increment 340, sum 350, remainder 170.
      {[] { A a = Signed(10.0); a.AddDeg(-20.0); return a; }, &A::Deg, 170.0, 1e-12},
      {[] { A a = Signed(10.0); a.AddDeg(-200.0); return a; }, &A::Deg, 170.0, 1e-12},
      {[] { A a = Signed(10.0); a.AddRad(-20.0 * kPi / 180.0); return a; }, &A::Deg, 350.0, 1e-12},
      {[] { A a = Signed(10.0); a.AddGon(-20.0); return a; }, &A::Gon, 100.0 / 9 + 180.0, 1e-12},
      {[] { A a = Signed(10.0); a.AddDms(-20, 0, 0.0); return a; }, &A::Deg, -10.0, 1e-12},
      {[] { A a(10.0, A::eDeg, A::eRangePositive); a.AddDms(-20, 0, 0.0); return a; }, &A::Deg,
       350.0, 1e-12},
  };
  for (const auto& c : kCases) {
    const A a = c.make();
    EXPECT_NEAR((a.*c.read)(), c.expected, c.tolerance) << "row " << (&c - kCases);
  }

  // Only setters and constructors change the range.
  A a = Signed(10.0);
  a.AddRad(1.0);
  a.AddDeg(1.0);
  a.AddGon(1.0);
  a.AddDms(1, 0, 0.0);
  EXPECT_EQ(a.AngleRange(), A::eRangeSigned);
  a.AngleRange(A::eRangeDefault);
  EXPECT_EQ(a.AngleRange(), A::eRangeDefault);
}

// The carry compares |S| + 0.5 * 10^-decimals with 59.999999999999986, two
// units in the last place below 60.
TEST(AngleValue, GetDmsFieldsAndCarries) {
  const struct { A angle; int decimals; short d, m; double s, tolerance = 0; } kCases[] = {
      {Deg(12.5125), 2, 12, 30, 45.0, 1e-9},
      {Deg(-10.5), 2, -10, 30, 0.0, 1e-9},
      {Deg(-0.5), 2, 0, -30, 0.0},
      {Deg(-0.0125), 2, 0, 0, -45.0, 1e-9},
      // Carry into the degrees; from D = 0 of a negative angle the sign moves.
      {Deg(10.999999), 2, 11, 0, 0.0},
      {Deg(-10.999999), 2, -11, 0, 0.0},
      {Deg(-0.999999), 2, -1, 0, 0.0},
      // Carry into the minutes only; from M = 0 and D = 0 they take the sign.
      {Deg(10.0 + 29.0 / 60 + 59.999 / 3600), 2, 10, 30, 0.0},
      {Deg(-(29.0 / 60 + 59.999 / 3600)), 2, 0, -30, 0.0},
      {Deg(-59.9999 / 3600), 2, 0, -1, 0.0},
      // Below 0 decimals no carry is made.
      {Deg(10.999999), -1, 10, 59, 59.9964, 1e-9},
      // A full turn short by a ten-thousandth of a second does not wrap.
      {Deg(360.0 - 0.0001 / 3600), 3, 360, 0, 0.0},
      // S = 59.5 exactly: 59.5 + 0.5 = 60 carries.
      {A(0x1.2fbf5b21c9713p-11, A::eRad), 0, 0, 2, 0.0},
      {A(0x1.2fbf5b21c9713p-11, A::eRad), -1, 0, 1, 59.5},
      // S + 0.005 = 60 - 1 ulp carries (a comparison with 60 would not) ...
      {A(0x1.30fe33ae59bc3p-12, A::eRad), 2, 0, 1, 0.0},
      {A(-0x1.30fe33ae59bc3p-12, A::eRad), 2, 0, -1, 0.0},
      // ... the threshold itself does not (S + 0.005 checked below).
      {A(0x1.30fe33ae59bc2p-12, A::eRad), 2, 0, 0, 59.995, 1e-9},
      // S = 60 - 2 ulp: a rounding term of 5e-17 leaves it, 5e-15 carries.
      {A(0x1.3104b57cf96a2p-12, A::eRad), 16, 0, 0, 59.999999999999986},
      {A(0x1.3104b57cf96a2p-12, A::eRad), 14, 0, 1, 0.0},
  };
  for (const auto& c : kCases) {
    short d = 99, m = 99;
    double s = 99.0;
    c.angle.GetDms(d, m, s, c.decimals);
    SCOPED_TRACE(testing::Message() << "row " << (&c - kCases));
    EXPECT_EQ(d, c.d);
    EXPECT_EQ(m, c.m);
    EXPECT_NEAR(s, c.s, c.tolerance);
  }
  short d, m;
  double s;
  A(0x1.30fe33ae59bc2p-12, A::eRad).GetDms(d, m, s, 2);
  EXPECT_EQ(s + 0.005, 59.999999999999986);
}

}  // namespace

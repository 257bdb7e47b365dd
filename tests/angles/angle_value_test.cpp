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

// Expected values below are the doubles that multiply-then-divide yields;
// each input is chosen so that x * (180 / pi), x / pi * 180 and
// x / (pi / 180) (and their gon and inverse counterparts) all differ from it.
constexpr double kDegOf0_001Rad = 0x1.d55df566a3f74p-5;  // 0.001 * 180 / pi
constexpr double kGonOf0_3Rad = 0x1.3193d66ed2bfbp+4;    // 0.3 * 200 / pi
constexpr double kRadOf359Deg = 0x1.9101c0da1da7ap+2;    // 359 * pi / 180
constexpr double kRadOf359Gon = 0x1.68e7fa5de77d4p+2;    // 359 * pi / 200

struct Dms {
  short d;
  short m;
  double s;
};

Dms GetDms(const A& a, int decimals) {
  Dms r{99, 99, 99.0};
  a.GetDms(r.d, r.m, r.s, decimals);
  return r;
}

A FromDeg(double degrees, A::eAngleRange range = A::eRangeDefault) {
  A a;
  a.Deg(degrees, range);
  return a;
}

TEST(AngleValue, ConversionsMultiplyBeforeDividing) {
  A a;
  a.Rad(0.001);
  EXPECT_EQ(a.Deg(), kDegOf0_001Rad);
  a.Rad(0.3);
  EXPECT_EQ(a.Gon(), kGonOf0_3Rad);

  a.Deg(359.0);
  EXPECT_EQ(a.Rad(), kRadOf359Deg);
  a.Gon(359.0);
  EXPECT_EQ(a.Rad(), kRadOf359Gon);
  EXPECT_EQ(A(359.0, A::eDeg).Rad(), kRadOf359Deg);
  EXPECT_EQ(A(359.0, A::eGon).Rad(), kRadOf359Gon);
  EXPECT_EQ(A(359, 0, 0.0).Rad(), kRadOf359Deg);
  a.SetDms(359, 0, 0.0);
  EXPECT_EQ(a.Rad(), kRadOf359Deg);

  // The increments are converted the same way, then the stored value added.
  A b;
  b.AddDeg(359.0);
  EXPECT_EQ(b.Rad(), kRadOf359Deg);
  A c;
  c.AddGon(359.0);
  EXPECT_EQ(c.Rad(), kRadOf359Gon);
  A d;
  d.AddDms(359, 0, 0.0);
  EXPECT_EQ(d.Rad(), kRadOf359Deg);
  A e(1.0, A::eRad);
  e.AddDeg(-1.0);  // becomes 359 degrees, converted, then 1 rad added
  EXPECT_EQ(e.Rad(), 0x1.d101c0da1da7ap+2);
  A g(1.0, A::eRad);
  g.AddGon(-41.0);  // becomes 359 gon
  EXPECT_EQ(g.Rad(), kRadOf359Gon + 1.0);
}

TEST(AngleValue, RangeRulePositive) {
  EXPECT_EQ(FromDeg(-90.0, A::eRangePositive).Deg(), 270.0);
  A a;
  a.Rad(-kPi / 2, A::eRangePositive);
  EXPECT_EQ(a.Rad(), 0x1.2d97c7f3321d2p+2);  // 2*pi - pi/2 = 4.71238898038469
  a.Gon(-100.0, A::eRangePositive);
  EXPECT_EQ(a.Gon(), 300.0);

  // Negative whole turns land on the full circle, positive ones on 0.
  EXPECT_EQ(FromDeg(-360.0, A::eRangePositive).Rad(), kTwoPi);
  EXPECT_EQ(FromDeg(-720.0, A::eRangePositive).Rad(), kTwoPi);
  a.Gon(-400.0, A::eRangePositive);
  EXPECT_EQ(a.Rad(), kTwoPi);
  a.Rad(-kTwoPi, A::eRangePositive);
  EXPECT_EQ(a.Rad(), kTwoPi);
  EXPECT_EQ(FromDeg(360.0, A::eRangePositive).Rad(), 0.0);
  EXPECT_EQ(FromDeg(720.0, A::eRangePositive).Rad(), 0.0);
  a.Rad(kTwoPi, A::eRangePositive);
  EXPECT_EQ(a.Rad(), 0.0);

  // -0.0 is not negative and comes out as +0.0.
  a.Rad(-0.0, A::eRangePositive);
  EXPECT_EQ(a.Rad(), 0.0);
  EXPECT_FALSE(signbit(a.Rad()));
  EXPECT_FALSE(signbit(FromDeg(-0.0, A::eRangePositive).Rad()));

  // The rule runs in the argument's unit before the conversion: 725 deg
  // becomes 5 deg, converted once.
  EXPECT_EQ(FromDeg(725.0, A::eRangePositive).Rad(), 5.0 * kPi / 180.0);
  EXPECT_EQ(FromDeg(-1.0, A::eRangePositive).Rad(), kRadOf359Deg);
}

TEST(AngleValue, RangeRuleSigned) {
  EXPECT_NEAR(FromDeg(190.0, A::eRangeSigned).Deg(), 10.0, 1e-12);
  EXPECT_NEAR(FromDeg(-190.0, A::eRangeSigned).Deg(), -10.0, 1e-12);
  EXPECT_NEAR(FromDeg(350.0, A::eRangeSigned).Deg(), 170.0, 1e-12);
  EXPECT_NEAR(FromDeg(270.0, A::eRangeSigned).Deg(), 90.0, 1e-12);
  EXPECT_EQ(FromDeg(190.0, A::eRangeSigned).Rad(), 10.0 * kPi / 180.0);

  const A zero = FromDeg(180.0, A::eRangeSigned);
  EXPECT_EQ(zero.Rad(), 0.0);
  EXPECT_FALSE(signbit(zero.Rad()));
  const A negativeZero = FromDeg(-180.0, A::eRangeSigned);
  EXPECT_EQ(negativeZero.Rad(), 0.0);
  EXPECT_TRUE(signbit(negativeZero.Rad()));

  A a;
  a.Gon(-250.0, A::eRangeSigned);
  EXPECT_EQ(a.Rad(), -50.0 * kPi / 200.0);
  a.Rad(4.0, A::eRangeSigned);
  EXPECT_EQ(a.Rad(), 4.0 - kPi);
  a.Rad(-4.0);  // the stored range still applies
  EXPECT_EQ(a.Rad(), -(4.0 - kPi));
}

TEST(AngleValue, RangeDefaultUnlimitedAndOtherNumbers) {
  A a;
  EXPECT_EQ(a.AngleRange(), A::eRangeDefault);
  EXPECT_EQ(a.Rad(), 0.0);
  a.Deg(1000.0);
  EXPECT_NEAR(a.Deg(), 1000.0, 1e-12);
  a.Rad(-1000.0, A::eRangeUnlimited);
  EXPECT_EQ(a.Rad(), -1000.0);
  EXPECT_EQ(a.AngleRange(), A::eRangeUnlimited);

  const auto seven = static_cast<A::eAngleRange>(7);
  a.Rad(-7.0, seven);
  EXPECT_EQ(a.Rad(), -7.0);
  EXPECT_EQ(a.AngleRange(), seven);
  a.AddRad(-1.0);  // no normalisation, but AddRad still lifts a negative sum
  EXPECT_EQ(a.Rad(), -8.0 + kTwoPi);

  // Changing the range alone leaves the value; the next change applies it.
  A b(-1.0, A::eRad);
  b.AngleRange(A::eRangePositive);
  EXPECT_EQ(b.Rad(), -1.0);
  b.AddDeg(0.0);
  EXPECT_EQ(b.Rad(), kTwoPi - 1.0);
  b.AngleRange(A::eRangeDefault);
  EXPECT_EQ(b.AngleRange(), A::eRangeDefault);
}

TEST(AngleValue, ConstructorsSettersAndCopies) {
  const A rad(-1.0, A::eRad, A::eRangeDefault);
  EXPECT_EQ(rad.Rad(), -1.0);
  EXPECT_EQ(rad.AngleRange(), A::eRangeDefault);
  const A pos(-1.0, A::eRad, A::eRangePositive);
  EXPECT_EQ(pos.Rad(), kTwoPi - 1.0);
  EXPECT_EQ(pos.AngleRange(), A::eRangePositive);
  EXPECT_EQ(A(-90.0, A::eDeg, A::eRangePositive).Deg(), 270.0);
  EXPECT_EQ(A(-100.0, A::eGon, A::eRangePositive).Gon(), 300.0);
  // The text-only types take the value as radians.
  EXPECT_EQ(A(-7.0, A::eDmsMarked, A::eRangeSigned).Rad(), -(7.0 - kTwoPi));
  EXPECT_EQ(A(-1.0, static_cast<A::eAngleType>(42), A::eRangePositive).Rad(), kTwoPi - 1.0);

  const A dms(-10, 30, 0.0, A::eRangePositive);
  EXPECT_NEAR(dms.Deg(), 349.5, 1e-12);
  EXPECT_EQ(dms.AngleRange(), A::eRangePositive);

  A s;
  s.SetDms(-10, 30, 0.0);
  EXPECT_NEAR(s.Deg(), -10.5, 1e-12);
  s.SetDms(0, -30, 0.0);
  EXPECT_EQ(s.Deg(), -0.5);
  s.SetDms(0, 0, -36.0);
  EXPECT_NEAR(s.Deg(), -0.01, 1e-15);
  s.SetDms(0, -30, 15.0);  // the seconds take the sign of -0.5
  EXPECT_NEAR(s.Deg(), -0.5 - 15.0 / 3600.0, 1e-15);
  s.SetDms(10, 30, -36.0);  // a positive value takes them as they are
  EXPECT_NEAR(s.Deg(), 10.49, 1e-12);

  // A setter with eRangeDefault keeps the stored range.
  A k;
  k.Deg(10.0, A::eRangeSigned);
  k.Deg(190.0);
  EXPECT_NEAR(k.Deg(), 10.0, 1e-12);
  k.SetDms(-190, 0, 0.0);
  EXPECT_NEAR(k.Deg(), -10.0, 1e-12);
  EXPECT_EQ(k.AngleRange(), A::eRangeSigned);

  A copy(pos);
  EXPECT_EQ(copy.Rad(), pos.Rad());
  EXPECT_EQ(copy.AngleRange(), A::eRangePositive);
  A assigned;
  assigned = dms;
  EXPECT_EQ(assigned.Rad(), dms.Rad());
  EXPECT_EQ(assigned.AngleRange(), A::eRangePositive);
  A& self = assigned;
  assigned = self;
  EXPECT_EQ(assigned.Rad(), dms.Rad());

  static_assert(std::has_virtual_destructor<A>::value, "virtual destructor");
  static_assert(sizeof(A) == sizeof(void*) + 2 * sizeof(double), "vtable, value, range");
}

TEST(AngleValue, AddOperationsTreatNegativeIncrementsDifferently) {
  A a;  // eRangeDefault, value 0
  a.AddDeg(-30.0);
  EXPECT_NEAR(a.Deg(), 330.0, 1e-12);
  A b;
  b.AddRad(-kPi / 6);
  EXPECT_NEAR(b.Deg(), 330.0, 1e-12);
  A c;
  c.AddDeg(-400.0);  // no range: -400 + 360
  EXPECT_NEAR(c.Deg(), -40.0, 1e-12);
  A d;
  d.AddGon(-100.0);
  EXPECT_NEAR(d.Gon(), 300.0, 1e-12);
  A e;
  e.AddGon(-500.0);
  EXPECT_NEAR(e.Gon(), -100.0, 1e-12);
  A f(0.0, A::eRad, A::eRangeUnlimited);
  f.AddRad(-10.0);
  EXPECT_EQ(f.Rad(), -10.0 + kTwoPi);
  A g;
  g.AddDms(0, -30, 0.0);  // neither normalised nor shifted
  EXPECT_EQ(g.Deg(), -0.5);

  A s(10.0, A::eDeg, A::eRangeSigned);
  s.AddDeg(-20.0);  // increment 340, sum 350, remainder 170
  EXPECT_NEAR(s.Deg(), 170.0, 1e-12);
  A t(10.0, A::eDeg, A::eRangeSigned);
  t.AddRad(-20.0 * kPi / 180.0);  // sum -10, then 2*pi added
  EXPECT_NEAR(t.Deg(), 350.0, 1e-12);
  A u(10.0, A::eDeg, A::eRangeSigned);
  u.AddGon(-20.0);  // increment 380 gon, sum 391.1 gon, remainder 191.1
  EXPECT_NEAR(u.Gon(), 200.0 / 180.0 * 10.0 + 180.0, 1e-12);
  A v(10.0, A::eDeg, A::eRangeSigned);
  v.AddDms(-20, 0, 0.0);  // sum -10, kept
  EXPECT_NEAR(v.Deg(), -10.0, 1e-12);
  A w(10.0, A::eDeg, A::eRangeSigned);
  w.AddDeg(-200.0);  // increment -20 + 360 = 340 again
  EXPECT_NEAR(w.Deg(), 170.0, 1e-12);

  A p(350.0, A::eDeg, A::eRangePositive);
  p.AddDeg(20.0);
  EXPECT_NEAR(p.Deg(), 10.0, 1e-12);
  p.AddDms(-20, 0, 0.0);
  EXPECT_NEAR(p.Deg(), 350.0, 1e-12);
  EXPECT_EQ(p.AngleRange(), A::eRangePositive);
}

TEST(AngleValue, GetDmsFieldsAndCarries) {
  Dms r = GetDms(FromDeg(12.5125), 2);
  EXPECT_EQ(r.d, 12);
  EXPECT_EQ(r.m, 30);
  EXPECT_NEAR(r.s, 45.0, 1e-9);

  r = GetDms(FromDeg(-10.5), 2);
  EXPECT_EQ(r.d, -10);
  EXPECT_EQ(r.m, 30);
  EXPECT_NEAR(r.s, 0.0, 1e-9);
  r = GetDms(FromDeg(-0.5), 2);
  EXPECT_EQ(r.d, 0);
  EXPECT_EQ(r.m, -30);
  EXPECT_EQ(r.s, 0.0);
  r = GetDms(FromDeg(-0.0125), 2);
  EXPECT_EQ(r.d, 0);
  EXPECT_EQ(r.m, 0);
  EXPECT_NEAR(r.s, -45.0, 1e-9);

  // Carry into the degrees, positive and negative.
  r = GetDms(FromDeg(10.999999), 2);
  EXPECT_EQ(r.d, 11);
  EXPECT_EQ(r.m, 0);
  EXPECT_EQ(r.s, 0.0);
  r = GetDms(FromDeg(-10.999999), 2);
  EXPECT_EQ(r.d, -11);
  EXPECT_EQ(r.m, 0);
  EXPECT_EQ(r.s, 0.0);
  // ... from D = 0 of a negative angle: the sign moves to the degrees.
  r = GetDms(FromDeg(-0.999999), 2);
  EXPECT_EQ(r.d, -1);
  EXPECT_EQ(r.m, 0);
  EXPECT_EQ(r.s, 0.0);
  r = GetDms(FromDeg(0.999999), 2);
  EXPECT_EQ(r.d, 1);
  EXPECT_EQ(r.m, 0);
  // Carry into the minutes only.
  r = GetDms(FromDeg(10.0 + 29.0 / 60 + 59.999 / 3600), 2);
  EXPECT_EQ(r.d, 10);
  EXPECT_EQ(r.m, 30);
  EXPECT_EQ(r.s, 0.0);
  r = GetDms(FromDeg(-(10.0 + 29.0 / 60 + 59.999 / 3600)), 2);
  EXPECT_EQ(r.d, -10);
  EXPECT_EQ(r.m, 30);
  r = GetDms(FromDeg(-(29.0 / 60 + 59.999 / 3600)), 2);
  EXPECT_EQ(r.d, 0);
  EXPECT_EQ(r.m, -30);
  EXPECT_EQ(r.s, 0.0);
  // ... from M = 0 and D = 0: the minutes take the angle's sign.
  r = GetDms(FromDeg(-59.9999 / 3600), 2);
  EXPECT_EQ(r.d, 0);
  EXPECT_EQ(r.m, -1);
  EXPECT_EQ(r.s, 0.0);
  r = GetDms(FromDeg(59.9999 / 3600), 2);
  EXPECT_EQ(r.d, 0);
  EXPECT_EQ(r.m, 1);

  // Whether rounding reaches 60 depends on the decimals; none below 0.
  r = GetDms(FromDeg(10.999999), 4);
  EXPECT_EQ(r.d, 10);
  EXPECT_EQ(r.m, 59);
  EXPECT_NEAR(r.s, 59.9964, 1e-9);
  r = GetDms(FromDeg(10.999999), -1);
  EXPECT_EQ(r.d, 10);
  EXPECT_EQ(r.m, 59);
  EXPECT_NEAR(r.s, 59.9964, 1e-9);
  r = GetDms(FromDeg(-0.999999), -2);
  EXPECT_EQ(r.d, 0);
  EXPECT_EQ(r.m, -59);
  EXPECT_NEAR(r.s, 59.9964, 1e-9);

  // A full turn short by a ten-thousandth of a second does not wrap.
  r = GetDms(FromDeg(360.0 - 0.0001 / 3600, A::eRangePositive), 3);
  EXPECT_EQ(r.d, 360);
  EXPECT_EQ(r.m, 0);
  EXPECT_EQ(r.s, 0.0);
}

// The carry compares against 59.999999999999986, two units in the last place
// below 60: the angles are chosen so that |S| + 0.5 * 10^-decimals lands
// exactly on 60, one unit below 60, or on that threshold.
TEST(AngleValue, SecondsCarryThreshold) {
  // S = 59.5 exactly: 59.5 + 0.5 = 60 carries.
  Dms r = GetDms(A(0x1.2fbf5b21c9713p-11, A::eRad), 0);
  EXPECT_EQ(r.d, 0);
  EXPECT_EQ(r.m, 2);
  EXPECT_EQ(r.s, 0.0);
  EXPECT_EQ(GetDms(A(0x1.2fbf5b21c9713p-11, A::eRad), -1).s, 59.5);

  // S + 0.005 = 60 - 1 ulp carries (an implementation comparing with 60
  // would not).
  r = GetDms(A(0x1.30fe33ae59bc3p-12, A::eRad), 2);
  EXPECT_EQ(r.m, 1);
  EXPECT_EQ(r.s, 0.0);
  r = GetDms(A(-0x1.30fe33ae59bc3p-12, A::eRad), 2);
  EXPECT_EQ(r.d, 0);
  EXPECT_EQ(r.m, -1);
  EXPECT_EQ(r.s, 0.0);
  // S + 0.005 = 60 - 2 ulp, the threshold itself, does not.
  r = GetDms(A(0x1.30fe33ae59bc2p-12, A::eRad), 2);
  EXPECT_EQ(r.m, 0);
  EXPECT_EQ(r.s + 0.005, 59.999999999999986);

  // S = 60 - 2 ulp with a rounding term too small to change it: no carry.
  r = GetDms(A(0x1.3104b57cf96a2p-12, A::eRad), 16);
  EXPECT_EQ(r.m, 0);
  EXPECT_EQ(r.s, 59.999999999999986);
  r = GetDms(A(0x1.3104b57cf96a2p-12, A::eRad), 14);  // + 5e-15: carries
  EXPECT_EQ(r.m, 1);
  EXPECT_EQ(r.s, 0.0);
}

}  // namespace

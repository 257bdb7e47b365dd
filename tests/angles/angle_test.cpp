// CTarnAngle: the range rule, conversions to the last bit, the add
// operations, the DMS fields with their seconds carry and the texts; and the
// digit conversion behind the decimal texts.
#include <errno.h>
#include <gtest/gtest.h>
#include <math.h>

#include "angles/fcvt.h"
#include "support/checks.h"
#include "tarn/angles.h"

namespace {

using A = CTarnAngle;
using tarn_test::Short;
constexpr double kPi = 3.141592653589793, kTwoPi = 6.283185307179586;
constexpr A::eAngleRange kPos = A::eRangePositive, kSigned = A::eRangeSigned;
constexpr A::eAngleType kMarked = A::eDmsMarked, kSpaced = A::eDmsSpaced, kAligned = A::eDmsAligned;
// Multiply-then-divide results: 359 * pi / 180 and 359 * pi / 200. Their
// counterparts x * (pi / 180), x / 180 * pi and x / (180 / pi) all differ.
constexpr double kRadOf359Deg = 0x1.9101c0da1da7ap+2, kRadOf359Gon = 0x1.68e7fa5de77d4p+2;

// tarn.dll exports the class: its layout is part of the interface.
static_assert(sizeof(A) == sizeof(void*) + 2 * sizeof(double), "vtable, value and range");

A Rad(double r) { return A(r, A::eRad); }
A Deg(double d) { return A(d, A::eDeg); }

// Each row through the setter of its unit and through the constructor; the
// sign of a zero result counts.
TEST(AngleValue, RangeRule) {
  const struct { A::eAngleType unit; double value; A::eAngleRange range; double rad; } kRows[] = {
      {A::eRad, -kPi / 2, kPos, 0x1.2d97c7f3321d2p+2}, {A::eGon, -100.0, kPos, 300.0 * kPi / 200.0},
      {A::eDeg, -1.0, kPos, kRadOf359Deg},  // in the argument's unit first
      // Negative whole turns give the full circle, positive ones and -0.0 +0.0.
      {A::eDeg, -360.0, kPos, kTwoPi}, {A::eDeg, 360.0, kPos, 0.0}, {A::eRad, -0.0, kPos, 0.0},
      // A remainder of the half circle, not a wrap into (-180, 180].
      {A::eDeg, 190.0, kSigned, 10.0 * kPi / 180.0}, {A::eDeg, -180.0, kSigned, -0.0},
      {A::eGon, -250.0, kSigned, -50.0 * kPi / 200.0},
      {A::eRad, -1000.0, A::eRangeUnlimited, -1000.0},
      {A::eDmsMarked, -7.0, kSigned, -(7.0 - kTwoPi)},  // text-only types are radians
  };
  for (const auto& r : kRows) {
    A set;
    if (r.unit == A::eDeg) set.Deg(r.value, r.range);
    else if (r.unit == A::eGon) set.Gon(r.value, r.range);
    else set.Rad(r.value, r.range);
    for (const A& a : {set, A(r.value, r.unit, r.range)})
      EXPECT_TRUE(a.Rad() == r.rad && signbit(a.Rad()) == signbit(r.rad) &&
                  a.AngleRange() == r.range)
          << r.value << " in " << r.unit << " range " << r.range << ": " << a.Rad();
  }
}

// Conversions, SetDms, the stored range and the add operations, which treat
// negative increments differently. Tolerance 0: to the last bit.
TEST(AngleValue, SettersAndAddOperations) {
  const struct { A (*make)(); double (A::*read)() const; double expected, tolerance = 0; }
      kRows[] = {
      {[] { return Rad(0.001); }, &A::Deg, 0x1.d55df566a3f74p-5},  // 0.001 * 180 / pi
      {[] { return Rad(0.3); }, &A::Gon, 0x1.3193d66ed2bfbp+4},    // 0.3 * 200 / pi
      {[] { A a; a.SetDms(359, 0, 0.0); return a; }, &A::Rad, kRadOf359Deg},
      {[] { A a = Rad(1.0); a.AddDeg(-1.0); return a; }, &A::Rad, kRadOf359Deg + 1.0},
      {[] { A a = Rad(1.0); a.AddGon(-41.0); return a; }, &A::Rad, kRadOf359Gon + 1.0},
      {[] { A a; a.AddDms(359, 0, 0.0); return a; }, &A::Rad, kRadOf359Deg},
      // Each lower field takes the sign of the value composed so far.
      {[] { A a; a.SetDms(0, -30, 15.0); return a; }, &A::Deg, -0.5 - 15.0 / 3600.0, 1e-15},
      // eRangeDefault keeps the stored range; AngleRange alone changes no value.
      {[] { A a(0.0, A::eDeg, kSigned); a.SetDms(-190, 0, 0.0); return a; }, &A::Deg, -10.0, 1e-12},
      {[] { A a = Rad(-1.0); a.AngleRange(kPos); return a; }, &A::Rad, -1.0},
      {[] { A a = Rad(-1.0); a.AngleRange(kPos); a.AddDeg(0); return a; }, &A::Rad, kTwoPi - 1},
      // No range: AddDeg lifts a negative increment by one turn, AddRad a
      // negative sum, AddDms nothing.
      {[] { A a; a.AddDeg(-400.0); return a; }, &A::Deg, -40.0, 1e-12},
      {[] { A a; a.AddRad(-kPi / 6); return a; }, &A::Deg, 330.0, 1e-12},
      {[] { A a; a.AddDms(0, -30, 0.0); return a; }, &A::Deg, -0.5},
      // Signed from 10 degrees: increment -20 (+360), sum 350, remainder 170.
      {[] { A a(10.0, A::eDeg, kSigned); a.AddDeg(-200.0); return a; }, &A::Deg, 170.0, 1e-12},
      {[] { A a(10.0, A::eDeg, kSigned); a.AddRad(-kPi / 9); return a; }, &A::Deg, 350.0, 1e-12},
  };
  for (const auto& r : kRows)
    EXPECT_NEAR((r.make().*r.read)(), r.expected, r.tolerance) << "row " << (&r - kRows);
}

// The carry compares |S| + 0.5 * 10^-decimals with 59.999999999999986, two
// units in the last place below 60.
TEST(AngleValue, DmsFieldsAndCarries) {
  const struct { A angle; int decimals; short d, m; double s; } kRows[] = {
      {Deg(12.5125), 2, 12, 30, 45.0}, {Deg(-10.5), 2, -10, 30, 0.0}, {Deg(-0.5), 2, 0, -30, 0},
      {Deg(-0.0125), 2, 0, 0, -45.0}, {Deg(40000.5), 2, 40000 - 65536, 30, 0},  // 16-bit D
      // Into the degrees (none below 0 decimals); from D = 0 of a negative
      // angle the sign moves on. 360 stays.
      {Deg(10.999999), 2, 11, 0, 0}, {Deg(-10.999999), 2, -11, 0, 0}, {Deg(-0.999999), 2, -1, 0, 0},
      {Deg(10.999999), -1, 10, 59, 59.9964}, {Deg(360.0 - 0.0001 / 3600), 3, 360, 0, 0},
      // Into the minutes only; from M = 0 and D = 0 they take the sign.
      {Deg(10.0 + 29.0 / 60 + 59.999 / 3600), 2, 10, 30, 0}, {Deg(-59.9999 / 3600), 2, 0, -1, 0},
      {A(0x1.2fbf5b21c9713p-11, A::eRad), 0, 0, 2, 0.0},  // S = 59.5: 59.5 + 0.5 carries
      // S + 0.005 = 60 - 1 ulp carries (a comparison with 60 would not), the
      // threshold itself (checked below) does not.
      {A(0x1.30fe33ae59bc3p-12, A::eRad), 2, 0, 1, 0},
      {A(0x1.30fe33ae59bc2p-12, A::eRad), 2, 0, 0, 59.995},
  };
  short d, m;
  double s;
  for (const auto& r : kRows) {
    r.angle.GetDms(d = 99, m = 99, s = 99.0, r.decimals);
    EXPECT_TRUE(d == r.d && m == r.m && fabs(s - r.s) < 1e-7)
        << "row " << (&r - kRows) << ": " << d << " " << m << " " << s;
  }
  A(0x1.30fe33ae59bc2p-12, A::eRad).GetDms(d, m, s, 2);
  EXPECT_EQ(s + 0.005, 59.999999999999986);
}

// Every form into guarded buffers: the whole length comes back even when the
// text is cut, and every byte after the text is zero.
TEST(AngleText, EveryForm) {
  const struct { A angle; A::eAngleType form; int decimals; std::string text; } kRows[] = {
      {Rad(kPi / 2), A::eRad, 2, "1.57"}, {Deg(-45.0), A::eDeg, 2, "-45.00"},
      {A(100.0, A::eGon), A::eGon, 1, "100.0"}, {Rad(1234.5), A::eRad, -2, "1200"},
      // No digit before the point below 1, no point without decimals.
      {Rad(0.5), A::eRad, 2, ".50"}, {Rad(-0.0012), A::eRad, 4, "-.0012"},
      {Rad(0.001), A::eRad, 2, ".00"}, {Rad(-0.3), A::eRad, 0, "-0"},
      // Full layouts; the aligned seconds are p + 3 wide even with p = 0.
      {A(12, 30, 45.0), kMarked, 2, "12 30' 45.00\""}, {A(12, 30, 45.0), kSpaced, 2, "12 30 45.00"},
      {A(12, 30, 45.0), kAligned, 2, " 12 30 45.00"}, {A(5, 15, 0.0), kAligned, 0, "  5 15   0"},
      {A(0, -30, 0.0), kMarked, 2, "-0 30' 0.00\""}, {Rad(-0.0), kMarked, 1, "0 0' 0.0\""},
      {Deg(40000.5), kMarked, 1, "40000 30' 0.0\""},  // beyond 16 bits, whole
      // The seconds carry with the decimals shown; none below 0 decimals.
      {A(10, 59, 59.996), kMarked, 2, "11 0' 0.00\""},
      {A(10, 29, 59.97), kMarked, -1, "10 29' 60.0\""},
      // Negative decimals where D = 0: compact, the sign on the first field.
      {A(0, -30, 0.0), kMarked, -2, "-30' 0.00\""}, {A(0, -30, 0.0), kSpaced, -2, "-30 0.00"},
      {A(0, 5, 7.5), kAligned, -1, " 5  7.5"}, {A(0, 0, -45.0), kMarked, -1, "-45.0\""},
      {A(0, 0, -45.0), kSpaced, -1, "-45.0"}, {A(0, 0, -4.0), kAligned, -1, "-4.0"},
      // Cut at 49 characters whatever the decimals or the magnitude (beyond
      // 80 characters the runtime's own conversion fails).
      {Rad(1.0), A::eRad, 80, "1." + std::string(47, '0')},
      {A(12, 30, 0.0), kAligned, 2000000000, " 12 30  0." + std::string(39, '0')},
      {A(12, 30, 0.0), kMarked, -2147483647 - 1, "12 30' 0." + std::string(40, '0')},
      {Rad(-1e300), A::eRad, 2, "-100000000000000005250476025520442024870446858110"},
      {Rad(1.0), static_cast<A::eAngleType>(6), 2, ""},  // no such form: the zeroed buffer
  };
  std::vector<tarn_test::TextRow> rows;
  for (const auto& r : kRows) {
    const long long n = static_cast<long long>(r.text.size());
    rows.push_back({"'" + r.text + "'", [r](char* b, DWORD size) -> long long {
                      return r.angle.AngleToString(b, size, r.form, r.decimals); },
                    r.text, Short::kCut, n, n, true, n ? std::string::npos : 9});
  }
  tarn_test::CheckTextRows(rows);
  EXPECT_EQ(Rad(1.0).AngleToString(nullptr, 20, A::eDeg, 2), 0u);
}

// Both conversions give the runtime's answers (the point is not compared
// when no digit is left). Digits that do not fit leave an empty text and
// ERANGE, size 0 and infinity and NaN EINVAL.
TEST(AngleDigits, AnswersAndBufferRule) {
  const struct { double value; int places; const char* digits; int point, negative, result; }
      kRows[] = {
      // 0.005 and 2.675 lie above and below their decimal values; exact ties
      // go away from zero; zero keeps its places and its sign bit; negative
      // places leave the digits above that place.
      {-45.0, 2, "4500", 2, 1}, {0.05, 2, "5", -1, 0}, {0.004, 2, "", 0, 0}, {0.005, 2, "1", -1, 0},
      {2.675, 2, "267", 1, 0}, {0.125, 2, "13", 0, 0}, {-3.5, 0, "4", 1, 1}, {9.5, 0, "10", 2, 0},
      {0.0, 2, "00", 0, 0}, {-0.0, 2, "00", 0, 1}, {1234.5, -2, "12", 4, 0}, {0.5, -2, "", 1, 0},
      {-HUGE_VAL, 2, "", 0, 1, EINVAL}, {NAN, 2, "", 0, 0, EINVAL},
  };
  std::vector<tarn_test::TextRow> rows;
  for (auto convert : {tarn::PortableFixedDigits, tarn::FixedDigits}) {
    char digits[349];
    int point, negative;
    for (const auto& r : kRows) {
      EXPECT_EQ(convert(digits, sizeof digits, r.value, r.places, &point, &negative), r.result);
      EXPECT_TRUE(digits == std::string(r.digits) && negative == r.negative &&
                  (point == r.point || (!*r.digits && r.value != 0)))
          << r.value << ", " << r.places << ": " << digits << " " << point << " " << negative;
    }
    // 9.996 rounds to a new leading digit: 5 bytes (the runtime would end
    // the process when given fewer). EINVAL at size 0 is reported as 0.
    rows.push_back({"9.996", [convert](char* b, DWORD size) -> long long {
                      int point, negative, result = convert(b, size, 9.996, 2, &point, &negative);
                      return size ? result : result != EINVAL;
                    }, "1000", Short::kEmpty, 0, ERANGE});
  }
  tarn_test::CheckTextRows(rows);
}

}  // namespace

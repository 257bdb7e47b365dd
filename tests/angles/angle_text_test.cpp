// CTarnAngle::AngleToString: the decimal forms, the full and compact
// sexagesimal layouts with their carry, and the copy into the caller's buffer.
#include <gtest/gtest.h>
#include <string.h>

#include <string>

#include "tarn/angles.h"

namespace {

using A = CTarnAngle;
constexpr double kPi = 3.141592653589793;

std::string Text(const A& a, A::eAngleType form, int decimals, unsigned* length = nullptr) {
  char buffer[64];
  memset(buffer, 'x', sizeof buffer);
  const unsigned n = a.AngleToString(buffer, sizeof buffer, form, decimals);
  if (length != nullptr) *length = n;
  EXPECT_EQ(n, strlen(buffer));
  return buffer;
}

A Dms(short d, short m, double s) { return A(d, m, s); }

A Degrees(double d) { return A(d, A::eDeg); }

TEST(AngleText, DecimalForms) {
  EXPECT_EQ(Text(A(kPi / 2, A::eRad), A::eRad, 2), "1.57");
  EXPECT_EQ(Text(Degrees(90.0), A::eDeg, 2), "90.00");
  EXPECT_EQ(Text(A(100.0, A::eGon), A::eGon, 1), "100.0");
  EXPECT_EQ(Text(A(0.5, A::eRad), A::eRad, 2), ".50");
  EXPECT_EQ(Text(Degrees(-45.0), A::eDeg, 2), "-45.00");
  EXPECT_EQ(Text(Degrees(90.0), A::eGon, 3), "100.000");
  EXPECT_EQ(Text(Degrees(90.0), A::eRad, 4), "1.5708");
  // The value is rounded, not cut, and a carry may add a digit.
  EXPECT_EQ(Text(A(999.996, A::eRad), A::eRad, 2), "1000.00");
  EXPECT_EQ(Text(A(-0.996, A::eRad), A::eRad, 2), "-1.00");
  // Exact ties round away from zero, as the runtime's digit conversion does.
  EXPECT_EQ(Text(A(0.125, A::eRad), A::eRad, 2), ".13");
  EXPECT_EQ(Text(A(-2.5, A::eRad), A::eRad, 0), "-3");

  // Below 0.1 the point is followed by the missing zeros.
  EXPECT_EQ(Text(A(0.05, A::eRad), A::eRad, 2), ".05");
  EXPECT_EQ(Text(A(-0.0012, A::eRad), A::eRad, 4), "-.0012");
  EXPECT_EQ(Text(A(0.001, A::eRad), A::eRad, 2), ".00");
  EXPECT_EQ(Text(A(0.0001, A::eRad), A::eRad, 2), ".00");
  EXPECT_EQ(Text(A(), A::eRad, 2), ".00");
  EXPECT_EQ(Text(A(-0.0, A::eRad), A::eDeg, 1), ".0");

  // No point without decimals; values rounding to nothing show a 0.
  EXPECT_EQ(Text(Degrees(90.0), A::eDeg, 0), "90");
  EXPECT_EQ(Text(A(0.3, A::eRad), A::eRad, 0), "0");
  EXPECT_EQ(Text(A(), A::eRad, 0), "0");
  EXPECT_EQ(Text(A(-0.3, A::eRad), A::eRad, 0), "-0");
  EXPECT_EQ(Text(A(1234.5, A::eRad), A::eRad, -2), "1200");
  EXPECT_EQ(Text(A(-1234.5, A::eRad), A::eRad, -1), "-1230");
}

TEST(AngleText, FullLayouts) {
  unsigned n = 0;
  const A a = Dms(12, 30, 45.0);
  EXPECT_EQ(Text(a, A::eDmsMarked, 2, &n), "12 30' 45.00\"");
  EXPECT_EQ(n, 13u);
  EXPECT_EQ(Text(a, A::eDmsSpaced, 2), "12 30 45.00");
  EXPECT_EQ(Text(a, A::eDmsAligned, 2), " 12 30 45.00");

  const A b = Dms(-12, 30, 45.0);
  EXPECT_EQ(Text(b, A::eDmsMarked, 2), "-12 30' 45.00\"");
  EXPECT_EQ(Text(b, A::eDmsSpaced, 2), "-12 30 45.00");
  EXPECT_EQ(Text(b, A::eDmsAligned, 2), "- 12 30 45.00");

  // A sub-degree angle keeps the full layout with decimals >= 0.
  const A c = Dms(0, -30, 0.0);
  EXPECT_EQ(Text(c, A::eDmsMarked, 2), "-0 30' 0.00\"");
  EXPECT_EQ(Text(c, A::eDmsSpaced, 2), "-0 30 0.00");
  EXPECT_EQ(Text(c, A::eDmsAligned, 2), "-  0 30  0.00");
  EXPECT_EQ(Text(Dms(0, 0, 7.3), A::eDmsMarked, 1), "0 0' 7.3\"");

  // Zero decimals: no point; the aligned seconds are still 3 wide.
  const A d = Dms(5, 15, 0.0);
  EXPECT_EQ(Text(d, A::eDmsMarked, 0), "5 15' 0\"");
  EXPECT_EQ(Text(d, A::eDmsSpaced, 0), "5 15 0");
  EXPECT_EQ(Text(d, A::eDmsAligned, 0), "  5 15   0");
  EXPECT_EQ(Text(Dms(123, 4, 5.5), A::eDmsAligned, 3), "123  4  5.500");

  // -0.0 has no sign prefix.
  EXPECT_EQ(Text(A(-0.0, A::eRad), A::eDmsMarked, 1), "0 0' 0.0\"");
}

TEST(AngleText, SecondsCarry) {
  EXPECT_EQ(Text(Dms(10, 59, 59.996), A::eDmsMarked, 2), "11 0' 0.00\"");
  EXPECT_EQ(Text(Dms(10, 59, 59.996), A::eDmsAligned, 2), " 11  0  0.00");
  EXPECT_EQ(Text(Dms(-10, 59, 59.996), A::eDmsMarked, 2), "-11 0' 0.00\"");
  EXPECT_EQ(Text(Dms(0, -59, 59.996), A::eDmsMarked, 2), "-1 0' 0.00\"");
  EXPECT_EQ(Text(Dms(0, 0, -59.996), A::eDmsSpaced, 2), "-0 1 0.00");
  EXPECT_EQ(Text(Dms(10, 59, 59.996), A::eDmsMarked, 3), "10 59' 59.996\"");

  // A ten-thousandth of a second short of a full turn: 360, not 0.
  const A turn(360.0 - 0.0001 / 3600, A::eDeg, A::eRangePositive);
  EXPECT_EQ(Text(turn, A::eDmsMarked, 3), "360 0' 0.000\"");
  EXPECT_EQ(Text(turn, A::eDmsAligned, 3), "360  0  0.000");

  // The compact rule never carries; with D != 0 it writes the full layout.
  EXPECT_EQ(Text(Dms(10, 29, 59.97), A::eDmsMarked, -1), "10 29' 60.0\"");
  EXPECT_EQ(Text(Dms(10, 29, 59.97), A::eDmsMarked, 1), "10 30' 0.0\"");
  EXPECT_EQ(Text(Dms(-10, 29, 59.97), A::eDmsSpaced, -1), "-10 29 60.0");
}

TEST(AngleText, CompactLayouts) {
  const A a = Dms(0, -30, 0.0);
  EXPECT_EQ(Text(a, A::eDmsMarked, -2), "-30' 0.00\"");
  EXPECT_EQ(Text(a, A::eDmsSpaced, -2), "-30 0.00");
  EXPECT_EQ(Text(a, A::eDmsAligned, -2), "-30  0.00");
  const A b = Dms(0, 5, 7.5);
  EXPECT_EQ(Text(b, A::eDmsMarked, -1), "5' 7.5\"");
  EXPECT_EQ(Text(b, A::eDmsSpaced, -1), "5 7.5");
  EXPECT_EQ(Text(b, A::eDmsAligned, -1), " 5  7.5");

  const A c = Dms(0, 0, 45.0);
  EXPECT_EQ(Text(c, A::eDmsMarked, -1), "45.0\"");
  EXPECT_EQ(Text(c, A::eDmsSpaced, -1), "45.0");
  EXPECT_EQ(Text(c, A::eDmsAligned, -1), "45.0");
  EXPECT_EQ(Text(Dms(0, 0, 4.0), A::eDmsAligned, -2), " 4.00");
  const A d = Dms(0, 0, -45.0);
  EXPECT_EQ(Text(d, A::eDmsMarked, -1), "-45.0\"");
  EXPECT_EQ(Text(d, A::eDmsSpaced, -1), "-45.0");
  EXPECT_EQ(Text(d, A::eDmsAligned, -1), "-45.0");
  EXPECT_EQ(Text(Dms(0, 0, -4.0), A::eDmsAligned, -1), "-4.0");

  // D != 0 takes the full layout even with negative decimals.
  EXPECT_EQ(Text(Dms(-3, 0, 4.0), A::eDmsMarked, -1), "-3 0' 4.0\"");
}

TEST(AngleText, CopyIntoTheCallersBuffer) {
  const A a = Dms(12, 30, 45.0);  // "12 30' 45.00\"", 13 characters
  char buffer[32];

  // size - 1, size, size + 1 around the 14 bytes the text needs.
  for (unsigned size : {13u, 14u, 15u, 5u, 1u}) {
    memset(buffer, 'x', sizeof buffer);
    EXPECT_EQ(a.AngleToString(buffer, size, A::eDmsMarked, 2), 13u) << size;
    const std::string expected = std::string("12 30' 45.00\"").substr(0, size - 1);
    EXPECT_EQ(std::string(buffer), expected) << size;
    for (unsigned i = static_cast<unsigned>(expected.size()); i < size; ++i)
      EXPECT_EQ(buffer[i], '\0') << "byte " << i << " of " << size;
    for (unsigned i = size; i < sizeof buffer; ++i)
      EXPECT_EQ(buffer[i], 'x') << "byte " << i << " past " << size;
  }

  // The decimal forms copy the same way.
  memset(buffer, 'x', sizeof buffer);
  EXPECT_EQ(A(-45.0, A::eDeg).AngleToString(buffer, 6, A::eDeg, 2), 6u);
  EXPECT_STREQ(buffer, "-45.0");
  EXPECT_EQ(buffer[6], 'x');
  memset(buffer, 'x', sizeof buffer);
  EXPECT_EQ(A(-45.0, A::eDeg).AngleToString(buffer, 7, A::eDeg, 2), 6u);
  EXPECT_STREQ(buffer, "-45.00");
  EXPECT_EQ(buffer[7], 'x');

  // Null buffer or size 0: nothing written, result 0.
  memset(buffer, 'x', sizeof buffer);
  EXPECT_EQ(a.AngleToString(nullptr, 20, A::eDmsMarked, 2), 0u);
  EXPECT_EQ(a.AngleToString(buffer, 0, A::eDmsMarked, 2), 0u);
  EXPECT_EQ(a.AngleToString(buffer, 0, A::eDeg, 2), 0u);
  EXPECT_EQ(buffer[0], 'x');

  // An unknown form leaves the zeroed buffer.
  memset(buffer, 'x', sizeof buffer);
  EXPECT_EQ(a.AngleToString(buffer, 10, static_cast<A::eAngleType>(6), 2), 0u);
  for (int i = 0; i < 10; ++i) EXPECT_EQ(buffer[i], '\0');
  EXPECT_EQ(buffer[10], 'x');
  EXPECT_EQ(a.AngleToString(buffer, 10, static_cast<A::eAngleType>(-1), 2), 0u);

  // Texts longer than the 49-character working text are cut there.
  char large[128];
  memset(large, 'x', sizeof large);
  EXPECT_EQ(A(1.0, A::eRad).AngleToString(large, sizeof large, A::eRad, 80), 49u);
  EXPECT_EQ(strlen(large), 49u);
  EXPECT_EQ(std::string(large, 4), "1.00");
  EXPECT_EQ(a.AngleToString(large, sizeof large, A::eDmsAligned, 2000000000), 49u);
  EXPECT_EQ(a.AngleToString(large, sizeof large, A::eDmsMarked, -2147483647 - 1), 49u);
  EXPECT_EQ(A(1e50, A::eRad).AngleToString(large, sizeof large, A::eRad, 2), 49u);
  // Whole degrees beyond 16 bits are written whole.
  EXPECT_EQ(Text(A(40000.5, A::eDeg), A::eDmsMarked, 1), "40000 30' 0.0\"");
}

}  // namespace

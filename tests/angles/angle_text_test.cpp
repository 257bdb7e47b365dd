// CTarnAngle::AngleToString: the decimal forms, the full and compact
// sexagesimal layouts with their carry, and the copy into the caller's buffer.
#include <gtest/gtest.h>
#include <string.h>

#include <string>

#include "tarn/angles.h"

namespace {

using A = CTarnAngle;
constexpr double kPi = 3.141592653589793;

A Rad(double r) { return A(r, A::eRad); }
A Deg(double d) { return A(d, A::eDeg); }
A Dms(short d, short m, double s) { return A(d, m, s); }

TEST(AngleText, EveryForm) {
  const A::eAngleType kMarked = A::eDmsMarked, kSpaced = A::eDmsSpaced, kAligned = A::eDmsAligned;
  const struct { A angle; A::eAngleType form; int decimals; const char* text; } kCases[] = {
      {Rad(kPi / 2), A::eRad, 2, "1.57"},
      {Deg(90.0), A::eDeg, 2, "90.00"},
      {A(100.0, A::eGon), A::eGon, 1, "100.0"},
      {Deg(-45.0), A::eDeg, 2, "-45.00"},
      {Deg(-0.9), A::eGon, 2, "-1.00"},
      // No digit before the point below 1; below 0.1 the missing zeros.
      {Rad(0.5), A::eRad, 2, ".50"},
      {Rad(-0.0012), A::eRad, 4, "-.0012"},
      {Rad(0.001), A::eRad, 2, ".00"},
      {Rad(-0.0), A::eDeg, 1, ".0"},
      // No point without decimals.
      {Deg(90.0), A::eDeg, 0, "90"},
      {Rad(-0.3), A::eRad, 0, "-0"},  // rounds to no digit
      {Rad(1234.5), A::eRad, -2, "1200"},

      // Full layouts; the aligned seconds are p + 3 wide even with p = 0.
      {Dms(12, 30, 45.0), kMarked, 2, "12 30' 45.00\""},
      {Dms(12, 30, 45.0), kSpaced, 2, "12 30 45.00"},
      {Dms(12, 30, 45.0), kAligned, 2, " 12 30 45.00"},
      {Dms(-12, 30, 45.0), kMarked, 2, "-12 30' 45.00\""},
      {Dms(-12, 30, 45.0), kSpaced, 2, "-12 30 45.00"},
      {Dms(-12, 30, 45.0), kAligned, 2, "- 12 30 45.00"},
      {Dms(0, -30, 0.0), kMarked, 2, "-0 30' 0.00\""},
      {Dms(0, -30, 0.0), kAligned, 2, "-  0 30  0.00"},
      {Dms(0, 0, 7.3), kMarked, 1, "0 0' 7.3\""},
      {Dms(5, 15, 0.0), kMarked, 0, "5 15' 0\""},
      {Dms(5, 15, 0.0), kAligned, 0, "  5 15   0"},
      {Rad(-0.0), kMarked, 1, "0 0' 0.0\""},  // -0.0 has no sign prefix
      {Deg(40000.5), kMarked, 1, "40000 30' 0.0\""},  // beyond 16 bits, whole

      // The seconds carry, up to the degrees of a negative sub-degree angle.
      {Dms(10, 59, 59.996), kMarked, 2, "11 0' 0.00\""},
      {Dms(0, -59, 59.996), kMarked, 2, "-1 0' 0.00\""},
      {Dms(0, 0, -59.996), kSpaced, 2, "-0 1 0.00"},
      {Deg(360.0 - 0.0001 / 3600), kMarked, 3, "360 0' 0.000\""},  // not 0

      // Negative decimals: no carry; compact layouts where D = 0, the sign
      // on the first field written.
      {Dms(10, 29, 59.97), kMarked, -1, "10 29' 60.0\""},
      {Dms(0, -30, 0.0), kMarked, -2, "-30' 0.00\""},
      {Dms(0, -30, 0.0), kSpaced, -2, "-30 0.00"},
      {Dms(0, 5, 7.5), kAligned, -1, " 5  7.5"},
      {Dms(0, 0, -45.0), kMarked, -1, "-45.0\""},
      {Dms(0, 0, -45.0), kSpaced, -1, "-45.0"},
      {Dms(0, 0, 4.0), kAligned, -2, " 4.00"},
      {Dms(0, 0, -4.0), kAligned, -1, "-4.0"},
  };
  for (const auto& c : kCases) {
    char buffer[64];
    memset(buffer, 'x', sizeof buffer);
    const unsigned n = c.angle.AngleToString(buffer, sizeof buffer, c.form, c.decimals);
    EXPECT_EQ(std::string(buffer), c.text) << "form " << c.form << " decimals " << c.decimals;
    EXPECT_EQ(n, strlen(c.text)) << c.text;
  }
}

TEST(AngleText, CopyIntoTheCallersBuffer) {
  const A a = Dms(12, 30, 45.0);
  const std::string text = "12 30' 45.00\"";  // 13 characters
  char buffer[32];

  // size - 1, size, size + 1 around the 14 bytes the text needs; 5 and 1.
  for (unsigned size : {13u, 14u, 15u, 5u, 1u}) {
    memset(buffer, 'x', sizeof buffer);
    EXPECT_EQ(a.AngleToString(buffer, size, A::eDmsMarked, 2), 13u) << size;
    const std::string expected = text.substr(0, size - 1);
    EXPECT_EQ(std::string(buffer), expected) << size;
    for (unsigned i = static_cast<unsigned>(expected.size()); i < size; ++i)
      EXPECT_EQ(buffer[i], '\0') << "byte " << i << " of " << size;
    const size_t past = sizeof buffer - size;
    EXPECT_EQ(std::string(buffer + size, past), std::string(past, 'x')) << "past " << size;
  }
  // The decimal forms copy the same way ("-45.00", 6 characters).
  for (unsigned size : {6u, 7u, 8u}) {
    memset(buffer, 'x', sizeof buffer);
    EXPECT_EQ(Deg(-45.0).AngleToString(buffer, size, A::eDeg, 2), 6u);
    EXPECT_EQ(std::string(buffer), std::string("-45.00").substr(0, size - 1));
    EXPECT_EQ(buffer[size], 'x');
  }

  // Null buffer or size 0: nothing written, result 0.
  memset(buffer, 'x', sizeof buffer);
  EXPECT_EQ(a.AngleToString(nullptr, 20, A::eDmsMarked, 2), 0u);
  EXPECT_EQ(a.AngleToString(buffer, 0, A::eDmsMarked, 2), 0u);
  EXPECT_EQ(a.AngleToString(buffer, 0, A::eDeg, 2), 0u);
  EXPECT_EQ(buffer[0], 'x');
  // An unknown form leaves the zeroed buffer.
  EXPECT_EQ(a.AngleToString(buffer, 10, static_cast<A::eAngleType>(6), 2), 0u);
  EXPECT_EQ(std::string(buffer, 11), std::string(10, '\0') + "x");
  EXPECT_EQ(a.AngleToString(buffer, 10, static_cast<A::eAngleType>(-1), 2), 0u);

  // Texts longer than the 49-character working text are cut there.
  char large[128];
  memset(large, 'x', sizeof large);
  EXPECT_EQ(Rad(1.0).AngleToString(large, sizeof large, A::eRad, 80), 49u);
  EXPECT_EQ(strlen(large), 49u);
  EXPECT_EQ(std::string(large, 4), "1.00");
  EXPECT_EQ(a.AngleToString(large, sizeof large, A::eDmsAligned, 2000000000), 49u);
  EXPECT_EQ(a.AngleToString(large, sizeof large, A::eDmsMarked, -2147483647 - 1), 49u);
  EXPECT_EQ(Rad(1e50).AngleToString(large, sizeof large, A::eRad, 2), 49u);
  // Beyond 80 characters too (Wine's runtime conversion stops there).
  EXPECT_EQ(Rad(-1e300).AngleToString(large, sizeof large, A::eRad, 2), 49u);
  EXPECT_EQ(std::string(large, 6), "-10000");
}

}  // namespace

// The digit conversion behind the decimal angle texts: the portable
// implementation and (on Windows) the runtime's _fcvt_s against a table of the
// runtime's answers, and against each other on many values.
#include <errno.h>
#include <gtest/gtest.h>
#include <math.h>
#include <string.h>

#include <random>
#include <string>

#include "angles/fcvt.h"

namespace {

using Convert = int (*)(char*, size_t, double, int, int*, int*);
const Convert kConverters[] = {tarn::PortableFixedDigits, tarn::FixedDigits};

struct Digits {
  int result;
  std::string digits;
  int point;
  int negative;
};

// The digits written, and no byte written past `size`.
Digits Digitize(Convert convert, double value, int decimals, size_t size = 349) {
  char buffer[1024];
  memset(buffer, 'x', sizeof buffer);
  Digits d{-1, "", 99, 99};
  d.result = convert(buffer, size, value, decimals, &d.point, &d.negative);
  d.digits = std::string(buffer, strnlen(buffer, size));
  EXPECT_EQ(std::string(buffer + size, sizeof buffer - size), std::string(sizeof buffer - size, 'x'));
  return d;
}

TEST(AngleDigits, TheRuntimesAnswers) {
  // The point is not compared when no digit is left.
  const struct { double value; int decimals; const char* digits; int point, negative; } kCases[] = {
      {1.5707963267948966, 2, "157", 1, 0},
      {-45.0, 2, "4500", 2, 1},
      {0.5, 2, "50", 0, 0},
      {0.05, 2, "5", -1, 0},
      {0.05, 20, "5000000000000000278", -1, 0},
      {0.005, 2, "1", -1, 0},  // 0.005 is slightly above its decimal value
      {0.004, 2, "", 0, 0},
      {1e-5, 5, "1", -4, 0},
      {999.996, 2, "100000", 4, 0},
      {2.675, 2, "267", 1, 0},  // 2.67499999...
      {123456789012345678.0, 0, "123456789012345680", 18, 0},
      // Exact ties go away from zero.
      {0.125, 2, "13", 0, 0},
      {-3.5, 0, "4", 1, 1},
      {9.5, 0, "10", 2, 0},
      {99.95, 1, "1000", 3, 0},  // 99.9500000000000028: not a tie, rounds up
      // Zero keeps its places; -0.0 has the sign bit.
      {0.0, 2, "00", 0, 0},
      {0.0, 0, "", 0, 0},
      {-0.0, 2, "00", 0, 1},
      // Negative places: the digits above that place of the whole number.
      {1234.5, -2, "12", 4, 0},
      {1250.0, -2, "12", 4, 0},
      {0.5, -2, "", 1, 0},
  };
  for (Convert convert : kConverters) {
    for (const auto& c : kCases) {
      const Digits d = Digitize(convert, c.value, c.decimals);
      SCOPED_TRACE(testing::Message() << c.value << " with " << c.decimals);
      EXPECT_EQ(d.result, 0);
      EXPECT_EQ(d.digits, c.digits);
      if (!d.digits.empty() || c.value == 0.0) EXPECT_EQ(d.point, c.point);
      EXPECT_EQ(d.negative, c.negative);
    }
  }
}

TEST(AngleDigits, LimitsAndRefusedArguments) {
  // "157" needs 4 bytes: size - 1, size, size + 1. The runtime's estimate
  // from above (2 integer digits) asks for 5.
  const Convert portable = tarn::PortableFixedDigits;
  const double halfPi = 1.5707963267948966;
  EXPECT_EQ(Digitize(portable, halfPi, 2, 3).result, ERANGE);
  EXPECT_EQ(Digitize(portable, halfPi, 2, 3).digits, "");
  EXPECT_EQ(Digitize(portable, halfPi, 2, 4).digits, "157");
  EXPECT_EQ(Digitize(portable, halfPi, 2, 5).digits, "157");
#ifdef _WIN32
  EXPECT_EQ(Digitize(tarn::FixedDigits, halfPi, 2, 4).result, ERANGE);
  EXPECT_EQ(Digitize(tarn::FixedDigits, halfPi, 2, 4).digits, "");
  EXPECT_EQ(Digitize(tarn::FixedDigits, halfPi, 2, 5).digits, "157");
#endif

  // The largest double with 39 places fills the runtime's 349-byte buffer.
  const Digits max = Digitize(portable, 1.7976931348623157e308, 39);
  EXPECT_EQ(max.result, 0);
  EXPECT_EQ(max.digits.size(), 348u);
  EXPECT_EQ(max.point, 309);
  EXPECT_EQ(max.digits.substr(0, 17), "17976931348623157");
  EXPECT_EQ(Digitize(portable, 1.7976931348623157e308, 40).result, ERANGE);
  EXPECT_EQ(Digitize(portable, 1.0, 401, 1000).result, ERANGE);
  EXPECT_EQ(Digitize(portable, 1.0, -2147483647 - 1).digits, "");

  for (Convert convert : kConverters) {
    int point = 7, negative = 7;
    char buffer[8] = "xxxxxxx";
    EXPECT_EQ(convert(nullptr, 8, 1.0, 2, &point, &negative), EINVAL);
    EXPECT_EQ(convert(buffer, 0, 1.0, 2, &point, &negative), EINVAL);
    EXPECT_EQ(buffer[0], 'x');
    EXPECT_EQ(convert(buffer, 8, 1.0, 2, nullptr, &negative), EINVAL);
    EXPECT_EQ(convert(buffer, 8, 1.0, 2, &point, nullptr), EINVAL);
    const Digits inf = Digitize(convert, -HUGE_VAL, 2);
    EXPECT_EQ(inf.result, EINVAL);
    EXPECT_EQ(inf.digits, "");
    EXPECT_EQ(inf.negative, 1);
    EXPECT_EQ(Digitize(convert, NAN, 2).result, EINVAL);
  }
}

#ifdef _WIN32
// Magnitudes from 1e-7 to 1e18, -3 to 17 places, and binary fractions with
// exact ties.
TEST(AngleDigits, PortableConversionAgreesWithTheRuntime) {
  std::mt19937_64 random(20240611);
  std::uniform_real_distribution<double> mantissa(1.0, 10.0);
  std::uniform_int_distribution<int> exponent(-7, 18);
  std::uniform_int_distribution<int> places(-3, 17);
  auto compare = [&](double value, int decimals) {
    const Digits runtime = Digitize(tarn::FixedDigits, value, decimals);
    const Digits portable = Digitize(tarn::PortableFixedDigits, value, decimals);
    ASSERT_EQ(portable.result, runtime.result) << value << " " << decimals;
    ASSERT_EQ(portable.digits, runtime.digits) << value << " " << decimals;
    ASSERT_EQ(portable.negative, runtime.negative) << value << " " << decimals;
    if (!runtime.digits.empty())
      ASSERT_EQ(portable.point, runtime.point) << value << " " << decimals;
  };
  for (int i = 0; i < 20000; ++i) {
    const double value = mantissa(random) * pow(10.0, exponent(random));
    compare(i % 2 ? -value : value, places(random));
  }
  for (int k = -300; k <= 300; ++k)
    for (int decimals = -1; decimals <= 5; ++decimals) compare(k / 16.0, decimals);
}
#endif  // _WIN32

}  // namespace

// The digit conversion behind the decimal angle texts: the portable
// implementation against a table of the runtime's answers, and on Windows
// against the runtime's _fcvt_s itself.
#include <errno.h>
#include <gtest/gtest.h>
#include <math.h>
#include <string.h>

#include <random>
#include <string>

#include "angles/fcvt.h"

namespace {

using Convert = int (*)(char*, size_t, double, int, int*, int*);

struct Digits {
  int result;
  std::string digits;
  int point;
  int negative;
};

Digits Digitize(Convert convert, double value, int decimals, size_t size = 349) {
  char buffer[400];
  memset(buffer, 'x', sizeof buffer);
  Digits d{-1, "", 99, 99};
  d.result = convert(buffer, size, value, decimals, &d.point, &d.negative);
  d.digits = std::string(buffer, strnlen(buffer, size));
  return d;
}

struct Case {
  double value;
  int decimals;
  const char* digits;
  int point;  // not compared when no digit is left
  int negative;
};

// What the runtime answers (checked against it in the Windows build).
const Case kCases[] = {
    {1.5707963267948966, 2, "157", 1, 0},
    {1.5707963267948966, 0, "2", 1, 0},
    {1.5707963267948966, 20, "157079632679489655800", 1, 0},
    {90.0, 2, "9000", 2, 0},
    {90.0, 0, "90", 2, 0},
    {-45.0, 2, "4500", 2, 1},
    {0.5, 2, "50", 0, 0},
    {0.05, 2, "5", -1, 0},
    {0.05, 20, "5000000000000000278", -1, 0},
    {0.005, 2, "1", -1, 0},  // 0.005 is slightly above its decimal value
    {0.004, 2, "", 0, 0},
    {1e-5, 5, "1", -4, 0},
    {999.996, 2, "100000", 4, 0},
    {999.996, 5, "99999600", 3, 0},
    {0.96, 1, "10", 1, 0},
    {2.675, 2, "267", 1, 0},  // 2.67499999...
    {1e22, 1, "100000000000000000000000", 23, 0},
    {123456789012345678.0, 0, "123456789012345680", 18, 0},
    // Exact ties go away from zero.
    {0.125, 2, "13", 0, 0},
    {0.375, 2, "38", 0, 0},
    {2.5, 0, "3", 1, 0},
    {-3.5, 0, "4", 1, 1},
    {0.5, 0, "1", 1, 0},
    {9.5, 0, "10", 2, 0},
    {99.95, 1, "1000", 3, 0},  // 99.9500000000000028: not a tie, rounds up
    // Zero keeps its places; -0.0 has the sign bit.
    {0.0, 2, "00", 0, 0},
    {0.0, 0, "", 0, 0},
    {-0.0, 2, "00", 0, 1},
    // Negative places: the digits above that place of the whole number.
    {1234.5, -2, "12", 4, 0},
    {1250.0, -2, "12", 4, 0},
    {1e20, -2, "1000000000000000000", 21, 0},
    {0.5, -2, "", 1, 0},
};

void CheckTable(Convert convert) {
  for (const Case& c : kCases) {
    const Digits d = Digitize(convert, c.value, c.decimals);
    const std::string what = std::to_string(c.value) + " with " + std::to_string(c.decimals);
    EXPECT_EQ(d.result, 0) << what;
    EXPECT_EQ(d.digits, c.digits) << what;
    if (!d.digits.empty() || c.value == 0.0) {
      EXPECT_EQ(d.point, c.point) << what;
    }
    EXPECT_EQ(d.negative, c.negative) << what;
  }
}

TEST(AngleDigits, PortableConversionMatchesTheRuntimesAnswers) {
  CheckTable(tarn::PortableFixedDigits);
}

TEST(AngleDigits, PortableConversionLimits) {
  // "157" needs 4 bytes: size - 1, size, size + 1.
  Digits d = Digitize(tarn::PortableFixedDigits, 1.5707963267948966, 2, 3);
  EXPECT_EQ(d.result, ERANGE);
  EXPECT_EQ(d.digits, "");
  d = Digitize(tarn::PortableFixedDigits, 1.5707963267948966, 2, 4);
  EXPECT_EQ(d.result, 0);
  EXPECT_EQ(d.digits, "157");
  d = Digitize(tarn::PortableFixedDigits, 1.5707963267948966, 2, 5);
  EXPECT_EQ(d.result, 0);
  EXPECT_EQ(d.digits, "157");

  // The largest double with 39 places fills the runtime's 349-byte buffer.
  d = Digitize(tarn::PortableFixedDigits, 1.7976931348623157e308, 39);
  EXPECT_EQ(d.result, 0);
  EXPECT_EQ(d.digits.size(), 348u);
  EXPECT_EQ(d.point, 309);
  EXPECT_EQ(d.digits.substr(0, 17), "17976931348623157");
  EXPECT_EQ(Digitize(tarn::PortableFixedDigits, 1.7976931348623157e308, 40).result, ERANGE);

  EXPECT_EQ(Digitize(tarn::PortableFixedDigits, 1.0, 401, 1000).result, ERANGE);
  EXPECT_EQ(Digitize(tarn::PortableFixedDigits, 1.0, -2147483647 - 1).digits, "");
}

TEST(AngleDigits, RefusedArguments) {
  for (Convert convert : {tarn::FixedDigits, tarn::PortableFixedDigits}) {
    int point = 7;
    int negative = 7;
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

TEST(AngleDigits, RuntimeGivesTheTabledAnswers) { CheckTable(tarn::FixedDigits); }

TEST(AngleDigits, RuntimeRefusesWhatMightNotFit) {
  // Estimated from above: 2 integer digits, 2 places, the terminator.
  char buffer[8];
  memset(buffer, 'x', sizeof buffer);
  int point = 0;
  int negative = 0;
  EXPECT_EQ(tarn::FixedDigits(buffer, 4, 1.5707963267948966, 2, &point, &negative), ERANGE);
  EXPECT_EQ(buffer[0], '\0');
  EXPECT_EQ(buffer[4], 'x');
  EXPECT_EQ(tarn::FixedDigits(buffer, 5, 1.5707963267948966, 2, &point, &negative), 0);
  EXPECT_STREQ(buffer, "157");
  EXPECT_EQ(buffer[5], 'x');
}

// The portable conversion against the runtime on many values: magnitudes
// from 1e-7 to 1e18, -3 to 17 places, and binary fractions with exact ties.
TEST(AngleDigits, PortableConversionAgreesWithTheRuntime) {
  std::mt19937_64 random(20240611);
  std::uniform_real_distribution<double> mantissa(1.0, 10.0);
  std::uniform_int_distribution<int> exponent(-7, 18);
  std::uniform_int_distribution<int> places(-3, 17);
  int compared = 0;
  auto compare = [&](double value, int decimals) {
    const Digits runtime = Digitize(tarn::FixedDigits, value, decimals);
    const Digits portable = Digitize(tarn::PortableFixedDigits, value, decimals);
    ASSERT_EQ(portable.result, runtime.result) << value << " " << decimals;
    ASSERT_EQ(portable.digits, runtime.digits) << value << " " << decimals;
    ASSERT_EQ(portable.negative, runtime.negative) << value << " " << decimals;
    if (!runtime.digits.empty()) ASSERT_EQ(portable.point, runtime.point) << value << " " << decimals;
    ++compared;
  };
  for (int i = 0; i < 20000; ++i) {
    double value = mantissa(random) * pow(10.0, exponent(random));
    if (i % 2) value = -value;
    compare(value, places(random));
  }
  for (int k = -300; k <= 300; ++k)
    for (int decimals = -1; decimals <= 5; ++decimals) compare(k / 16.0, decimals);
  EXPECT_GT(compared, 20000);
}

#endif  // _WIN32

}  // namespace

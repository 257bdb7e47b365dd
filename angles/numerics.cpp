// Temperature, greatest common divisor and least common multiple.
#include <cmath>
#include <type_traits>

#include "tarn/angles.h"

namespace {

constexpr double kKelvinOffset = 273.15;
constexpr double kEpsilon = 2.220446049250313e-16;

// The truncating remainder. x86 faults on the one quotient that overflows
// (the most negative value by -1) where the remainder itself is just 0.
template <typename T>
T Remainder(T a, T b) {
  return b == -1 ? 0 : a % b;
}

template <typename T>
T Gcd(T a, T b) {
  while (b != 0) {
    const T r = Remainder(a, b);
    a = b;
    b = r;
  }
  return a;
}

template <typename T>
T Lcm(T a, T b) {
  // gcd(b, a % b) for b != 0 is the loop's first step: Gcd(a, b) is the same.
  const T g = Gcd(a, b);
  if (g == 0) return 0;
  // The product wraps around in the width of T instead of overflowing, and a
  // divisor of -1 negates (the one quotient x86 faults on).
  using U = std::make_unsigned_t<T>;
  const U product = static_cast<U>(a) * static_cast<U>(b);
  if (g == -1) return static_cast<T>(U{0} - product);
  return static_cast<T>(product) / g;
}

}  // namespace

double TarnC2K(double dCelsius) { return dCelsius + kKelvinOffset; }

double TarnK2C(double dKelvin) { return dKelvin - kKelvinOffset; }

int __TarnGcdi(int a, int b) { return Gcd(a, b); }

long __TarnGcdl(long a, long b) { return Gcd(a, b); }

int __TarnLcmi(int a, int b) { return Lcm(a, b); }

long __TarnLcml(long a, long b) { return Lcm(a, b); }

double __TarnGcdd(double x, double y) {
  while (y > kEpsilon) {
    const double r = std::fmod(x, y);
    x = y;
    y = r;
  }
  return x;
}

double __TarnLcmd(double x, double y) {
  const double g = __TarnGcdd(x, y);
  if (g == 0.0) return 0.0;
  return x * y / g;
}

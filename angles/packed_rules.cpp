#include "angles/packed_rules.h"

#include <climits>
#include <cmath>

namespace tarn::packed {

bool NearlyEqual(double a, double b) {
  const double a_abs = std::fabs(a);
  const double b_abs = std::fabs(b);
  return std::fabs(a - b) < (a_abs > b_abs ? a_abs : b_abs) * kEpsilon + kEpsilon;
}

double DecimalStep(int decimals) {
  // 10^0 to 10^22 are exact doubles, and one division rounds correctly. Not
  // every C runtime's pow does: MinGW's gives 0.0010000000000000002 for
  // 10^-3, and 360 rounded to 4 decimals would no longer be 360.
  static constexpr double kPowers[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                       1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                       1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
  constexpr int kExact = static_cast<int>(sizeof kPowers / sizeof kPowers[0]) - 1;
  if (decimals >= 0 && decimals <= kExact) return 1.0 / kPowers[decimals];
  if (decimals < 0 && decimals >= -kExact) return kPowers[-decimals];
  return std::pow(10.0, -decimals);
}

double RoundToStep(double v, double step) {
  if (step < 0 || NearlyEqual(step, 0.0)) return v;
  return std::copysign(std::floor(std::fabs(v) / step + 0.5) * step, v);
}

int Truncate(double v) {
  // Written as a range test that NaN fails too.
  if (!(v > -2147483649.0 && v < 2147483648.0)) return INT_MIN;
  return static_cast<int>(v);
}

Fields ParsePacked(double a) {
  Fields f;
  f.whole = Truncate(a);
  f.minor = Truncate((a - f.whole) * 100 + 0.0000005);
  f.fine = (a - (f.minor / 100.0 + f.whole)) * 10000;
  return f;
}

Fields SplitMagnitude(double a, const Notation& n) {
  Fields f;
  f.whole = Truncate(a);
  const double minor = (a - f.whole) * n.base;
  f.minor = Truncate(minor);
  f.fine = (minor - f.minor) * n.base;
  return f;
}

void CarryIntoMinor(Fields& f, const Notation& n) {
  f.fine = 0;
  if (++f.minor > n.base - 1) {
    f.minor = 0;
    ++f.whole;
  }
}

void CarryFine(Fields& f, int decimals, const Notation& n) {
  if (decimals >= 0 && f.fine + 0.5 * DecimalStep(decimals) > n.below_base) CarryIntoMinor(f, n);
}

void WrapWhole(Fields& f, int wrap, const Notation& n) {
  // Repeated subtraction of a turn down to below one turn is the remainder.
  if (wrap != 0 && f.whole >= n.turn) f.whole %= n.turn;
}

Fields FieldsOfMagnitude(double a, const Notation& n, int decimals, int wrap) {
  Fields f = SplitMagnitude(a, n);
  if (f.fine < 0) f.fine = 0;
  CarryFine(f, decimals, n);
  WrapWhole(f, wrap, n);
  return f;
}

double WrapPacked(double v, int wrap, const Notation& n) {
  // An infinite v would never get below a turn.
  if (wrap == 0 || !std::isfinite(v)) return v;
  while (v > n.turn || NearlyEqual(v, n.turn)) v += -n.turn;
  return v;
}

}  // namespace tarn::packed

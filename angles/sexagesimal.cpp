// Conversions between radians, decimal degrees, DMS parts and packed DMS.
#include <cmath>

#include "angles/packed_rules.h"
#include "tarn/angles.h"

namespace {

using tarn::packed::DegreeWrap;
using tarn::packed::Fields;
using tarn::packed::FieldsOfMagnitude;
using tarn::packed::kSexagesimal;
using tarn::packed::SecondsCarry;
using tarn::packed::SignOf;
using tarn::packed::Store;

// One factor each way; 180 / pi would differ in the last bit.
constexpr double kDegreesPerRadian = 57.29577951308232;
constexpr double kRadiansPerDegree = 0.017453292519943295;

// The parse of a packed DMS magnitude with seconds of about 100 and minutes
// of 100 moved on: what is left of 12.99999999999 after the minutes' bias is
// 12 deg 100' -0.0000001", which is 13 deg.
Fields ParseDms(double magnitude) {
  Fields f = tarn::packed::ParsePacked(magnitude);
  if (f.fine < 0) {
    f.fine = 0;
  } else if (f.fine > 100 || tarn::packed::NearlyEqual(f.fine, 100)) {
    f.fine -= 100;
    ++f.minor;
  }
  if (f.minor >= 100) {
    f.minor -= 100;
    ++f.whole;
  }
  return f;
}

// The carry that decimal rounding of the packed number to `decimals` needs so
// that no field shows 60: each row looks at the digit that rounding looks at.
void PackedCarry(Fields& f, int decimals) {
  bool carry = false;
  if (decimals >= 4) {
    carry = f.fine + 0.5 * tarn::packed::DecimalStep(decimals - 4) > kSexagesimal.below_base;
  } else if (decimals == 3) {
    carry = f.fine > 55 || tarn::packed::NearlyEqual(f.fine, 55);
  } else if (decimals == 2) {
    carry = f.fine > 50 || tarn::packed::NearlyEqual(f.fine, 50);
  } else if (decimals == 1) {
    // Tens of minutes: 55' and more show as the next degree.
    if (f.minor >= 55) {
      f.minor = 0;
      f.fine = 0;
      ++f.whole;
    }
  } else if (decimals == 0) {
    carry = f.minor >= 50;
  }
  if (carry) tarn::packed::CarryIntoMinor(f, kSexagesimal);
}

}  // namespace

void TarnDeg2DMS(double dDegrees, int& nSign, int& nDegrees, int& nMinutes, double& dSeconds,
                 int nDecimals, int nWrap) {
  nSign = SignOf(dDegrees);
  Store(FieldsOfMagnitude(std::fabs(dDegrees), kSexagesimal, nDecimals, nWrap), nDegrees, nMinutes,
        dSeconds);
}

void TarnRad2DMS(double dRad, int& nSign, int& nDegrees, int& nMinutes, double& dSeconds,
                 int nDecimals, int nWrap) {
  TarnDeg2DMS(dRad * kDegreesPerRadian, nSign, nDegrees, nMinutes, dSeconds, nDecimals, nWrap);
}

void TarnDMS2DMS(double dDms, int& nSign, int& nDegrees, int& nMinutes, double& dSeconds,
                 int nDecimals, int nWrap) {
  nSign = SignOf(dDms);
  Fields f = ParseDms(std::fabs(dDms));
  SecondsCarry(f, nDecimals);
  DegreeWrap(f, nWrap);
  Store(f, nDegrees, nMinutes, dSeconds);
}

double TarnDMS2DMS(int nSign, int nDegrees, int nMinutes, double dSeconds, int nDecimals,
                   int nWrap) {
  Fields f{nDegrees, nMinutes, dSeconds < 0 ? 0 : dSeconds};
  if (f.fine >= 60) {
    f.minor += tarn::packed::Truncate(std::floor(f.fine / 60));
    f.fine = std::fmod(f.fine, 60);
  }
  if (f.minor >= 60) {
    f.whole += f.minor / 60;
    f.minor %= 60;
  }
  PackedCarry(f, nDecimals);
  double v = (std::fabs(static_cast<double>(f.whole)) + f.minor / 100.0) + f.fine / 10000;
  if (nDecimals >= 0) v = tarn::packed::RoundToStep(v, tarn::packed::DecimalStep(nDecimals));
  v = tarn::packed::WrapPacked(v, nWrap, kSexagesimal);
  return nSign < 0 ? -v : v;
}

double TarnRad2DMS(double dRad, int nDecimals, int nWrap) {
  const double x = dRad * kDegreesPerRadian;
  // First the carry of the seconds shown with nDecimals decimals, then the
  // packed number's own: a minute moved here is seen by the second.
  const Fields f = FieldsOfMagnitude(std::fabs(x), kSexagesimal, nDecimals, nWrap);
  return TarnDMS2DMS(SignOf(x), f.whole, f.minor, f.fine, nDecimals, nWrap);
}

double TarnDMS2Deg(int nSign, int nDegrees, int nMinutes, double dSeconds) {
  const double degrees = (std::fabs(static_cast<double>(nDegrees)) + nMinutes / 60.0) +
                         (dSeconds < 0 ? 0 : dSeconds) / 3600;
  return nSign < 0 ? -degrees : degrees;
}

double TarnDMS2Rad(int nSign, int nDegrees, int nMinutes, double dSeconds) {
  return TarnDMS2Deg(nSign, nDegrees, nMinutes, dSeconds) * kRadiansPerDegree;
}

double TarnDMS2Rad(double dDms) {
  const Fields f = ParseDms(std::fabs(dDms));
  return TarnDMS2Rad(SignOf(dDms), f.whole, f.minor, f.fine);
}

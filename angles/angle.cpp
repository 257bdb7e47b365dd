#include <math.h>

#include "angles/angle_fields.h"
#include "angles/packed_rules.h"
#include "tarn/angles.h"

namespace tarn {
namespace {

// Truncation of a double to int without the undefined conversion of values
// out of range: NaN gives 0, large magnitudes saturate.
int TruncateToInt(double value) {
  if (!(value == value)) return 0;
  if (value >= 2147483647.0) return 2147483647;
  if (value <= -2147483647.0) return -2147483647;
  return static_cast<int>(value);
}

// Two units in the last place below 60: rounding that pushes the seconds
// past it shows them as 60 and must carry instead.
constexpr double kCarryThreshold = 59.999999999999986;

// Decimal degrees from DMS fields, each lower field taking the sign of the
// value composed so far.
double ComposeDegrees(short degrees, short minutes, double seconds) {
  double d = degrees;
  if (degrees < 0)
    d = degrees - minutes / 60.0;
  else
    d = degrees + minutes / 60.0;
  if (d < 0)
    d = d - seconds / 3600.0;
  else
    d = d + seconds / 3600.0;
  return d;
}

}  // namespace

DmsFields SplitDegrees(double a) {
  DmsFields f;
  // The fraction comes from the exact truncation, so that degrees beyond
  // the int range still give the right minutes and seconds.
  const double whole = trunc(a);
  f.degrees = TruncateToInt(whole);
  double fraction = a - whole;
  if (f.degrees < 0) fraction = fabs(fraction);
  f.minutes = TruncateToInt(60.0 * fraction);
  double rest = 60.0 * fraction - f.minutes;
  if (f.minutes < 0) rest = fabs(rest);
  f.seconds = 60.0 * rest;
  return f;
}

void CarrySeconds(DmsFields& f, bool negative, int decimals) {
  if (decimals < 0) return;
  if (!(fabs(f.seconds) + 0.5 * tarn::packed::DecimalStep(decimals) > kCarryThreshold)) return;
  f.seconds = 0.0;
  if (f.degrees != 0) {
    // Minutes are a magnitude here.
    if (++f.minutes == 60) {
      f.minutes = 0;
      if (f.degrees < 0) {
        if (f.degrees > -2147483647) --f.degrees;
      } else if (f.degrees < 2147483647) {
        ++f.degrees;
      }
    }
    return;
  }
  // D = 0: the minutes carry the sign, or take it when they were 0.
  f.minutes += negative ? -1 : 1;
  if (f.minutes == 60 || f.minutes == -60) {
    f.minutes = 0;
    f.degrees = negative ? -1 : 1;
  }
}

}  // namespace tarn

using tarn::kPi;
using tarn::kTwoPi;

double CTarnAngle::SimplifyAngle(const double& dValue, eAngleType eUnit, eAngleRange eRange) {
  double full = kTwoPi;
  double half = kPi;
  if (eUnit == eDeg) {
    full = 360.0;
    half = 180.0;
  } else if (eUnit == eGon) {
    full = 400.0;
    half = 200.0;
  }
  const double x = dValue;
  switch (eRange) {
    case eRangePositive:
      return x < 0 ? full - fmod(fabs(x), full) : fmod(fabs(x), full);
    case eRangeSigned: {
      const double r = fmod(fabs(x), half);
      return x < 0 ? -r : r;
    }
    default:
      return x;
  }
}

CTarnAngle::CTarnAngle() : m_dRad(0.0), m_eRange(eRangeDefault) {}

CTarnAngle::CTarnAngle(const double& dValue, eAngleType eType, eAngleRange eRange)
    : m_dRad(0.0), m_eRange(eRange) {
  switch (eType) {
    case eDeg:
      m_dRad = SimplifyAngle(dValue, eDeg, eRange) * kPi / 180.0;
      break;
    case eGon:
      m_dRad = SimplifyAngle(dValue, eGon, eRange) * kPi / 200.0;
      break;
    default:
      m_dRad = SimplifyAngle(dValue, eRad, eRange);
      break;
  }
}

CTarnAngle::CTarnAngle(const short& nDegrees, const short& nMinutes, const double& dSeconds,
                       eAngleRange eRange)
    : m_dRad(0.0), m_eRange(eRange) {
  SetDms(nDegrees, nMinutes, dSeconds, eRangeDefault);
}

CTarnAngle::CTarnAngle(const CTarnAngle& other) = default;

CTarnAngle::~CTarnAngle() = default;

CTarnAngle& CTarnAngle::operator=(const CTarnAngle& other) = default;

double CTarnAngle::Rad() const { return m_dRad; }

void CTarnAngle::Rad(const double& dRad, eAngleRange eRange) {
  if (eRange != eRangeDefault) m_eRange = eRange;
  m_dRad = SimplifyAngle(dRad, eRad, m_eRange);
}

double CTarnAngle::Deg() const { return m_dRad * 180.0 / kPi; }

void CTarnAngle::Deg(const double& dDeg, eAngleRange eRange) {
  if (eRange != eRangeDefault) m_eRange = eRange;
  m_dRad = SimplifyAngle(dDeg, eDeg, m_eRange) * kPi / 180.0;
}

double CTarnAngle::Gon() const { return m_dRad * 200.0 / kPi; }

void CTarnAngle::Gon(const double& dGon, eAngleRange eRange) {
  if (eRange != eRangeDefault) m_eRange = eRange;
  m_dRad = SimplifyAngle(dGon, eGon, m_eRange) * kPi / 200.0;
}

void CTarnAngle::GetDms(short& nDegrees, short& nMinutes, double& dSeconds,
                        int nDecimals) const {
  tarn::DmsFields f = tarn::SplitDegrees(m_dRad * 180.0 / kPi);
  tarn::CarrySeconds(f, m_dRad < 0, nDecimals);
  // Degrees beyond the 16-bit field wrap; the others always fit.
  nDegrees = static_cast<short>(static_cast<unsigned short>(static_cast<unsigned int>(f.degrees)));
  nMinutes = static_cast<short>(f.minutes);
  dSeconds = f.seconds;
}

void CTarnAngle::SetDms(const short& nDegrees, const short& nMinutes, const double& dSeconds,
                        eAngleRange eRange) {
  if (eRange != eRangeDefault) m_eRange = eRange;
  const double degrees = tarn::ComposeDegrees(nDegrees, nMinutes, dSeconds);
  m_dRad = SimplifyAngle(degrees, eDeg, m_eRange) * kPi / 180.0;
}

void CTarnAngle::AddRad(const double& dRad) {
  double v = SimplifyAngle(m_dRad + dRad, eRad, m_eRange);
  if (v < 0) v += kTwoPi;
  m_dRad = v;
}

void CTarnAngle::AddDeg(const double& dDeg) {
  double increment = SimplifyAngle(dDeg, eDeg, m_eRange);
  if (increment < 0) increment += 360.0;
  const double v = increment * kPi / 180.0 + m_dRad;
  m_dRad = SimplifyAngle(v, eRad, m_eRange);
}

void CTarnAngle::AddGon(const double& dGon) {
  double increment = SimplifyAngle(dGon, eGon, m_eRange);
  if (increment < 0) increment += 400.0;
  const double v = increment * kPi / 200.0 + m_dRad;
  m_dRad = SimplifyAngle(v, eRad, m_eRange);
}

void CTarnAngle::AddDms(const short& nDegrees, const short& nMinutes, const double& dSeconds) {
  const double increment = tarn::ComposeDegrees(nDegrees, nMinutes, dSeconds);
  const double v = increment * kPi / 180.0 + m_dRad;
  m_dRad = SimplifyAngle(v, eRad, m_eRange);
}

CTarnAngle::eAngleRange CTarnAngle::AngleRange() const { return m_eRange; }

void CTarnAngle::AngleRange(eAngleRange eRange) { m_eRange = eRange; }

// Tarn: angles and units. Pure arithmetic: no platform call, no Windows
// header; the same code builds on any host.
#ifndef TARN_ANGLES_H
#define TARN_ANGLES_H

#include "tarn/tarn_export.h"

// ---------------------------------------------------------------------------
// Angle value and angle text (CTarnAngle)
// ---------------------------------------------------------------------------

// One plane angle, stored in radians, set and read in radians, degrees, gon
// (400 to the circle) and degree-minute-second fields.
//
// The range rule, applied by the setters and the add operations: with a
// full circle F and a half circle H of the unit in question (2*pi and pi,
// 360 and 180, 400 and 200),
//   eRangePositive  x < 0: F - fmod(|x|, F), else fmod(|x|, F). Negative
//                   whole turns give F itself (-360 deg becomes 360 deg),
//                   +360 deg gives 0, -0.0 gives +0.0.
//   eRangeSigned    fmod(|x|, H) with the sign of x: a remainder, not a wrap
//                   (190 deg becomes 10 deg, -180 deg becomes -0.0).
//   eRangeDefault, eRangeUnlimited and any other number: x unchanged.
// pi is the double 3.141592653589793. Conversions multiply first and divide
// second (deg = rad * 180 / pi, rad = deg * pi / 180, likewise with 200 for
// gon), which fixes the last bit of every result.
//
// DMS fields: a 16-bit degree count D, a 16-bit minute count M and seconds S.
// The angle's sign sits on the most significant non-zero field, the others
// are magnitudes: -10 deg 30' is (-10, 30, 0), -0 deg 30' is (0, -30, 0)
// and -0 deg 0' 45" is (0, 0, -45).
class TARN_API CTarnAngle {
 public:
  // Units of the setters and getters; the last three are text forms only.
  enum eAngleType : int {
    eRad = 0,
    eDeg = 1,
    eGon = 2,
    eDmsMarked = 3,   // 12 30' 45.00"
    eDmsSpaced = 4,   // 12 30 45.00
    eDmsAligned = 5,  // " 12 30 45.00": degrees in 3 columns, minutes in 2
  };
  // Normalisation ranges. Passed to a setter, eRangeDefault keeps the
  // object's range; stored in the object it means no normalisation. Any
  // other number is stored unchanged and normalises nothing.
  enum eAngleRange : int {
    eRangeDefault = 0,
    eRangePositive = 1,
    eRangeSigned = 2,
    eRangeUnlimited = 3,
  };

  // 0 rad, range eRangeDefault.
  CTarnAngle();
  // `dValue` in the unit `eType` (eDmsMarked and beyond are taken as
  // radians), normalised under `eRange`, which is stored as given.
  CTarnAngle(const double& dValue, eAngleType eType, eAngleRange eRange = eRangeDefault);
  // From DMS fields as SetDms composes them, normalised under `eRange`, which
  // is stored as given.
  CTarnAngle(const short& nDegrees, const short& nMinutes, const double& dSeconds,
             eAngleRange eRange = eRangeDefault);
  CTarnAngle(const CTarnAngle& other);
  virtual ~CTarnAngle();
  CTarnAngle& operator=(const CTarnAngle& other);

  // The setters store `eRange` unless it is eRangeDefault, apply the range
  // rule to the argument in its own unit, then convert it to radians.
  double Rad() const;
  void Rad(const double& dRad, eAngleRange eRange = eRangeDefault);
  // Rad() * 180 / pi.
  double Deg() const;
  void Deg(const double& dDeg, eAngleRange eRange = eRangeDefault);
  // Rad() * 200 / pi.
  double Gon() const;
  void Gon(const double& dGon, eAngleRange eRange = eRangeDefault);

  // DMS fields of the angle in degrees a: D = a truncated toward zero, M and
  // S from the fraction. When `nDecimals` >= 0 the seconds carry that showing
  // S with that many decimals would need is applied, S itself stays
  // unrounded: if |S| + 0.5 * 10^-nDecimals > 59.999999999999986, S becomes
  // 0 and M grows by one in magnitude (at 60, M becomes 0 and D grows), the
  // sign staying on the most significant non-zero field (-0.999999 deg with
  // 2 decimals gives (-1, 0, 0)). Negative `nDecimals`: no carry. Whole
  // degrees outside -32768..32767 wrap modulo 65536 in D (the text forms
  // show them whole).
  void GetDms(short& nDegrees, short& nMinutes, double& dSeconds, int nDecimals) const;
  // Degrees d = D, then d -= M/60 if D < 0 else d += M/60, then d -= S/3600
  // if d < 0 else d += S/3600: (0, -30, 15) is -0.5 - 15/3600 degrees.
  void SetDms(const short& nDegrees, const short& nMinutes, const double& dSeconds,
              eAngleRange eRange = eRangeDefault);

  // The add operations keep the range and end with the range rule in
  // radians; they treat a negative increment differently:
  // AddRad: sum, range rule, then 2*pi added once if the result is below 0.
  void AddRad(const double& dRad);
  // AddDeg, AddGon: the increment is normalised in its unit first and gets
  // one full circle added if still below 0; nothing is added at the end.
  void AddDeg(const double& dDeg);
  void AddGon(const double& dGon);
  // AddDms: the increment composed as SetDms does, neither normalised nor
  // shifted.
  void AddDms(const short& nDegrees, const short& nMinutes, const double& dSeconds);

  eAngleRange AngleRange() const;
  // Stores `eRange` as given (eRangeDefault too) without re-normalising the
  // value; the next setter or add operation applies it.
  void AngleRange(eAngleRange eRange);

  // Writes the angle as text into `pszBuffer` (`cbBuffer` bytes, terminator
  // included) and returns the length of the whole text, terminator not
  // counted; a result >= cbBuffer means the text was cut to cbBuffer - 1
  // bytes. Null or size 0: returns 0, writes nothing; otherwise all cbBuffer
  // bytes are zeroed first. Forms:
  //   eRad, eDeg, eGon: the value with `nDecimals` digits after the point,
  //     no digit before the point below 1 (0.5 gives ".50"), "-" in front of
  //     a negative value. With nDecimals <= 0 no point; a value that rounds
  //     to nothing there is "0"; nDecimals < 0 drops the digits below tens,
  //     hundreds and so on (1234.5 with -2 gives "1200").
  //   eDmsMarked "%s%d %d' %.*f\"", eDmsSpaced "%s%d %d %.*f", eDmsAligned
  //     "%s%3d %2d %*.*f" (seconds |nDecimals| + 3 wide): the sign prefix
  //     ("-" for a negative angle), |D|, |M| and |S| with |nDecimals|
  //     decimals, after the seconds carry of GetDms when nDecimals >= 0.
  //     With nDecimals < 0 there is no carry, and an angle with D = 0 takes
  //     the compact layout, minutes or seconds first with the sign on that
  //     field: "%d' %.*f\"" / "%.*f\"", "%d %.*f" / "%.*f",
  //     "%2d %*.*f" / "%*.*f" (-0 deg 30' with -2 gives "-30' 0.00\"").
  //     The decimal separator is that of the C runtime's current locale.
  //   Any other form: the empty text, result 0.
  // Texts are composed in at most 49 characters; longer ones (huge values,
  // large decimal counts) are cut there and their length is given as 49.
  unsigned int AngleToString(char* pszBuffer, unsigned int cbBuffer, eAngleType eForm,
                             int nDecimals) const;

 private:
  // The decimal forms of AngleToString for the number `dValue`.
  unsigned int RadDegGonToString(char* pszBuffer, unsigned int cbBuffer, const double& dValue,
                                 int nDecimals) const;
  // The range rule in the unit `eUnit` (radians for anything but eDeg and
  // eGon); the result stays in that unit.
  static double SimplifyAngle(const double& dValue, eAngleType eUnit, eAngleRange eRange);

  double m_dRad;
  eAngleRange m_eRange;
};

// ---------------------------------------------------------------------------
// Sexagesimal conversions (packed DD.MMSS)
// ---------------------------------------------------------------------------

// ---------------------------------------------------------------------------
// Centesimal conversions (packed GG.CCCC)
// ---------------------------------------------------------------------------

// ---------------------------------------------------------------------------
// Small numerics: temperature, CRC-32, greatest common divisor, least common
// multiple
// ---------------------------------------------------------------------------

#endif  // TARN_ANGLES_H

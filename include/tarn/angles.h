/// \file
/// Tarn: angles and units. Pure arithmetic: no platform call, no Windows
/// header; the same code builds on any host.
#ifndef TARN_ANGLES_H
#define TARN_ANGLES_H

#include "tarn/tarn_export.h"

// ---------------------------------------------------------------------------
/// \name Angle value and angle text (CTarnAngle)
// ---------------------------------------------------------------------------
/// @{

/// One plane angle, stored in radians, set and read in radians, degrees, gon
/// (400 to the circle) and degree-minute-second fields.
///
/// The range rule, applied by the setters and the add operations: with a
/// full circle F and a half circle H of the unit in question (2*pi and pi,
/// 360 and 180, 400 and 200),
///   eRangePositive  x < 0: F - fmod(|x|, F), else fmod(|x|, F). Negative
///                   whole turns give F itself (-360 deg becomes 360 deg),
///                   +360 deg gives 0, -0.0 gives +0.0.
///   eRangeSigned    fmod(|x|, H) with the sign of x: a remainder, not a wrap
///                   (190 deg becomes 10 deg, -180 deg becomes -0.0).
///   eRangeDefault, eRangeUnlimited and any other number: x unchanged.
/// pi is the double 3.141592653589793. Conversions multiply first and divide
/// second (deg = rad * 180 / pi, rad = deg * pi / 180, likewise with 200 for
/// gon), which fixes the last bit of every result.
///
/// DMS fields: a 16-bit degree count D, a 16-bit minute count M and seconds S.
/// The angle's sign sits on the most significant non-zero field, the others
/// are magnitudes: -10 deg 30' is (-10, 30, 0), -0 deg 30' is (0, -30, 0)
/// and -0 deg 0' 45" is (0, 0, -45).
class TARN_API CTarnAngle {
 public:
  /// Units of the setters and getters; the last three are text forms only.
  enum eAngleType : int {
    eRad = 0,
    eDeg = 1,
    eGon = 2,
    eDmsMarked = 3,   ///< 12 30' 45.00"
    eDmsSpaced = 4,   ///< 12 30 45.00
    eDmsAligned = 5,  ///< " 12 30 45.00": degrees in 3 columns, minutes in 2
  };
  /// Normalisation ranges. Passed to a setter, eRangeDefault keeps the
  /// object's range; stored in the object it means no normalisation. Any
  /// other number is stored unchanged and normalises nothing.
  enum eAngleRange : int {
    eRangeDefault = 0,
    eRangePositive = 1,
    eRangeSigned = 2,
    eRangeUnlimited = 3,
  };

  /// 0 rad, range eRangeDefault.
  CTarnAngle();
  /// `dValue` in the unit `eType` (eDmsMarked and beyond are taken as
  /// radians), normalised under `eRange`, which is stored as given.
  CTarnAngle(const double& dValue, eAngleType eType, eAngleRange eRange = eRangeDefault);
  /// From DMS fields as SetDms composes them, normalised under `eRange`, which
  /// is stored as given.
  CTarnAngle(const short& nDegrees, const short& nMinutes, const double& dSeconds,
             eAngleRange eRange = eRangeDefault);
  /// Copies every member of `other`.
  CTarnAngle(const CTarnAngle& other);
  virtual ~CTarnAngle();
  /// Copies every member of `other`.
  CTarnAngle& operator=(const CTarnAngle& other);

  /// The setters store `eRange` unless it is eRangeDefault, apply the range
  /// rule to the argument in its own unit, then convert it to radians.
  /// @{
  double Rad() const;
  void Rad(const double& dRad, eAngleRange eRange = eRangeDefault);
  /// @}
  /// Rad() * 180 / pi.
  /// @{
  double Deg() const;
  void Deg(const double& dDeg, eAngleRange eRange = eRangeDefault);
  /// @}
  /// Rad() * 200 / pi.
  /// @{
  double Gon() const;
  void Gon(const double& dGon, eAngleRange eRange = eRangeDefault);
  /// @}

  /// DMS fields of the angle in degrees a: D = a truncated toward zero, M and
  /// S from the fraction. When `nDecimals` >= 0 the seconds carry that showing
  /// S with that many decimals would need is applied, S itself stays
  /// unrounded: if |S| + 0.5 * 10^-nDecimals > 59.999999999999986, S becomes
  /// 0 and M grows by one in magnitude (at 60, M becomes 0 and D grows), the
  /// sign staying on the most significant non-zero field (-0.999999 deg with
  /// 2 decimals gives (-1, 0, 0)). Negative `nDecimals`: no carry. Whole
  /// degrees outside -32768..32767 wrap modulo 65536 in D (the text forms
  /// show them whole).
  void GetDms(short& nDegrees, short& nMinutes, double& dSeconds, int nDecimals) const;
  /// Degrees d = D, then d -= M/60 if D < 0 else d += M/60, then d -= S/3600
  /// if d < 0 else d += S/3600: (0, -30, 15) is -0.5 - 15/3600 degrees.
  void SetDms(const short& nDegrees, const short& nMinutes, const double& dSeconds,
              eAngleRange eRange = eRangeDefault);

  /// The add operations keep the range and end with the range rule in
  /// radians; they treat a negative increment differently:
  /// AddRad: sum, range rule, then 2*pi added once if the result is below 0.
  void AddRad(const double& dRad);
  /// AddDeg, AddGon: the increment is normalised in its unit first and gets
  /// one full circle added if still below 0; nothing is added at the end.
  /// @{
  void AddDeg(const double& dDeg);
  void AddGon(const double& dGon);
  /// @}
  /// AddDms: the increment composed as SetDms does, neither normalised nor
  /// shifted.
  void AddDms(const short& nDegrees, const short& nMinutes, const double& dSeconds);

  /// The range stored in the object.
  eAngleRange AngleRange() const;
  /// Stores `eRange` as given (eRangeDefault too) without re-normalising the
  /// value; the next setter or add operation applies it.
  void AngleRange(eAngleRange eRange);

  /// Writes the angle as text into `pszBuffer` (`cbBuffer` bytes, terminator
  /// included) and returns the length of the whole text, terminator not
  /// counted; a result >= cbBuffer means the text was cut to cbBuffer - 1
  /// bytes. Null or size 0: returns 0, writes nothing; otherwise all cbBuffer
  /// bytes are zeroed first. Forms:
  ///   eRad, eDeg, eGon: the value with `nDecimals` digits after the point,
  ///     no digit before the point below 1 (0.5 gives ".50"), "-" in front of
  ///     a negative value. With nDecimals <= 0 no point; a value that rounds
  ///     to nothing there is "0"; nDecimals < 0 drops the digits below tens,
  ///     hundreds and so on (1234.5 with -2 gives "1200").
  ///   eDmsMarked "%s%d %d' %.*f\"", eDmsSpaced "%s%d %d %.*f", eDmsAligned
  ///     "%s%3d %2d %*.*f" (seconds |nDecimals| + 3 wide): the sign prefix
  ///     ("-" for a negative angle), |D|, |M| and |S| with |nDecimals|
  ///     decimals, after the seconds carry of GetDms when nDecimals >= 0.
  ///     With nDecimals < 0 there is no carry, and an angle with D = 0 takes
  ///     the compact layout, minutes or seconds first with the sign on that
  ///     field: "%d' %.*f\"" / "%.*f\"", "%d %.*f" / "%.*f",
  ///     "%2d %*.*f" / "%*.*f" (-0 deg 30' with -2 gives "-30' 0.00\"").
  ///     The decimal separator is that of the C runtime's current locale.
  ///   Any other form: the empty text, result 0.
  /// Texts are composed in at most 49 characters; longer ones (huge values,
  /// large decimal counts) are cut there and their length is given as 49.
  unsigned int AngleToString(char* pszBuffer, unsigned int cbBuffer, eAngleType eForm,
                             int nDecimals) const;

 private:
  /// The decimal forms of AngleToString for the number `dValue`.
  unsigned int RadDegGonToString(char* pszBuffer, unsigned int cbBuffer, const double& dValue,
                                 int nDecimals) const;
  /// The range rule in the unit `eUnit` (radians for anything but eDeg and
  /// eGon); the result stays in that unit.
  static double SimplifyAngle(const double& dValue, eAngleType eUnit, eAngleRange eRange);

  double m_dRad;
  eAngleRange m_eRange;
};

/// @}

// ---------------------------------------------------------------------------
/// \name Sexagesimal conversions (packed DD.MMSS)
// ---------------------------------------------------------------------------
///
/// Packed DMS: one double whose integer part is the degrees, whose first two
/// decimals are the minutes and whose further decimals the seconds, with the
/// seconds' own point after the fourth decimal: 12.304512 is 12 deg 30' 45.12".
/// A negative angle is the negated packed magnitude (-12.3045). The number of
/// decimals of a packed value is its precision: 0 whole degrees, 1 tens of
/// minutes, 2 minutes, 3 tens of seconds, 4 seconds, 6 hundredths of seconds.
///
/// DMS parts: sign, degrees, minutes, seconds. Produced parts have sign +1 or
/// -1 and degrees, minutes and seconds >= 0. Consumed parts are negative when
/// the sign is below 0 (0 is positive); the degrees count as their magnitude,
/// the minutes with their own sign, negative seconds as 0.
///
/// nDecimals: for the functions that fill parts, the decimals with which the
/// caller will show the seconds: the seconds are not rounded, but when
/// S + 0.5 * 10^-nDecimals > 59.999999999999986 they become 0 and the minutes
/// grow by one (at 60 the degrees do). For the functions that return a packed
/// number, its decimals: the result is rounded to them, halves away from zero,
/// after the carries that keep minutes and seconds below 60. From 16 decimals
/// on nothing is rounded. Below 0: no carry and no rounding.
/// nWrap: nonzero brings the degrees below 360 by whole turns; 0 leaves them.
/// Degrees of 2^31 and more do not fit the parts; the results for them are
/// unspecified.
/// @{

/// Radians to a packed DMS number with nDecimals decimals: 1.0 rad with 4
/// decimals is 57.1745; pi/3 with 4 is 60.0 (the seconds carry through).
TARN_API double TarnRad2DMS(double dRad, int nDecimals, int nWrap);
/// Radians to DMS parts: TarnDeg2DMS of dRad * 57.29577951308232.
TARN_API void TarnRad2DMS(double dRad, int& nSign, int& nDegrees, int& nMinutes,
                          double& dSeconds, int nDecimals, int nWrap);
/// Decimal degrees to DMS parts: 12.5125 gives (+1, 12, 30, 45) and
/// 10.999999 with 2 decimals (+1, 11, 0, 0).
TARN_API void TarnDeg2DMS(double dDegrees, int& nSign, int& nDegrees, int& nMinutes,
                          double& dSeconds, int nDecimals, int nWrap);
/// Packed DMS to parts. Minutes and seconds of 60 to 99 stay where they are
/// (seconds of 60 or more carry when nDecimals >= 0); seconds that read as
/// about 100, and minutes of 100, move into the next field, so 12.99999999999
/// gives (+1, 13, 0, 0).
TARN_API void TarnDMS2DMS(double dDms, int& nSign, int& nDegrees, int& nMinutes,
                          double& dSeconds, int nDecimals, int nWrap);
/// DMS parts to a packed number: seconds of 60 or more move into the minutes
/// and minutes of 60 or more into the degrees first (10 deg 75' is 11.15).
/// With 2 decimals 30 deg 0' 45" gives 30.0 and 30 deg 0' 50" 30.01; with 0
/// decimals minutes of 50 or more round the degrees up.
TARN_API double TarnDMS2DMS(int nSign, int nDegrees, int nMinutes, double dSeconds,
                            int nDecimals, int nWrap);
/// Packed DMS to radians, unrounded; minutes of 60 to 99 count as they stand
/// (10.75 is 11.25 deg).
TARN_API double TarnDMS2Rad(double dDms);
/// DMS parts to radians: TarnDMS2Deg times 0.017453292519943295.
TARN_API double TarnDMS2Rad(int nSign, int nDegrees, int nMinutes, double dSeconds);
/// DMS parts to decimal degrees: (|D| + M / 60) + max(0, S) / 3600, negated
/// for a negative sign.
TARN_API double TarnDMS2Deg(int nSign, int nDegrees, int nMinutes, double dSeconds);

/// @}

// ---------------------------------------------------------------------------
/// \name Centesimal conversions (packed GG.CCCC)
// ---------------------------------------------------------------------------
///
/// Packed GCCC: gon (400 to the circle) in the integer part, centigon (c, 100
/// to the gon) in the first two decimals, centi-centigon (cc) in the rest with
/// their own point after the fourth decimal: 123.456712 is 123 gon 45 c
/// 67.12 cc. The fields being decimal, a packed GCCC number is the angle in
/// decimal gon. GCCC parts (sign, gon, centigon, centi-centigon) and the
/// nDecimals and nWrap arguments follow the DMS rules above with 100 in the
/// place of 60 (the carry limit is 99.99999999999997) and 400 in the place of
/// 360. Decimal rounding of a centesimal number needs no carry, so the
/// functions that return a packed number only round.
/// @{

/// Radians to a packed GCCC number with nDecimals decimals: pi/3 with 4
/// decimals is 66.6667.
TARN_API double TarnRad2GCCC(double dRad, int nDecimals, int nWrap);
/// Radians to GCCC parts: TarnGrad2GCCC of dRad * 63.66197723675813.
TARN_API void TarnRad2GCCC(double dRad, int& nSign, int& nGon, int& nCentigon,
                           double& dCentiCentigon, int nDecimals, int nWrap);
/// Decimal gon to GCCC parts: 12.999999 gives (+1, 13, 0, 0) with 1 decimal,
/// (+1, 12, 99, 99.99) with 2.
TARN_API void TarnGrad2GCCC(double dGon, int& nSign, int& nGon, int& nCentigon,
                            double& dCentiCentigon, int nDecimals, int nWrap);
/// Packed GCCC to parts. Nothing moves into the next field before the carry:
/// 12.99999999999 gives (+1, 12, 100, 0) where TarnDMS2DMS gives 13 degrees.
TARN_API void TarnGCCC2GCCC(double dGccc, int& nSign, int& nGon, int& nCentigon,
                            double& dCentiCentigon, int nDecimals, int nWrap);
/// GCCC parts to a packed number, (|G| + c / 100) + max(0, cc) / 10000
/// rounded: fields of 100 or more simply add (150 c is 1.5 gon).
TARN_API double TarnGCCC2GCCC(int nSign, int nGon, int nCentigon, double dCentiCentigon,
                              int nDecimals, int nWrap);
/// Packed GCCC to radians: dGccc * 0.015707963267948967, the number itself
/// being decimal gon.
TARN_API double TarnGCCC2Rad(double dGccc);
/// GCCC parts to radians: TarnGCCC2Grad times 0.015707963267948967.
TARN_API double TarnGCCC2Rad(int nSign, int nGon, int nCentigon, double dCentiCentigon);
/// GCCC parts to decimal gon: (|G| + c / 100) + max(0, cc) / 10000, negated
/// for a negative sign.
TARN_API double TarnGCCC2Grad(int nSign, int nGon, int nCentigon, double dCentiCentigon);

/// @}

// ---------------------------------------------------------------------------
/// \name Small numerics: temperature, CRC-32, greatest common divisor, least common multiple
// ---------------------------------------------------------------------------
/// @{

/// Degrees Celsius to kelvin: dCelsius + 273.15.
TARN_API double TarnC2K(double dCelsius);
/// Kelvin to degrees Celsius: dKelvin - 273.15.
TARN_API double TarnK2C(double dKelvin);

/// CRC-32 of ISO-HDLC, the checksum of zlib and PNG (reflected polynomial
/// 0xEDB88320, register preset to all ones and inverted at the end): "123456789"
/// gives 0xCBF43926. nCrc is the checksum so far: 0 starts one, and the result
/// of a call passed to the next continues it over the concatenated bytes.
/// A length of 0 or below returns nCrc unchanged.
///
/// The checksum is computed with the fastest way the processor and the system
/// offer, chosen at the first call: carry-less multiplication on 512-bit
/// vectors (VPCLMULQDQ with AVX-512), on 128-bit vectors (PCLMULQDQ), or
/// slicing by 8 bytes through tables; inputs below 64 bytes and the last
/// bytes of longer ones go through the tables, the 256-entry byte table taking
/// what is left below 8 bytes. All give the same results. The
/// environment variable TARN_CRC32_PATH, read once at that first call, caps the
/// choice for tests and measurements: "table", "slice8", "pclmul" or "vpclmul"
/// (a way the processor lacks falls back to the next slower one; other values
/// are ignored).
TARN_API unsigned int TarnCrcMemory(const void* pData, int nLength, unsigned int nCrc);
/// TarnCrcMemory over the bytes of a zero-terminated text, the terminator not
/// included; an empty text, or null, returns nCrc unchanged.
TARN_API unsigned int TarnCrcString(const char* pszText, unsigned int nCrc);

/// Greatest common divisor by Euclid's loop with the truncating remainder (its
/// sign is the dividend's): while b != 0, (a, b) = (b, a % b); the result is a.
/// No magnitude is taken: (-4, 6) gives 2, (4, -6) gives -2, (0, 0) gives 0.
/// The long forms behave as the int forms (long is 32 bits on Windows).
TARN_API int __TarnGcdi(int a, int b);
/// __TarnGcdi for long.
TARN_API long __TarnGcdl(long a, long b);
/// Least common multiple: (a * b) / gcd(a, b) with a 32-bit product and
/// truncating division, 0 when the divisor is 0: (-4, 6) gives -12, (4, -6)
/// gives 12. A product beyond 32 bits wraps around.
TARN_API int __TarnLcmi(int a, int b);
/// __TarnLcmi for long.
TARN_API long __TarnLcml(long a, long b);
/// Greatest common divisor of doubles: while y > 2.220446049250313e-16,
/// (x, y) = (y, fmod(x, y)); the result is x. The tolerance ends the loop for
/// inexact fractions: (0.3, 0.1) gives 0.09999999999999998. A second operand
/// of 0, below the tolerance or negative gives x: (5, -2) gives 5.
TARN_API double __TarnGcdd(double x, double y);
/// Least common multiple of doubles: x * y / __TarnGcdd(x, y), 0.0 when that
/// divisor is 0: (0.5, 0.75) gives 1.5.
TARN_API double __TarnLcmd(double x, double y);
/// @}

#endif  // TARN_ANGLES_H

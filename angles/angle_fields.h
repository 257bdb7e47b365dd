// Pieces of CTarnAngle shared by its value and its text forms.
#ifndef TARN_ANGLES_ANGLE_FIELDS_H
#define TARN_ANGLES_ANGLE_FIELDS_H

namespace tarn {

constexpr double kPi = 3.141592653589793;
constexpr double kTwoPi = 6.283185307179586;

// Degree-minute-second fields of an angle in degrees, the sign on the most
// significant non-zero field. The degrees are held wider than the 16 bits of
// CTarnAngle::GetDms so that the text forms can show large angles whole;
// they saturate at +-2147483647 (and are 0 for NaN).
struct DmsFields {
  int degrees;
  int minutes;
  double seconds;
};

// D truncated toward zero, M and S from the fraction; no carry.
DmsFields SplitDegrees(double degrees);

// The carry that showing the seconds with `decimals` decimals needs: when
// |S| + 0.5 * 10^-decimals exceeds 59.999999999999986 the seconds become 0
// and the minutes, then the degrees, grow by one in magnitude, away from
// zero for a negative angle even when the field was 0. No carry for
// decimals < 0.
void CarrySeconds(DmsFields& fields, bool negative, int decimals);

}  // namespace tarn

#endif  // TARN_ANGLES_ANGLE_FIELDS_H

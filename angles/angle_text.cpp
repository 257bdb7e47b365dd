#include <math.h>
#include <stdio.h>
#include <string.h>

#include "angles/angle_fields.h"
#include "angles/fcvt.h"
#include "tarn/angles.h"

namespace {

// Every text is composed here first: 49 characters and the terminator.
constexpr size_t kWorkingSize = 50;
// The digit buffer of the decimal forms, as large as the runtime's own
// conversion buffer (309 integer digits and 40 more).
constexpr size_t kDigitSize = 349;
// Decimal counts beyond these cannot change the first 49 characters; the
// caps keep the formatter's width and precision arguments small.
constexpr int kMaxSecondsDecimals = 100;
constexpr int kMaxDecimalPlaces = 60;

class WorkingText {
 public:
  WorkingText() { text_[0] = '\0'; }

  // Appends at most `count` characters of `s`; what does not fit is dropped.
  void Append(const char* s, size_t count) {
    while (count > 0 && *s != '\0' && length_ + 1 < kWorkingSize) {
      text_[length_++] = *s++;
      --count;
    }
    text_[length_] = '\0';
  }
  void Append(const char* s) { Append(s, strlen(s)); }
  void AppendZeros(long long count) {
    for (; count > 0 && length_ + 1 < kWorkingSize; --count) text_[length_++] = '0';
    text_[length_] = '\0';
  }
  // printf-style text, cut to the working size.
  template <typename... Args>
  void Format(const char* format, Args... args) {
    const int n = snprintf(text_, kWorkingSize, format, args...);
    if (n < 0) text_[0] = '\0';
    length_ = strlen(text_);
  }

  // Copies the text into the caller's buffer, cut to size - 1 bytes, and
  // returns its whole length. The buffer is already zeroed.
  unsigned int CopyTo(char* buffer, unsigned int size) const {
    const size_t count = length_ >= size ? size - 1 : length_;
    memcpy(buffer, text_, count);
    buffer[count] = '\0';
    return static_cast<unsigned int>(length_);
  }

 private:
  char text_[kWorkingSize];
  size_t length_ = 0;
};

}  // namespace

unsigned int CTarnAngle::RadDegGonToString(char* pszBuffer, unsigned int cbBuffer,
                                           const double& dValue, int nDecimals) const {
  if (pszBuffer == nullptr || cbBuffer == 0) return 0;
  memset(pszBuffer, 0, cbBuffer);

  const int decimals = nDecimals > kMaxDecimalPlaces ? kMaxDecimalPlaces : nDecimals;
  WorkingText text;
  char digits[kDigitSize];
  int point = 0;
  int negative = 0;
  if (tarn::FixedDigits(digits, sizeof digits, dValue, decimals, &point, &negative) != 0) {
    // Infinity, NaN, or more digits than the digit buffer holds: the text
    // is far longer than the working text anyway, or not a number.
    text.Format("%.*f", decimals < 0 ? 0 : decimals, dValue);
    return text.CopyTo(pszBuffer, cbBuffer);
  }

  if (dValue < 0) text.Append("-");
  const size_t count = strlen(digits);
  if (decimals >= 1) {
    if (count == 0) {
      // Rounded to zero; the runtime's point position is not reliable here.
      text.Append(".");
      text.AppendZeros(decimals);
    } else if (point <= 0) {
      text.Append(".");
      text.AppendZeros(-static_cast<long long>(point));
      text.Append(digits);
    } else {
      const size_t whole = static_cast<size_t>(point) < count ? static_cast<size_t>(point) : count;
      text.Append(digits, whole);
      text.Append(".");
      text.Append(digits + whole);
    }
  } else if (count == 0) {
    text.Append("0");
  } else {
    text.Append(digits);
    // Negative decimals leave only the digits above that place.
    if (decimals < 0) text.AppendZeros(static_cast<long long>(point) - static_cast<long long>(count));
  }
  return text.CopyTo(pszBuffer, cbBuffer);
}

unsigned int CTarnAngle::AngleToString(char* pszBuffer, unsigned int cbBuffer, eAngleType eForm,
                                       int nDecimals) const {
  if (pszBuffer == nullptr || cbBuffer == 0) return 0;
  memset(pszBuffer, 0, cbBuffer);

  switch (eForm) {
    case eRad:
      return RadDegGonToString(pszBuffer, cbBuffer, m_dRad, nDecimals);
    case eDeg: {
      const double degrees = m_dRad * 180.0 / tarn::kPi;
      return RadDegGonToString(pszBuffer, cbBuffer, degrees, nDecimals);
    }
    case eGon: {
      const double gon = m_dRad * 200.0 / tarn::kPi;
      return RadDegGonToString(pszBuffer, cbBuffer, gon, nDecimals);
    }
    case eDmsMarked:
    case eDmsSpaced:
    case eDmsAligned:
      break;
    default:
      return 0;
  }

  tarn::DmsFields f = tarn::SplitDegrees(m_dRad * 180.0 / tarn::kPi);
  int places = nDecimals;
  if (nDecimals >= 0) {
    tarn::CarrySeconds(f, m_dRad < 0, nDecimals);
  } else {
    places = nDecimals < -kMaxSecondsDecimals ? kMaxSecondsDecimals : -nDecimals;
  }
  if (places > kMaxSecondsDecimals) places = kMaxSecondsDecimals;

  WorkingText text;
  if (nDecimals >= 0 || f.degrees != 0) {
    const char* sign = m_dRad < 0 ? "-" : "";
    const int degrees = f.degrees < 0 ? -f.degrees : f.degrees;
    const int minutes = f.minutes < 0 ? -f.minutes : f.minutes;
    const double seconds = fabs(f.seconds);
    if (eForm == eDmsMarked)
      text.Format("%s%d %d' %.*f\"", sign, degrees, minutes, places, seconds);
    else if (eForm == eDmsSpaced)
      text.Format("%s%d %d %.*f", sign, degrees, minutes, places, seconds);
    else
      text.Format("%s%3d %2d %*.*f", sign, degrees, minutes, places + 3, places, seconds);
  } else if (f.minutes != 0) {
    // Compact: the first field written carries the angle's sign itself.
    if (eForm == eDmsMarked)
      text.Format("%d' %.*f\"", f.minutes, places, f.seconds);
    else if (eForm == eDmsSpaced)
      text.Format("%d %.*f", f.minutes, places, f.seconds);
    else
      text.Format("%2d %*.*f", f.minutes, places + 3, places, f.seconds);
  } else {
    if (eForm == eDmsMarked)
      text.Format("%.*f\"", places, f.seconds);
    else if (eForm == eDmsSpaced)
      text.Format("%.*f", places, f.seconds);
    else
      text.Format("%*.*f", places + 3, places, f.seconds);
  }
  return text.CopyTo(pszBuffer, cbBuffer);
}

#include "angles/fcvt.h"

#include <errno.h>
#include <math.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

namespace tarn {
namespace {

// Largest number of places the portable conversion handles; beyond it no
// digit buffer of a sensible size could hold the result anyway.
constexpr int kMaxPlaces = 400;

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// Clears the outputs; infinity and NaN have no digits.
int Prepare(char* digits, size_t size, double value, int* point, int* negative) {
  if (digits == nullptr || point == nullptr || negative == nullptr || size == 0) return EINVAL;
  digits[0] = '\0';
  *point = 0;
  *negative = signbit(value) ? 1 : 0;
  return isfinite(value) ? 0 : EINVAL;
}

// Adds one unit in the last place of a fixed-point text of digits and at
// most one separator; a carry out of the first digit prepends a "1" (the
// text has room for it).
void IncrementLastPlace(char* text) {
  size_t i = strlen(text);
  while (i > 0) {
    --i;
    if (!IsDigit(text[i])) continue;  // the decimal separator
    if (text[i] != '9') {
      ++text[i];
      return;
    }
    text[i] = '0';
  }
  memmove(text + 1, text, strlen(text) + 1);
  text[0] = '1';
}

// |value| as fixed-point text with `places` decimals, exact ties rounded away
// from zero as the runtime's conversion does (the C library's formatter
// rounds them to even). Returns the text length.
int FormatMagnitude(char* text, size_t size, double magnitude, int places) {
  // A tie needs a value with at most places + 1 binary fraction digits, and
  // such a value prints exactly with places + 1 decimals.
  if (magnitude < 9007199254740992.0) {
    const double scaled = ldexp(magnitude, places + 1);
    if (scaled == floor(scaled)) {
      const int n = snprintf(text, size, "%.*f", places + 1, magnitude);
      if (n > 0 && static_cast<size_t>(n) < size && text[n - 1] == '5') {
        size_t end = static_cast<size_t>(n) - 1;
        text[end] = '\0';
        // With no places left, the separator before the dropped digit goes too.
        while (places == 0 && end > 0 && !IsDigit(text[end - 1])) text[--end] = '\0';
        IncrementLastPlace(text);
        return static_cast<int>(strlen(text));
      }
    }
  }
  return snprintf(text, size, "%.*f", places, magnitude);
}

}  // namespace

int PortableFixedDigits(char* digits, size_t size, double value, int decimals, int* point,
                        int* negative) {
  if (const int error = Prepare(digits, size, value, point, negative)) return error;
  if (decimals > kMaxPlaces) return ERANGE;
  const double magnitude = fabs(value);
  const int places = decimals > 0 ? decimals : 0;

  // At most 309 integer digits, the separator (possibly several bytes in
  // some locales), the places, one more for the tie test, a carry.
  char text[kMaxPlaces + 330];
  const int length = FormatMagnitude(text, sizeof text, magnitude, places);
  if (length < 0 || static_cast<size_t>(length) >= sizeof text) return ERANGE;

  // Integer part, then the fraction after the separator.
  const char* whole = text;
  while (*whole == '0') ++whole;
  const char* separator = whole;
  while (IsDigit(*separator)) ++separator;
  const size_t wholeLength = static_cast<size_t>(separator - whole);
  const char* fraction = separator;
  while (*fraction != '\0' && !IsDigit(*fraction)) ++fraction;

  char result[kMaxPlaces + 330];
  size_t count = 0;
  if (decimals < 0) {
    // Only the digits above the place `decimals`, of the whole number.
    const long long keep = static_cast<long long>(wholeLength) + decimals;
    count = keep > 0 ? static_cast<size_t>(keep) : 0;
    memcpy(result, whole, count);
    *point = static_cast<int>(wholeLength);
  } else if (wholeLength > 0) {
    memcpy(result, whole, wholeLength);
    count = wholeLength;
    const size_t fractionLength = strlen(fraction);
    memcpy(result + count, fraction, fractionLength);
    count += fractionLength;
    *point = static_cast<int>(wholeLength);
  } else if (magnitude == 0.0) {
    // Exact zero keeps its zeros, the point before them.
    count = strlen(fraction);
    memcpy(result, fraction, count);
    *point = 0;
  } else {
    const char* first = fraction;
    while (*first == '0') ++first;
    count = strlen(first);
    memcpy(result, first, count);
    // No significant digit left: the value rounded to zero at this place.
    *point = count > 0 ? -static_cast<int>(first - fraction) : -places;
  }
  if (count + 1 > size) {
    *point = 0;
    return ERANGE;
  }
  memcpy(digits, result, count);
  digits[count] = '\0';
  return 0;
}

int FixedDigits(char* digits, size_t size, double value, int decimals, int* point,
                int* negative) {
#ifdef _WIN32
  if (const int error = Prepare(digits, size, value, point, negative)) return error;
  // A buffer too small for the digits goes to the runtime's invalid-parameter
  // handler (which ends the process by default), so it is refused here, on
  // an estimate from above: the integer digits, one more for a carry into a
  // new leading digit, the places and the terminator.
  const double magnitude = fabs(value);
  const double integerDigits = magnitude < 1.0 ? 1.0 : floor(log10(magnitude)) + 2.0;
  const double places = decimals > 0 ? decimals : 0;
  if (integerDigits + places + 1.0 > static_cast<double>(size)) return ERANGE;
  // Wine's _fcvt_s formats into an 80-byte buffer of its own and returns no
  // digits or stray bytes for longer numbers; those take the portable path,
  // which agrees with the runtime wherever both work.
  if (integerDigits + places + 1.0 > 80.0)
    return PortableFixedDigits(digits, size, value, decimals, point, negative);
  return _fcvt_s(digits, size, value, decimals, point, negative);
#else
  return PortableFixedDigits(digits, size, value, decimals, point, negative);
#endif
}

}  // namespace tarn

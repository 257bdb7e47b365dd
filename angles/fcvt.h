// Digit conversion of the decimal angle texts: the runtime's _fcvt_s where
// there is one, an implementation of the same contract elsewhere and for
// numbers of 80 characters or more.
#ifndef TARN_ANGLES_FCVT_H
#define TARN_ANGLES_FCVT_H

#include <stddef.h>

namespace tarn {

// The contract of _fcvt_s: writes the decimal digits of |dValue| rounded to
// `nDecimals` places after the point (exact ties away from zero) into
// `pszDigits` (`cbDigits` bytes, terminator included): digits only, no sign,
// no point, no leading zeros, padded with zeros to the places. *pnPoint is
// where the point belongs, counted in digits from the start (0 or less when
// it lies left of the first digit), *pbNegative is 1 when the sign bit is
// set. 0.05 with 2 places gives "5" and -1; 1234.5 with 1 gives "12345" and 4.
// Exact zero gives nDecimals zeros and 0. A value that rounds to zero gives
// no digit; its point position is then unreliable (the runtimes differ).
// nDecimals < 0 keeps only the digits above that position of the value
// rounded to a whole number (1234.5 with -2 gives "12" and 4).
// Returns 0, or EINVAL (null argument, size 0, infinity or NaN) or ERANGE
// with an empty digit text. ERANGE: the digits do not fit; with the runtime
// the size is checked on an estimate from above (integer digits + 1 +
// places + 1 bytes), since the runtime itself does not fail gracefully.
int FixedDigits(char* pszDigits, size_t cbDigits, double dValue, int nDecimals, int* pnPoint,
                int* pbNegative);

// FixedDigits without the runtime: what it does where there is no _fcvt_s,
// built everywhere so that the Windows build tests it against the runtime.
int PortableFixedDigits(char* pszDigits, size_t cbDigits, double dValue, int nDecimals,
                        int* pnPoint, int* pbNegative);

}  // namespace tarn

#endif  // TARN_ANGLES_FCVT_H

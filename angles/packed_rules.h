// Rules shared by the packed-angle converters: packed DD.MMSS (sexagesimal)
// and GG.CCCC (centesimal). A packed number carries a whole unit (degrees or
// gon) in its integer part and two sub-unit fields (minutes and seconds, or
// centigon and centi-centigon) in its decimals; the converters produce and
// consume the same fields as separate parts.
//
// Every expression here is written in the exact order of operations the
// converters' results are defined by: the results are compared to the last
// bit, so (a - D) * 60 - M is not the same as a * 60 - D * 60 - M.
#ifndef TARN_ANGLES_PACKED_RULES_H
#define TARN_ANGLES_PACKED_RULES_H

namespace tarn::packed {

// The tolerance of NearlyEqual: the double epsilon.
inline constexpr double kEpsilon = 2.220446049250313e-16;

// a ~ b when |a - b| < max(|a|, |b|) * epsilon + epsilon: a relative test for
// large values that stays absolute around 0.
bool NearlyEqual(double a, double b);

// 10^-decimals, correctly rounded (0.001 for 3).
double DecimalStep(int decimals);

// v rounded to a multiple of step, halves away from zero, with v's sign kept.
// A negative step, or one nearly equal to 0 (10^-16 and below), leaves v
// unchanged.
double RoundToStep(double v, double step);

// v truncated toward zero to a 32-bit signed integer. Values outside that
// range, and NaN, give INT_MIN (the x86 conversion's "indefinite" value), so
// the converters stay defined for angles too large for their fields.
int Truncate(double v);

// The three fields of an angle in one of the two notations: the whole units,
// the first sub-unit (minutes, centigon) and the second (seconds,
// centi-centigon), whose own point sits after the fourth decimal of a packed
// number.
struct Fields {
  int whole;
  int minor;
  double fine;
};

// The sign of produced parts: -1 below 0, else +1 (-0.0 too).
inline int SignOf(double x) { return x < 0 ? -1 : 1; }

// Stores the fields into a caller's part references.
inline void Store(const Fields& f, int& whole, int& minor, double& fine) {
  whole = f.whole;
  minor = f.minor;
  fine = f.fine;
}

// The parse of a packed magnitude a (not negative), the same for both
// notations: whole = a truncated; minor = the first two decimals, truncated
// after a bias of 0.0000005 so that 12.30 does not read as 12.29; fine = the
// rest times 10000. Minor fields of 60 to 99 are taken as they stand.
Fields ParsePacked(double a);

// What sets the two notations apart.
struct Notation {
  int base;           // sub-units per unit: 60 or 100
  double below_base;  // the carry limit, two units in the last place below base
  int turn;           // whole units per turn: 360 or 400
};
inline constexpr Notation kSexagesimal{60, 59.999999999999986, 360};
inline constexpr Notation kCentesimal{100, 99.99999999999997, 400};

// The split of a magnitude a (not negative) of whole units into fields with
// n.base sub-units each.
Fields SplitMagnitude(double a, const Notation& n);

// The carry action: fine becomes 0 and minor takes one more unit, carried on
// into whole when minor passes base - 1.
void CarryIntoMinor(Fields& f, const Notation& n);

// The carry that showing fine with `decimals` decimals needs: when
// fine + 0.5 * 10^-decimals exceeds n.below_base, the carry action. No carry
// for decimals below 0. The fields are not negative.
void CarryFine(Fields& f, int decimals, const Notation& n);

// Brings the whole units below one turn by whole turns when wrap is nonzero.
void WrapWhole(Fields& f, int wrap, const Notation& n);

// The fields of a decimal magnitude (degrees or gon) as the converters fill
// parts: the split, a negative fine part as 0, the carry for `decimals`
// shown decimals, then the wrap.
Fields FieldsOfMagnitude(double a, const Notation& n, int decimals, int wrap);

// Repeatedly adds -turn to the packed magnitude v while v is above or nearly
// equal to one turn, when wrap is nonzero. The loop, not fmod: each step's
// rounding belongs to the result.
double WrapPacked(double v, int wrap, const Notation& n);

// The rules by their names in the two notations.
inline void SecondsCarry(Fields& f, int decimals) { CarryFine(f, decimals, kSexagesimal); }
inline void DegreeWrap(Fields& f, int wrap) { WrapWhole(f, wrap, kSexagesimal); }
inline void CentesimalCarry(Fields& f, int decimals) { CarryFine(f, decimals, kCentesimal); }
inline void GonWrap(Fields& f, int wrap) { WrapWhole(f, wrap, kCentesimal); }

}  // namespace tarn::packed

#endif  // TARN_ANGLES_PACKED_RULES_H

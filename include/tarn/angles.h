// Tarn: angles and units. Pure arithmetic: no platform call, no Windows
// header; the same code builds on any host.
#ifndef TARN_ANGLES_H
#define TARN_ANGLES_H

#include "tarn/tarn_export.h"

// ---------------------------------------------------------------------------
// Angle value and angle text (CTarnAngle)
// ---------------------------------------------------------------------------

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

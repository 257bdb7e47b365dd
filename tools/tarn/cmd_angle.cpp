// tarn angle VALUE UNIT: one angle in every unit, under every range, and in
// every text form.
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "commands.h"
#include "tarn/angles.h"

namespace {

struct NamedForm {
  const char* name;
  CTarnAngle::eAngleType form;
};

const NamedForm kForms[] = {
    {"eRad", CTarnAngle::eRad},
    {"eDeg", CTarnAngle::eDeg},
    {"eGon", CTarnAngle::eGon},
    {"eDmsMarked", CTarnAngle::eDmsMarked},
    {"eDmsSpaced", CTarnAngle::eDmsSpaced},
    {"eDmsAligned", CTarnAngle::eDmsAligned},
};

int Usage() {
  fprintf(stderr,
          "usage: tarn angle VALUE rad|deg|gon\n"
          "       tarn angle D:M:S dms     (the sign on the first non-zero field: 0:-30:0)\n");
  return 2;
}

// "D:M:S" with integer degrees and minutes and decimal seconds.
bool ParseDms(const char* text, short* degrees, short* minutes, double* seconds) {
  char* end = nullptr;
  const long d = strtol(text, &end, 10);
  if (end == text || *end != ':') return false;
  const char* m_text = end + 1;
  const long m = strtol(m_text, &end, 10);
  if (end == m_text || *end != ':') return false;
  const char* s_text = end + 1;
  *seconds = strtod(s_text, &end);
  if (end == s_text || *end != '\0' || d < -32768 || d > 32767 || m < -32768 || m > 32767)
    return false;
  *degrees = static_cast<short>(d);
  *minutes = static_cast<short>(m);
  return true;
}

void PrintTexts(const CTarnAngle& angle, int decimals) {
  for (const NamedForm& f : kForms) {
    char text[64];
    const unsigned length = angle.AngleToString(text, sizeof text, f.form, decimals);
    printf("  %-12s %3d  [%s]  (%u)\n", f.name, decimals, text, length);
  }
}

}  // namespace

int CmdAngle(int argc, char** argv) {
  if (argc != 2) return Usage();
  CTarnAngle angle;
  if (strcmp(argv[1], "dms") == 0) {
    short degrees = 0;
    short minutes = 0;
    double seconds = 0.0;
    if (!ParseDms(argv[0], &degrees, &minutes, &seconds)) return Usage();
    angle.SetDms(degrees, minutes, seconds);
  } else {
    char* end = nullptr;
    const double value = strtod(argv[0], &end);
    if (end == argv[0] || *end != '\0') return Usage();
    if (strcmp(argv[1], "rad") == 0)
      angle.Rad(value);
    else if (strcmp(argv[1], "deg") == 0)
      angle.Deg(value);
    else if (strcmp(argv[1], "gon") == 0)
      angle.Gon(value);
    else
      return Usage();
  }

  printf("%s %s\n", argv[0], argv[1]);
  printf("  radians      %.17g\n", angle.Rad());
  printf("  degrees      %.17g\n", angle.Deg());
  printf("  gon          %.17g\n", angle.Gon());
  short d = 0;
  short m = 0;
  double s = 0.0;
  angle.GetDms(d, m, s, -1);
  printf("  DMS fields   %d %d %.17g\n", d, m, s);
  angle.GetDms(d, m, s, 2);
  printf("  DMS, 2 dec.  %d %d %.17g (carried for 2 decimals)\n", d, m, s);

  // The value normalised by the setter under each range.
  const struct {
    const char* name;
    CTarnAngle::eAngleRange range;
  } ranges[] = {{"positive", CTarnAngle::eRangePositive}, {"signed", CTarnAngle::eRangeSigned}};
  for (const auto& r : ranges) {
    CTarnAngle normalised;
    normalised.Rad(angle.Rad(), r.range);
    printf("  %-12s %.17g rad = %.17g deg\n", r.name, normalised.Rad(), normalised.Deg());
  }

  printf("text forms (AngleToString: form, decimals, [text], length)\n");
  PrintTexts(angle, 4);
  PrintTexts(angle, 0);
  PrintTexts(angle, -2);
  return 0;
}

// tarn angle VALUE UNIT: one angle in every unit, under every range, and in
// every text form.
#include "commands.h"
#include "tarn/angles.h"

namespace tarn_tool {
namespace {

const struct {
  const char* name;
  CTarnAngle::eAngleType form;
} kForms[] = {
    {"eRad", CTarnAngle::eRad},
    {"eDeg", CTarnAngle::eDeg},
    {"eGon", CTarnAngle::eGon},
    {"eDmsMarked", CTarnAngle::eDmsMarked},
    {"eDmsSpaced", CTarnAngle::eDmsSpaced},
    {"eDmsAligned", CTarnAngle::eDmsAligned},
};

struct Arguments {
  std::string value;
  std::string unit;
  int decimals = 4;
  bool json = false;
};

// "D:M:S": whole degrees and minutes, decimal seconds; the sign goes on the
// first field that is not zero ("0:-30:0").
void SetDms(CTarnAngle& angle, const std::string& text) {
  const std::vector<std::string> fields = CLI::detail::split(text, ':');
  short degrees = 0, minutes = 0;
  if (fields.size() != 3 || !CLI::detail::lexical_cast(fields[0], degrees) ||
      !CLI::detail::lexical_cast(fields[1], minutes))
    throw CLI::ValidationError("value", "not D:M:S (whole degrees and minutes): " + text);
  angle.SetDms(degrees, minutes, FiniteNumber(fields[2], "value"));
}

int Run(const Arguments& args) {
  CTarnAngle angle;
  if (args.unit == "dms") {
    SetDms(angle, args.value);
  } else {
    const double value = FiniteNumber(args.value, "value");
    if (args.unit == "rad") angle.Rad(value);
    if (args.unit == "deg") angle.Deg(value);
    if (args.unit == "gon") angle.Gon(value);
  }
  short d = 0, m = 0;
  double s = 0.0;
  angle.GetDms(d, m, s, args.decimals);
  CTarnAngle positive, signed_;
  positive.Rad(angle.Rad(), CTarnAngle::eRangePositive);
  signed_.Rad(angle.Rad(), CTarnAngle::eRangeSigned);
  Json record = {{"radians", angle.Rad()},     {"degrees", angle.Deg()},
                 {"gon", angle.Gon()},         {"dmsDegrees", d},
                 {"dmsMinutes", m},            {"dmsSeconds", s},
                 {"positive", positive.Rad()}, {"signed", signed_.Rad()}};
  for (const auto& f : kForms) {
    char text[64];
    angle.AngleToString(text, sizeof text, f.form, args.decimals);
    record[f.name] = text;
  }
  PrintRecords(Json::array({record}), args.json, Layout::kLines);
  return 0;
}

}  // namespace

Runner DeclareAngle(CLI::App& command) {
  auto args = std::make_shared<Arguments>();
  command.add_option("value", args->value, "a number, or D:M:S with the unit dms")->required();
  command.add_option("unit", args->unit, "rad, deg, gon or dms")
      ->required()
      ->check(CLI::IsMember({"rad", "deg", "gon", "dms"}));
  command.add_option("-d,--decimals", args->decimals, "decimals of the seconds and text forms")
      ->check(CLI::Range(0, 15))
      ->capture_default_str();
  AddJsonFlag(command, args->json);
  command.footer("The DMS fields are carried for the decimals; positive and signed are the\n"
                 "radians under eRangePositive and eRangeSigned.");
  return [args] { return Run(*args); };
}

}  // namespace tarn_tool

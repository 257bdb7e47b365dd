// Conversions between radians, decimal gon, GCCC parts and packed GCCC.
#include <cmath>

#include "angles/packed_rules.h"
#include "tarn/angles.h"

namespace {

using tarn::packed::CentesimalCarry;
using tarn::packed::Fields;
using tarn::packed::FieldsOfMagnitude;
using tarn::packed::GonWrap;
using tarn::packed::kCentesimal;
using tarn::packed::SignOf;
using tarn::packed::Store;

// One factor each way; 200 / pi would differ in the last bit.
constexpr double kGonPerRadian = 63.66197723675813;
constexpr double kRadiansPerGon = 0.015707963267948967;

// The magnitude of GCCC parts in decimal gon.
double GonMagnitude(int gon, int centigon, double centiCentigon) {
  return (std::fabs(static_cast<double>(gon)) + centigon / 100.0) +
         (centiCentigon < 0 ? 0 : centiCentigon) / 10000;
}

}  // namespace

void TarnGrad2GCCC(double dGon, int& nSign, int& nGon, int& nCentigon, double& dCentiCentigon,
                   int nDecimals, int nWrap) {
  nSign = SignOf(dGon);
  Store(FieldsOfMagnitude(std::fabs(dGon), kCentesimal, nDecimals, nWrap), nGon, nCentigon,
        dCentiCentigon);
}

void TarnRad2GCCC(double dRad, int& nSign, int& nGon, int& nCentigon, double& dCentiCentigon,
                  int nDecimals, int nWrap) {
  TarnGrad2GCCC(dRad * kGonPerRadian, nSign, nGon, nCentigon, dCentiCentigon, nDecimals, nWrap);
}

void TarnGCCC2GCCC(double dGccc, int& nSign, int& nGon, int& nCentigon, double& dCentiCentigon,
                   int nDecimals, int nWrap) {
  nSign = SignOf(dGccc);
  // Unlike packed DMS, nothing of about 100 moves on before the carry: the
  // parse of 12.99999999999 keeps its 100 centigon.
  Fields f = tarn::packed::ParsePacked(std::fabs(dGccc));
  if (f.fine < 0) f.fine = 0;
  CentesimalCarry(f, nDecimals);
  GonWrap(f, nWrap);
  Store(f, nGon, nCentigon, dCentiCentigon);
}

double TarnGCCC2GCCC(int nSign, int nGon, int nCentigon, double dCentiCentigon, int nDecimals,
                     int nWrap) {
  double v = GonMagnitude(nGon, nCentigon, dCentiCentigon);
  if (nDecimals >= 0) v = tarn::packed::RoundToStep(v, tarn::packed::DecimalStep(nDecimals));
  v = tarn::packed::WrapPacked(v, nWrap, kCentesimal);
  return nSign < 0 ? -v : v;
}

double TarnRad2GCCC(double dRad, int nDecimals, int nWrap) {
  const double g = dRad * kGonPerRadian;
  const Fields f = FieldsOfMagnitude(std::fabs(g), kCentesimal, nDecimals, nWrap);
  return TarnGCCC2GCCC(SignOf(g), f.whole, f.minor, f.fine, nDecimals, nWrap);
}

double TarnGCCC2Grad(int nSign, int nGon, int nCentigon, double dCentiCentigon) {
  const double gon = GonMagnitude(nGon, nCentigon, dCentiCentigon);
  return nSign < 0 ? -gon : gon;
}

double TarnGCCC2Rad(int nSign, int nGon, int nCentigon, double dCentiCentigon) {
  return TarnGCCC2Grad(nSign, nGon, nCentigon, dCentiCentigon) * kRadiansPerGon;
}

double TarnGCCC2Rad(double dGccc) { return dGccc * kRadiansPerGon; }

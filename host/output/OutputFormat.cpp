#include "host/output/OutputFormat.h"

#include <fmt/format.h>

#include <cmath>

#include "common/MissingValue.h"

namespace MCHost {
namespace {

// Beyond this the digits of a count say nothing.
constexpr double kExactWhole = 1e15;
// From here on numbers are shown with an exponent.
constexpr double kLeastExponent = 1e9;
// Below this three decimals say nothing of a p-value.
constexpr double kLeastFixedP = 1e-3;

std::string WithoutTrailingZeros(std::string text) {
  if (text.find('.') == std::string::npos) return text;
  text.erase(text.find_last_not_of('0') + 1);
  if (text.back() == '.') text.pop_back();
  return text == "-0" ? "0" : text;
}

// A rounded zero has no sign.
std::string Fixed(double value, int decimals) {
  std::string text = fmt::format("{:.{}f}", value, decimals);
  if (text.front() == '-' && text.find_first_of("123456789") == std::string::npos) text.erase(0, 1);
  return text;
}

std::string WithoutLeadingZero(std::string text) {
  const std::size_t digit = text.front() == '-' ? 1 : 0;
  if (text.compare(digit, 2, "0.") == 0) text.erase(digit, 1);
  return text;
}

std::string General(double value) {
  const double size = std::fabs(value);
  if (size != 0.0 && (size < 1e-3 || size >= kLeastExponent)) return fmt::format("{:.3e}", value);
  return Fixed(value, 3);
}

std::string Brief(double value) {
  const double size = std::fabs(value);
  if (size != 0.0 && (size < 1e-3 || size >= kLeastExponent)) return fmt::format("{:.3e}", value);
  return size >= 1e3 ? Fixed(value, 0) : fmt::format("{:.4g}", value + 0.0);  // -0 is 0
}

}  // namespace

const char* FormatName(OutputFormat format) {
  constexpr const char* kNames[] = {"text",        "count",       "percent", "significance",
                                    "coefficient", "correlation", "general", "pvalue",
                                    "strength",    "tenths",      "brief",   "histogram"};
  return kNames[static_cast<int>(format)];
}

std::string FormatNumber(double value, OutputFormat format) {
  if (MCMV::IsMissing(value)) return "";
  switch (format) {
    case OutputFormat::kCount:
      if (std::fabs(value) > kExactWhole) return General(value);
      return WithoutTrailingZeros(Fixed(value, 3));
    case OutputFormat::kPercent:
      return Fixed(value, 1) + "%";
    case OutputFormat::kPValue:
      if (value == 0.0) return "0";
      if (value < kLeastFixedP) return fmt::format("{:.1e}", value);
      return WithoutLeadingZero(Fixed(value, 3));
    case OutputFormat::kSignificance:
      if (value < 0.0005) return "< .001";
      return WithoutLeadingZero(Fixed(value, 3));
    case OutputFormat::kCorrelation:
    case OutputFormat::kStrength:
      return WithoutLeadingZero(Fixed(value, 3));
    case OutputFormat::kCoefficient:
      return fmt::format("{:.6g}", value);
    case OutputFormat::kBrief:
      return Brief(value);
    case OutputFormat::kTenths:
      return std::fabs(value) < kLeastExponent ? Fixed(value, 1) : General(value);
    default:
      return General(value);
  }
}

}  // namespace MCHost

// How numbers of the output are printed: one rule a kind of number, for every table.
//
//   count         whole numbers without decimals, others (weighted counts) with up to three
//   percent       one decimal and a percent sign: 45.1%
//   significance  three decimals without a leading zero: .049; below .0005 as "< .001"
//   pvalue        like significance; from 0 to .001 its power of ten is shown: 3.1e-42, and 0 as 0
//   coefficient   up to six significant digits, no trailing zeros: 0.05
//   correlation   three decimals without a leading zero: -.871
//   strength      like correlation; a flat table draws a bar of its size beside it
//   tenths        one decimal: -123.7; with an exponent from 1e9 on
//   brief         four significant digits, all of the whole ones: 43.92, 6300; with an exponent
//                 below 0.001 or from 1e9 on
//   histogram     a list of counts; a flat table draws blocks of their sizes
//   general       three decimals: 299.550; with an exponent below 0.001 or from 1e9 on
//
// Programs read the number itself at full precision.
#pragma once

#include <string>

namespace MCHost {

enum class OutputFormat {
  kText,
  kCount,
  kPercent,
  kSignificance,
  kCoefficient,
  kCorrelation,
  kGeneral,
  kPValue,
  kStrength,
  kTenths,
  kBrief,
  kHistogram
};
inline constexpr OutputFormat kLastOutputFormat = OutputFormat::kHistogram;

// "count", "percent", ...
const char* FormatName(OutputFormat format);

// The number as printed; empty for one that is missing, NaN or infinite.
std::string FormatNumber(double value, OutputFormat format);

}  // namespace MCHost

// What a code for missing values says when it is compared with numbers.
#pragma once

#include <optional>
#include <string>

namespace MCHost {

// The whole text as a finite number.
std::optional<double> CodeAsNumber(const std::string& text);

struct CodeRange {
  double fLow;
  double fHigh;
};

// "lo..hi", either end left open but not both.
std::optional<CodeRange> CodeAsRange(const std::string& text);

// "hi..lo": no range, though meant as one.
bool IsRangeBackwards(const std::string& text);

// Whether it is one of them.
inline bool IsNumericCode(const std::string& text) {
  return CodeAsNumber(text).has_value() || CodeAsRange(text).has_value();
}

}  // namespace MCHost

#include "host/data/MissingValueCode.h"

#include <charconv>
#include <cmath>
#include <limits>
#include <system_error>

namespace MCHost {

std::optional<double> CodeAsNumber(const std::string& text) {
  double value = 0.0;
  const char* end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, value);
  if (text.empty() || result.ec != std::errc() || result.ptr != end) return std::nullopt;
  return std::isfinite(value) ? std::optional(value) : std::nullopt;
}

namespace {

// Its ends, the lower one first or not.
std::optional<CodeRange> EndsOf(const std::string& text) {
  const std::size_t dots = text.find("..");
  if (dots == std::string::npos || text.size() == 2) return std::nullopt;
  const std::string low = text.substr(0, dots);
  const std::string high = text.substr(dots + 2);
  const auto lowest = low.empty() ? std::numeric_limits<double>::lowest() : CodeAsNumber(low);
  const auto highest = high.empty() ? std::numeric_limits<double>::max() : CodeAsNumber(high);
  if (!lowest || !highest) return std::nullopt;
  return CodeRange{*lowest, *highest};
}

}  // namespace

std::optional<CodeRange> CodeAsRange(const std::string& text) {
  const std::optional<CodeRange> ends = EndsOf(text);
  return ends && ends->fLow <= ends->fHigh ? ends : std::nullopt;
}

bool IsRangeBackwards(const std::string& text) {
  const std::optional<CodeRange> ends = EndsOf(text);
  return ends && ends->fLow > ends->fHigh;
}

}  // namespace MCHost

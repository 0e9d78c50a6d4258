#include "apps/predselect/MemorySize.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string_view>

namespace PredSelectApp {

namespace {

constexpr double kLeast = 4.0;  // of CRITERIA MEMALLOCATE

// Kilobytes, of none for the empty unit.
std::optional<double> SizeOfUnit(std::string_view unit) {
  constexpr std::string_view kUnits = "KMGTkmgt";
  if (unit.empty()) return 1.0;
  if (unit.size() == 2 && (unit[1] == 'B' || unit[1] == 'b')) unit.remove_suffix(1);
  const std::size_t place = kUnits.find(unit);
  if (unit.size() != 1 || place == std::string_view::npos) return std::nullopt;
  return std::pow(1024.0, static_cast<double>(place % 4));
}

}  // namespace

std::optional<double> ParseMemorySize(const std::string& text) {
  double number = 0.0;
  const char* end = text.data() + text.size();
  const auto [rest, error] = std::from_chars(text.data(), end, number, std::chars_format::fixed);
  if (error != std::errc()) return std::nullopt;
  const std::optional<double> unit = SizeOfUnit({rest, static_cast<std::size_t>(end - rest)});
  if (!unit || !(number * *unit >= kLeast) || std::isinf(number)) return std::nullopt;
  return number * *unit;
}

std::size_t KeptBytesWithin(double kilobytes) {
  const double bytes = kilobytes * 1024.0 / 2.0;
  constexpr double kAddressable = 0x1p62;
  return static_cast<std::size_t>(std::min(bytes, kAddressable));
}

double MemoryBeside(std::size_t keptBytes, double kilobytes) {
  return std::max(kilobytes - static_cast<double>(keptBytes) / 1024.0, kLeast);
}

}  // namespace PredSelectApp

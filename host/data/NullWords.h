// The words that stand for no value in files of text, besides nothing: what programs that write
// such files put where a value is missing.
#pragma once

#include <algorithm>
#include <iterator>
#include <string_view>

namespace MCHost {

inline constexpr std::string_view kNullWords[] = {
    "NA",   "NaN",  "null", "NULL",     "None", "N/A",    "n/a",     "nan",     "-NaN",
    "-nan", "<NA>", "#N/A", "#N/A N/A", "#NA",  "1.#IND", "-1.#IND", "1.#QNAN", "-1.#QNAN"};

inline bool IsNullWord(std::string_view text) {
  return std::find(std::begin(kNullWords), std::end(kNullWords), text) != std::end(kNullWords);
}

}  // namespace MCHost

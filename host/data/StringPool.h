// The distinct strings of one column and their codes, in order of first appearance.
//
// It only grows, and what it gave out stays valid: a column of unique strings costs as much memory
// as the strings themselves, also when the column is read from disk on every pass.
#pragma once

#include <deque>
#include <string>
#include <string_view>
#include <unordered_map>

#include "host/data/ITable.h"

namespace MCHost {

class StringPool : public StringDictionary {
 public:
  StringPool() = default;
  StringPool(const StringPool&) = delete;
  StringPool& operator=(const StringPool&) = delete;

  std::int32_t Size() const override { return static_cast<std::int32_t>(fStrings.size()); }
  const std::string& At(std::int32_t code) const override {
    return fStrings[static_cast<std::size_t>(code)];
  }

  // The code of the string, a new one when it is met for the first time.
  std::int32_t Code(std::string_view text);

  // Length in bytes of the longest string; 0 when empty.
  std::size_t MaxBytes() const { return fMaxBytes; }

 private:
  std::deque<std::string> fStrings;
  std::unordered_map<std::string_view, std::int32_t> fCodes;  // keys are views of fStrings
  std::size_t fMaxBytes = 0;
};

}  // namespace MCHost

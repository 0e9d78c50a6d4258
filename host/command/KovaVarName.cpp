#include "host/command/KovaVarName.h"

#include <utf8proc.h>

#include <algorithm>
#include <array>
#include <cctype>

#include "host/command/TokenInfoObj.h"
#include "host/session/HostFunctions.h"

namespace {

constexpr std::array kReservedWords = {"ALL", "BY", "TO", "WITH"};

bool IsPrintableText(const std::string& text) {
  const auto* bytes = reinterpret_cast<const utf8proc_uint8_t*>(text.data());
  auto left = static_cast<utf8proc_ssize_t>(text.size());
  while (left > 0) {
    utf8proc_int32_t codepoint = 0;
    const utf8proc_ssize_t used = utf8proc_iterate(bytes, left, &codepoint);
    if (used < 1 || utf8proc_category(codepoint) == UTF8PROC_CATEGORY_CC) return false;
    bytes += used;
    left -= used;
  }
  return true;
}

}  // namespace

bool KovaVarName::IsReserved(const std::string& word) {
  return std::any_of(kReservedWords.begin(), kReservedWords.end(),
                     [&word](const char* reserved) { return AreStringsEqualCase(word, reserved); });
}

bool KovaVarName::IsValid() const {
  return !fName.empty() && fName.size() <= kMaxBytes && fName.front() != ' ' &&
         fName.back() != ' ' && !IsReserved(fName) && IsPrintableText(fName);
}

std::string KovaVarName::Quoted() const {
  if (TokenInfoObj::IsPlainWord(fName) && !IsReserved(fName)) return fName;
  std::string quoted = "\"";
  for (const char c : fName) quoted.append(c == '"' ? 2 : 1, c);
  return quoted + '"';
}

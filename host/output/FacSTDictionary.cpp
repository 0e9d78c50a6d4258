#include "host/output/FacSTDictionary.h"

#include <map>
#include <string_view>
#include <utility>

#include "host/output/StringTableText.h"

namespace {

using Entries = std::map<std::pair<std::string, std::string>, std::string>;  // (procedure, key)

// "\n" is the only escape: list patterns put each item on a line of its own.
std::string Unescaped(std::string_view text) {
  std::string plain(text);
  for (std::size_t at = 0; (at = plain.find("\\n", at)) != std::string::npos; ++at) {
    plain.replace(at, 2, "\n");
  }
  return plain;
}

Entries ReadEntries(std::string_view source) {
  constexpr std::string_view kSeparator = " => ";
  Entries entries;
  std::string procedure;
  while (!source.empty()) {
    const std::string_view line = source.substr(0, source.find('\n'));
    source.remove_prefix(line.size() < source.size() ? line.size() + 1 : line.size());
    if (line.empty() || line.front() == '#') continue;
    if (line.front() == '@') {
      procedure = line.substr(1);
      continue;
    }
    const std::size_t arrow = line.find(kSeparator);
    const bool isOwnText = arrow == std::string_view::npos;
    entries[{procedure, Unescaped(line.substr(0, arrow))}] =
        Unescaped(isOwnText ? line : line.substr(arrow + kSeparator.size()));
  }
  return entries;
}

const Entries& AllEntries() {
  static const Entries entries = ReadEntries(MCHost::StringTableText());
  return entries;
}

}  // namespace

std::string FacSTDictionary::Lookup(const std::string& key) const {
  const std::string* text = Find(key);
  return text != nullptr ? *text : key;
}

const std::string* FacSTDictionary::Find(const std::string& key) const {
  for (const std::string& procedure : {fProcedure, std::string()}) {
    const auto found = AllEntries().find({procedure, key});
    if (found != AllEntries().end()) return &found->second;
  }
  return nullptr;
}

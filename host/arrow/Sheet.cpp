#include "host/arrow/Sheet.h"

#include <algorithm>
#include <utility>

#include "host/arrow/DeclaredKinds.h"
#include "host/session/HostIOError.h"
#include "host/text/KeywordMatch.h"

namespace MCHost {

SheetChoice ChooseSheet(const std::string& path, std::vector<std::string> names,
                        const std::string& asked) {
  if (names.empty()) throw HostIOError(path, "", "there is no sheet in it");
  SheetChoice choice{std::move(names), 0};
  if (asked.empty()) return choice;
  const auto found = std::find(choice.fNames.begin(), choice.fNames.end(), asked);
  choice.fChosen = static_cast<std::size_t>(found - choice.fNames.begin());
  if (found != choice.fNames.end()) return choice;
  std::vector<std::string> quoted;
  for (const std::string& name : choice.fNames) quoted.push_back(Quoted(name));
  throw HostIOError(
      path, "",
      "there is no sheet " + Quoted(asked) + " in it; say --sheet " + JoinAlternatives(quoted));
}

std::string CellName(std::size_t column, std::int64_t row) {
  std::string letters;
  for (std::size_t left = column + 1; left > 0; left = (left - 1) / 26) {
    letters.insert(letters.begin(), static_cast<char>('A' + (left - 1) % 26));
  }
  return letters + std::to_string(row);
}

}  // namespace MCHost

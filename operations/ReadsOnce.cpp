#include "operations/ReadsOnce.h"

#include <algorithm>
#include <cctype>
#include <string_view>
#include <vector>

#include "host/command/CommandSplitter.h"

namespace PredSelect {

bool ReadsOnce(const std::string& commands) {
  constexpr std::string_view kCommand = "SELECTPRED";
  constexpr std::string_view kEffects = "EFF";  // the shortest form of the keyword
  const std::vector<MCHost::CommandText> all = MCHost::SplitCommands(commands);
  if (all.size() != 1) return false;
  std::string text = all[0].fText;
  std::transform(text.begin(), text.end(), text.begin(),
                 [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
  return text.find_first_not_of(" \t\r\n") == text.find(kCommand) &&
         text.find(kEffects) == std::string::npos;
}

}  // namespace PredSelect

#include "operations/NoVariable.h"

#include <vector>

#include "host/data/ITable.h"
#include "host/text/KeywordMatch.h"

namespace PredSelect {

std::string NoVariable(const MCHost::ITable& table, const std::string& name,
                       const std::string& clause) {
  std::vector<std::string> names;
  for (int i = 0; i < table.ColumnCount(); ++i) names.push_back(table.GetVariable(i).GetName());
  return NoVariable(names, name, clause);
}

std::string NoVariable(const std::vector<std::string>& names, const std::string& name,
                       const std::string& clause) {
  const std::string hint = MCHost::DidYouMean(name, names);
  return "the data have no variable \"" + name + "\"" + clause + (hint.empty() ? "." : hint);
}

}  // namespace PredSelect

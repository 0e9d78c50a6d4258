// What a refusal says of a variable that the data do not have.
#pragma once

#include <string>
#include <vector>

namespace MCHost {
class ITable;
}

namespace PredSelect {

// `clause` goes behind the name (", which the model needs"). Ends with the nearest name that the
// table has, where one is near.
std::string NoVariable(const MCHost::ITable& table, const std::string& name,
                       const std::string& clause = "");
std::string NoVariable(const std::vector<std::string>& names, const std::string& name,
                       const std::string& clause = "");

}  // namespace PredSelect

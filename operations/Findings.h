// What a report shows of predictors and model besides the tables, as JSON text for its page:
// docs/report.md says what stands in it.
#pragma once

#include <string>

struct ComponentFile;
struct PRSFindings;
namespace MCHost {
class ITable;
}

namespace PredSelect {

// Of a command that has run; the table, which may be null, knows labels of values.
std::string FindingsText(const PRSFindings& findings, const MCHost::ITable* table);

// Of a saved state. Counts that are not ranked yet have no ranking here: see InspectState.
std::string FindingsText(const ComponentFile& state);

}  // namespace PredSelect

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

// The findings of a ranking with the predictors in the order of their mutual information instead.
std::string FindingsByBits(const std::string& findings);

// Of a saved state. Counts that are not ranked yet have no ranking here: see InspectState.
std::string FindingsText(const ComponentFile& state);

}  // namespace PredSelect

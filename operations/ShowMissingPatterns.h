// What `describe` shows of values that are missing together.
#pragma once

#include <cstddef>
#include <vector>

class KOVA_Variable;

namespace PredSelect {

class MissingPatterns;

// So many patterns are shown: in the table and in the findings.
inline constexpr std::size_t kShownPatterns = 20;

// A line a pattern, in the current session's output; nothing where fewer than two variables lack a
// value, which says no more than that variable's own line. The variables are those of the columns.
void ShowMissingPatterns(const MissingPatterns& patterns,
                         const std::vector<const KOVA_Variable*>& variables, double nCases);

}  // namespace PredSelect

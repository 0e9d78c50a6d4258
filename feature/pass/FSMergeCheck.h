// Whether the counts of two parts of the data can be brought together.
#pragma once

#include "feature/MCStatus.h"

class FSCounts;
struct FSCategoryMaps;

namespace FSMergeCheck {

// What stands against adding `from`, made under the same settings, to `into`: error 80014. `into`
// may be new. Settings that were changed since a pass show in the accumulators.
MCFeature::MCStatus Check(const FSCounts& into, const FSCounts& from, const FSCategoryMaps* maps);

}  // namespace FSMergeCheck

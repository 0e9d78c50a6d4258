#include "feature/accumulators/FSStepSums.h"

#include "feature/accumulators/FSLoops.h"

void FSStepSums::AddRun(int before, std::size_t n, const FSRun& run, double origin) {
  FSInLanes(
      before, n,
      [&](std::size_t k, int lane) { Add(lane, run.ValueAt(k) - origin, run.WeightAt(k)); },
      [&](std::size_t from, std::size_t count) {
        FSLoops::InUse().fAddSteps(count, run.From(from), origin, *this);
      });
}

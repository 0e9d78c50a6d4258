// Parts of Arrow structs that somebody else owns, given out as structs of their own.
#pragma once

#include <memory>
#include <vector>

#include "host/data/ArrowCDataInterface.h"

namespace MCHost {

using SharedSchema = std::shared_ptr<const ArrowSchema>;
using SharedBatch = std::shared_ptr<const ArrowArray>;

// A struct that is released when nobody shares it any more, or at once where there is no memory to
// share it. Leaves the original released.
SharedSchema ShareSchema(ArrowSchema& schema);
SharedBatch ShareBatch(ArrowArray& batch);

// Fills `out`, which its receiver releases, with the node and of its children those at the given
// places, all for null. The columns may be moved out of it. Nothing is copied but the structs. A
// node without such children is given out without any, for the receiver to refuse.
void GiveOut(const SharedSchema& schema, const std::vector<int>* columns, ArrowSchema* out);
void GiveOut(const SharedBatch& batch, const std::vector<int>* columns, ArrowArray* out);

}  // namespace MCHost

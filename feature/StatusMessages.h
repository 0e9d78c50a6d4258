// The messages of the feature selection component's statuses.
#pragma once

#include "common/StatusMessage.h"
#include "feature/MCStatus.h"

namespace MCFeature {

// The message of an error or a warning; null when there is nothing to say.
const MCCommon::StatusMessage* MessageOf(const MCStatus& status);

}  // namespace MCFeature

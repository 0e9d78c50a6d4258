// The messages of the Naive Bayes component's statuses.
#pragma once

#include "common/StatusMessage.h"
#include "naivebayes/MCStatus.h"

namespace MCNaive {

// The message of an error or a warning; null when there is nothing to say.
const MCCommon::StatusMessage* MessageOf(const MCStatus& status);

}  // namespace MCNaive

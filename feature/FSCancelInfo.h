// The component's view of a cancel: once cancelled, always cancelled.
#pragma once

#include "common/Cancel.h"

using FSCancelInfo = MCCommon::CancelInfo;

// A cancel as the component sees it: its own flag, or the caller's probe.
#pragma once

#include "common/Cancel.h"

using NBCancelInfo = MCCommon::CancelInfo;

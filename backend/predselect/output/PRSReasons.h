// The rules of screening as the tables of excluded predictors name them.
#pragma once

#include <span>

#include "feature/MCFSCommon.h"
#include "host/output/OutputText.h"

class PRSValidSpecs;

// The reasons in the order in which their rules are applied.
std::span<const MCFSCommon::PredictorDelReason> PRSReasons();

// The label of a reason, with its threshold as the user typed it.
MCHost::OutputText PRSReasonLabel(const PRSValidSpecs& specs,
                                  MCFSCommon::PredictorDelReason reason);

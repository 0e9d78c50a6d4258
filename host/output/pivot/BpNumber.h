// A number as an argument of a text, printed in its format.
#pragma once

#include "host/output/OutputFormat.h"
#include "host/output/OutputText.h"

inline MCHost::OutputText BpNumber(double value, MCHost::OutputFormat format) {
  return MCHost::OutputText::Literal(MCHost::FormatNumber(value, format));
}

#include "host/output/chart/ChartString.h"

#include "host/output/OutputFormat.h"

ChartString& ChartString::appendDouble(double value) {
  return append(MCHost::FormatNumber(value, MCHost::OutputFormat::kCoefficient));
}

// A finished chart: its title and the Vega-Lite document that draws it (JSON text, data inline).
#pragma once

#include <string>

#include "host/output/OutputText.h"

namespace MCHost {

struct OutputChart {
  OutputText fTitle;
  std::string fVegaLite;
};

}  // namespace MCHost

// Thrown where saved state does not hold what it should: damaged, cut short, or of another kind.
#pragma once

#include <stdexcept>

namespace MCCommon {

class IOException : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace MCCommon

namespace MCNaive {
using MCCommon::IOException;
}
namespace MCFeature {
using MCCommon::IOException;
}

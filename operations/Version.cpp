#include "operations/Version.h"

namespace PredSelect {

const char* Version() { return PREDSELECT_VERSION; }

}  // namespace PredSelect

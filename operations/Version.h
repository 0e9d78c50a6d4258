// The version of this library, such as "1.2.3".
#pragma once

namespace PredSelect {

const char* Version();

}  // namespace PredSelect

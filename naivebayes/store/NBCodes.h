// One column of category codes in the width that it is stored in; -1 is missing. std::visit gives a
// loop the plain pointer, once for a whole column.
#pragma once

#include <cstdint>
#include <variant>

using NBCodes = std::variant<const std::int8_t*, const std::int16_t*, const std::int32_t*>;

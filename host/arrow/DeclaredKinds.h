// What a column may hold that is declared to be of a type.
#pragma once

#include <string>
#include <string_view>

#include "host/data/FieldType.h"

namespace MCHost {

// The kinds of CsvKinds.h that the values of such a column may have.
unsigned DeclaredKinds(FieldType type);

// Why a value is refused that has none of them; a long one is cut.
std::string NotAsDeclared(std::string_view text, FieldType type, const std::string& column);

// A text in quotes, cut between two characters when it is long.
std::string Quoted(std::string_view text);

}  // namespace MCHost

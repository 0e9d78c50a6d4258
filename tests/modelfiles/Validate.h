// Checks a document against the DTD that it names.
#pragma once

#include <string>

// What a validating parser finds wrong, DTDs being looked for in modelfiles/dtd; empty for nothing.
std::string ValidationErrors(const std::string& document);

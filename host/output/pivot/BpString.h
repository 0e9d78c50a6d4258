// A fixed text as a label or cell: a key of the string table.
#pragma once

#include <string>

#include "host/output/OutputText.h"

inline MCHost::OutputText BpString(std::string key) {
  return MCHost::OutputText::Key(std::move(key));
}

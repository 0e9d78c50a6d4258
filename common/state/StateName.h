// How one class is named in saved state.
#pragma once

#include <string>

struct StateName {
  std::string fClass;    // in messages
  std::string fTag;      // what its binary form begins with
  std::string fElement;  // the name of its object in the XML form
};

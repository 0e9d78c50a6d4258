// What an application says of itself in the header of an XML document. A plain value; an empty text
// stands for the writing component's own.
#pragma once

#include <string>

struct MCApplicInfo4XML {
  bool fbUTF8 = false;  // write in UTF-8, otherwise in ASCII with character references
  std::string fName;
  std::string fVersion;
  std::string fCopyright;
};

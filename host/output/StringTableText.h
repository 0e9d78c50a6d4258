// The source of the string table, put into the library by the build.
#pragma once

namespace MCHost {

// The contents of host/output/strings/texts.txt.
const char* StringTableText();

}  // namespace MCHost

// Small services of the host that the procedures call by name, answered by the current session.
#pragma once

#include <string>

#include "host/session/ISession.h"

// True when the strings are equal without regard to the case of ASCII letters.
bool AreStringsEqualCase(const std::string& left, const std::string& right);

// What the application says of itself.
const MCHost::AppParams& GetAppParams();

// A directory for temporary files, without a trailing separator.
std::string GetKovaTempPath();

// The path of a file that a command names: a leading "~/" stands for the user's home directory.
std::string ExtNameStr(const std::string& name);

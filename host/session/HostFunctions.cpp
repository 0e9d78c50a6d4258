#include "host/session/HostFunctions.h"

#include <algorithm>
#include <cstdlib>

#include "host/session/SessionScope.h"

namespace {

char Lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

}  // namespace

bool AreStringsEqualCase(const std::string& left, const std::string& right) {
  return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                    [](char a, char b) { return Lower(a) == Lower(b); });
}

const MCHost::AppParams& GetAppParams() { return MCHost::CurrentSession().GetAppParams(); }

std::string GetKovaTempPath() { return MCHost::CurrentSession().TempPath(); }

std::string ExtNameStr(const std::string& name) {
  const char* home = std::getenv("HOME");
  return home != nullptr && name.starts_with("~/") ? home + name.substr(1) : name;
}

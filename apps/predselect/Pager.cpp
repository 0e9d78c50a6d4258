#include "apps/predselect/Pager.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>

#include "apps/predselect/ChildProcess.h"
#include "apps/predselect/Interrupt.h"

namespace PredSelectApp {

namespace {

constexpr int kNoSuchProgram = 127;  // as shells say it
constexpr const char* kUsual = "command -v less >/dev/null || exit 127; exec less -FRX";

bool IsLong(const std::string& page) {
  winsize size{};
  const bool isKnown = ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_row > 0;
  return isKnown && std::count(page.begin(), page.end(), '\n') >= size.ws_row;
}

}  // namespace

bool ShowInPager(const std::string& page) {
  const char* named = std::getenv("PAGER");
  const std::string pager = named != nullptr ? named : kUsual;
  if (pager.empty() || !IsLong(page)) return false;
  const KeyboardOfAnother typed;
  const int code = RunChild({"/bin/sh", "-c", pager}, page, ChildOutput::kShown);
  return code >= 0 && code != kNoSuchProgram;
}

}  // namespace PredSelectApp

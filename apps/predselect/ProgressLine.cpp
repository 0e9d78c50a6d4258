#include "apps/predselect/ProgressLine.h"

#include <cstdio>

#include "host/text/VisibleText.h"

namespace PredSelectApp {

namespace {
constexpr auto kFirst = std::chrono::seconds(1);
constexpr auto kBetween = std::chrono::milliseconds(200);
}  // namespace

ProgressLine::ProgressLine(bool enabled) : fbEnabled(enabled), fNext(Clock::now() + kFirst) {}

ProgressLine::~ProgressLine() { Clear(); }

void ProgressLine::Show(const std::string& text) {
  if (!fbEnabled || Clock::now() < fNext) return;
  std::fprintf(stderr, "\r\x1b[K%s", MCHost::VisibleText(text, "").c_str());
  std::fflush(stderr);
  fbShown = true;
  fNext = Clock::now() + kBetween;
}

void ProgressLine::Clear() {
  if (!fbShown) return;
  std::fputs("\r\x1b[K", stderr);
  std::fflush(stderr);
  fbShown = false;
}

}  // namespace PredSelectApp

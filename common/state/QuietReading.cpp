#include "common/state/QuietReading.h"

namespace {
thread_local int gNAlive = 0;
}

QuietReading::QuietReading() { ++gNAlive; }

QuietReading::~QuietReading() { --gNAlive; }

bool QuietReading::IsInForce() { return gNAlive > 0; }

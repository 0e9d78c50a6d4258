// A random generator that a caller may hand to an engine in place of the engine's own.
#pragma once

namespace MCCommon {

class MCRandom {
 public:
  virtual ~MCRandom() = default;

  // One draw, uniform on [0, 1).
  virtual double GetRandom() = 0;
};

}  // namespace MCCommon

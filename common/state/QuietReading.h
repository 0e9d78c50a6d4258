// Keeps what readers of saved state write to standard error away from it: for a caller who says in
// words of his own what is wrong with a file. In force on its thread while it lives.
#pragma once

class QuietReading {
 public:
  QuietReading();
  QuietReading(const QuietReading&) = delete;
  QuietReading& operator=(const QuietReading&) = delete;
  ~QuietReading();

  static bool IsInForce();
};

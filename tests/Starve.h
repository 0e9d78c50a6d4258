// Memory that runs out at any place of a call. The program that links Starve.cpp allocates through
// its operators.
#pragma once

#include <functional>

namespace MCTest {

// Which allocations are refused: each one in turn, alone and with all that follow; or in growing
// steps, with all that follow.
enum class Places { kAll, kSome };

// Makes the call with room for 0, 1, 2, ... allocations on this thread, until none is refused.
// After each, `check(refused)` looks at what became of it, with memory again; refused says that an
// allocation threw.
void Starve(Places places, const std::function<void()>& call,
            const std::function<void(bool refused)>& check);

// Gives memory again as long as it lives.
class Plenty {
 public:
  Plenty();
  ~Plenty();
  Plenty(const Plenty&) = delete;
  Plenty& operator=(const Plenty&) = delete;

 private:
  long fRoom;
};

// What the function gives, made with memory enough.
template <class Make>
auto InPlenty(Make make) {
  const Plenty plenty;
  return make();
}

}  // namespace MCTest

// What the program and its helping processes say to each other through pipes: frames of a kind and
// bytes.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace PredSelectApp {

struct JobFrame {
  // Asked: open these parts and find their ranges; take the merged ranges; a pass over the parts.
  // Answered: the bytes asked for; what went wrong.
  enum Kind : char { kOpen = 'o', kUse = 'u', kPass = 'p', kDone = 'd', kFailed = 'f' };

  Kind fKind = kDone;
  std::string fBytes;
};

// Nothing at the end of the pipe, or where the other end has gone.
std::optional<JobFrame> ReadFrame(int pipe);
// False where the other end has gone.
[[nodiscard]] bool WriteFrame(int pipe, const JobFrame& frame);

// Several texts as the bytes of a frame, and back.
std::string PackTexts(const std::vector<std::string>& texts);
std::vector<std::string> UnpackTexts(const std::string& bytes);

}  // namespace PredSelectApp

// The output document as a page to read: messages, notes, tables drawn with box characters, and
// what was saved.
#pragma once

#include <cstddef>
#include <string>

namespace MCHost {

class OutputDocument;
struct OutputMessage;

struct TextOptions {
  std::size_t fWidth = 100;  // columns of the terminal, or of the page when there is none
  bool fbColor = false;      // titles and severities set off with terminal colours
  bool fbBlocks = true;      // bars and histograms of block characters in flat tables
  bool fbMessages = true;    // false where messages are shown elsewhere
};

// UTF-8, every line ended.
std::string RenderText(const OutputDocument& document, const TextOptions& options);

// One message with its detail below, for showing it as it arrives.
std::string RenderMessage(const OutputMessage& message, const TextOptions& options);

}  // namespace MCHost

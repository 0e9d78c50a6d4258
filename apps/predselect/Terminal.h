// What the program knows of the place where its results are shown.
#pragma once

#include <string>

#include "host/output/render/RenderText.h"

namespace PredSelectApp {

struct ResultOptions;

// Width and colour for a page on standard output (`forMessages`: for messages on standard error),
// from the options, the terminal, COLUMNS and NO_COLOR.
MCHost::TextOptions PageOptions(const ResultOptions& options, bool forMessages);

// Whether a progress line may be shown: on a terminal that is not "dumb", and unless the options
// forbid it.
bool WantsProgress(const ResultOptions& options);

// A line on standard error, made visible where it would steer the terminal.
void PrintError(const std::string& line);

// Where the results go, as files are named.
std::string ResultPath(const ResultOptions& options);

// Whether bytes that are no text would go to a terminal.
bool ShowsBytes(const ResultOptions& options);

// Writes the results to the file of the options, whole or not at all, or to standard output, where
// a pager shows long pages. Throws MCHost::HostIOError.
void WriteResults(const ResultOptions& options, const std::string& text);

// Renders the document as the options ask, and writes it so; but nothing of a run that was stopped
// before any of its commands had completed. Throws MCHost::HostIOError.
void WriteDocument(const MCHost::OutputDocument& document, const ResultOptions& options);

}  // namespace PredSelectApp

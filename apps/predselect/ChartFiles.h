// The charts of a document as files, drawn by the Python package vl-convert-python: the interpreter
// that PREDSELECT_PYTHON names, else python3, must have it.
#pragma once

#include <string>

namespace MCHost {
class OutputDocument;
}

namespace PredSelectApp {

// Throws UsageError where charts cannot be drawn. Nothing for an empty folder.
void CheckChartFiles(const std::string& folder);

// Draws every chart as <run>-<title>.svg and .png into the folder, which is made, and adds the
// files to those of its run. Throws MCHost::HostIOError.
void WriteChartFiles(MCHost::OutputDocument& document, const std::string& folder);

}  // namespace PredSelectApp

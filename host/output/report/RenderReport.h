// The output document as a page to look at: one HTML file that holds everything it needs, asks no
// network for anything, and runs nothing of what the data say.
//
// The page is put together in the browser, from the payload: the document's tables as they are
// shown, its messages, notes and charts, and what the commands found of predictors and model
// (OutputRun::fFindings). docs/report.md says what a reader can do with it.
#pragma once

#include <string>

namespace MCHost {

class OutputDocument;

// UTF-8. What would steer a reader (control characters, turned directions of writing) is made
// visible. `heading` says what the report is about.
std::string RenderReport(const OutputDocument& document, const std::string& heading);

// The same of a document that RenderJson has written, with the findings that it holds. Throws
// HostIOError, which names the file, for a text that is no such document.
std::string RenderReportOfJson(const std::string& json, const std::string& path);

}  // namespace MCHost

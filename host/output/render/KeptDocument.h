// The output document as bytes, for results that go to another process or rest in a file and come
// back as they were: every renderer makes the same of both.
//
// A form for this version and this kind of machine alone; RenderJson is for programs.
#pragma once

#include <string>
#include <string_view>

namespace MCHost {

class OutputDocument;

std::string KeepDocument(const OutputDocument& document);

// Throws HostIOError for bytes that are damaged, or that this version has not made.
OutputDocument ReadKeptDocument(std::string_view bytes);

}  // namespace MCHost

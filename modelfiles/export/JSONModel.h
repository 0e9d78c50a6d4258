// The JSON form of a model, read. docs/model.schema.json describes it.
#pragma once

#include <memory>
#include <string>

class INBAlgorithm;

namespace MCModelFiles {

// A model with the tables of the document, which scores to the same bits as the one that ToJSON
// wrote. Throws ExportError for a text that is no such document.
std::unique_ptr<INBAlgorithm> ModelFromJSON(const std::string& text);

}  // namespace MCModelFiles

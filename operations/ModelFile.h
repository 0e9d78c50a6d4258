// A model of a saved state, or of a run, as a file that other programs score with.
#pragma once

#include <string>
#include <vector>

class INBAlgorithm;

namespace PredSelect {

struct ExportRequest {
  std::string fFile{};
  std::string fTo{};            // "pmml", "onnx", "sql", "c" or "json"; empty: by the file's ending
  std::string fTable = "data";  // that the SQL query reads
};

// The words that a format goes by, the first one for each.
const std::vector<std::string>& ModelFileFormats();

// Throws RequestError (to) for a format or an ending that stands for none.
void CheckModelFile(const ExportRequest& request);

// Writes the file, whole or not at all. The result says what the format cannot say of this model,
// in sentences. Throws RequestError (to) as CheckModelFile does, and for a model that the format
// cannot hold; MCHost::HostIOError. REQUIRES: the model was built.
std::vector<std::string> WriteModelFile(const INBAlgorithm& model, const ExportRequest& request);

}  // namespace PredSelect

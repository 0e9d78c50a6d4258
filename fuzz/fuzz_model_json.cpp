// Any text as a model in JSON: a refusal that says why, or a model that works, that can be saved,
// and whose JSON reads as the same.
#include <cstdint>
#include <string>

#include "fuzz/NaiveState.h"
#include "modelfiles/export/ExportText.h"
#include "modelfiles/export/JSONModel.h"
#include "modelfiles/export/ModelFormats.h"

namespace {

using MCModelFiles::ExportError;
using MCModelFiles::ModelFormat;
using PredSelectFuzz::Require;

PredSelectFuzz::Component Read(const std::string& text) {
  try {
    return MCModelFiles::ModelFromJSON(text);
  } catch (const ExportError& error) {
    Require(*error.what() != '\0', "a refusal says why");
    return nullptr;
  }
}

// Empty where the format cannot hold the model.
std::string Export(const INBAlgorithm& model, ModelFormat format) {
  try {
    return MCModelFiles::ExportModel(model, format, {"data", "0"}).fBytes;
  } catch (const ExportError&) {
    return "";
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const QuietErrors errors;
  const auto model = Read({reinterpret_cast<const char*>(data), size});
  if (model == nullptr) return 0;
  const std::string json = Export(*model, ModelFormat::kJSON);
  if (!json.empty()) {
    const auto again = Read(json);
    Require(again != nullptr, "its JSON is read", json);
    Require(Export(*again, ModelFormat::kJSON) == json, "and reads as the same", json);
  }
  for (const ModelFormat format :
       {ModelFormat::kPMML, ModelFormat::kONNX, ModelFormat::kSQL, ModelFormat::kC}) {
    (void)Export(*model, format);
  }
  PredSelectFuzz::CheckComponent(model);
  return 0;
}

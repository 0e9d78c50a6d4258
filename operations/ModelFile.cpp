#include "operations/ModelFile.h"

#include <algorithm>
#include <cctype>

#include "host/session/OutputFile.h"
#include "modelfiles/export/ExportText.h"
#include "modelfiles/export/ModelFormats.h"
#include "operations/RequestError.h"
#include "operations/Version.h"

namespace PredSelect {

namespace {

using MCModelFiles::ModelFormat;

struct Format {
  const char* fWord;
  ModelFormat fFormat;
  std::vector<std::string> fEndings;
};

const std::vector<Format> kFormats = {{"pmml", ModelFormat::kPMML, {".pmml", ".xml"}},
                                      {"onnx", ModelFormat::kONNX, {".onnx"}},
                                      {"sql", ModelFormat::kSQL, {".sql"}},
                                      {"c", ModelFormat::kC, {".c"}},
                                      {"json", ModelFormat::kJSON, {".json"}}};

bool HasEnding(const std::string& path, const std::string& ending) {
  return path.size() > ending.size() &&
         std::equal(ending.rbegin(), ending.rend(), path.rbegin(), [](char a, char b) {
           return a == std::tolower(static_cast<unsigned char>(b));
         });
}

bool IsMeant(const Format& format, const ExportRequest& request) {
  if (!request.fTo.empty()) return format.fWord == request.fTo;
  return std::ranges::any_of(format.fEndings, [&request](const std::string& ending) {
    return HasEnding(request.fFile, ending);
  });
}

ModelFormat FormatOf(const ExportRequest& request) {
  for (const Format& format : kFormats) {
    if (IsMeant(format, request)) return format.fFormat;
  }
  if (!request.fTo.empty()) {
    throw RequestError("to", "\"" + request.fTo + "\" is no format of models.");
  }
  throw RequestError("the ending of \"" + request.fFile +
                     "\" names no format of models: .pmml, .xml, .onnx, .sql, .c and .json do.");
}

}  // namespace

const std::vector<std::string>& ModelFileFormats() {
  static const std::vector<std::string> words = [] {
    std::vector<std::string> all;
    for (const Format& format : kFormats) all.emplace_back(format.fWord);
    return all;
  }();
  return words;
}

void CheckModelFile(const ExportRequest& request) {
  (void)FormatOf(request);
  MCHost::OutputFile::Check(request.fFile);
}

std::vector<std::string> WriteModelFile(const INBAlgorithm& model, const ExportRequest& request) {
  const ModelFormat format = FormatOf(request);
  try {
    const MCModelFiles::ExportedModel exported =
        MCModelFiles::ExportModel(model, format, {request.fTable, Version()});
    MCHost::OutputFile file(request.fFile);
    file.Write(exported.fBytes);
    file.Commit();
    return exported.fNotes;
  } catch (const MCModelFiles::ExportError& error) {
    throw RequestError("the model cannot be exported: " + std::string(error.what()));
  }
}

}  // namespace PredSelect

// A model as a document for other programs.
#pragma once

#include <string>

#include "host/session/ISession.h"

class INBAlgorithm;

namespace PredSelect {

// Writes the model as PMML 4.3. `application` is named in the document. The file appears whole or
// not at all. Throws RequestError for a model that the document cannot hold, MCHost::HostIOError.
// REQUIRES: the model was built, as one from a state always is.
void ExportModel(const INBAlgorithm& model, const std::string& path,
                 const MCHost::AppParams& application);

}  // namespace PredSelect

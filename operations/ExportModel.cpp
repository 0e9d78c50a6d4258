#include "operations/ExportModel.h"

#include <new>
#include <sstream>

#include "common/xml/MCApplicInfo4XML.h"
#include "common/WholeText.h"
#include "host/session/OutputFile.h"
#include "naivebayes/INBAlgorithm.h"
#include "naivebayes/MCStatus.h"
#include "operations/RequestError.h"

namespace PredSelect {

namespace {

// Why the document cannot hold the model.
std::string Obstacle(const INBAlgorithm& model, const MCNaive::MCStatus& status) {
  switch (status.GetErrorCode()) {
    case MCNaive::kNoInputToExport:
      return "it has no predictor.";
    case MCNaive::kWeightNotFinite:
      return "its case weights add up to more than a number can hold.";
    case MCNaive::kTextNotForXML: {
      const auto variable = static_cast<int>(status.GetDiscreteDatum(0));
      return (variable < 0 ? std::string("a text of the application")
                           : "a name, label or value of " +
                                 model.GetVarList().GetVarAt(variable)->GetVariableName()) +
             " holds a character that XML does not allow.";
    }
    default:
      return "status " + std::to_string(status.GetErrorCode()) + ".";
  }
}

}  // namespace

void ExportModel(const INBAlgorithm& model, const std::string& path,
                 const MCHost::AppParams& application) {
  MCApplicInfo4XML info = {true, application.fName, application.fVersion, application.fCopyright};
  std::ostringstream document;
  const MCNaive::MCStatus status = model.ExportModelXML(document, &info);
  if (status.GetErrorCode() == MCNaive::kNoMemory) throw std::bad_alloc();
  if (!status.IsOK()) {
    throw RequestError("the model cannot be written as a document: " + Obstacle(model, status));
  }
  MCHost::OutputFile file(path);
  file.Write(MCCommon::WholeText(document));
  file.Commit();
}

}  // namespace PredSelect

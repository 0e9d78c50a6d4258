// A built Naive Bayes model in the forms that other programs score with: an evaluator of PMML, an
// ONNX runtime, a database, a C compiler, and a plain JSON document.
//
// Each gives what INBAlgorithm::ScoreBlock gives, as far as the form can say it; what it cannot say
// is in the notes, and in the file where that has room for words. docs/models.md tells the forms.
// Nothing here knows files.
#pragma once

#include <string>
#include <vector>

class INBAlgorithm;

namespace MCModelFiles {

struct ScoringModel;

enum class ModelFormat { kPMML, kONNX, kSQL, kC, kJSON };

struct ExportOptions {
  std::string fTable = "data";  // that the SQL query reads
  std::string fVersion;         // of the program, for the forms that say who made them
};

struct ExportedModel {
  std::string fBytes;
  std::vector<std::string> fNotes;  // whole sentences
};

// The names that the new columns, fields or outputs have; those of the inputs are left to them.
struct OutputNames {
  std::string fPredicted;                   // "PredictedValue"
  std::vector<std::string> fProbabilities;  // "PredictedProbability_1", ..., by class
};
OutputNames NamesOf(const ScoringModel& model);

// PMML 4.3 of probabilities instead of counts, with cases that an evaluator can verify itself by.
ExportedModel ToPMML(const INBAlgorithm& model, const ExportOptions& options);
// A graph over one column an input, texts and doubles, in double precision.
ExportedModel ToONNX(const ScoringModel& model, const ExportOptions& options);
// One query that adds the new columns to those of a table.
ExportedModel ToSQL(const ScoringModel& model, const ExportOptions& options);
// One source file in C99, which needs <stddef.h> and <string.h> alone; for a temperature <math.h>.
ExportedModel ToC(const ScoringModel& model, const ExportOptions& options);
// The tables of the model; ModelFromJSON (JSONModel.h) makes a model of them again.
ExportedModel ToJSON(const ScoringModel& model, const ExportOptions& options);

// In any of them. REQUIRES: the model was built. Throws ExportError for texts that the form cannot
// hold.
ExportedModel ExportModel(const INBAlgorithm& model, ModelFormat format,
                          const ExportOptions& options);

}  // namespace MCModelFiles

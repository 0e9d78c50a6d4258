// The table of one predictor together with the variable that it belongs to.
#pragma once

#include <memory>
#include <vector>

#include "naivebayes/model/NBayesInputBase.h"
#include "naivebayes/variables/INBVariable.h"

class INBEncoder;
namespace MCCommonXML {
class XMLElement;
}

class NBayesInput : public NBayesInputBase {
 public:
  // An input to be read, whose variable has then to be set.
  NBayesInput() = default;
  // The variable stays its list's.
  NBayesInput(int varIndex, INBVariable* variable, int targetCategories);

  // The estimate with alpha = 1 / totalWeight. Returns the number of non-empty categories.
  int ComputeProbabilities(double totalWeight);

  // Adds the counts of the same predictor in another model, for so many target categories after the
  // merge. Its categories, and those of the target
  // by the map given (other's code to this code), are matched by the values they stand for; a value
  // that this model's encoder does not know yet gets a new category.
  void MergePredictorCounts(const NBayesInput& other, const std::vector<int>& targetMap,
                            int targetCategories);

  int GetVarIndex() const { return fVarIndex; }
  INBVariable* GetVariable() const { return fpVariable; }
  void SetVariable(INBVariable* variable) { fpVariable = variable; }

  // The predictor in a model document: a BayesInput with its counts, and its bins when it has an
  // encoder of bins. Target categories are named as their encoder decodes them. Throws XMLError for
  // a text or number that XML cannot hold.
  std::unique_ptr<MCCommonXML::XMLElement> ExportInputXML(const INBEncoder* targetEncoder) const;

  // As INBUserMissing says. The variable is not part of the state.
  int WriteObject(std::fstream& os) const;
  int ReadObject(std::fstream& is);
  void WriteObjectXML(std::ostream& os, int indent) const;
  void ReadObjectXML(std::ifstream& is);

  void Display(std::ostream& os) const override;

 private:
  template <class Archive, class Self>
  static void Fields(Archive& archive, Self& self);

  int fVarIndex = -1;
  INBVariable* fpVariable = nullptr;
};

#include "host/output/TellApart.h"

#include <optional>
#include <string>
#include <unordered_map>
#include <variant>

#include "host/data/ITable.h"
#include "host/output/OutputTable.h"
#include "host/session/ISession.h"
#include "host/session/SessionScope.h"

namespace MCHost {

namespace {

std::string WithKey(const std::string& label, const std::string& key) {
  return label + " (" + key + ")";
}

// Who uses the labels of some texts, each for itself or for another.
class LabelUses {
 public:
  explicit LabelUses(const std::vector<OutputText*>& texts) {
    for (const OutputText* text : texts) {
      if (!text->fLabel.empty()) fUses.try_emplace(text->fLabel);
    }
    for (const OutputText* text : texts) Note(text->fKey, text->fLabel);
  }

  bool IsEmpty() const { return fUses.empty(); }

  // Something known as `key` has this label (empty: none). It may be noted many times.
  void Note(const std::string& key, const std::string& label) {
    const std::string both = WithKey(label, key);  // it may have to be shown so
    for (const std::string* shown : {&key, &label, &both}) {
      const auto found = fUses.find(*shown);
      if (found == fUses.end()) continue;
      Use& use = found->second;
      if (!use.fUser) use.fUser = key;
      if (use.fUser != key) use.fbShared = true;
    }
  }

  bool IsShared(const std::string& label) const {
    const auto found = fUses.find(label);
    return found != fUses.end() && found->second.fbShared;
  }

 private:
  struct Use {
    std::optional<std::string> fUser;  // the first
    bool fbShared = false;
  };
  std::unordered_map<std::string, Use> fUses;  // by label
};

class SharedLabels {
 public:
  void Collect(OutputText& text) {
    if (text.fKind == OutputText::kVariable) fVariables.push_back(&text);
    if (text.fKind == OutputText::kValue) fValues.push_back(&text);
    for (OutputText& argument : text.fArguments) Collect(argument);
    for (OutputText& item : text.fItems) Collect(item);
  }
  void Collect(OutputTable& table);

  void TellApart() const {
    LabelUses uses(fVariables);
    if (!uses.IsEmpty()) {
      const ITable& table = CurrentSession().Table();
      for (int i = 0; i < table.ColumnCount(); ++i) {
        uses.Note(table.GetVariable(i).GetName(), table.GetVariable(i).GetLabel());
      }
    }
    NameBehind(fVariables, uses);
    NameBehind(fValues, LabelUses(fValues));
  }

 private:
  static void NameBehind(const std::vector<OutputText*>& texts, const LabelUses& uses) {
    for (OutputText* text : texts) {
      if (uses.IsShared(text->fLabel)) text->fLabel = WithKey(text->fLabel, text->fKey);
    }
  }

  std::vector<OutputText*> fVariables;
  std::vector<OutputText*> fValues;
};

void SharedLabels::Collect(OutputTable& table) {
  if (table.fCaption) Collect(*table.fCaption);
  for (OutputDimension& dimension : table.fDimensions) {
    for (OutputCategory& category : dimension.fCategories) Collect(category.fLabel);
  }
  for (OutputCell& cell : table.fCells) {
    if (auto* text = std::get_if<OutputText>(&cell.fValue)) Collect(*text);
  }
  for (OutputText& footnote : table.fFootnotes) Collect(footnote);
}

}  // namespace

void TellApart(OutputText& text) {
  SharedLabels labels;
  labels.Collect(text);
  labels.TellApart();
}

void TellApart(std::vector<OutputText>& texts) {
  SharedLabels labels;
  for (OutputText& text : texts) labels.Collect(text);
  labels.TellApart();
}

void TellApart(OutputTable& table) {
  SharedLabels labels;
  labels.Collect(table);
  labels.TellApart();
}

}  // namespace MCHost

// A command that another operation is made of: its messages, files and new variables become that
// operation's own, and its tables are there to be read.
#pragma once

#include <string>
#include <vector>

#include "host/output/OutputDocument.h"
#include "operations/RunCommands.h"

namespace MCHost {
class ITable;
}

namespace PredSelect {

class CommandRun : public MCHost::OutputDocument {
 public:
  // Opens a run of that name in the document, which is borrowed.
  CommandRun(MCHost::OutputDocument& document, const std::string& name);

  // Keeps the message of this key from the document; whether it has come is then known.
  void Withhold(const std::string& key) { fWithheld = key; }
  bool IsWithheld() const { return fbWithheld; }

  // Throws what RunCommands throws. One command; the last one's tables are found.
  Outcome Run(MCHost::DataTable& table, const RunRequest& request,
              const Surroundings& surroundings);

  // Null where the command has shown no such table.
  const MCHost::OutputTable* Find(const std::string& subtype) const;

  // But that nothing was excluded, which nobody has asked for; and what is advised about a command
  // as advice on the operation.
  void AddMessage(MCHost::OutputMessage message) override;

 private:
  MCHost::OutputDocument& fDocument;
  std::string fWithheld;
  bool fbWithheld = false;
};

// A predictor that was left out before the work, and why.
struct LeftOutPredictor {
  std::string fName;
  MCHost::OutputText fReason;
};

// Those that the command has excluded, in the order of its reasons.
std::vector<LeftOutPredictor> LeftOutPredictors(const CommandRun& run);

// What a page says of them, in one text; the first few of each reason by name. REQUIRES: there is
// one.
MCHost::OutputText LeftOutText(const std::vector<LeftOutPredictor>& leftOut);

// Texts below each other.
MCHost::OutputText Paragraphs(std::vector<MCHost::OutputText> texts);

// Throws RequestError (`option`, empty for none) for what cannot stand in a command: a line end.
void CheckOneLine(const std::string& name, const std::string& option);

// The variable of a short verb. Throws RequestError (`option`, empty for none) for one that the
// table does not have, or whose name cannot stand in a command.
int NamedVariable(const MCHost::ITable& table, const std::string& name,
                  const std::string& option = "");

// "CV=0" where a variable holds dates or dates with times, else empty. They are counted from 1970,
// so that their mean says nothing, and a coefficient of variation takes those of a month for
// constant.
std::string ScreeningOfDates(const MCHost::ITable& table);

// "\n  /EXCEPT VARIABLES=a b", empty for none. Throws RequestError (except) for a variable that the
// table does not have.
std::string ExceptSubcommand(const MCHost::ITable& table, const std::vector<std::string>& names);

}  // namespace PredSelect

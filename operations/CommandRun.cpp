#include "operations/CommandRun.h"

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <string_view>
#include <utility>

#include "host/command/KovaVarName.h"
#include "host/data/DataTable.h"
#include "host/output/ShowText.h"
#include "host/output/pivot/BpComposite.h"
#include "operations/NoVariable.h"
#include "operations/RequestError.h"

namespace PredSelect {

namespace {

using MCHost::OutputText;

constexpr std::size_t kMostNames = 10;  // of one reason, in a text

// "a, b, c and 12 more (All cases missing)".
OutputText LeftOutFor(const OutputText& reason, const std::vector<std::string>& names) {
  BpComposite list("[%1:, ^1:]1");
  list.Sublist();
  for (std::size_t i = 0; i < names.size() && i < kMostNames; ++i) list.AddLiteral(names[i]);
  list.EndSublist();
  if (names.size() <= kMostNames) {
    return BpComposite("^1 (^2)").Add(list.Finish()).Add(reason).Finish();
  }
  return BpComposite("^1 and ^2 more (^3)")
      .Add(list.Finish())
      .AddLiteral(std::to_string(names.size() - kMostNames))
      .Add(reason)
      .Finish();
}

// The names of an EXCEPT line, each alone or in quotes.
std::vector<std::string> NamesOf(std::string_view line) {
  std::vector<std::string> names;
  bool isQuoted = false;
  bool isOpen = false;
  for (std::size_t i = 0; i < line.size(); ++i) {
    const char c = line[i];
    if (!isQuoted && (c == ' ' || c == '\n')) {
      isOpen = false;
      continue;
    }
    if (!std::exchange(isOpen, true)) names.emplace_back();
    const bool isDoubled = isQuoted && c == '"' && line.substr(i + 1).starts_with('"');
    if (c == '"' && !isDoubled) {
      isQuoted = !isQuoted;
    } else {
      names.back() += c;
      i += isDoubled ? 1 : 0;
    }
  }
  return names;
}

std::string ForShell(const std::string& word) {
  const bool isPlain = std::ranges::all_of(word, [](char c) {
    return (c & 0x80) != 0 || std::isalnum(static_cast<unsigned char>(c)) || c == '_' || c == '.';
  });
  if (isPlain) return word;
  std::string quoted = "'";
  for (const char c : word) quoted += c == '\'' ? "'\\''" : std::string(1, c);
  return quoted + "'";
}

// What a command advises, as advice on a verb.
std::string DetailOfVerb(std::string detail) {
  constexpr std::string_view kExcept = "/EXCEPT VARIABLES=";
  const std::string asNumber = MCHost::KeyText("As a number, after WITH...");
  for (std::size_t at = 0; (at = detail.find(asNumber, at)) != std::string::npos;) {
    const std::string instead = MCHost::KeyText("As a number, by its level...");
    detail.replace(at, asNumber.size(), instead);
    at += instead.size();
  }
  const std::size_t line = detail.find(kExcept);
  if (line == std::string::npos) return detail;
  std::string options;
  for (const std::string& name : NamesOf(std::string_view(detail).substr(line + kExcept.size()))) {
    options += (options.empty() ? "--except " : " --except ") + ForShell(name);
  }
  // From the beginning of the line before, which introduces it.
  const std::size_t heading = detail.rfind('\n', detail.rfind('\n', line) - 1);
  detail.erase(heading == std::string::npos ? 0 : heading + 1);
  return detail + MCHost::KeyText("Leave out what is named here: ^1...", {options});
}

// Whether it is a line of the command with a caret below it.
bool IsPlace(const std::string& detail) {
  const std::size_t last = detail.find_last_not_of("\n ");
  return last != std::string::npos && detail[last] == '^';
}

// What a command says of its subcommands, in the words of a verb.
OutputText TextOfVerb(OutputText text) {
  constexpr std::pair<const char*, const char*> kOfVerb[] = {
      {"All predictors screened out...", "No column is left to choose from..."},
      {"No valid cases in test sample...", "No valid test cases..."},
      {"Memory of ^1 KB holds ^2 of ^3 training cases: ^4, ^5...",
       "Memory holds ^2 of ^3 training cases: ^4..."},
      {"Temporary file in ^1 failed...", "Temporary file of a verb in ^1 failed..."}};
  for (const auto& [key, ofVerb] : kOfVerb) {
    if (text.fKey == key) text.fKey = ofVerb;
  }
  if (text.fKey.starts_with("Mixed rank criterion ^1 ")) {
    return OutputText::Key("Ranked by p for predictors of both kinds...");
  }
  if (text.fKey.starts_with("Categorical rank criterion ^1 ")) {
    return OutputText::Key("Ranked by p for numbers...");
  }
  return text;
}

// One of reason and kind of predictor is the heading of the other.
OutputText ReasonOf(const MCHost::OutputDimension& rows, int leaf) {
  for (const int category : rows.PathTo(leaf)) {
    const OutputText& label = rows.fCategories[static_cast<std::size_t>(category)].fLabel;
    if (label.fKey != "Categorical" && label.fKey != "Scale") return label;
  }
  return {};
}

}  // namespace

CommandRun::CommandRun(MCHost::OutputDocument& document, const std::string& name)
    : fDocument(document) {
  fbFindings = document.fbFindings;
  fDocument.BeginRun(name);
}

Outcome CommandRun::Run(MCHost::DataTable& table, const RunRequest& request,
                        const Surroundings& surroundings) {
  const Outcome outcome = RunCommands(table, *this, request, surroundings);
  fDocument.fVersion = fVersion;
  fDocument.fNCases = fNCases;
  fDocument.fNVariables = fNVariables;
  MCHost::OutputRun& run = fDocument.CurrentRun();
  run.fbCompleted = CurrentRun().fbCompleted;
  run.fNewVariables = CurrentRun().fNewVariables;
  run.fFiles = CurrentRun().fFiles;
  run.fFindings = CurrentRun().fFindings;
  return outcome;
}

const MCHost::OutputTable* CommandRun::Find(const std::string& subtype) const {
  if (GetRuns().empty()) return nullptr;
  for (const MCHost::OutputTable& table : GetRuns().back().fTables) {
    if (table.fSubtype == subtype) return &table;
  }
  return nullptr;
}

void CommandRun::AddMessage(MCHost::OutputMessage message) {
  const std::string& key = message.fText.fKey;
  fbWithheld = fbWithheld || key == fWithheld;
  if (key == "No predictors excluded ..." || key == fWithheld) return;
  // A place in the command, which nobody has written, is none of a verb.
  message.fDetail = IsPlace(message.fDetail) ? "" : DetailOfVerb(message.fDetail);
  message.fText = TextOfVerb(std::move(message.fText));
  fDocument.AddMessage(std::move(message));
}

std::vector<LeftOutPredictor> LeftOutPredictors(const CommandRun& run) {
  std::vector<LeftOutPredictor> leftOut;
  const MCHost::OutputTable* table = run.Find("ExcludedPredictors");
  if (table == nullptr) return leftOut;
  for (const MCHost::OutputCell& cell : table->fCells) {
    const auto* list = std::get_if<OutputText>(&cell.fValue);
    if (list == nullptr || list->fArguments.empty()) continue;
    for (const OutputText& name : list->fArguments.front().fItems) {
      leftOut.push_back({MCHost::TextId(name), ReasonOf(table->fDimensions[0], cell.fPlace[0])});
    }
  }
  return leftOut;
}

OutputText LeftOutText(const std::vector<LeftOutPredictor>& leftOut) {
  std::vector<std::pair<OutputText, std::vector<std::string>>> byReason;
  for (const LeftOutPredictor& predictor : leftOut) {
    auto found = byReason.begin();
    while (found != byReason.end() && !(found->first == predictor.fReason)) ++found;
    if (found == byReason.end()) found = byReason.insert(found, {predictor.fReason, {}});
    found->second.push_back(predictor.fName);
  }
  BpComposite text("Left out before: ^1...");
  text.Sublist();
  for (const auto& [reason, names] : byReason) text.Add(LeftOutFor(reason, names));
  return text.EndSublist().Finish();
}

OutputText Paragraphs(std::vector<OutputText> texts) {
  BpComposite all("[%1:\n^1:]1");
  all.Sublist();
  for (OutputText& text : texts) all.Add(std::move(text));
  return all.EndSublist().Finish();
}

void CheckOneLine(const std::string& name, const std::string& option) {
  if (name.find_first_of("\r\n") == std::string::npos) return;
  const std::string text = "\"" + name + "\" has a line end, which no command can hold. Rename it.";
  throw option.empty() ? RequestError(text) : RequestError(option, text);
}

int NamedVariable(const MCHost::ITable& table, const std::string& name, const std::string& option) {
  CheckOneLine(name, option);
  for (int i = 0; i < table.ColumnCount(); ++i) {
    if (table.GetVariable(i).GetName() == name) return i;
  }
  const std::string text = NoVariable(table, name);
  throw option.empty() ? RequestError(text) : RequestError(option, text);
}

std::string ScreeningOfDates(const MCHost::ITable& table) {
  for (int i = 0; i < table.ColumnCount(); ++i) {
    const KOVA_Variable::Time time = table.GetVariable(i).GetTime();
    if (time == KOVA_Variable::kDate || time == KOVA_Variable::kDateTime) return "CV=0";
  }
  return "";
}

std::string ExceptSubcommand(const MCHost::ITable& table, const std::vector<std::string>& names) {
  std::string text;
  for (const std::string& name : names) {
    NamedVariable(table, name, "except");
    text += (text.empty() ? "\n  /EXCEPT VARIABLES=" : " ") + KovaVarName(name).Quoted();
  }
  return text;
}

}  // namespace PredSelect

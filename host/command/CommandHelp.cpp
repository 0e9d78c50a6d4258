#include "host/command/CommandHelp.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/command/CommandDescriptor.h"

namespace MCHost {

namespace {

using Kind = ParamDescriptor::Kind;

constexpr std::size_t kWidth = 80;

// Words joined by bars, as alternatives are typed.
std::string Alternatives(const ParamDescriptor& param) {
  return fmt::format("{}", fmt::join(param.GetStringValues(), "|"));
}

// The value as it is typed, without the parameter's name.
std::string ValueSyntax(const ParamDescriptor& param) {
  static constexpr const char* kPlaceholders[] = {
      "", "number", "n", "", "", "name", "variable", "variables", "(name)", "(root:n)", "'path'"};
  std::string words = Alternatives(param);
  switch (param.GetKind()) {
    case Kind::kKeyword:
      return words;
    case Kind::kKeywordList:
      return fmt::format("({})", fmt::join(param.GetStringValues(), " "));
    default:
      return kPlaceholders[param.GetKind()] + (words.empty() ? "" : "|" + words);
  }
}

std::string QualifierSyntax(const ParamDescriptor& param) {
  std::string text;
  for (const ParamDescriptor& qualifier : param.GetQualifDescs()) {
    text += fmt::format("({}={})", qualifier.GetName(), ValueSyntax(qualifier));
  }
  return text.empty() ? text : fmt::format(" [{}]", text);
}

// The whole parameter as it is typed.
std::string ParamSyntax(const ParamDescriptor& param) {
  const std::string& name = param.GetName();
  const std::string value = ValueSyntax(param);
  switch (param.GetKind()) {
    case Kind::kFlag:
      return name;
    case Kind::kKeywordList:
    case Kind::kNewName:
    case Kind::kNewNames:
      return name + "[" + value + "]";
    default:
      break;
  }
  if (param.GetForm() == ParamDescriptor::kBare) return value + QualifierSyntax(param);
  const char* join = param.GetForm() == ParamDescriptor::kLed ? " " : "=";
  return name + join + value + QualifierSyntax(param);
}

std::string DefaultText(const ParamDescriptor& param) {
  if (param.GetKind() != Kind::kNewNames) return param.GetDefaultText();
  return fmt::format("{}:{}", param.GetDefaultText(), param.GetDefaultNumber());
}

// A parameter and, below it, its qualifiers, as rows of a table.
struct Row {
  std::string fName;
  std::string fTakes;
  std::string fDefault;
  std::string fHelp;
};

void AddRows(const ParamDescriptor& param, std::vector<Row>& rows) {
  const bool isBare = param.GetForm() == ParamDescriptor::kBare;
  rows.push_back({isBare ? "(dependent)" : param.GetName(), param.Expectation(), DefaultText(param),
                  param.GetHelp()});
  for (const ParamDescriptor& qualifier : param.GetQualifDescs()) AddRows(qualifier, rows);
}

std::vector<Row> RowsOf(const SubComDescriptor& subCom) {
  std::vector<Row> rows;
  for (const ParamDescriptor& param : subCom.GetParams()) AddRows(param, rows);
  return rows;
}

// Adds words to a text that breaks its lines before the width is exceeded.
class Wrapper {
 public:
  Wrapper(std::string first, std::size_t indent)
      : fText(std::move(first)), fColumn(fText.size()), fIndent(indent) {}

  void Add(std::string_view word) {
    if (fColumn > fIndent && fColumn + 1 + word.size() > kWidth) {
      fText += "\n" + std::string(fIndent, ' ');
      fColumn = fIndent;
    } else if (!fText.empty() && fText.back() != ' ') {
      fText += ' ';
      ++fColumn;
    }
    fText += word;
    fColumn += word.size();
  }

  void AddAll(std::string_view text) {
    while (!text.empty()) {
      const std::size_t end = std::min(text.find(' '), text.size());
      Add(text.substr(0, end));
      text.remove_prefix(std::min(end + 1, text.size()));
    }
  }

  const std::string& Text() const { return fText; }

 private:
  std::string fText;
  std::size_t fColumn;
  std::size_t fIndent;
};

std::string SubComSyntax(const CommandDescriptor& command, const SubComDescriptor& subCom) {
  const bool isNamed = !subCom.GetName().empty();
  Wrapper line(isNamed ? "  [/" + subCom.GetName() : command.GetName(), 6);
  const std::vector<ParamDescriptor>& params = subCom.GetParams();
  for (const ParamDescriptor& param : params) {
    const bool isLast = &param == &params.back();
    const bool isOptional =
        param.GetForm() != ParamDescriptor::kBare && (params.size() > 1 || !isNamed);
    std::string text = isOptional ? "[" + ParamSyntax(param) + "]" : ParamSyntax(param);
    if (isNamed && isLast) text += ']';
    line.Add(text);
  }
  return line.Text();
}

}  // namespace

std::string CommandSyntax(const CommandDescriptor& command) {
  std::string text;
  for (const SubComDescriptor& subCom : command.GetSubComs()) {
    if (!text.empty()) text += "\n";
    text += SubComSyntax(command, subCom);
  }
  return text + ".\n";
}

std::string CommandHelpText(const CommandDescriptor& command) {
  std::string text = command.GetName() + ": " + command.GetHelp() + "\n\n" + CommandSyntax(command);
  for (const SubComDescriptor& subCom : command.GetSubComs()) {
    const std::string& name = subCom.GetName();
    Wrapper head((name.empty() ? command.GetName() : "/" + name) + ":", 4);
    head.AddAll(subCom.GetHelp());
    text += "\n" + head.Text() + "\n";
    for (const Row& row : RowsOf(subCom)) {
      Wrapper line("    " + row.fName + ":", 8);
      line.AddAll(row.fHelp);
      if (!row.fTakes.empty()) line.AddAll("Takes " + row.fTakes + ".");
      if (!row.fDefault.empty()) line.AddAll("Default " + row.fDefault + ".");
      text += line.Text() + "\n";
    }
  }
  return text;
}

std::string CommandHelpMarkdown(const CommandDescriptor& command) {
  std::string text = fmt::format("## {}\n\n{}\n\n```\n{}```\n", command.GetName(),
                                 command.GetHelp(), CommandSyntax(command));
  for (const SubComDescriptor& subCom : command.GetSubComs()) {
    text += fmt::format(
        "\n### {}\n\n{}\n\n| keyword | takes | default | meaning |\n"
        "| --- | --- | --- | --- |\n",
        subCom.GetName().empty() ? "Variables" : "/" + subCom.GetName(), subCom.GetHelp());
    for (const Row& row : RowsOf(subCom)) {
      text +=
          fmt::format("| `{}` | {} | {} | {} |\n", row.fName, row.fTakes, row.fDefault, row.fHelp);
    }
  }
  return text;
}

}  // namespace MCHost

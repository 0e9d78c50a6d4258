#include "apps/predselect/ManPage.h"

#include <algorithm>
#include <cstddef>

#include "apps/predselect/HelpModel.h"
#include "operations/Version.h"

namespace PredSelectApp {

namespace {

// A text that the formatter takes for itself.
std::string Plain(const std::string& text) {
  std::string plain = text.starts_with('.') || text.starts_with('\'') ? "\\&" : "";
  for (const char c : text) {
    if (c == '\\') {
      plain += "\\e";
    } else {
      plain += c == '-' ? "\\-" : std::string(1, c);
    }
  }
  return plain;
}

std::string Bold(const std::string& text) { return "\\fB" + Plain(text) + "\\fR"; }

// Examples stand as they are, what is between them is filled.
std::string Notes(const std::string& notes) {
  std::string text;
  bool isExample = false;
  for (std::size_t start = 0; start < notes.size();) {
    const std::size_t end = std::min(notes.find('\n', start), notes.size());
    const std::string line = notes.substr(start, end - start);
    start = end + 1;
    const bool isNext = line.starts_with(' ') || (isExample && line.empty());
    if (isNext != isExample) text += isNext ? ".PP\n.nf\n" : ".fi\n.PP\n";
    isExample = isNext;
    // The formatter frowns on empty lines.
    text += line.empty() ? (isExample ? ".sp\n" : ".PP\n") : Plain(line) + "\n";
  }
  return text + (isExample ? ".fi\n" : "");
}

std::string Option(const HelpOption& option) {
  std::string names = option.fPositional.empty() ? "" : "\\fI" + Plain(option.fPositional) + "\\fR";
  for (const std::string& name : option.fNames) names += (names.empty() ? "" : ", ") + Bold(name);
  if (!option.fValue.empty() && !option.fNames.empty()) {
    names += " \\fI" + Plain(option.fValue) + "\\fR";
  }
  return ".TP\n" + names + "\n" + Plain(option.fText) + ".\n";
}

std::string Verb(const HelpVerb& verb) {
  std::string text = ".SS " + Plain(verb.fName) + "\n" + Plain(verb.fSummary) + ".\n.PP\n" +
                     Bold(verb.fUsage) + "\n";
  for (const HelpOption& option : verb.fOptions) text += Option(option);
  return text + (verb.fNotes.empty() ? "" : ".PP\n" + Notes(verb.fNotes));
}

}  // namespace

std::string ManPage(const HelpProgram& program) {
  std::string text = ".TH PREDSELECT 1 \"\" \"predselect " + std::string(PredSelect::Version()) +
                     "\" \"User Commands\"\n.SH NAME\npredselect \\- screen, rank and select "
                     "predictors of a table of data\n.SH SYNOPSIS\n";
  for (const HelpVerb& verb : program.fVerbs) text += Bold(verb.fUsage) + "\n.br\n";
  text += ".SH DESCRIPTION\n" + Plain(program.fSummary) + "\n" + Notes(program.fNotes);
  text += ".SH VERBS\n";
  for (const HelpVerb& verb : program.fVerbs) text += Verb(verb);
  return text;
}

}  // namespace PredSelectApp

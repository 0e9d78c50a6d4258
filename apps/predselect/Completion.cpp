#include "apps/predselect/Completion.h"

#include <algorithm>
#include <cstddef>
#include <vector>

#include "apps/predselect/HelpModel.h"

namespace PredSelectApp {

namespace {

std::string Join(const std::vector<std::string>& words, const char* between) {
  std::string joined;
  for (const std::string& word : words) joined += (joined.empty() ? "" : between) + word;
  return joined;
}

// Within single quotes of a shell.
std::string Quoted(const std::string& text) {
  std::string quoted = "'";
  for (const char c : text) quoted += c == '\'' ? "'\\''" : std::string(1, c);
  return quoted + "'";
}

// The first clause of a text: what there is room for beside a completion.
std::string Gist(const std::string& text) {
  const std::size_t end = std::min(text.find_first_of(":;("), text.size());
  const std::string gist = text.substr(0, end);
  return gist.substr(0, gist.find_last_not_of(" .,") + 1);
}

bool TakesFile(const HelpOption& option) {
  return option.fValue == "FILE" || option.fValue == "STATE" || option.fValue == "DIR";
}

// The words that the verb takes without an option before them; none where it takes files.
std::vector<std::string> PositionalWords(const HelpVerb& verb) {
  for (const HelpOption& option : verb.fOptions) {
    if (!option.fPositional.empty() && !option.fWords.empty()) return option.fWords;
  }
  return {};
}

std::vector<std::string> NamesOf(const std::vector<HelpOption>& options) {
  std::vector<std::string> names;
  for (const HelpOption& option : options) {
    names.insert(names.end(), option.fNames.begin(), option.fNames.end());
  }
  return names;
}

std::vector<std::string> FirstWords(const HelpProgram& program) {
  std::vector<std::string> words;
  for (const HelpVerb& verb : program.fVerbs) words.push_back(verb.fName);
  const std::vector<std::string> options = NamesOf(program.fOptions);
  words.insert(words.end(), options.begin(), options.end());
  return words;
}

// What follows an option, as a branch of the script's `case`.
std::string BashValue(const HelpVerb& verb, const HelpOption& option) {
  if (option.fValue.empty() || option.fNames.empty()) return "";
  std::vector<std::string> patterns;
  for (const std::string& name : option.fNames) patterns.push_back(verb.fName + "/" + name);
  const std::string what = !option.fWords.empty() ? "words " + Quoted(Join(option.fWords, " "))
                           : TakesFile(option)    ? "files"
                                                  : "own";
  return "    " + Join(patterns, "|") + ") _predselect_" + what + "; return ;;\n";
}

std::string BashVerb(const HelpVerb& verb) {
  const std::vector<std::string> words = PositionalWords(verb);
  return "    " + verb.fName + "/-*) _predselect_words " +
         Quoted(Join(NamesOf(verb.fOptions), " ")) + " ;;\n    " + verb.fName + "/*) _predselect_" +
         (words.empty() ? "files" : "words " + Quoted(Join(words, " "))) + " ;;\n";
}

// As _arguments wants it in brackets, and in a description.
std::string ZshText(const std::string& text) {
  std::string escaped;
  for (const char c : Gist(text)) {
    if (c == '[' || c == ']' || c == ':' || c == '\\') escaped += '\\';
    escaped += c;
  }
  return escaped;
}

std::string ZshOption(const HelpOption& option) {
  std::string value;
  if (!option.fValue.empty()) {
    value = ":" + ZshText(option.fValue) + ":" +
            (!option.fWords.empty() ? "(" + Join(option.fWords, " ") + ")"
             : TakesFile(option)    ? "_files"
                                    : " ");
  }
  std::string lines;
  for (const std::string& name : option.fNames) {
    lines += " \\\n        " + Quoted("*" + name + "[" + ZshText(option.fText) + "]" + value);
  }
  return lines;
}

std::string FishOption(const HelpVerb& verb, const HelpOption& option) {
  std::string line = "complete -c predselect -n '__fish_seen_subcommand_from " + verb.fName + "'";
  for (const std::string& name : option.fNames) {
    line += name.starts_with("--") ? " -l " + name.substr(2) : " -s " + name.substr(1);
  }
  if (!option.fWords.empty()) {
    line += " -x -a " + Quoted(Join(option.fWords, " "));
  } else if (TakesFile(option)) {
    line += " -r -F";
  } else if (!option.fValue.empty()) {
    line += " -x";
  }
  return line + " -d " + Quoted(Gist(option.fText)) + "\n";
}

}  // namespace

std::string BashCompletion(const HelpProgram& program) {
  std::string values;
  std::string verbs;
  for (const HelpVerb& verb : program.fVerbs) {
    for (const HelpOption& option : verb.fOptions) values += BashValue(verb, option);
    verbs += BashVerb(verb);
  }
  return R"(# Completion of predselect for bash; made by "predselect completion bash".

_predselect_words() { mapfile -t COMPREPLY < <(compgen -W "$1" -- "$current"); }

_predselect_files() {
  compopt -o filenames 2>/dev/null
  mapfile -t COMPREPLY < <(compgen -f -- "$current")
}

_predselect_own() { COMPREPLY=(); }

_predselect() {
  local current=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]}
  COMPREPLY=()
  if [[ $current == = ]]; then
    current=
  elif [[ $before == = ]]; then
    before=${COMP_WORDS[COMP_CWORD - 2]}
  fi
  if ((COMP_CWORD == 1)); then
    _predselect_words )" +
         Quoted(Join(FirstWords(program), " ")) + R"(
    return
  fi
  case ${COMP_WORDS[1]}/$before in
)" + values +
         R"(  esac
  case ${COMP_WORDS[1]}/$current in
)" + verbs +
         R"(  esac
}

complete -F _predselect predselect
)";
}

std::string ZshCompletion(const HelpProgram& program) {
  std::string list;
  std::string verbs;
  for (const HelpVerb& verb : program.fVerbs) {
    list += "    " + Quoted(verb.fName + ":" + ZshText(verb.fSummary)) + "\n";
    verbs += "    " + verb.fName + ")\n      _arguments -S";
    for (const HelpOption& option : verb.fOptions) verbs += ZshOption(option);
    const std::vector<std::string> words = PositionalWords(verb);
    verbs += " \\\n        " +
             Quoted(words.empty() ? "*:file:_files" : "*:word:(" + Join(words, " ") + ")") +
             " ;;\n";
  }
  return R"(#compdef predselect
# Completion of predselect for zsh; made by "predselect completion zsh".

_predselect() {
  local -a verbs
  verbs=(
)" + list +
         R"(  )
  if ((CURRENT == 2)); then
    _describe verb verbs
    return
  fi
  local verb=$words[2]
  shift words
  ((CURRENT--))
  case $verb in
)" + verbs +
         R"(  esac
}

if [[ $funcstack[1] == _predselect ]]; then
  _predselect "$@"
else
  compdef _predselect predselect
fi
)";
}

std::string FishCompletion(const HelpProgram& program) {
  std::string text =
      "# Completion of predselect for fish; made by \"predselect completion fish\".\n\n"
      "complete -c predselect -f\n";
  for (const HelpVerb& verb : program.fVerbs) {
    text += "complete -c predselect -n __fish_use_subcommand -a " + verb.fName + " -d " +
            Quoted(Gist(verb.fSummary)) + "\n";
  }
  for (const HelpVerb& verb : program.fVerbs) {
    for (const HelpOption& option : verb.fOptions) {
      if (!option.fNames.empty()) text += FishOption(verb, option);
    }
    const std::vector<std::string> words = PositionalWords(verb);
    text += "complete -c predselect -n '__fish_seen_subcommand_from " + verb.fName + "' " +
            (words.empty() ? "-F" : "-a " + Quoted(Join(words, " "))) + "\n";
  }
  return text;
}

}  // namespace PredSelectApp

// Any bytes as a text of commands over a small table: split, read and checked, and of some texts
// run and shown.
//
// First lines "@split" and "@weight", in this order, split the file and weight the cases.
#include <utf8proc.h>

#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "backend/predselect/command/PRSParser.h"
#include "backend/predselect/predsele.h"
#include "backend/predselect/specifications/PRSValidSpecs.h"
#include "fuzz/FuzzCheck.h"
#include "host/command/CommandSplitter.h"
#include "host/command/KOVA_TokenSequence.h"
#include "host/command/KovaVarName.h"
#include "host/command/Tokenizer.h"
#include "host/data/MemoryTable.h"
#include "host/output/OutputDocument.h"
#include "host/output/render/RenderJson.h"
#include "host/output/render/RenderText.h"
#include "host/session/HostBlocks.h"
#include "host/session/HostFunctions.h"
#include "host/session/Session.h"
#include "host/session/SessionScope.h"

namespace {

using MCHost::CommandText;
using MCHost::MemoryTable;
using PredSelectFuzz::Require;

constexpr std::size_t kMaxCommands = 4;
constexpr int kWeight = 7;

std::vector<std::optional<std::string>> Texts(const std::vector<std::string>& repeated) {
  std::vector<std::optional<std::string>> values;
  for (std::size_t i = 0; i < 24; ++i) {
    const std::string& value = repeated[i % repeated.size()];
    values.push_back(value.empty() ? std::nullopt : std::optional(value));
  }
  return values;
}

std::vector<double> Numbers(double step, std::size_t period) {
  std::vector<double> values;
  for (std::size_t i = 0; i < 24; ++i) {
    values.push_back(i % 11 == 3 ? KOVA_SystemMissing
                                 : 1.0 + step * static_cast<double>(i % period));
  }
  return values;
}

// Strings, counts and measures, some under names that a command must quote, a few user-missing
// values, and two names that differ in case alone.
std::unique_ptr<MemoryTable> NewTable() {
  auto table = std::make_unique<MemoryTable>();
  table->AddStrings("species", Texts({"a", "a", "b", "c"}));
  table->AddStrings("island", Texts({"x", "y", "", "x", "z"}));
  for (const char* name : {"bill_length_mm", "bill_depth_mm", "flipper_length_mm", "body_mass_g"}) {
    table->AddNumbers(name, Numbers(0.75, 20 + static_cast<std::size_t>(table->ColumnCount())));
  }
  table->AddStrings("sex", Texts({"f", "m", "m"}));
  table->AddNumbers("year", Numbers(1.0, 3));
  table->AddNumbers("wing span", Numbers(1e300, 24));
  table->AddNumbers("Größe", Numbers(0.0, 1));
  table->AddNumbers("größe", Numbers(-2.5, 7));
  table->AddStrings("say \"all\"", Texts({"1", "2"}));
  table->AddNumbers("TO", Numbers(1.0, 24));
  table->AddNumbers("1e5", Numbers(0.1, 4));
  table->GetVariable(7).SetMeasurementLevel(KOVA_Variable::kOrdinal);
  table->GetVariable(7).GetMissingValues().AddNumber(3.0);
  table->GetVariable(1).GetMissingValues().AddString("z");
  return table;
}

// Where an editor finds line and column (from 1, a byte order mark not counted) in UTF-8 text;
// beyond the text when it has no such place.
std::size_t OffsetOf(std::string_view text, int line, int column) {
  std::size_t at = text.starts_with("\xEF\xBB\xBF") ? 3 : 0;
  for (; line > 1; --line) {
    at = text.find('\n', at);
    if (at == std::string_view::npos) return std::string_view::npos;
    ++at;
  }
  for (; column > 1; --column) {
    if (at >= text.size() || text[at] == '\n') return std::string_view::npos;
    for (++at; at < text.size() && (text[at] & 0xC0) == 0x80;) ++at;
  }
  return at;
}

bool IsUtf8(const std::string& text) {
  const auto* bytes = reinterpret_cast<const utf8proc_uint8_t*>(text.data());
  for (auto left = static_cast<utf8proc_ssize_t>(text.size()); left > 0;) {
    utf8proc_int32_t character = 0;
    const utf8proc_ssize_t used = utf8proc_iterate(bytes, left, &character);
    if (used <= 0) return false;
    bytes += used;
    left -= used;
  }
  return true;
}

// The words of the command with other blanks between them: must mean the same.
std::string Respelled(const std::vector<TokenInfoObj>& tokens) {
  std::string text;
  for (const TokenInfoObj& token : tokens) {
    const char quote = token.fType == TokenInfoObj::kQuotedName ? '"'
                       : token.fType == TokenInfoObj::kString   ? '\''
                                                                : 0;
    if (token.fType == TokenInfoObj::kMacro) text += '!';
    if (quote != 0) text += quote;
    for (const char c : token.fText) text.append(quote != 0 && c == quote ? 2 : 1, c);
    if (quote != 0) text += quote;
    text += " \n\t";
  }
  return text + ".";
}

// Any name of one line can be spelled so that a command reads it as that name.
void CheckSpelling(const std::string& name) {
  if (name.empty() || name.find('\n') != std::string::npos) return;
  const std::string spelled = KovaVarName(name).Quoted();
  const auto tokens = MCHost::Tokenize(spelled + " ", 1, 1);
  Require(tokens.size() == 2 && tokens[0].IsName() && tokens[0].fText == name,
          "a name can be spelled", name + "\n" + spelled);
  Require(tokens[0].fType == TokenInfoObj::kQuotedName || !KovaVarName::IsReserved(name),
          "a name that is a keyword is quoted", name);
}

// A text of commands and the session that it is run in.
class CommandFuzz {
 public:
  CommandFuzz(std::string text, MemoryTable& table)
      : fText(std::move(text)), fTable(table), fSession(fTable, fDocument), fScope(fSession) {
    fbRun = PredSelectFuzz::IsOneInEight(fText);  // dear
    if (TakeSetting("@split\n")) fSession.CommonBlock().fSplitFile = 1;
    fTable.SetWeightVarIndex(TakeSetting("@weight\n") ? kWeight : -1);
    fSession.SetMacro("f", {"island", "sex"});
    fSession.SetMacro("none", {});
    fSession.SetMacro("odd", {"say \"all\"", "TO", "gone"});
    fbUtf8 = IsUtf8(fText);
  }

  void Run() {
    std::size_t taken = 0;
    for (const CommandText& command : MCHost::SplitCommands(fText)) {
      if (++taken > kMaxCommands) break;
      CheckSpelling(command.fText);
      CheckSplit(command);
      CheckTokens(command);
      CheckCommand(command);
    }
    if (fbRun) CheckShown();
  }

 private:
  // What a parse came to.
  struct Verdict {
    bool fbAccepted;
    bool fbRunnable;  // no file is written
    std::string fSpecs;
  };

  bool TakeSetting(const std::string& line) {
    const bool given = fText.starts_with(line);
    if (given) fText.erase(0, line.size());
    return given;
  }

  void CheckSplit(const CommandText& command) {
    Require(!command.fText.empty() && command.fText.front() != '*', "a command has text", fText);
    if (!fbUtf8) return;
    fStart = OffsetOf(fText, command.fLine, command.fColumn);
    Require(
        fStart < fText.size() && fText.compare(fStart, command.fText.size(), command.fText) == 0,
        "a command stands where it says it does", command.fText);
    if (command.fText.starts_with("\xEF\xBB\xBF")) return;
    const auto again = MCHost::SplitCommands(command.fText);
    Require(again.size() == 1 && again[0].fText == command.fText,
            "a command is one command when it stands alone", command.fText);
  }

  void CheckTokens(const CommandText& command) const {
    const auto tokens = MCHost::Tokenize(command.fText, command.fLine, command.fColumn);
    std::size_t last = 0;
    for (const TokenInfoObj& token : tokens) {
      Require(token.fOffset >= last && token.fOffset <= command.fText.size(),
              "tokens come in order", command.fText);
      last = token.fOffset;
      const bool isPlain =
          token.fType == TokenInfoObj::kWord || token.fType == TokenInfoObj::kNumber;
      Require(!isPlain || command.fText.compare(last, token.fText.size(), token.fText) == 0,
              "a word is what stands at its place", command.fText);
      if (!fbUtf8) continue;
      Require(OffsetOf(fText, token.fLine, token.fColumn) == fStart + token.fOffset,
              "a token's line and column are its place", command.fText + "\n" + token.fText);
    }
    Require(tokens.back().fType == TokenInfoObj::kEnd, "the last token is the end", command.fText);
  }

  void CheckCommand(const CommandText& command) {
    const Verdict verdict = Parse(command);
    if (!verdict.fbAccepted) return;
    const std::string respelled = Respelled(MCHost::Tokenize(command.fText, 1, 1));
    const Verdict other = Parse({respelled, 1, 1}, false);
    Require(other.fbAccepted && other.fSpecs == verdict.fSpecs, "blanks mean nothing",
            command.fText + "\n" + respelled + "\n" + verdict.fSpecs + other.fSpecs);
    if (fbRun && verdict.fbRunnable) RunProcedure(command);
  }

  Verdict Parse(const CommandText& command, bool stands = true) {
    fSession.SetCommand(command.fText, command.fLine, command.fColumn);
    MCHost::OutputRun& run = fDocument.BeginRun(fSession.SystemBlock().fCommandWord);
    const std::int32_t split = fSession.CommonBlock().fSplitFile;
    ProcedureDataSource source;
    AdjustMeasurementLevels(source);
    PRSValidSpecs specs;
    specs.SetUniVariable(AreStringsEqualCase(run.fCommand.substr(0, 3), "SEL"));
    KOVA_TokenSequence tokens(true);
    const bool accepted = PRSParser(tokens, specs, source).GetCommandSpecifications();
    fSession.CommonBlock().fSplitFile = split;
    if (stands) CheckMessages(command, run, accepted);
    std::ostringstream dump;
    if (accepted) specs.Display(dump);
    return {accepted, specs.GetModelFileName().empty(), dump.str()};
  }

  // A refusal says why, and what is about the text says where.
  void CheckMessages(const CommandText& command, const MCHost::OutputRun& run, bool accepted) {
    int errors = 0;
    for (const MCHost::OutputMessage& message : run.fMessages) {
      errors += message.fLevel == MCHost::OutputMessage::kError ? 1 : 0;
      Require(!message.fText.fKey.empty(), "a message has a text", command.fText);
      const bool isAboutData = message.fText.fKey.ends_with("...");
      const bool needsPlace = message.fLevel == MCHost::OutputMessage::kError && !isAboutData;
      if (needsPlace || !message.fDetail.empty()) CheckPlace(command, message);
    }
    Require(accepted == (errors == 0), "a command is refused with an error", command.fText);
    Require(accepted != fSession.CommonBlock().IsErrorSet(),
            "the error flag says whether one was raised", command.fText);
  }

  void CheckPlace(const CommandText& command, const MCHost::OutputMessage& message) const {
    int line = 0;
    int column = 0;
    const std::string& detail = message.fDetail;
    const bool isPlaced = std::sscanf(detail.c_str(), "line %d, column %d", &line, &column) == 2;
    const std::string shown = command.fText + "\n" + message.fText.fKey + "\n" + detail;
    Require(isPlaced && detail.ends_with('^'), "an error shows its place", shown);
    if (!fbUtf8) return;
    const std::size_t at = OffsetOf(fText, line, column);
    Require(at >= fStart && at <= fStart + command.fText.size(),
            "the place of an error lies in the command", shown);
  }

  void RunProcedure(const CommandText& command) {
    fSession.SetCommand(command.fText, command.fLine, command.fColumn);
    MCHost::OutputRun& run = fDocument.BeginRun(fSession.SystemBlock().fCommandWord);
    const CmnGlb before = fSession.CommonBlock();
    predsele_();
    const CmnGlb& after = fSession.CommonBlock();
    Require(before.fSplitFile == after.fSplitFile && before.fMaxObsAdded == after.fMaxObsAdded &&
                before.fLastPass == after.fLastPass,
            "a procedure leaves the host's words as they were", command.fText);
    bool failed = false;
    for (const MCHost::OutputMessage& message : run.fMessages) {
      if (message.fLevel != MCHost::OutputMessage::kError) continue;
      failed = true;
      Require(message.fDetail.empty(), "a run reads the command as the parse before it did",
              command.fText + "\n" + message.fText.fKey);
    }
    Require(failed == after.IsErrorSet(), "a run fails with an error", command.fText);
    run.fbCompleted = !failed;
  }

  void CheckShown() const {
    const std::string page = MCHost::RenderText(fDocument, {});
    Require(page.empty() || page.back() == '\n', "every line is ended", page);
    Require(!fbUtf8 || IsUtf8(page), "a page is UTF-8", page);
    Require(!MCHost::RenderJson(fDocument).empty(), "any document can be JSON", page);
  }

  std::string fText;
  bool fbRun = false;
  bool fbUtf8 = false;
  std::size_t fStart = 0;  // of the command at hand; known where the text is UTF-8
  MemoryTable& fTable;
  MCHost::OutputDocument fDocument;
  MCHost::Session fSession;
  MCHost::SessionScope fScope;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static std::unique_ptr<MemoryTable> table = NewTable();
  static const int columns = table->ColumnCount();
  // A command may have added variables.
  if (table->ColumnCount() != columns) table = NewTable();
  CommandFuzz(std::string(reinterpret_cast<const char*>(data), size), *table).Run();
  return 0;
}

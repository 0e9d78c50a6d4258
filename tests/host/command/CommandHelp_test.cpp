#include "host/command/CommandHelp.h"

#include <gtest/gtest.h>

#include "host/command/CommandDescriptor.h"

namespace {

using Param = ParamDescriptor;

CommandDescriptor Sample() {
  CommandDescriptor command("SORT", "Sorts cases.");
  Param level("MLEVEL", Param::kKeyword, "Its level.");
  level.addStringValue("N").addStringValue("S");
  command.addSubComDesc(
      SubComDescriptor("", "What by.")
          .addParamDesc(Param("", Param::kVariable, "The key.")
                            .setForm(Param::kBare)
                            .setQualifOption(Param::kOptionalQualif)
                            .addQualifDesc(level))
          .addParamDesc(Param("BY", Param::kVariableList, "More.").setForm(Param::kLed)));
  command.addSubComDesc(
      SubComDescriptor("LIMIT", "How far.")
          .addParamDesc(Param("PCT", Param::kNumber, "Percent.")
                            .setLowerBoundary(0.0, Param::kLowerExclusive)
                            .setUpperBoundary(100.0, Param::kUpperInclusive)
                            .setDefault(0.1))
          .addParamDesc(Param("SIZE", Param::kInteger, "Cases.")
                            .setLowerBoundary(1.0, Param::kLowerInclusive)
                            .addStringValue("AUTO")
                            .setDefault("AUTO"))
          .addParamDesc(Param("SHIFT", Param::kNumber, "By."))
          .addParamDesc(
              Param("TOP", Param::kNumber, "Most.").setUpperBoundary(5.0, Param::kUpperInclusive))
          .addParamDesc(
              Param("SAVE", Param::kNewNames, "Ranks.").setDefault(25.0).setDefault("R")));
  return command;
}

TEST(CommandHelp, ShowsTheSyntaxAsItIsTyped) {
  EXPECT_EQ(MCHost::CommandSyntax(Sample()),
            "SORT variable [(MLEVEL=N|S)] [BY variables]\n"
            "  [/LIMIT [PCT=number] [SIZE=n|AUTO] [SHIFT=number] [TOP=number]\n"
            "      [SAVE[(root:n)]]].\n");
}

TEST(CommandHelp, TellsOfEveryParameterWhatItTakesAndItsDefault) {
  EXPECT_EQ(MCHost::CommandHelpText(Sample()),
            "SORT: Sorts cases.\n\n"
            "SORT variable [(MLEVEL=N|S)] [BY variables]\n"
            "  [/LIMIT [PCT=number] [SIZE=n|AUTO] [SHIFT=number] [TOP=number]\n"
            "      [SAVE[(root:n)]]].\n\n"
            "SORT: What by.\n"
            "    (dependent): The key. Takes a variable name.\n"
            "    MLEVEL: Its level. Takes N or S.\n"
            "    BY: More. Takes variable names.\n\n"
            "/LIMIT: How far.\n"
            "    PCT: Percent. Takes a number above 0 and at most 100. Default 0.1.\n"
            "    SIZE: Cases. Takes a whole number of at least 1, or AUTO. Default AUTO.\n"
            "    SHIFT: By. Takes a number.\n"
            "    TOP: Most. Takes a number of at most 5.\n"
            "    SAVE: Ranks. Takes a root name, a colon and a count. Default R:25.\n");
  const std::string markdown = MCHost::CommandHelpMarkdown(Sample());
  EXPECT_NE(markdown.find("| `SIZE` | a whole number of at least 1, or AUTO | AUTO | Cases. |\n"),
            std::string::npos)
      << markdown;
}

}  // namespace

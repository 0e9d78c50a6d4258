#include "host/command/VarSpecObj.h"

#include <gtest/gtest.h>

#include "tests/host/command/FakeHost.h"

namespace {

class VarSpecObjTest : public testing::Test {
 protected:
  // The names made from a root, joined; "none" when none can be made.
  std::string NamesFrom(const std::string& root, int count) {
    std::vector<KovaVarName> names;
    if (!fRole.NewVarNamesByRoot(KovaVarName(root), count, names)) return "none";
    std::string joined;
    for (const KovaVarName& name : names) joined += name.GetName() + " ";
    return joined;
  }

  std::string NameFrom(const std::string& root) {
    KovaVarName name;
    return fRole.NewVarNameByRoot(KovaVarName(root), name) ? name.GetName() : "none";
  }

  MCTest::FakeHost fHost;
  KOVA_DataSource fSource{fHost.fTable};
  CommandDescriptor fCommand{"NAIVEBAYES", ""};
  VarSpecObj fRole{"SAVE", "PREDPROB", fCommand, fSource, false};
};

TEST_F(VarSpecObjTest, MakesNamesThatNoVariableHas) {
  EXPECT_EQ(NameFrom("pred"), "pred");
  EXPECT_EQ(NameFrom("species"), "species_1");
  EXPECT_EQ(NamesFrom("p", 3), "p_1 p_2 p_3 ");
  fHost.fTable.Add("species_1", 0, KOVA_Variable::kScale);
  fHost.fTable.Add("p_2", 0, KOVA_Variable::kScale);
  fHost.fTable.Add("p_1_1", 0, KOVA_Variable::kScale);
  EXPECT_EQ(NameFrom("species"), "species_2");
  EXPECT_EQ(NamesFrom("p", 1), "p_1 ");
  EXPECT_EQ(NamesFrom("p", 3), "p_2_1 p_2_2 p_2_3 ") << "one taken name moves the whole family";
}

TEST_F(VarSpecObjTest, GivesUpRatherThanMakeANameThatIsTooLong) {
  const std::string longest(KovaVarName::kMaxBytes, 'x');
  EXPECT_EQ(NameFrom(longest), longest);
  EXPECT_EQ(NamesFrom(longest, 1), "none");
  fHost.fTable.Add(longest, 0, KOVA_Variable::kScale);
  EXPECT_EQ(NameFrom(longest), "none");
}

TEST_F(VarSpecObjTest, GivesUpAfterAThousandNamesThatAreTaken) {
  fHost.fTable.Add("p_1", 0, KOVA_Variable::kScale);
  for (int i = 1; i <= 1000; ++i) {
    fHost.fTable.Add("species_" + std::to_string(i), 0, KOVA_Variable::kScale);
    fHost.fTable.Add("p_" + std::to_string(i) + "_1", 0, KOVA_Variable::kScale);
  }
  EXPECT_EQ(NameFrom("species"), "none");
  EXPECT_EQ(NamesFrom("p", 1), "none");
}

TEST_F(VarSpecObjTest, TakesAVariableOfTheHostOnlyIfItFitsTheRole) {
  VarSpecObj weight("", "WEIGHT", fCommand, fSource, true);
  EXPECT_TRUE(weight.ValidateVariable(2));
  EXPECT_EQ(weight.GetValidVarInd(), 2);
  EXPECT_FALSE(weight.ValidateVariable(0)) << "a string";
  EXPECT_EQ(weight.GetNValidVars(), 0);
  EXPECT_FALSE(weight.ValidateVariable(-1));
  EXPECT_FALSE(weight.ValidateVariable(99));
  EXPECT_EQ(fHost.fSink.fSaid,
            "Error: WEIGHT takes numeric variables only; species is a string variable.\n");
}

}  // namespace

#include "host/session/Session.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "host/session/HostFunctions.h"
#include "host/session/SessionScope.h"
#include "tests/host/command/FakeHost.h"

namespace {

using MCHost::Session;
using MCHost::SessionScope;

TEST(Session, TakesTheFirstWordOfACommandAsTyped) {
  MCTest::FakeHost host;
  const struct {
    const char* fText;
    const char* fWord;
  } cases[] = {{"SelectPred y BY a.", "SelectPred"},
               {"  naive\ty", "naive"},
               {"SEL.", "SEL"},
               {"NAIVEBAYES/PLOT", "NAIVEBAYES"},
               {"", ""},
               {".", ""}};
  for (const auto& c : cases) {
    host.fSession.SetCommand(c.fText);
    EXPECT_EQ(host.fSession.SystemBlock().fCommandWord, c.fWord) << c.fText;
    EXPECT_EQ(host.fSession.CommandText(), c.fText);
  }
}

TEST(Session, ForgetsTheErrorOfTheCommandBeforeButNotTheOtherFlags) {
  MCTest::FakeHost host;
  host.fSession.CommonBlock().SetError();
  host.fSession.CommonBlock().fStatusWord |= 8u;
  host.fSession.CommonBlock().fSplitFile = 1;
  host.fSession.SetCommand("NEXT", 4, 2);
  EXPECT_EQ(host.fSession.CommonBlock().fStatusWord, 8u);
  EXPECT_EQ(host.fSession.CommonBlock().fSplitFile, 1);
  EXPECT_EQ(host.fSession.CommandLine(), 4);
  EXPECT_EQ(host.fSession.CommandColumn(), 2);
}

TEST(Session, KeepsMacrosAcrossCommandsWhateverTheirCase) {
  MCTest::FakeHost host;
  host.fSession.SetMacro("Best", {"a", "b c"});
  host.fSession.SetMacro("none", {});
  host.fSession.SetCommand("NEXT");
  ASSERT_NE(host.fSession.FindMacro("BEST"), nullptr);
  EXPECT_EQ(*host.fSession.FindMacro("BEST"), (std::vector<std::string>{"a", "b c"}));
  ASSERT_NE(host.fSession.FindMacro("None"), nullptr);
  EXPECT_TRUE(host.fSession.FindMacro("None")->empty());
  EXPECT_EQ(host.fSession.FindMacro("other"), nullptr);
  host.fSession.SetMacro("BEST", {"d"});
  EXPECT_EQ(*host.fSession.FindMacro("best"), std::vector<std::string>{"d"});
}

TEST(Session, AsksTheApplicationWhetherToStopAndTellsItHowFarItIs) {
  MCTest::FakeHost host;
  EXPECT_FALSE(host.fSession.IsCancelled());
  host.fSession.ReportProgress("nobody listens");
  std::atomic<bool> stop = false;
  std::string progress;
  host.fSession.SetCancelQuery([&stop] { return stop.load(); });
  host.fSession.SetProgressListener([&progress](const std::string& text) { progress = text; });
  EXPECT_FALSE(host.fSession.IsCancelled());
  stop = true;
  EXPECT_TRUE(host.fSession.IsCancelled());
  host.fSession.ReportProgress("half");
  EXPECT_EQ(progress, "half");
}

TEST(Session, IsTheCurrentOneOfItsThreadOnly) {
  MCTest::FakeHost host;
  host.fSession.SetAppParams({"app", "1.2", "(c)"});
  host.fSession.SetTempPath("/var/tmp");
  EXPECT_EQ(GetAppParams().fVersion, "1.2");
  EXPECT_EQ(GetKovaTempPath(), "/var/tmp");
  std::thread([] {
    MCTest::FakeHost other;
    EXPECT_EQ(GetKovaTempPath(), "/tmp");
  }).join();
  {
    Session inner(host.fTable, host.fSink);
    const SessionScope scope(inner);
    EXPECT_EQ(&MCHost::CurrentSession(), &inner);
  }
  EXPECT_EQ(&MCHost::CurrentSession(), &host.fSession);
}

}  // namespace

// Reports: a page that holds what it is told and obeys nothing of it, and charts turned readable.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "host/output/OutputDocument.h"
#include "host/output/report/ReadableChart.h"
#include "host/output/report/RenderReport.h"
#include "host/output/report/ReportFiles.h"
#include "host/session/HostIOError.h"

namespace {

using Json = nlohmann::ordered_json;
using testing::HasSubstr;
using testing::Not;

// Texts that end an element, stand for a place of the page, turn its direction, or are no UTF-8.
constexpr const char* kHostile =
    "</script><script>alert(1)</script><!-- @CHARTS@ @PAYLOAD@ \u202E \x1B[2J \xFF";

MCHost::OutputDocument DocumentSaying(const std::string& text) {
  MCHost::OutputDocument document;
  document.fVersion = "1";
  document.fDataSource = text;
  document.BeginRun(text).fFiles.push_back(text);
  document.AddMessage({2, MCHost::OutputText::Literal(text), text});
  document.AddNote({4, std::nullopt, MCHost::OutputText::Literal(text), {}});
  document.CurrentRun().fFindings =
      Json{{"kind", text}}.dump(-1, ' ', false, Json::error_handler_t::replace);
  return document;
}

Json PayloadOf(const std::string& page) {
  const std::string begin = "id=\"payload\">";
  const std::size_t from = page.find(begin) + begin.size();
  return Json::parse(page.substr(from, page.find("</script>", from) - from));
}

// As XDocument makes it, of so many predictors with these values.
Json PredictorChart(const std::vector<double>& values, bool isP) {
  Json points = Json::array();
  for (const double value : values) {
    points.push_back({{"x", "v" + std::to_string(points.size())}, {"y", value}, {"color", "S"}});
  }
  Json chart = {{"$schema", "old"}, {"title", {{"text", "T"}}}, {"data", {{"values", points}}}};
  chart["layer"] = {{{"encoding",
                      {{"y", {{"axis", {{"title", "Sig."}}}}},
                       {"color", {{"title", "P"}, {"scale", {{"domain", {"S"}}}}}}}}}};
  if (isP) chart["layer"].push_back({{"data", {{"values", {{{"y", 0.05}}}}}}});
  return chart;
}

}  // namespace

TEST(Report, ShowsHostileTextsAndRunsNone) {
  const std::string page = MCHost::RenderReport(DocumentSaying(kHostile), kHostile);
  const std::string empty = MCHost::RenderReport({}, "");
  const auto count = [](const std::string& text, const std::string& part) {
    std::size_t n = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1))
      ++n;
    return n;
  };
  for (const char* element : {"<script", "</script", "<!--", "<meta"}) {
    EXPECT_EQ(count(page, element), count(empty, element)) << element;
  }
  EXPECT_THAT(page, Not(HasSubstr("\u202E")));
  EXPECT_THAT(page, Not(HasSubstr("\x1B")));
  const Json payload = PayloadOf(page);
  const std::string visible =
      "</script><script>alert(1)</script><!-- @CHARTS@ @PAYLOAD@ \uFFFD \u241B[2J \uFFFD";
  EXPECT_EQ(payload["heading"], visible);
  EXPECT_EQ(payload["runs"][0]["messages"][0]["text"], visible);
  EXPECT_EQ(payload["runs"][0]["files"][0], visible);
  EXPECT_EQ(payload["runs"][0]["findings"]["kind"], visible);
}

TEST(Report, AllowsNoRequestAndNoScriptButItsOwn) {
  const std::string page(MCHost::ReportPage());
  const std::size_t at = page.find("Content-Security-Policy");
  ASSERT_NE(at, std::string::npos);
  const std::string policy = page.substr(at, page.find('>', at) - at);
  EXPECT_THAT(policy, HasSubstr("default-src 'none'"));
  for (const char* hole : {"script-src 'unsafe", "'unsafe-eval'", "http", "data:", "*"}) {
    EXPECT_THAT(policy, Not(HasSubstr(hole))) << hole;
  }
}

TEST(Report, CarriesTheRendererOfChartsWhereThereAreCharts) {
  MCHost::OutputDocument document;
  document.BeginRun("SELECTPRED");
  const std::size_t without = MCHost::RenderReport(document, "x").size();
  document.AddChart({MCHost::OutputText::Literal("T"), PredictorChart({0.5}, true).dump()});
  const std::string with = MCHost::RenderReport(document, "x");
  EXPECT_LT(without, 200000u);
  EXPECT_GE(with.size(), without + MCHost::ReportCharts().size());
  EXPECT_LT(with.size(), 1500000u);
  EXPECT_EQ(PayloadOf(with)["runs"][0]["charts"][0]["spec"]["layer"].size(), 2u);
}

TEST(Report, IsMadeOfAJsonDocumentAndOfNothingElse) {
  const std::string text =
      R"({"predselect": "1", "runs": [{"command": "a</script>", "charts": []}]})";
  EXPECT_EQ(PayloadOf(MCHost::RenderReportOfJson(text, "a.json"))["document"]["runs"][0]["command"],
            "a</script>");
  for (const char* wrong :
       {"", "[1]", "{", R"({"predselect": "1"})", R"({"runs": []})",
        R"({"predselect": "1", "runs": [3]})", R"({"predselect": "1", "runs": [{"charts": 1}]})"}) {
    EXPECT_THROW((void)MCHost::RenderReportOfJson(wrong, "a.json"), MCHost::HostIOError) << wrong;
  }
}

TEST(ReadableChart, HasTheBestOnTopAndPValuesByTheirLogarithm) {
  const Json chart = MCHost::ReadableChart(PredictorChart({0.0, 1e-3, 0.5}, true));
  const Json& values = chart["data"]["values"];
  ASSERT_EQ(values.size(), 3u);
  const double lengths[] = {16.0, 3.0, 0.30103};  // 0 is what is below 1e-16
  for (std::size_t i = 0; i < 3; ++i) {
    EXPECT_EQ(values[i]["place"], i + 1);
    EXPECT_NEAR(values[i]["length"].get<double>(), lengths[i], 1e-5);
  }
  const Json exact = MCHost::ReadableChart(PredictorChart({0.0, 1e-120, 1e-3}, true));
  EXPECT_NEAR(exact["data"]["values"][0]["length"].get<double>(), 120.0, 1e-9);
  EXPECT_NEAR(exact["data"]["values"][1]["length"].get<double>(), 120.0, 1e-9);
  EXPECT_EQ(chart["layer"][0]["encoding"]["y"]["sort"]["field"], "place");
  EXPECT_EQ(chart["layer"][0]["mark"]["type"], "bar");
  EXPECT_NEAR(chart["layer"][1]["data"]["values"][0]["length"].get<double>(), 1.30103, 1e-5);
}

TEST(ReadableChart, KeepsOtherStatisticsAndDrawsAtMostThirtyAtFirst) {
  const Json chart = MCHost::ReadableChart(PredictorChart(std::vector<double>(50, 0.25), false));
  EXPECT_EQ(chart["data"]["values"].size(), 50u);
  EXPECT_EQ(chart["data"]["values"][7]["length"], 0.25);
  EXPECT_EQ(chart["layer"].size(), 1u);
  EXPECT_EQ(chart["transform"][0]["filter"], "datum.place<=30");
  const Json other = {{"mark", "bar"}};
  EXPECT_EQ(MCHost::ReadableChart(other), other);
}

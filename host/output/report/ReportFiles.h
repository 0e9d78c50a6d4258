// The parts of the report page that the build has put together (cmake/make_report.py) from
// host/output/report/page, and the charts' renderer. Constant and valid for ever.
#pragma once

#include <string_view>

namespace MCHost {

// The page, with its styles and scripts in it, and a place each for what a report has of its own:
// kReportTitle, kReportPayload, kReportCharts.
std::string_view ReportPage();

// The renderer of Vega-Lite documents, a script with its licences; empty where the build had none.
std::string_view ReportCharts();

// A Python program that draws Vega-Lite documents into files: host/output/report/draw_charts.py.
std::string_view ChartDrawer();

inline constexpr std::string_view kReportTitle = "@TITLE@";
inline constexpr std::string_view kReportPayload = "@PAYLOAD@";
inline constexpr std::string_view kReportCharts = "@CHARTS@";

}  // namespace MCHost

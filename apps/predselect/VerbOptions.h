// What each verb takes, declared once for parsing, help, completions and the manual page.
#pragma once

namespace CLI {
class App;
}

namespace PredSelectApp {

struct Options;

// Each adds its verb, which reads into the options.
CLI::App* AddDescribe(CLI::App& app, Options& options);
CLI::App* AddRank(CLI::App& app, Options& options);
CLI::App* AddModel(CLI::App& app, Options& options);
CLI::App* AddScore(CLI::App& app, Options& options);
CLI::App* AddEvaluate(CLI::App& app, Options& options);
CLI::App* AddRun(CLI::App& app, Options& options);
CLI::App* AddInspect(CLI::App& app, Options& options);
CLI::App* AddRange(CLI::App& app, Options& options);
CLI::App* AddMerge(CLI::App& app, Options& options);
CLI::App* AddExport(CLI::App& app, Options& options);
CLI::App* AddView(CLI::App& app, Options& options);

}  // namespace PredSelectApp

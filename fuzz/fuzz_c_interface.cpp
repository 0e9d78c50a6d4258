// Any bytes as calls of the C interface over a stream that may be wrong in every way: each call
// gives a known status, a reason where it fails and what it promises where it does not; everything
// lent is released once; the table is the same however its cells are kept.
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "fuzz/FuzzCheck.h"
#include "fuzz/WildStream.h"
#include "operations/c/predselect.h"

namespace {

using PredSelectFuzz::Require;
using PredSelectFuzz::WildStream;

// Where models are saved; it goes with the program.
class Folder {
 public:
  Folder() {
    std::string name = "/tmp/predselect-fuzz-XXXXXX";
    Require(mkdtemp(name.data()) != nullptr, "a folder can be made");
    fPath = name;
  }
  ~Folder() {
    std::error_code ignored;
    std::filesystem::remove_all(fPath, ignored);
  }
  std::string Path(const char* name) const { return fPath + "/" + name; }

 private:
  std::string fPath;
};

class Calls {
 public:
  explicit Calls(FuzzedDataProvider& bytes) : fBytes(bytes), fStream(bytes) {
    predselect_session_open(&fpSession);
    predselect_session_set_threads(fpSession, fBytes.ConsumeIntegralInRange<std::size_t>(1, 2));
  }

  ~Calls() {
    Forget();
    predselect_state_close(fpState);
    predselect_table_close(fpTable);
    predselect_session_close(fpSession);
    Require(fStream.Lent() == 0, "all is released", std::to_string(fStream.Lent()));
  }

  void Run() {
    OpenEachWay();
    for (int left = 8; left > 0 && fBytes.remaining_bytes() > 0; --left) One();
  }

 private:
  // The call has ended as it may: `made` tells whether there is what it was to make.
  bool Ended(const char* call, predselect_status status, bool made) {
    Require(status >= PREDSELECT_OK && status <= PREDSELECT_MISUSE &&
                status != PREDSELECT_BROKEN_INVARIANT,
            "a status that may be", call);
    Require((status == PREDSELECT_OK) == (*predselect_session_error(fpSession) == '\0'),
            "a reason where it failed, and only there", call);
    Require(status != PREDSELECT_OK || made, "what was promised is made", call);
    return status == PREDSELECT_OK;
  }

  void Forget() {
    predselect_result_close(fpResult);
    fpResult = nullptr;
  }

  std::string Described(std::size_t keep) {
    predselect_table_close(fpTable);
    fpTable = nullptr;
    ArrowArrayStream stream = fStream.Open();
    predselect_table_options options{};
    options.struct_size = sizeof(options);
    options.keep = keep;
    options.weight = fpWeight;
    const auto status = predselect_table_open(fpSession, &stream, &options, &fpTable);
    Require(stream.release == nullptr, "the stream is taken over");
    if (!Ended("open", status, fpTable != nullptr)) return predselect_session_error(fpSession);
    Forget();
    const auto described = predselect_describe(fpSession, fpTable, &fpResult);
    if (!Ended("describe", described, fpResult != nullptr)) {
      return predselect_session_error(fpSession);
    }
    return Json();
  }

  std::string Json() {
    const char* json = nullptr;
    const auto status = predselect_result_json(fpSession, fpResult, &json);
    return Ended("json", status, json != nullptr) ? json : "";
  }

  // Streams that were refused may be refused for another of their faults where cells are read
  // later.
  void OpenEachWay() {
    fWeight = fStream.NameOf(1);
    fpWeight = fBytes.ConsumeIntegralInRange(0, 7) == 7 ? fWeight.c_str() : nullptr;
    const std::string aside = Described(PREDSELECT_KEEP_ASIDE);
    const std::string batches = Described(PREDSELECT_KEEP_BATCHES);
    const std::string cells = Described(PREDSELECT_KEEP_CELLS);
    const auto isTable = [](const std::string& text) { return text.starts_with("{"); };
    Require(isTable(aside) == isTable(cells) && isTable(batches) == isTable(cells),
            "a stream is a table or none", aside + "\n" + batches + "\n" + cells);
    Require(!isTable(cells) || (aside == cells && batches == cells),
            "cells are the same wherever they are kept", aside + "\n" + batches + "\n" + cells);
  }

  std::string AnyName() {
    const std::size_t number = fBytes.ConsumeIntegralInRange<std::size_t>(0, 6);
    return number == 6 ? fBytes.ConsumeRandomLengthString(6) : fStream.NameOf(number);
  }

  void One() {
    constexpr std::array kCalls = {&Calls::Rank,  &Calls::Model,    &Calls::Command, &Calls::Load,
                                   &Calls::Score, &Calls::Evaluate, &Calls::Inspect, &Calls::Look,
                                   &Calls::Merge, &Calls::Export};
    (this->*fBytes.PickValueInArray(kCalls))();
  }

  // A job's result, also of one that could not do all of its work.
  void Result(const char* call, predselect_status status) {
    Ended(call, status, fpResult != nullptr);
    Require(status != PREDSELECT_COMMAND_ERROR || fpResult != nullptr, "messages are there", call);
  }

  void Rank() {
    Forget();
    predselect_rank_options options{};
    options.struct_size = sizeof(options);
    options.by = fBytes.ConsumeIntegralInRange<std::size_t>(0, 5);
    options.top = fBytes.ConsumeIntegralInRange<std::size_t>(0, 3);
    Result("rank", predselect_rank(fpSession, fpTable, AnyName().c_str(), &options, &fpResult));
  }

  void Model() {
    Forget();
    const std::string path = fFolder.Path("model.bin");
    predselect_model_options options{};
    options.struct_size = sizeof(options);
    options.test = fBytes.PickValueInArray({-1.0, 0.0, 0.5, 1.0, 2.0});
    options.save_predictions = fBytes.ConsumeBool();
    options.folds = fBytes.PickValueInArray<std::size_t>({0, 0, 1, 2, 1000});
    options.calibrate = fBytes.ConsumeIntegralInRange<std::size_t>(0, 3);
    options.state_path = path.c_str();
    Result("model", predselect_model(fpSession, fpTable, AnyName().c_str(), &options, &fpResult));
  }

  void Command() {
    Forget();
    const std::string command = fBytes.PickValueInArray({"SELECTPRED ", "NAIVEBAYES "}) +
                                AnyName() + (fBytes.ConsumeBool() ? " BY " + AnyName() : "") +
                                ".\n";
    const std::string path = fFolder.Path("run.bin");
    predselect_run_options options{};
    options.struct_size = sizeof(options);
    options.state_path = fBytes.ConsumeBool() ? path.c_str() : nullptr;
    Result("run", predselect_run(fpSession, fpTable, command.c_str(), &options, &fpResult));
  }

  void Load() {
    predselect_state_close(fpState);
    fpState = nullptr;
    const std::string path = fFolder.Path(fBytes.ConsumeBool() ? "model.bin" : "run.bin");
    Ended("load", predselect_state_load(fpSession, path.c_str(), &fpState), fpState != nullptr);
  }

  void Score() {
    Forget();
    predselect_score_options options{};
    options.struct_size = sizeof(options);
    options.explain = fBytes.ConsumeIntegralInRange<std::size_t>(0, 3);
    Result("score", predselect_score(fpSession, fpTable, fpState, &options, &fpResult));
  }

  void Evaluate() {
    Forget();
    Result("evaluate", predselect_evaluate(fpSession, fpTable, fpState, &fpResult));
  }

  void Inspect() {
    Forget();
    Result("inspect", predselect_inspect(fpSession, fpState, &fpResult));
  }

  void Merge() { Ended("merge", predselect_state_merge(fpSession, fpState, fpState), true); }

  void Export() {
    predselect_export_options options{};
    options.struct_size = sizeof(options);
    options.format = fBytes.PickValueInArray({"pmml", "onnx", "sql", "c", "json", "text"});
    const std::string path = fFolder.Path("exported");
    Ended("export", predselect_state_export(fpSession, fpState, path.c_str(), &options), true);
  }

  // The result in every form. A kept one is the same when it is restored.
  void Look() {
    const char* page = nullptr;
    Ended("text", predselect_result_text(fpSession, fpResult, 80, &page), page != nullptr);
    Ended("html", predselect_result_html(fpSession, fpResult, nullptr, &page), page != nullptr);
    ArrowArrayStream columns{};
    const auto status = predselect_result_new_columns(fpSession, fpResult, &columns);
    if (Ended("new columns", status, columns.release != nullptr)) columns.release(&columns);
    std::size_t size = 0;
    if (!Ended("keep", predselect_result_keep(fpSession, fpResult, &page, &size),
               page != nullptr)) {
      return;
    }
    const std::string kept(page, size), json = Json();
    Forget();
    const auto restored = predselect_result_restore(fpSession, kept.data(), size, &fpResult);
    Require(Ended("restore", restored, fpResult != nullptr) && Json() == json,
            "what was kept is restored", json);
  }

  static const Folder fFolder;
  FuzzedDataProvider& fBytes;
  WildStream fStream;
  std::string fWeight;
  const char* fpWeight = nullptr;
  predselect_session* fpSession = nullptr;
  predselect_table* fpTable = nullptr;
  predselect_state* fpState = nullptr;
  predselect_result* fpResult = nullptr;
};

const Folder Calls::fFolder;

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedDataProvider bytes(data, size);
  Calls(bytes).Run();
  return 0;
}

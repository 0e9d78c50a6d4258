#include "apps/predselect/CommandText.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <iostream>
#include <iterator>
#include <vector>

#include "apps/predselect/Options.h"
#include "apps/predselect/UsageError.h"
#include "host/data/DataTable.h"
#include "host/session/HostIOError.h"
#include "operations/BuildModel.h"
#include "operations/RankPredictors.h"

namespace PredSelectApp {

namespace {

std::string ReadAll(std::istream& in) {
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

// The texts of -c as one, each ended as a text is.
std::string JoinTexts(const std::vector<std::string>& texts) {
  std::string joined;
  for (const std::string& text : texts) {
    if (!joined.empty()) joined += "\n";
    joined += text;
    const std::size_t last = text.find_last_not_of(" \t\r\n");
    const bool isOpen = last != std::string::npos && text[last] != '.';
    if (isOpen && texts.size() > 1) joined += "\n.";
  }
  return joined;
}

}  // namespace

std::string ReadCommandText(const Options& options) {
  if (options.fCommandFile.empty()) return JoinTexts(options.fCommandTexts);
  if (options.fCommandFile == "-") {
    if (options.fData.fFile == "-") {
      throw UsageError("standard input cannot give both the data and the commands.");
    }
    return ReadAll(std::cin);
  }
  std::ifstream file(options.fCommandFile, std::ios::binary);
  std::string text = file ? ReadAll(file) : "";
  if (!file) {
    throw MCHost::HostIOError(options.fCommandFile, "",
                              std::string("cannot be read: ") + std::strerror(errno));
  }
  return text;
}

std::string CommandTextOf(const Options& options, const MCHost::DataTable& table) {
  if (options.fAction == Options::kRank) return PredSelect::RankCommand(table, options.fRank);
  if (options.fAction != Options::kModel) return ReadCommandText(options);
  PredSelect::ModelRequest request = options.fModel;
  request.fbSavePredictions = !options.fSave.fFile.empty();
  return PredSelect::ModelCommand(table, request);
}

}  // namespace PredSelectApp

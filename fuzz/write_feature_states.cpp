// Writes saved components of every kind and stage, for the fuzzers of restoring to start from:
//   write_feature_states CORPUS
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>

#include "feature/FSFactory.h"
#include "feature/FSSettings.h"
#include "tests/feature/RandomRuns.h"
#include "tests/modelfiles/StateStreams.h"

namespace {

// Columns: target, weight, two categorical and two continuous predictors.
void RunTo(IFSAlgorithm& component, int stage, bool catTarget) {
  const Table table = RandomTable(12, catTarget, 5);
  BlocksOf source(table, 5);
  MCFeature::MCStatus status;
  if (stage >= 1) status = component.Accumulate(source, -1);
  if (stage >= 2) status = component.CheckPredAllMissConst();
  if (stage >= 3) status = component.SortAndRank(stage == 3 ? 0 : 1);
  if (!status.IsOK())
    std::cerr << "stage " << stage << ": status " << status.GetErrorCode() << '\n';
}

void Write(const std::string& path, const std::string& content) {
  std::ofstream(path, std::ios::binary) << content;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  const std::string corpus = argv[1];
  for (int kind = 0; kind < 3; ++kind) {
    for (int stage = 0; stage <= 4; ++stage) {
      FSSettings settings = SettingsFor(kind == 0);
      if (kind == 2) settings.SetTargetPosition(-1);
      FSFactory factory;
      const auto component = factory.CreateFSAlgorithm(&settings);
      RunTo(*component, stage, kind == 0);
      BinaryStream binary;
      std::ostringstream xml;
      if (component->SaveState(binary).IsError() || component->SaveStateXML(xml).IsError())
        return 1;
      const std::string name = "/seed" + std::to_string(10 * kind + stage);
      Write(corpus + "/fuzz_feature_binary" + name, binary.Content());
      Write(corpus + "/fuzz_feature_xml" + name, xml.str());
    }
  }
  return 0;
}

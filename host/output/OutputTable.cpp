#include "host/output/OutputTable.h"

#include <algorithm>

namespace MCHost {
namespace {

void AppendLeaves(const std::vector<OutputCategory>& categories, int parent,
                  std::vector<int>& leaves) {
  for (std::size_t i = 0; i < categories.size(); ++i) {
    if (categories[i].fParent != parent) continue;
    const int category = static_cast<int>(i);
    if (categories[i].fbGroup) {
      AppendLeaves(categories, category, leaves);
    } else {
      leaves.push_back(category);
    }
  }
}

}  // namespace

std::vector<int> OutputDimension::Leaves() const {
  std::vector<int> leaves;
  AppendLeaves(fCategories, -1, leaves);
  return leaves;
}

std::vector<int> OutputDimension::PathTo(int category) const {
  std::vector<int> path;
  for (int at = category; at >= 0; at = fCategories[static_cast<std::size_t>(at)].fParent) {
    path.push_back(at);
  }
  std::reverse(path.begin(), path.end());
  return path;
}

}  // namespace MCHost

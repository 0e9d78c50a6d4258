// What the Naive Bayes component is called in the documents that it writes.
#pragma once

namespace MCModelFiles {

inline constexpr const char* kNBComponentName = "Naive Bayes Component";
inline constexpr const char* kVendor = "PredSelect";

}  // namespace MCModelFiles

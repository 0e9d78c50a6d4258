// What must hold of a feature selection component that was restored from any bytes.
#pragma once

class FSFactory;
class IFSAlgorithm;

namespace PredSelectFuzz {

// A component that was refused (null) has left the factory with the error `code`. One that was not
// saves and restores as itself in both forms, answers every query, takes cases, merges, is screened
// and ranked, and writes its documents.
void CheckRestored(IFSAlgorithm* component, const FSFactory& factory, int code);

}  // namespace PredSelectFuzz

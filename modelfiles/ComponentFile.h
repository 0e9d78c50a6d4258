// A file that holds one saved component: what the programs of PredSelect write and read.
//
// Binary, or XML where the name ends in ".xml". A feature selection component has its dictionary in
// front of it; a Naive Bayes component knows its variables itself, and so do the counts of parts
// for one (NBPartModel.h). A component that was saved alone (SaveState, SaveStateXML) is read too,
// and a model in its JSON form (JSONModel.h). What is written is in an envelope (StateEnvelope.h);
// what is read may be. Nothing is thrown; files are neither locked nor replaced in one step here.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "common/parts/TableRanges.h"
#include "feature/IFSAlgorithm.h"
#include "modelfiles/NBPartModel.h"
#include "modelfiles/StateDictionary.h"
#include "naivebayes/INBAlgorithm.h"

struct ComponentFile {
  // One of the four is there; of the counts of parts also the model that they make, if they do.
  std::unique_ptr<IFSAlgorithm> fpFeature;
  std::optional<StateDictionary> fDictionary;  // of the first
  std::unique_ptr<INBAlgorithm> fpNaive;
  std::unique_ptr<NBPartModel> fpPart;
  std::optional<TableRanges> fRanges;  // of a table in parts
};

// True for a name that ends in ".xml", in any case.
bool IsXMLStateName(const std::string& path);

struct StateWriting {
  bool fbXML = false;
  std::string fKey{};  // signs the file; empty for no signature
};

// Writes to `path`; the dictionary may be null. The return value is empty, or what went wrong.
std::string WriteComponentFile(const std::string& path, const StateWriting& how,
                               const IFSAlgorithm& component, const StateDictionary* dictionary);
std::string WriteComponentFile(const std::string& path, const StateWriting& how,
                               const INBAlgorithm& component);
std::string WriteComponentFile(const std::string& path, const StateWriting& how,
                               const TableRanges& ranges);
std::string WriteComponentFile(const std::string& path, const StateWriting& how,
                               const NBPartModel& part);
// Whichever it is.
std::string WriteComponentFile(const std::string& path, const StateWriting& how,
                               const ComponentFile& file);

// Reads any form of either component, told apart by their first bytes. Empty, or what went
// wrong; `place`, where it is given, then says where in the file ("byte 17", "line 4"). With a key,
// a file that was not signed with it is refused. Nothing goes to standard error.
std::string ReadComponentFile(const std::string& path, ComponentFile& file,
                              std::string* place = nullptr, const std::string& key = {});

// A component as bytes, in the binary form of files; null for no dictionary. Reading is as above.
std::string ComponentBytes(const IFSAlgorithm& component, const StateDictionary* dictionary);
std::string ComponentBytes(const INBAlgorithm& component);
std::string ReadComponentBytes(const std::string& bytes, ComponentFile& file);

// A number that the same counts of the same variables have, in either form, however long the
// counting took; others have another one but for a chance of 2^-64.
std::uint64_t DigestOf(const ComponentFile& file);

#include "modelfiles/ComponentFile.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <new>
#include <sstream>
#include <streambuf>
#include <string_view>
#include <system_error>
#include <vector>

#include "common/WholeText.h"
#include "common/state/IOException.h"
#include "common/state/QuietReading.h"
#include "common/xml/XMLError.h"
#include "common/xml/XMLObjParser.h"
#include "feature/FSFactory.h"
#include "feature/FSSettings.h"
#include "modelfiles/export/ExportText.h"
#include "modelfiles/export/JSONModel.h"
#include "naivebayes/NBFactory.h"

namespace {

constexpr const char* kDictionary = "StateDictionary 1.00";
constexpr const char* kDictionaryTag = "PSDICT";
constexpr const char* kFeature = "FSAlgorithm";
constexpr const char* kNaive = "NBAlgorithm";
constexpr const char* kDamaged =
    "the file is damaged, cut short, or was written by a version with another form; save it again";

std::string SystemError() { return std::strerror(errno); }

std::string NotSaved(std::int64_t code) {
  return "the component could not be saved (status " + std::to_string(code) + ")";
}

// Opens, writes, and makes sure that every byte has gone. What the system says of a stream that
// failed comes before what a component makes of it.
template <class Stream>
std::string WriteFile(const std::string& path, const std::function<std::string(Stream&)>& write) {
  errno = 0;
  Stream stream(path, std::ios::out | std::ios::trunc | std::ios::binary);
  if (!stream) return SystemError();
  errno = 0;
  std::string trouble = write(stream);
  if (stream && !trouble.empty()) return trouble;
  if (stream) stream.close();
  if (stream) return "";
  return errno == 0 ? "the file could not be written" : SystemError();
}

std::string WriteBinary(std::fstream& os, const IFSAlgorithm& component,
                        const StateDictionary* dictionary) {
  if (dictionary != nullptr) dictionary->WriteObject(os);
  const MCFeature::MCStatus status = component.SaveState(os);
  return status.IsError() ? NotSaved(status.GetErrorCode()) : "";
}

// Takes bytes and keeps their digest (FNV-1a).
class DigestBuffer : public std::streambuf {
 public:
  std::uint64_t Digest() const { return fDigest; }

 protected:
  std::streamsize xsputn(const char* bytes, std::streamsize n) override {
    for (std::streamsize i = 0; i < n; ++i) {
      fDigest = (fDigest ^ static_cast<unsigned char>(bytes[i])) * 0x100000001b3;
    }
    return n;
  }

 private:
  std::uint64_t fDigest = 0xcbf29ce484222325;
};

// The document of a component with a dictionary put in front of the component's object.
std::string WithDictionary(const std::string& document, const StateDictionary& dictionary) {
  const std::size_t root = document.find("<MCXMLRoot");
  const std::size_t start = document.find('\n', root) + 1;
  std::ostringstream inserted;
  dictionary.WriteObjectXML(inserted, 2);
  return document.substr(0, start) + MCCommon::WholeText(inserted) + document.substr(start);
}

bool StartsWith(std::fstream& is, const std::string& text) {
  std::string start(text.size(), '\0');
  is.read(start.data(), static_cast<std::streamsize>(start.size()));
  is.clear();
  is.seekg(0);
  return start == text;
}

// Two states in one file would read as the first alone.
bool IsAtEnd(std::fstream& is) { return is.peek() == std::fstream::traits_type::eof(); }

std::string ReadBinary(std::fstream& is, ComponentFile& file) {
  if (StartsWith(is, kNaive)) {
    file.fpNaive = NBFactory().RestoreNBAlgorithmFromBinary(is);
    return file.fpNaive == nullptr || !IsAtEnd(is) ? kDamaged : "";
  }
  if (StartsWith(is, kDictionaryTag)) {
    file.fDictionary.emplace();
    file.fDictionary->ReadObject(is);
  } else if (!StartsWith(is, kFeature)) {
    return "the file holds no saved component";
  }
  file.fpFeature = FSFactory().RestoreFSAlgorithmFromBinary(is);
  return file.fpFeature == nullptr || !IsAtEnd(is) ? kDamaged : "";
}

std::string ReadXML(std::ifstream& is, ComponentFile& file) {
  std::string name;
  if (!MCCommonXML::ParseNextName(is, name)) return kDamaged;
  if (name.starts_with(kNaive)) {
    file.fpNaive = NBFactory().RestoreNBAlgorithmFromXML(is);
    return file.fpNaive == nullptr ? kDamaged : "";
  }
  if (name == kDictionary) {
    file.fDictionary.emplace();
    file.fDictionary->ReadObjectXML(is);
  } else if (!name.starts_with(kFeature)) {
    return "the file holds no saved component";
  }
  file.fpFeature = FSFactory().RestoreFSAlgorithmFromXML(is);
  return file.fpFeature == nullptr ? kDamaged : "";
}

// Empty, or what went wrong, as ReadBinary and ReadXML say it.
std::string ReadJSON(std::fstream& is, ComponentFile& file) {
  try {
    file.fpNaive = MCModelFiles::ModelFromJSON(
        {std::istreambuf_iterator<char>(is), std::istreambuf_iterator<char>()});
    return "";
  } catch (const MCModelFiles::ExportError& error) {
    return std::string("the file holds no model in JSON: ") + error.what();
  }
}

// How far a file was read.
std::string ByteOf(std::fstream& is) {
  is.clear();
  return "byte " + std::to_string(is.tellg());
}
std::string LineOf(std::ifstream& is) {
  return "line " + std::to_string(MCCommonXML::ParsedLine(is));
}

// A dictionary must speak of the component that follows it.
bool Agree(const ComponentFile& file) {
  if (file.fpFeature == nullptr || !file.fDictionary) return true;
  const FSSettings& settings = *file.fpFeature->GetSettings();
  const std::vector<StateVariable>& predictors = file.fDictionary->fPredictors;
  if (settings.GetNPredictors() != static_cast<int>(predictors.size())) return false;
  if ((settings.GetWeightPosition() < 0) != file.fDictionary->fWeight.empty()) return false;
  for (std::size_t i = 0; i < predictors.size(); ++i) {
    if (settings.IsCatPredictor(static_cast<int>(i)) != predictors[i].fbCategorical) return false;
  }
  return settings.IsCatTarget() == file.fDictionary->fTarget.fbCategorical;
}

}  // namespace

bool IsXMLStateName(const std::string& path) {
  constexpr std::string_view kEnding = ".xml";
  if (path.size() < kEnding.size()) return false;
  return std::equal(kEnding.begin(), kEnding.end(), path.end() - kEnding.size(),
                    [](char a, char b) { return a == (b >= 'A' && b <= 'Z' ? b - 'A' + 'a' : b); });
}

std::string WriteComponentFile(const std::string& path, bool xml, const IFSAlgorithm& component,
                               const StateDictionary* dictionary) {
  if (!xml) {
    return WriteFile<std::fstream>(
        path, [&](std::fstream& os) { return WriteBinary(os, component, dictionary); });
  }
  return WriteFile<std::ofstream>(path, [&](std::ofstream& os) -> std::string {
    std::ostringstream document;
    const MCFeature::MCStatus status = component.SaveStateXML(document);
    if (status.IsError()) return NotSaved(status.GetErrorCode());
    try {
      const std::string text = MCCommon::WholeText(document);
      os << (dictionary == nullptr ? text : WithDictionary(text, *dictionary));
    } catch (const MCCommonXML::XMLError& error) {
      return error.what();
    }
    return "";
  });
}

std::string WriteComponentFile(const std::string& path, bool xml, const INBAlgorithm& component) {
  const auto told = [&component](const MCNaive::MCStatus& status) -> std::string {
    if (!status.IsError()) return "";
    if (status.GetErrorCode() == MCNaive::kNoMemory) throw std::bad_alloc();
    if (status.GetErrorCode() == MCNaive::kWeightNotFinite) {
      return "the case weights add up to more than a number can hold";
    }
    const auto var = static_cast<int>(status.GetDiscreteDatum(0));
    const NBVarList& variables = component.GetVarList();
    const bool isText = status.GetErrorCode() == MCNaive::kTextNotForXML && var >= 0;
    if (!isText || var >= variables.Size()) return NotSaved(status.GetErrorCode());
    return "a name, label or value of the variable \"" +
           variables.GetVarAt(var)->GetVariableName() +
           "\" holds a character that an XML document cannot hold";
  };
  if (!xml) {
    return WriteFile<std::fstream>(path,
                                   [&](std::fstream& os) { return told(component.SaveState(os)); });
  }
  return WriteFile<std::ofstream>(
      path, [&](std::ofstream& os) { return told(component.SaveStateXML(os)); });
}

std::string ReadComponentFile(const std::string& path, ComponentFile& file, std::string* place) {
  std::error_code error;
  const std::filesystem::file_status status = std::filesystem::status(path, error);
  if (error) return error.message();
  // A pipe cannot be read twice and never says how much it holds; opening one may wait for ever.
  if (!std::filesystem::is_regular_file(status)) return "it is not a plain file";
  errno = 0;
  std::fstream binary(path, std::ios::in | std::ios::binary);
  if (!binary) return SystemError();
  std::ifstream xml;
  if (StartsWith(binary, "<?xml")) xml.open(path, std::ios::binary);
  const QuietReading quiet;
  std::string trouble;
  try {
    if (StartsWith(binary, "{")) {
      trouble = ReadJSON(binary, file);
    } else {
      trouble = xml.is_open() ? ReadXML(xml, file) : ReadBinary(binary, file);
    }
  } catch (const MCCommon::IOException&) {
    trouble = kDamaged;
  } catch (const std::bad_alloc&) {
    trouble = "it takes more memory than there is";
  }
  if (trouble.empty() && !Agree(file)) trouble = kDamaged;
  if (trouble == kDamaged && place != nullptr) {
    *place = xml.is_open() ? LineOf(xml) : ByteOf(binary);
  }
  return trouble;
}

std::uint64_t DigestOf(const ComponentFile& file) {
  DigestBuffer buffer;
  std::fstream bytes;
  static_cast<std::ios&>(bytes).rdbuf(&buffer);
  if (file.fpNaive != nullptr) {
    (void)file.fpNaive->SaveState(bytes);
  } else {
    (void)WriteBinary(bytes, *file.fpFeature, file.fDictionary ? &*file.fDictionary : nullptr);
  }
  return buffer.Digest();
}

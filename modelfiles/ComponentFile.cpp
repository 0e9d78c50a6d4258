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
#include "common/state/StateBytes.h"
#include "common/xml/DocumentHeader.h"
#include "common/xml/XMLDocType.h"
#include "common/xml/XMLError.h"
#include "common/xml/XMLObj.h"
#include "common/xml/XMLObjParser.h"
#include "feature/FSFactory.h"
#include "modelfiles/StateEnvelope.h"
#include "modelfiles/StateSense.h"
#include "modelfiles/export/ExportText.h"
#include "modelfiles/export/JSONModel.h"
#include "naivebayes/NBFactory.h"

namespace {

constexpr const char* kDictionary = "StateDictionary 1.00";
constexpr const char* kDictionaryTag = "PSDICT";
constexpr const char* kFeature = "FSAlgorithm";
constexpr const char* kNaive = "NBAlgorithm";
constexpr const char* kRanges = "TableRanges 1.00";
constexpr const char* kRangesTag = "PSRANGES";
constexpr const char* kPart = "NBPartModel 1.00";
constexpr const char* kDamaged =
    "the file is damaged, cut short, or was written by a version with another form; save it again";

std::string SystemError() { return std::strerror(errno); }

std::string NotSaved(std::int64_t code) {
  return "the component could not be saved (status " + std::to_string(code) + ")";
}

// Writes the bytes that `write` makes, in their envelope, and makes sure that every one has gone.
template <class Stream>
std::string WriteFile(const std::string& path, const StateWriting& how,
                      const std::function<std::string(Stream&)>& write) {
  std::stringbuf content(std::ios::out);
  Stream made;
  static_cast<std::ios&>(made).rdbuf(&content);
  const std::string trouble = write(made);
  if (!trouble.empty()) return trouble;
  if (!made) throw std::bad_alloc();  // nothing else keeps bytes out of memory
  const std::string bytes = MCModelFiles::PutIntoEnvelope(content.view(), how.fbXML, how.fKey);
  errno = 0;
  std::ofstream file(path, std::ios::trunc | std::ios::binary);
  if (!file) return SystemError();
  errno = 0;
  file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  if (file) file.close();
  if (file) return "";
  return errno == 0 ? "the file could not be written" : SystemError();
}

// An object that is a plain value, in either form.
template <class Value>
std::string WriteValue(const std::string& path, const StateWriting& how, const Value& value) {
  if (!how.fbXML) {
    return WriteFile<std::fstream>(path, how, [&](std::fstream& os) {
      value.WriteObject(os);
      return "";
    });
  }
  return WriteFile<std::ofstream>(path, how, [&](std::ofstream& os) -> std::string {
    try {
      std::ostringstream document;
      MCCommonXML::ExportFormat(
          document, MCCommonXML::XMLDocType::Create("MCXMLRoot", "savexml.dtd", nullptr));
      MCCommonXML::StartRoot(document, MCModelFiles::Copyright());
      value.WriteObjectXML(document, 2);
      MCCommonXML::EndRoot(document);
      os << document.str();
      return "";
    } catch (const MCCommonXML::XMLError& error) {
      return error.what();
    }
  });
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
    fDigest = StateBytes::Digest({bytes, static_cast<std::size_t>(n)}, fDigest);
    return n;
  }

 private:
  std::uint64_t fDigest = StateBytes::Digest({});
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
  if (StartsWith(is, kRangesTag)) {
    file.fRanges.emplace();
    file.fRanges->ReadObject(is);
    return IsAtEnd(is) ? "" : kDamaged;
  }
  if (StartsWith(is, kPart)) {
    file.fpPart = std::make_unique<NBPartModel>();
    file.fpPart->ReadObject(is);
    file.fpNaive = file.fpPart->Build();
    return IsAtEnd(is) ? "" : kDamaged;
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
  if (name == kRanges) {
    file.fRanges.emplace();
    file.fRanges->ReadObjectXML(is);
    return MCCommonXML::ParseEndRoot(is) ? "" : kDamaged;
  }
  if (name == kPart) {
    file.fpPart = std::make_unique<NBPartModel>();
    file.fpPart->ReadObjectXML(is);
    file.fpNaive = file.fpPart->Build();
    return MCCommonXML::ParseEndRoot(is) ? "" : kDamaged;
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

// A file as it is read: in the binary form or JSON by one stream, in XML by the other; through its
// envelope, if it has one.
class StateStreams {
 public:
  explicit StateStreams(const std::string& path) : fBinary(path, std::ios::in | std::ios::binary) {
    if (!fBinary) return;
    fbXML = StartsWith(fBinary, "<?xml");
    if (fbXML) fXML.open(path, std::ios::binary);
  }

  // Empty, or why the file must not be read.
  std::string Open(const std::string& key) {
    MCModelFiles::OpenedEnvelope opened = MCModelFiles::OpenEnvelope(fBinary, fbXML, key);
    if (!opened.fbThere || !opened.fTrouble.empty()) return opened.fTrouble;
    fStart = opened.fStart;
    fContent.str(std::move(opened.fContent));
    (fbXML ? static_cast<std::ios&>(fXML) : static_cast<std::ios&>(fBinary)).rdbuf(&fContent);
    return "";
  }

  std::string Read(ComponentFile& file) {
    if (fbXML) return ReadXML(fXML, file);
    return StartsWith(fBinary, "{") ? ReadJSON(fBinary, file) : ReadBinary(fBinary, file);
  }

  // How far the file was read.
  std::string Place() {
    if (fbXML) return "line " + std::to_string(MCCommonXML::ParsedLine(fXML));
    fBinary.clear();
    return "byte " + std::to_string(static_cast<std::streamoff>(fBinary.tellg()) + fStart);
  }

  std::fstream fBinary;

 private:
  std::stringbuf fContent{std::ios::in};
  std::ifstream fXML;
  std::streamoff fStart = 0;
  bool fbXML = false;
};

}  // namespace

bool IsXMLStateName(const std::string& path) {
  constexpr std::string_view kEnding = ".xml";
  if (path.size() < kEnding.size()) return false;
  return std::equal(kEnding.begin(), kEnding.end(), path.end() - kEnding.size(),
                    [](char a, char b) { return a == (b >= 'A' && b <= 'Z' ? b - 'A' + 'a' : b); });
}

std::string WriteComponentFile(const std::string& path, const StateWriting& how,
                               const IFSAlgorithm& component, const StateDictionary* dictionary) {
  if (!how.fbXML) {
    return WriteFile<std::fstream>(
        path, how, [&](std::fstream& os) { return WriteBinary(os, component, dictionary); });
  }
  return WriteFile<std::ofstream>(path, how, [&](std::ofstream& os) -> std::string {
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

std::string WriteComponentFile(const std::string& path, const StateWriting& how,
                               const INBAlgorithm& component) {
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
  if (!how.fbXML) {
    return WriteFile<std::fstream>(path, how,
                                   [&](std::fstream& os) { return told(component.SaveState(os)); });
  }
  return WriteFile<std::ofstream>(
      path, how, [&](std::ofstream& os) { return told(component.SaveStateXML(os)); });
}

std::string WriteComponentFile(const std::string& path, const StateWriting& how,
                               const TableRanges& ranges) {
  return WriteValue(path, how, ranges);
}

std::string WriteComponentFile(const std::string& path, const StateWriting& how,
                               const NBPartModel& part) {
  return WriteValue(path, how, part);
}

std::string WriteComponentFile(const std::string& path, const StateWriting& how,
                               const ComponentFile& file) {
  if (file.fRanges) return WriteValue(path, how, *file.fRanges);
  if (file.fpPart != nullptr) return WriteValue(path, how, *file.fpPart);
  if (file.fpNaive != nullptr) return WriteComponentFile(path, how, *file.fpNaive);
  return WriteComponentFile(path, how, *file.fpFeature,
                            file.fDictionary ? &*file.fDictionary : nullptr);
}

std::string ReadComponentFile(const std::string& path, ComponentFile& file, std::string* place,
                              const std::string& key) {
  std::error_code error;
  const std::filesystem::file_status status = std::filesystem::status(path, error);
  if (error) return error.message();
  // A pipe cannot be read twice and never says how much it holds; opening one may wait for ever.
  if (!std::filesystem::is_regular_file(status)) return "it is not a plain file";
  errno = 0;
  StateStreams streams(path);
  if (!streams.fBinary) return SystemError();
  const QuietReading quiet;
  std::string trouble;
  try {
    trouble = streams.Open(key);
    if (trouble.empty()) trouble = streams.Read(file);
  } catch (const MCCommon::IOException&) {
    trouble = kDamaged;
  } catch (const std::bad_alloc&) {
    trouble = "it takes more memory than there is";
  }
  if (trouble.empty() && !MCModelFiles::MakesSense(file)) trouble = kDamaged;
  if (trouble == kDamaged && place != nullptr) *place = streams.Place();
  return trouble;
}

std::string ComponentBytes(const IFSAlgorithm& component, const StateDictionary* dictionary) {
  return StateBytes::Written(
      [&](std::fstream& os) { (void)WriteBinary(os, component, dictionary); });
}

std::string ComponentBytes(const INBAlgorithm& component) {
  return StateBytes::Written([&](std::fstream& os) { (void)component.SaveState(os); });
}

std::string ReadComponentBytes(const std::string& bytes, ComponentFile& file) {
  const QuietReading quiet;
  std::string trouble;
  try {
    StateBytes::Read(bytes, [&](std::fstream& is) { trouble = ReadBinary(is, file); });
  } catch (const MCCommon::IOException&) {
    trouble = kDamaged;
  }
  return trouble.empty() && !MCModelFiles::MakesSense(file) ? kDamaged : trouble;
}

std::uint64_t DigestOf(const ComponentFile& file) {
  DigestBuffer buffer;
  std::fstream bytes;
  static_cast<std::ios&>(bytes).rdbuf(&buffer);
  if (file.fRanges) {
    file.fRanges->WriteObject(bytes);
  } else if (file.fpPart != nullptr) {
    file.fpPart->WriteObject(bytes);
  } else if (file.fpNaive != nullptr) {
    (void)file.fpNaive->SaveState(bytes);
  } else {
    (void)WriteBinary(bytes, *file.fpFeature, file.fDictionary ? &*file.fDictionary : nullptr);
  }
  return buffer.Digest();
}

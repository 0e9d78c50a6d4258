#include "common/xml/DocumentHeader.h"

#include <array>
#include <ctime>

#include "common/xml/MCApplicInfo4XML.h"
#include "common/xml/WriteTree.h"
#include "common/xml/XMLElement.h"

namespace MCModelFiles {

namespace {

constexpr const char* kVersion = "1.0";

std::string Either(const std::string& own, const std::string& standIn) {
  return own.empty() ? standIn : own;
}

std::string LocalTime() {
  const std::time_t now = std::time(nullptr);
  std::array<char, 26> line{};  // unlike ctime, for this thread alone
  const std::string text = ctime_r(&now, line.data());
  return text.substr(0, text.size() - 1);
}

}  // namespace

std::string Copyright() { return "Copyright (c) 2026 the PredSelect developers"; }

void AddHeader(MCCommonXML::XMLElement& root, const std::string& componentName,
               const MCApplicInfo4XML* info) {
  const MCApplicInfo4XML said = info == nullptr ? MCApplicInfo4XML() : *info;
  MCCommonXML::XMLElement& header = root.AddChild("Header");
  header.AddAttribute("copyright", Either(said.fCopyright, Copyright()));
  MCCommonXML::XMLElement& application = header.AddChild("Application");
  application.AddAttribute("name", Either(said.fName, componentName));
  application.AddAttribute("version", Either(said.fVersion, kVersion));
  header.AddChild("Timestamp").SetText(MCCommonXML::XMLString::Create(LocalTime()));
}

void WriteDocument(std::ostream& os, const MCCommonXML::XMLDocType* docType,
                   const MCCommonXML::XMLElement& root, const MCApplicInfo4XML* info) {
  const bool utf8 = info != nullptr && info->fbUTF8;
  (utf8 ? MCCommonXML::WriteTreeUTF8 : MCCommonXML::WriteTree)(os, docType, root, true);
}

}  // namespace MCModelFiles

// A command's whole grammar: its subcommands in the order of declaration, the unnamed one first.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "host/command/SubComDescriptor.h"

class CommandDescriptor {
 public:
  CommandDescriptor(std::string name, std::string help)
      : fName(std::move(name)), fHelp(std::move(help)) {}

  CommandDescriptor& addSubComDesc(SubComDescriptor subcommand) {
    fSubComs.push_back(std::move(subcommand));
    return *this;
  }

  // The names of all commands of the application, for the message about an unknown one.
  CommandDescriptor& setKnownCommands(std::vector<std::string> names) {
    fKnownCommands = std::move(names);
    return *this;
  }
  const std::vector<std::string>& GetKnownCommands() const { return fKnownCommands; }

  const std::string& GetName() const { return fName; }
  const std::string& GetHelp() const { return fHelp; }
  const std::vector<SubComDescriptor>& GetSubComs() const { return fSubComs; }

  // Null when there is no subcommand of that name.
  const SubComDescriptor* FindSubCom(const std::string& name) const {
    for (const SubComDescriptor& subcommand : fSubComs) {
      if (subcommand.GetName() == name) return &subcommand;
    }
    return nullptr;
  }

 private:
  std::string fName;
  std::string fHelp;
  std::vector<std::string> fKnownCommands;
  std::vector<SubComDescriptor> fSubComs;
};

// One subcommand: its name, its help and its parameters. The first of a command has no name.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "host/command/ParamDescriptor.h"

class SubComDescriptor {
 public:
  SubComDescriptor(std::string name, std::string help)
      : fName(std::move(name)), fHelp(std::move(help)) {}

  SubComDescriptor& addParamDesc(ParamDescriptor param) {
    fParams.push_back(std::move(param));
    return *this;
  }

  const std::string& GetName() const { return fName; }
  const std::string& GetHelp() const { return fHelp; }
  const std::vector<ParamDescriptor>& GetParams() const { return fParams; }

  // Null when there is no parameter of that name.
  const ParamDescriptor* FindParam(const std::string& name) const {
    for (const ParamDescriptor& param : fParams) {
      if (param.GetName() == name) return &param;
    }
    return nullptr;
  }

 private:
  std::string fName;
  std::string fHelp;
  std::vector<ParamDescriptor> fParams;
};

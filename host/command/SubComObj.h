// A subcommand as the user gave it. Made by the parser; the declaration is borrowed.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "host/command/ParamObj.h"
#include "host/command/SubComDescriptor.h"
#include "host/command/TokenInfoObj.h"

class SubComObj {
 public:
  // `name` is the token of the subcommand's name; of the unnamed one, the command word.
  SubComObj(const SubComDescriptor& descriptor, TokenInfoObj name)
      : fpDescriptor(&descriptor), fName(std::move(name)) {}

  const SubComDescriptor& GetDescriptor() const { return *fpDescriptor; }
  const TokenInfoObj& GetNameToken() const { return fName; }

  // The parameters given, in the user's order.
  const std::vector<ParamObj>& GetParams() const { return fParams; }
  int getParamListSize() const { return static_cast<int>(fParams.size()); }
  void AddParam(ParamObj param) { fParams.push_back(std::move(param)); }

  // Null when the parameter was not given. Valid until another one is added.
  const ParamObj* getParamObj(const std::string& name) const {
    for (const ParamObj& param : fParams) {
      if (param.GetDescriptor().GetName() == name) return &param;
    }
    return nullptr;
  }

 private:
  const SubComDescriptor* fpDescriptor;
  TokenInfoObj fName;
  std::vector<ParamObj> fParams;
};

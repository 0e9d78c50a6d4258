// A whole command as the user gave it: its subcommands, each at most once, in the user's order.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "host/command/SubComObj.h"

class CommandSpec {
 public:
  void AddSubCom(SubComObj subcommand) { fSubComs.push_back(std::move(subcommand)); }
  const std::vector<SubComObj>& GetSubComs() const { return fSubComs; }

  // Null when the subcommand was not given; the unnamed one has an empty name. Valid until another
  // one is added.
  const SubComObj* getSubComObj(const std::string& name) const {
    for (const SubComObj& subcommand : fSubComs) {
      if (subcommand.GetDescriptor().GetName() == name) return &subcommand;
    }
    return nullptr;
  }

 private:
  std::vector<SubComObj> fSubComs;
};

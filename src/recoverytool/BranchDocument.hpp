#pragma once
// BranchDocument is one preserved branch of the inspection document: the selection code of
// its tip and of each of its snapshots, in the engine's order.

#include <string>
#include <vector>

namespace galdrine::recoverytool {

struct BranchDocument {
  std::string tipSelectionCode;
  std::vector<std::string> snapshotSelectionCodes;

  friend bool operator==(const BranchDocument&, const BranchDocument&) = default;
};

}  // namespace galdrine::recoverytool

#pragma once
// ExportRequest is an export's command line: the recovery request, the selection code of
// the snapshot (64 lower-case hexadecimal digits, checked by the parser) and the destination,
// absolute and standardised.

#include <filesystem>
#include <string>

#include "recoverytool/RecoveryRequest.hpp"

namespace galdrine::recoverytool {

struct ExportRequest {
  RecoveryRequest recovery;
  std::string selectionCode;
  std::filesystem::path destinationPath;

  friend bool operator==(const ExportRequest&, const ExportRequest&) = default;
};

}  // namespace galdrine::recoverytool

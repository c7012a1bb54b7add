#pragma once
// RecoveryToolDocumentEncodingError: a document could not be written as JSON (a text that
// is not valid UTF-8). The driver reports it as the generic failure.

#include <cstdint>

namespace galdrine::recoverytool {

enum class RecoveryToolDocumentEncodingError : std::uint8_t {
  encodingFailed,
};

}  // namespace galdrine::recoverytool

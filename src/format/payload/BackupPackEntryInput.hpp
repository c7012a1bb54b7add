#pragma once
// BackupPackEntryInput is one resource to be packed: the identifier its entry will
// carry (the resource's own identifier) and its plaintext. The writer only reads it; wiping
// the plaintext afterwards is the holder's business.

#include "platform/Bytes.hpp"

namespace galdrine::format {

struct BackupPackEntryInput {
  Bytes identifier;
  Bytes plaintext;

  friend bool operator==(const BackupPackEntryInput&, const BackupPackEntryInput&) = default;
};

}  // namespace galdrine::format

#pragma once
// BackupWriterError is why the package writer refused or stopped, where the cause is
// the writer's own and not a layer below it. Cases stand in the order in which a write meets
// them: the request, the content, the package as found, and the result.

#include <cstdint>

namespace galdrine::writer {

enum class BackupWriterError : std::uint8_t {
  missingCredential,           // a package is created with neither a passphrase nor a recovery key
  invalidLayout,               // a payload or section limit outside what the format allows
  randomSourceFailed,          // the random source gave a non-zero status
  credentialFactorUnavailable, // the package has no active envelope of the credential's factor
  unreadablePackage,           // a graph directory cannot be listed, holds a foreign name, or a file in it cannot be read
  unknownCommit,               // a parent, an acknowledged tip or a shared snapshot names no commit of the package
  readOnlyFork,                // the canonical tip is asked for while the package's tips form an unsettled fork
  nothingToHeal,               // a fork is to be healed but the package has fewer than two tips
  invalidLineage,              // the commit would not stand in the package's graph
  unknownRetainedResource,     // retained content names a resource that no commit it builds on has
  contentUnavailable,          // a content file cannot be opened, is no regular file, or a read fails
  contentChanged,              // a content source gave another length than it had when planned
  resourceTooLarge,            // a resource needs more parts than a resource record may hold
  manifestTooLarge,            // the records need more sections than a manifest root may list
  summaryMismatch,             // the written manifest does not sum up to what was planned
};

}  // namespace galdrine::writer

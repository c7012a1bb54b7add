#pragma once
// RecoveryPayloadReadObserver is told of every read of a payload file that an
// inspection hashes: the file, and the bytes that read gave (0 for the read that ends it). It
// changes nothing in the inspection; tests and benchmarks use it to see how payload files are
// streamed. An empty observer costs one test per read.

#include <cstddef>
#include <filesystem>
#include <functional>

namespace galdrine::recovery {

using RecoveryPayloadReadObserver = std::function<void(const std::filesystem::path& file, std::size_t byteCount)>;

}  // namespace galdrine::recovery

#pragma once
// FixtureProducerError is why a fixture set was not produced.

#include <cstdint>

namespace galdrine::fixtureproducer {

enum class FixtureProducerError : std::uint8_t {
  materialRefused,  // a record, seal or encoding of the project refused the fixture material
  outputFailed,     // the directory or a file could not be created and written
};

}  // namespace galdrine::fixtureproducer

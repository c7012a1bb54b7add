// galdrine-fixture-producer: writes the project's compatibility fixture set into a new
// directory. `galdrine-fixture-producer fixtures/v1` after removing the old set reproduces the
// committed one byte for byte.

#include <cstdio>

#include "fixtureproducer/FixtureProducer.hpp"

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fputs("usage: galdrine-fixture-producer <new directory>\n", stderr);
    return 2;
  }
  const auto produced = galdrine::fixtureproducer::FixtureProducer::produce(argv[1]);
  if (!produced) {
    std::fputs(produced.error() == galdrine::fixtureproducer::FixtureProducerError::outputFailed
                   ? "The fixture set could not be written into a new directory.\n"
                   : "The fixture material was refused.\n",
               stderr);
    return 1;
  }
  return 0;
}

// galdrine-fixture-producer: writes the project's compatibility fixture set into a new
// directory. `galdrine-fixture-producer fixtures/v1` after removing the old set reproduces the
// committed one byte for byte.

#include <cstdio>

#include "GaldrineFixtureProducer/GaldrineFixtureProducer.hpp"

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fputs("usage: galdrine-fixture-producer <new directory>\n", stderr);
    return 2;
  }
  const auto produced = GaldrineFixtureProducer::produce(argv[1], GaldrineFixtureProducerSeeds::project());
  if (!produced) {
    std::fputs(produced.error() == GaldrineFixtureProducerError::outputFailed
                   ? "The fixture set could not be written into a new directory.\n"
                   : "The fixture material was refused.\n",
               stderr);
    return 1;
  }
  return 0;
}

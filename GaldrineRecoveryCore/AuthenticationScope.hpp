#pragma once
// AuthenticationScope is what every artifact of one package opens under: the package, the
// library domain of its envelope set, and the bpmk, which stays its owner's.

#include "GaldrineCore/GaldrineBackupPackageV1.hpp"
#include "GaldrinePlatform/GaldrineBytes.hpp"

struct AuthenticationScope {
  const GaldrineBackupPackageV1& package;
  ByteView libraryDomainIdentifier;
  ByteView bpmk;
};

#pragma once
// GaldrineGeneratedLocalResourceKey: a new resource key and its identifier.

#include "GaldrineKeyManagement/GaldrineKeyHandle.hpp"
#include "GaldrineKeyManagement/GaldrineLocalKeyIdentifier.hpp"

struct GaldrineGeneratedLocalResourceKey {
  GaldrineLocalKeyIdentifier keyIdentifier;
  GaldrineLocalResourceKeyHandle key;
};

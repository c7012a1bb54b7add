#pragma once
// ReleasedSecretScan looks into every heap block the test program gives back while it is
// armed, and counts the blocks that still hold a marker. Code that lets go of an unwiped
// buffer holding a secret with that marker shows up here, whichever buffer it was.
//
// It replaces the global operator new and delete of the test program that links it
// (galdrine_releasedsecretscan).

#include <string_view>

namespace galdrine::testsupport {

namespace ReleasedSecretScan {

// arm starts counting released blocks that contain `marker` (which must stay alive until
// disarm).
void arm(std::string_view marker);

// disarm stops counting and gives the number of such blocks since arm.
[[nodiscard]] int disarm();

}  // namespace ReleasedSecretScan

}  // namespace galdrine::testsupport

#pragma once
// ReleasedSecretScan looks into every heap block this test program gives back while it is
// armed, and counts the blocks that still hold a marker. A reader that lets go of an
// unwiped buffer holding a credential with that marker shows up here, whichever buffer it
// was. It replaces the global operator new and delete of the test program.

#include <string_view>

namespace galdrine::credential {

namespace ReleasedSecretScan {

// arm starts counting released blocks that contain `marker` (which must stay alive until
// disarm).
void arm(std::string_view marker);

// disarm stops counting and gives the number of such blocks since arm.
[[nodiscard]] int disarm();

}  // namespace ReleasedSecretScan

}  // namespace galdrine::credential

#pragma once
// KeyManagementResourceBundle finds the read-only files of this module (the recovery
// key word list). The bundle directory is looked for once per process: first beside the
// running executable, where an installation puts it; failing that, in the build tree where
// the module was built, a path fixed at build time. Nothing else (no environment variable, no
// working directory) can move it.

#include <filesystem>

namespace galdrine::keys {

namespace KeyManagementResourceBundle {

// location is the bundle directory, decided on the first call; any thread may call.
[[nodiscard]] const std::filesystem::path& location();

// wordListFile is the recovery key word list inside the bundle. The file may still be missing
// or damaged; its reader checks it.
[[nodiscard]] std::filesystem::path wordListFile();

}  // namespace KeyManagementResourceBundle

}  // namespace galdrine::keys

#pragma once
// recoveryToolUsageText is printed on standard output for help, and on standard error for
// any malformed command line.

#include <string_view>

namespace galdrine::recoverytool {

inline constexpr std::string_view recoveryToolUsageText =
    "Usage:\n"
    "  galdrine-recovery self-test\n"
    "  galdrine-recovery verify-golden <fixture.json>\n"
    "  galdrine-recovery verify-fixtures <index.json>\n"
    "  galdrine-recovery inspect <backup.galdrine>\n"
    "    (--backup-passphrase | --recovery-key) [--credential-stdin]\n"
    "  galdrine-recovery export <backup.galdrine>\n"
    "    --snapshot <selection-code> --destination <new-directory>\n"
    "    (--backup-passphrase | --recovery-key) [--credential-stdin]\n"
    "\n"
    "Credentials use a hidden terminal prompt by default. For automation,\n"
    "--credential-stdin requires redirected standard input. Local App Code\n"
    "is device-only and is never a portable backup credential.\n";

static_assert(recoveryToolUsageText.size() == 614);

}  // namespace galdrine::recoverytool

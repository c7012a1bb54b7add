#pragma once
// backupToolUsageText is printed on standard output for help, and on standard error for any
// malformed command line.

#include <string_view>

namespace galdrine::backuptool {

inline constexpr std::string_view backupToolUsageText =
    "Usage:\n"
    "  galdrine-backup create <new.galdrine> --from <directory>\n"
    "    (--backup-passphrase | --new-recovery-key | both) [--credential-stdin]\n"
    "  galdrine-backup add <backup.galdrine> --from <directory>\n"
    "    (--backup-passphrase | --recovery-key) [--credential-stdin]\n"
    "\n"
    "create makes a new package of the photos and videos in a directory;\n"
    "add stores the directory as it is now as a new snapshot of a package.\n"
    "Credentials use a hidden terminal prompt, and a new passphrase is asked\n"
    "twice. For automation, --credential-stdin reads the passphrase or the\n"
    "recovery key once from redirected standard input. A new recovery key is\n"
    "printed once as 24 words: write them down and keep them safe.\n";

}  // namespace galdrine::backuptool

#pragma once
// GaldrineBackupCLI_main is the process entry of galdrine-backup: it runs the argument list
// without the program's name against the terminal reader, writes standard output and standard
// error at most once each, wipes what it wrote (it may hold a new recovery key's words), and
// gives the exit status for main to return.

[[nodiscard]] int GaldrineBackupCLI_main(int argc, char** argv);

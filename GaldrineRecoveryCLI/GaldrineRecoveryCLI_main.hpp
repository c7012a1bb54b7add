#pragma once
// GaldrineRecoveryCLI_main is the process entry of galdrine-recovery: it runs the argument
// list without the program's name against the terminal reader, writes standard output and
// standard error at most once each, and gives the exit status for main to return.

[[nodiscard]] int GaldrineRecoveryCLI_main(int argc, char** argv);

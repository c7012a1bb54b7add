// galdrine-backup: makes a backup package of the photos and videos in a directory, and adds
// later states of the directory to it as snapshots. Everything happens in
// GaldrineBackupCLI_main; its result is the exit status.

#include "GaldrineBackupCLI/GaldrineBackupCLI_main.hpp"

int main(int argc, char** argv) { return GaldrineBackupCLI_main(argc, argv); }

// galdrine-recovery: gets the media of an encrypted backup package back with a portable
// credential. Everything happens in GaldrineRecoveryCLI_main; its result is the exit status.

#include "GaldrineRecoveryCLI/GaldrineRecoveryCLI_main.hpp"

int main(int argc, char** argv) { return GaldrineRecoveryCLI_main(argc, argv); }

#pragma once
// BackupSourceLibrary arranges a scanned source directory as a library for the package writer.
//
// Albums and folders follow the directories below the source:
//   - media directly in the source directory are items in no album;
//   - a directory with media files becomes an album of its name holding them;
//   - a directory with subdirectories that hold media becomes a folder of its name, and their
//     albums and folders go inside it; if it also holds media files itself, their album (of
//     the same name) stands inside that folder too;
//   - a directory with no media anywhere below it becomes nothing.
// Albums list their items by date; folders and albums keep the order of their names.
//
// Items: in one directory, one image and one movie that share a stem (the name up to its last
// ".", compared byte for byte, as IMG_1.jpg and IMG_1.mov) make one live photo, the image its
// primary resource and the movie its paired video. Every other file is an item of its own: a
// photo for an image type, a video for a movie type. Where a stem has more than one image or
// more than one movie, nothing pairs. An item takes the name of its primary file, and its
// display and import dates are that file's modification time: the command keeps no memory of
// when a file first came in, so repeated runs over unchanged files give equal records.
//
// Identifiers come from BackupSourceIdentities by path; content is read from the files when the
// writer needs it.

#include <expected>

#include "backuptool/BackupSource.hpp"
#include "backuptool/BackupSourceIdentities.hpp"
#include "writer/BackupLibrarySnapshot.hpp"

namespace galdrine::backuptool {

namespace BackupSourceLibrary {

// arrange gives the library of `source`; it fails only where an identifier cannot be derived.
[[nodiscard]] std::expected<writer::BackupLibrarySnapshot, BackupSourceIdentitiesError> arrange(
    const BackupSource& source, const BackupSourceIdentities& identities);

}  // namespace BackupSourceLibrary

}  // namespace galdrine::backuptool

#pragma once
// MediaTypeClassifier tells what a stored uniform type identifier stands for. A type
// that the registry knows is classified by its conformance; one it doesn't know (written by a
// newer system) still counts by fixed sets of known identifiers, so an export never depends on
// how recent the registry is. Pure functions; they never fail.

#include <array>
#include <optional>
#include <string_view>

#include "platform/UniformType.hpp"

namespace galdrine::format {

namespace MediaTypeClassifier {

inline constexpr std::string_view livePhotoIdentifier = "com.apple.live-photo";

inline constexpr std::array<std::string_view, 3> abstractIdentifiers = {"public.image", "public.movie", "public.video"};

inline constexpr std::array<std::string_view, 9> knownImageIdentifiers = {
    "com.compuserve.gif", "public.avif", "public.camera-raw-image",
    "public.heic",        "public.heif", "public.jpeg",
    "public.png",         "public.tiff", "public.webp",
};

inline constexpr std::array<std::string_view, 8> knownMovieIdentifiers = {
    "com.apple.quicktime-movie",
    "org.matroska.mkv",
    "org.webmproject.webm",
    "public.3gpp",
    "public.3gpp2",
    "public.avi",
    "public.mpeg",
    "public.mpeg-4",
};

// A registry lookup; the default is the program's registry. Tests pass one that knows nothing
// to show what the fixed sets decide alone.
using TypeLookup = std::optional<platform::UniformType> (*)(std::string_view identifier);

[[nodiscard]] bool isLivePhoto(std::string_view identifier);
[[nodiscard]] bool isAbstractMediaType(std::string_view identifier);

// isImage is true if the registry knows the identifier as an image type, or else if the
// identifier is one of knownImageIdentifiers. Comparisons with the fixed sets are exact.
[[nodiscard]] bool isImage(std::string_view identifier, TypeLookup lookup = platform::UniformType::fromIdentifier);

// isMovie is the same with the movie type and knownMovieIdentifiers.
[[nodiscard]] bool isMovie(std::string_view identifier, TypeLookup lookup = platform::UniformType::fromIdentifier);

}  // namespace MediaTypeClassifier

}  // namespace galdrine::format

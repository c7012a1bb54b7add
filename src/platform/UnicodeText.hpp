#pragma once
// UnicodeText holds the text services that need the Unicode library: normalization,
// case mapping and the folding used to compare names and passphrases. Every operation takes
// and gives UTF-8. None depends on the process's locale: case mapping and folding use the root
// (language-neutral) rules, so a Turkish or Lithuanian user gets the same results as anyone.
//
// Each operation fails with invalidUTF8 for input that is not strict UTF-8, with textTooLong
// for input longer than maximumUTF8ByteCount, and with textServiceFailed if the library
// refuses; it never gives a partial result.

#include <cstddef>
#include <cstdint>
#include <expected>
#include <string>
#include <string_view>

namespace galdrine::platform {

// UnicodeTextError is the one failure of the Unicode text services, GraphemeClusters included.
// Text is always UTF-8 at their boundary; nothing is repaired or guessed.
enum class UnicodeTextError : std::uint8_t {
  invalidUTF8,        // the input is not strict UTF-8
  textTooLong,        // the input exceeds UnicodeText::maximumUTF8ByteCount
  textServiceFailed,  // the Unicode library refused (out of memory, missing data)
};

namespace UnicodeText {

// maximumUTF8ByteCount bounds every input. It lies far above any name or credential of the
// system, and keeps the work and memory of one call small although normalization may expand
// text several times over.
inline constexpr std::size_t maximumUTF8ByteCount = std::size_t{1} << 20;

// normalizedNFC is Normalization Form C (canonical decomposition, then composition).
[[nodiscard]] std::expected<std::string, UnicodeTextError> normalizedNFC(std::string_view text);

// normalizedNFKD is Normalization Form KD (compatibility decomposition): full-width letters
// become ASCII, ligatures come apart, accents stand as separate combining marks.
[[nodiscard]] std::expected<std::string, UnicodeTextError> normalizedNFKD(std::string_view text);

// lowercased maps to lower case with the root locale's rules ("İ" gives "i" and U+0307).
[[nodiscard]] std::expected<std::string, UnicodeTextError> lowercased(std::string_view text);

// caseFolded is Unicode full case folding with the default (non-Turkic) mappings: "ß" gives
// "ss", "ı" stays "ı". Two texts that are equal ignoring case have equal foldings.
[[nodiscard]] std::expected<std::string, UnicodeTextError> caseFolded(std::string_view text);

// caseAndDiacriticFolded is the comparison form that ignores case and accents: decompose
// canonically, drop every nonspacing mark (Mn), case-fold fully, decompose and drop Mn again
// (folding can bring new marks, as "İ" does), then compose to Form C. "Résumé" gives "resume".
// The result is in Form C whatever the form of the input.
[[nodiscard]] std::expected<std::string, UnicodeTextError> caseAndDiacriticFolded(std::string_view text);

// caseDiacriticAndWidthFolded first replaces every scalar whose compatibility decomposition is
// tagged <wide> or <narrow> by that decomposition (full-width "Ａ" becomes "A", half-width
// katakana become their ordinary forms), then applies caseAndDiacriticFolded.
[[nodiscard]] std::expected<std::string, UnicodeTextError> caseDiacriticAndWidthFolded(std::string_view text);

}  // namespace UnicodeText

}  // namespace galdrine::platform

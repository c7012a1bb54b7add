#pragma once
// FixtureJSONFields reads the members of one JSON object of a fixture the way a keyed decoder
// does: a required member that is absent, null, of another JSON type, or a number the field's
// type cannot hold exactly, marks the document as faulted and reads as an empty value. A whole
// document is thus read in one pass and judged once, and its values are used only when nothing
// faulted. Members the reader is not asked for are never looked at, so unknown keys are
// ignored.
//
// A reader refers to the parsed document and to the caller's fault flag; both must outlive it.
// Nothing here throws: parsing runs without exceptions and every value's type is checked
// before it is taken.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "GaldrinePlatform/GaldrineBytes.hpp"

class FixtureJSONFields {
 public:
  // A reader of `value`; a value that is not an object faults at once.
  FixtureJSONFields(const nlohmann::json& value, bool& faulted);

  [[nodiscard]] std::string text(const char* key) const;
  // unsignedInteger takes 0 to 2^64 - 1, signedInteger -2^63 to 2^63 - 1; a number written
  // with a fraction or exponent counts when it is exactly such an integer.
  [[nodiscard]] std::uint64_t unsignedInteger(const char* key) const;
  [[nodiscard]] std::int64_t signedInteger(const char* key) const;
  [[nodiscard]] FixtureJSONFields object(const char* key) const;
  // optionalObject is nothing for an absent or null member, and a reader of an object else.
  [[nodiscard]] std::optional<FixtureJSONFields> optionalObject(const char* key) const;
  // objects gives a reader for each element of an array member, in order.
  [[nodiscard]] std::vector<FixtureJSONFields> objects(const char* key) const;

 private:
  [[nodiscard]] const nlohmann::json* member(const char* key) const;
  void fault() const { *faulted_ = true; }

  const nlohmann::json* object_;  // nothing once the value turned out not to be an object
  bool* faulted_;
};

namespace FixtureJSON {

// parse reads `bytes` as one JSON document, without exceptions; text that is not JSON, not
// UTF-8, or has anything after the document gives nothing.
[[nodiscard]] std::optional<nlohmann::json> parse(ByteView bytes);

}  // namespace FixtureJSON

#pragma once
// DeterministicCBOR is the only codec of structured package data: a profile of CBOR
// in which every value has exactly one byte sequence. Definite lengths, shortest arguments,
// no tags, no floats, only false/true/null as simple values, unsigned map keys unique and
// ascending, valid UTF-8 text, no trailing bytes.
//
// Both directions are bounded by the caller's limits: a length is compared with its limit
// before any memory is taken for it, and recursion never goes deeper than maximumDepth.
// The first failure ends the call and nothing partial is returned. encode(decode(x)) == x
// for every x that decode accepts.

#include <cstdint>
#include <expected>

#include "format/cbor/CBORBorrowedValue.hpp"
#include "format/cbor/CBORError.hpp"
#include "format/cbor/CBORLimits.hpp"
#include "format/cbor/CBORValue.hpp"
#include "platform/Bytes.hpp"

namespace galdrine::format {

namespace DeterministicCBOR {

[[nodiscard]] std::expected<Bytes, CBORError> encode(const CBORValue& value, const CBORLimits& limits);

[[nodiscard]] std::expected<CBORValue, CBORError> decode(ByteView bytes, const CBORLimits& limits);

// decodeBorrowed accepts and refuses exactly what decode does, with the same errors, but its
// strings are views into `bytes`, which must outlive the result.
[[nodiscard]] std::expected<CBORBorrowedValue, CBORError> decodeBorrowed(ByteView bytes, const CBORLimits& limits);

// appendHead writes the head of one item (major type and argument, the argument in its
// shortest form) to the end of `output`. It is the encoder's own head writer, for writers
// that lay out an encoding themselves, such as a large byte string encrypted in place.
void appendHead(Bytes& output, std::uint8_t majorType, std::uint64_t argument);

}  // namespace DeterministicCBOR

}  // namespace galdrine::format

#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include <ZxBaseKit/TZxMessage.h>

// What writer and reader of the text format share.

namespace zx_xini {

/// Sections within sections, and values within values. Deeper text is refused: parser and
/// destructors go down by recursion.
constexpr unsigned long kMaxDepth = 100;

/// The message about a place in a text; both count from 1.
TZxMessage MessageAt(unsigned long line, unsigned long column, std::string_view what);

/// Throws when the text can nest deeper than `kMaxDepth`: by brackets, by dotted keys, or by both.
/// A text that is no valid TOML may pass; what stands before its first error has been measured.
void CheckDepthE(std::string_view text);

bool IsUtf8(std::string_view text);

/// The text of a double's bits, and back; false when `text` is no such text.
std::string BitsToText(std::uint64_t bits);
bool TextToBits(std::string_view text, std::uint64_t* bits);

} // namespace zx_xini

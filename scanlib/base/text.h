// Small functions on UTF-8 text: bounded copies into the caller's buffers, its letters.
#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

namespace orva {

/// The longest beginning of the text that fits into the bytes and ends between two characters.
std::string_view utf8Prefix(std::string_view text, std::size_t maxBytes);

/// Copies as much as fits, always with a terminator, never half a character. size counts the
/// terminator and is at least 1.
void copyText(std::string_view text, char* out, std::size_t size);

/// false when a terminator is missing.
bool isTerminated(const char* array, std::size_t size);

/// The letter that begins at this byte, which moves behind it; U+FFFD for what is no UTF-8.
char32_t nextLetter(std::string_view text, std::size_t& at);

/// Unicode letters. What is no UTF-8, and what neither PDF nor XML can hold (control characters,
/// lone surrogates, U+FFFE), becomes U+FFFD.
std::vector<char32_t> codePoints(std::string_view text);

} // namespace orva

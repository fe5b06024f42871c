// Eight pixels' bytes at a time, through the compiler's own vectors: the same source becomes SSE2
// on x86-64 and NEON on AArch64.
#pragma once

#include <cstdint>
#include <cstring>

namespace orva {

using Bytes8 = std::uint8_t __attribute__((vector_size(8)));
using Words8 = std::uint16_t __attribute__((vector_size(16)));

inline Words8 loadBytes(const std::uint8_t* from)
{
    Bytes8 bytes;
    std::memcpy(&bytes, from, sizeof bytes);
    return __builtin_convertvector(bytes, Words8);
}

inline Words8 loadWords(const std::uint16_t* from)
{
    Words8 words;
    std::memcpy(&words, from, sizeof words);
    return words;
}

/// Values up to 255.
inline void storeBytes(Words8 words, std::uint8_t* to)
{
    const Bytes8 bytes = __builtin_convertvector(words, Bytes8);
    std::memcpy(to, &bytes, sizeof bytes);
}

} // namespace orva

// What a file says of itself: title, date and the program that made it.
#pragma once

#include "scanlib/writers/writer.h"

#include <cstdint>
#include <string>
#include <vector>

namespace orva {

/// A file's name as a title: valid UTF-8, blanks for control characters, U+FFFD for what is no
/// character. All formats get the same.
std::string plainTitle(const std::string& fileName);
/// D:YYYYMMDDHHmmSS+08'00', local time with its distance from UTC (ISO 32000-1, 7.9.4).
std::string pdfDate(std::int64_t unixSeconds);

enum class PdfClaim
{
    kNone,
    kPdfA2b, ///< ISO 19005-2, which the PDF writer's files are built for
};
/// XMP packet (ISO 16684-1): dc:title, pdf:Producer, xmp:CreatorTool, xmp:CreateDate.
std::string xmpPacket(const DocumentInfo& info, PdfClaim claim);

/// A piece of a file that goes between its first `at` bytes and the rest.
struct Splice
{
    std::size_t at = 0; ///< 0: nothing to put in
    std::string bytes;
};
/// The facts of a picture that begins with these bytes (64 are enough): XMP in an APP1 segment
/// behind the header of a JPEG, text chunks (PNG 1.2, 11.3.4) behind that of a PNG. Nothing for
/// other kinds.
Splice pictureMetadata(const std::vector<std::uint8_t>& head, const DocumentInfo& info);

} // namespace orva

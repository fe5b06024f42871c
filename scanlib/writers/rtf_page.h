// One page of a rich text file.
#pragma once

#include "scanlib/base/page_text.h"
#include "scanlib/writers/writer.h"

#include <string>
#include <string_view>

namespace orva {

/// The page as a section of its size: paragraphs in reading order with the font sizes, indents and
/// distances of the scan, laid straight; tables that the page rules as tables, two columns as
/// columns. Most of a page is set in one size: small differences between its lines are those of
/// their measurement. Without a break in front.
std::string rtfPage(const EncodedPage& page, const PageText& text);

/// Text from UTF-8; tabs and line feeds become those of the format.
std::string rtfText(std::string_view utf8);
std::string rtfControl(const char* word, long value);

} // namespace orva

// The invisible text of a page image in an OFD page (GB/T 33190-2016, 11): objects that stand in
// the layer before the picture, which covers them, and are transparent besides. Every known reader
// paints that right, whichever of the two it honours.
#pragma once

#include "scanlib/base/page_text.h"
#include "scanlib/writers/writer.h"

#include <string>

namespace orva {

/// ID of the one font that all text refers to.
inline constexpr int kFontId = 1;

/// One TextObject a line. `lastId` is the highest ID in use, before and afterwards.
std::string ofdTextObjects(const PageText& text, const EncodedPage& page, int& lastId);

} // namespace orva

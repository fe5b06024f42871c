// Where the words of a line with Chinese letters stand. The recogniser's network tells their places
// to about a letter; the ink tells them to a pixel: Chinese letters stand in cells of one width,
// with little ink on the borders between them.
#pragma once

#include "scanlib/base/page_text.h"
#include "scanlib/ocr/gray_picture.h"

namespace orva {

/// Moves the left and right ends of words to the borders of their letters' cells, on the horizontal
/// lines that hold Chinese letters. The picture is the one that was read. Any thread.
void placeWordsOnInk(const GrayPicture& picture, PageText& text);

} // namespace orva

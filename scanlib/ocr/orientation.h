// Which way up a page is: by the shapes of its characters, and where these leave a doubt, by how
// well each turn can be read.
#pragma once

#include "scanlib/base/page.h"
#include "scanlib/ocr/text_engine.h"

namespace orva {

/// true when the guess can be acted upon.
bool isSure(const OrientationGuess& guess);

/// kFast looks at a part of the page, the other modes at all of it.
OrientationGuess guessOrientation(
    const Page& page, TextOrientation mode, TextEngine& engine, GrayPicture& picture);

/// Reads part of the page in all four turns and takes the one that reads best; kNone when none is
/// clearly better. `engine` has the models of the languages. kCancelled.
Status readTurns(const Page& page, TextEngine& engine, GrayPicture& picture, const StopWish& stop,
    RotateAngle& out);

} // namespace orva

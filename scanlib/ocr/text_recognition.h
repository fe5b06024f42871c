// Recognition of the text on pages and of the way up that a page is, with models that are loaded
// once and kept. The library's only door to a recogniser.
#pragma once

#include "scanlib/base/page.h"
#include "scanlib/base/page_text.h"
#include "scanlib/base/status.h"
#include "sdk/codes.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <string>

namespace orva {

struct RecognitionSettings
{
    /// Names of models, joined by "+"; the first one is the chief one.
    std::string languages = "chi_sim+eng";
    /// Where the models lie; empty for the place where the system installs them.
    std::filesystem::path models;
    /// The library that the recogniser is in: libOrva_OCR.so.
    std::filesystem::path engineFile;
};

/// What a job will ask for.
struct RecognitionNeeds
{
    bool text = false;
    bool orientation = false;
};

/// true when a recognition is to give up; asked every few milliseconds to a few hundred.
using StopWish = std::function<bool()>;

/// Any thread, all functions; each call that runs at the same time takes a recogniser of its own,
/// and each recogniser works on its calling thread alone. Recognisers are kept until the end.
class TextRecognition
{
public:
    virtual ~TextRecognition() = default;

    /// Loads a first recogniser in the background. Never blocks; what is wrong is told by
    /// prepare().
    virtual void warmUp() = 0;
    /// Before paper is fed: whether all that is needed is there. May load models, some 0.2 s.
    /// kModelMissing (the detail names the package), kNoMemory.
    virtual Status prepare(const RecognitionNeeds& needs) = 0;
    /// The text of a page of any pixel format, with places in its pixels. A page without text gives
    /// none. kCancelled when it was to stop; kRecognitionFailed, kModelMissing, kNoMemory. `out` is
    /// empty after a failure. May go on for seconds after it was to stop.
    virtual Status read(const Page& page, const StopWish& stop, PageText& out) = 0;
    /// The turn that puts the page upright; kNone where too little text tells. Codes as above;
    /// `out` is kNone after a failure.
    virtual Status findTurn(
        const Page& page, TextOrientation mode, const StopWish& stop, RotateAngle& out) = 0;
};

std::unique_ptr<TextRecognition> makeTextRecognition(const RecognitionSettings& settings);

} // namespace orva

// One recogniser with its models: text of a picture, and the turn that it needs. What makes them
// stands in a library of its own, libOrva_OCR.so, so that Tesseract and all that comes with it is
// loaded by the first job that reads, and pictures are scanned where it is not installed.
#pragma once

#include "scanlib/base/page_text.h"
#include "scanlib/base/status.h"
#include "scanlib/ocr/gray_picture.h"
#include "scanlib/ocr/text_recognition.h"
#include "sdk/codes.h"

#include <cstddef>
#include <filesystem>
#include <memory>
#include <string>

namespace orva {

/// What the detection of orientation says.
struct OrientationGuess
{
    RotateAngle turn = RotateAngle::kNone;
    double confidence = 0; ///< from 0, without an upper end; 0 when there was too little text
};

/// One thread at a time. Works on the calling thread alone and prints nothing.
class TextEngine
{
public:
    virtual ~TextEngine() = default;

    /// Once, before anything else. kModelMissing when a model cannot be loaded.
    virtual Status load(const std::filesystem::path& folder, const std::string& languages) = 0;
    /// kCancelled, kRecognitionFailed. `stop` is asked between lines of text, not while the page is
    /// taken apart.
    virtual Status read(const GrayPicture& picture, const StopWish& stop, PageText& out) = 0;
    /// With the orientation model.
    virtual OrientationGuess guessOrientation(const GrayPicture& picture) = 0;
};

/// What the library of the recognition hands out. C++ objects cross this border as they are: both
/// sides must be of one build.
struct EngineEntry
{
    const char* version; ///< kEngineVersion of the library
    std::size_t layout; ///< kEngineLayout of the library
    /// Throws std::bad_alloc.
    std::unique_ptr<TextEngine> (*make)();
};

inline constexpr const char* kEngineVersion = ORVA_VERSION;
inline constexpr std::size_t kEngineLayout =
    ((sizeof(GrayPicture) * 256 + sizeof(Word)) * 256 + sizeof(TextLine)) * 256 + sizeof(Status);
/// The library's one symbol.
extern "C" const EngineEntry* orvaTextEngine();
inline constexpr const char* kEngineSymbol = "orvaTextEngine";

} // namespace orva

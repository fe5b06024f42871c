// One Tesseract with its models: text of a picture, and the turn that it needs.
#pragma once

#include "scanlib/base/page_text.h"
#include "scanlib/base/status.h"
#include "scanlib/ocr/gray_picture.h"
#include "scanlib/ocr/text_recognition.h"

#include <chrono>
#include <filesystem>
#include <memory>
#include <string>

namespace tesseract {
class TessBaseAPI;
}

namespace orva {

/// What the detection of orientation says.
struct OrientationGuess
{
    RotateAngle turn = RotateAngle::kNone;
    double confidence = 0; ///< from 0, without an upper end; 0 when there was too little text
};

/// One thread at a time. Works on the calling thread alone and prints nothing.
class TesseractEngine
{
public:
    TesseractEngine();
    ~TesseractEngine();
    TesseractEngine(const TesseractEngine&) = delete;
    TesseractEngine& operator=(const TesseractEngine&) = delete;

    /// Once, before anything else. kModelMissing when a model cannot be loaded.
    Status load(const std::filesystem::path& folder, const std::string& languages);
    /// kCancelled, kRecognitionFailed (also when the time is over).
    Status read(const GrayPicture& picture, const StopWish& stop, std::chrono::seconds limit,
        PageText& out);
    /// With the orientation model.
    OrientationGuess guessOrientation(const GrayPicture& picture);

private:
    void show(const GrayPicture& picture);

    std::unique_ptr<tesseract::TessBaseAPI> m_api;
};

/// Letters of a word: its characters.
int letterCount(const Word& word);

} // namespace orva

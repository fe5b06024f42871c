// The recogniser that Tesseract makes. Nothing outside of libOrva_OCR.so sees it.
#pragma once

#include "scanlib/ocr/text_engine.h"

#include <filesystem>
#include <memory>
#include <string>

namespace tesseract {
class TessBaseAPI;
}

namespace orva {

class TesseractEngine : public TextEngine
{
public:
    TesseractEngine();
    ~TesseractEngine() override;
    TesseractEngine(const TesseractEngine&) = delete;
    TesseractEngine& operator=(const TesseractEngine&) = delete;

    Status load(const std::filesystem::path& folder, const std::string& languages) override;
    Status read(const GrayPicture& picture, const StopWish& stop, PageText& out) override;
    OrientationGuess guessOrientation(const GrayPicture& picture) override;

private:
    void show(const GrayPicture& picture);

    std::unique_ptr<tesseract::TessBaseAPI> m_api;
};

} // namespace orva

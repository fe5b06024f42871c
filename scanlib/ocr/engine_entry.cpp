// The one symbol of libOrva_OCR.so.
#include "scanlib/ocr/tesseract_engine.h"
#include "scanlib/ocr/text_engine.h"

namespace {

std::unique_ptr<orva::TextEngine> make()
{
    return std::make_unique<orva::TesseractEngine>();
}

} // namespace

extern "C" __attribute__((visibility("default"))) const orva::EngineEntry* orva::orvaTextEngine()
{
    static constexpr EngineEntry kEntry { kEngineVersion, kEngineLayout, make };
    return &kEntry;
}

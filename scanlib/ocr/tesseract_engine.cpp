// Tesseract 5 through its C++ interface. Recognition by the LSTM networks only: the older
// recogniser has no part in it, but detects orientation.
#include "scanlib/ocr/tesseract_engine.h"

#include "scanlib/ocr/one_thread.h"

#include <leptonica/allheaders.h>
#include <tesseract/baseapi.h>
#include <tesseract/ocrclass.h>
#include <tesseract/resultiterator.h>

#include <algorithm>
#include <memory>
#include <mutex>

namespace orva {

namespace {

// Outside of these Tesseract guesses the resolution.
constexpr int kMinDpi = 70;
constexpr int kMaxDpi = 2400;
/// With fewer characters than this a page says nothing about its orientation.
constexpr const char* kMinCharactersForOrientation = "12";

/// Tesseract tells ink from paper by one level for the whole page. Where that makes so much of it
/// black, it is not ink: dark backing, a shadow, grey paper beside white.
constexpr double kMostInk = 0.2;
/// A level for each place (Sauvola) follows uneven light, but sees more dust.
constexpr const char* kOneLevel = "0";
constexpr const char* kLocalLevels = "2";
/// How far below the paper's level ink must lie, in parts of the usual contrast; keeps thin
/// strokes.
constexpr const char* kLocalContrast = "0.2";

/// Once a process: both libraries print to stderr unless told otherwise, and that is the host's.
void silence(tesseract::TessBaseAPI& api)
{
    static std::once_flag once;
    std::call_once(once, [&] {
        setMsgSeverity(L_SEVERITY_NONE);
        api.SetVariable("debug_file", "/dev/null");
    });
}

/// Loading shares tables within Tesseract.
std::mutex& loadMutex()
{
    static std::mutex mutex;
    return mutex;
}

/// What the running recognition is asked, word by word.
struct Watch
{
    const StopWish& stop;
    bool stopped = false;

    static bool isOver(void* self, int /*words*/)
    {
        auto& watch = *static_cast<Watch*>(self);
        watch.stopped = watch.stopped || (watch.stop && watch.stop());
        return watch.stopped;
    }
};

using tesseract::PageIteratorLevel;
using tesseract::ResultIterator;

TextBox boxAt(const ResultIterator& at, PageIteratorLevel level)
{
    TextBox box;
    at.BoundingBox(level, &box.left, &box.top, &box.right, &box.bottom);
    return box;
}

/// Without blanks and control characters, whatever the model made.
std::string wordAt(const ResultIterator& at)
{
    const std::unique_ptr<char[]> text(at.GetUTF8Text(tesseract::RIL_WORD));
    std::string word = text ? text.get() : "";
    word.erase(std::remove_if(word.begin(), word.end(),
                   [](char c) { return static_cast<unsigned char>(c) <= ' ' || c == '\x7f'; }),
        word.end());
    return word;
}

TextLine lineAt(const ResultIterator& at)
{
    TextLine line;
    line.box = boxAt(at, tesseract::RIL_TEXTLINE);
    line.baselineLeft = line.baselineRight = line.box.bottom;
    int left = 0;
    int leftY = 0;
    int right = 0;
    int rightY = 0;
    if (at.Baseline(tesseract::RIL_TEXTLINE, &left, &leftY, &right, &rightY) && right > left) {
        line.baselineLeft = leftY;
        line.baselineRight = rightY;
    }
    return line;
}

void collect(ResultIterator& at, PageText& out)
{
    bool newParagraph = true;
    bool newLine = true;
    do {
        newParagraph = newParagraph || at.IsAtBeginningOf(tesseract::RIL_PARA);
        newLine = newLine || newParagraph || at.IsAtBeginningOf(tesseract::RIL_TEXTLINE);
        Word word;
        word.text = wordAt(at);
        if (word.text.empty()) {
            continue;
        }
        word.box = boxAt(at, tesseract::RIL_WORD);
        word.confidence =
            std::clamp(static_cast<double>(at.Confidence(tesseract::RIL_WORD)), 0.0, 100.0);
        if (newParagraph) {
            out.paragraphs.emplace_back();
            out.paragraphs.back().box = boxAt(at, tesseract::RIL_PARA);
        }
        if (newLine) {
            out.paragraphs.back().lines.push_back(lineAt(at));
        }
        newParagraph = newLine = false;
        out.paragraphs.back().lines.back().words.push_back(std::move(word));
    } while (at.Next(tesseract::RIL_WORD));
}

/// Of the shown picture in black and white; Tesseract keeps that for the reading.
double blackPart(tesseract::TessBaseAPI& api)
{
    l_float32 part = 0;
    Pix* picture = api.GetThresholdedImage();
    if (picture != nullptr) {
        pixForegroundFraction(picture, &part);
        pixDestroy(&picture);
    }
    return static_cast<double>(part);
}

} // namespace

TesseractEngine::TesseractEngine()
    : m_api(std::make_unique<tesseract::TessBaseAPI>())
{
    silence(*m_api);
}

TesseractEngine::~TesseractEngine() = default;

Status TesseractEngine::load(const std::filesystem::path& folder, const std::string& languages)
{
    const OneThread here;
    const std::lock_guard<std::mutex> lock(loadMutex());
    if (m_api->Init(folder.c_str(), languages.c_str(), tesseract::OEM_DEFAULT) != 0) {
        return { kModelMissing,
            "models in " + folder.string() + " cannot be loaded: " + languages };
    }
    m_api->SetVariable("min_characters_to_try", kMinCharactersForOrientation);
    m_api->SetVariable("thresholding_kfactor", kLocalContrast);
    return {};
}

void TesseractEngine::show(const GrayPicture& picture)
{
    m_api->SetImage(picture.pixels.data(), picture.width, picture.height, 1, picture.width);
    m_api->SetSourceResolution(std::clamp(picture.dpi, kMinDpi, kMaxDpi));
}

Status TesseractEngine::read(const GrayPicture& picture, const StopWish& stop, PageText& out)
{
    const OneThread here;
    out = {};
    m_api->SetPageSegMode(tesseract::PSM_AUTO);
    m_api->SetVariable("thresholding_method", kOneLevel);
    show(picture);
    if (blackPart(*m_api) > kMostInk) {
        m_api->SetVariable("thresholding_method", kLocalLevels);
        show(picture);
    }
    Watch watch { stop };
    tesseract::ETEXT_DESC monitor;
    monitor.cancel = Watch::isOver;
    monitor.cancel_this = &watch;
    const int result = m_api->Recognize(&monitor);
    if (result == 0 && !watch.stopped) {
        const std::unique_ptr<ResultIterator> at(m_api->GetIterator());
        if (at && !at->Empty(tesseract::RIL_WORD)) {
            collect(*at, out);
        }
    }
    m_api->Clear();
    // The next page is read as if it were the first.
    m_api->ClearAdaptiveClassifier();
    if (watch.stopped) {
        return { kCancelled, "recognition was stopped" };
    }
    return result == 0 ? Status() : Status(kRecognitionFailed, "recognition failed");
}

OrientationGuess TesseractEngine::guessOrientation(const GrayPicture& picture)
{
    const OneThread here;
    m_api->SetPageSegMode(tesseract::PSM_OSD_ONLY);
    show(picture);
    int degrees = 0;
    float confidence = 0;
    const char* script = nullptr;
    float scriptConfidence = 0;
    const bool found =
        m_api->DetectOrientationScript(&degrees, &confidence, &script, &scriptConfidence);
    m_api->Clear();
    if (!found) {
        return {};
    }
    OrientationGuess guess;
    // The angle is the one by which the page lies turned clockwise.
    guess.turn = degrees == 90 ? RotateAngle::kLeft90
        : degrees == 180       ? RotateAngle::k180
        : degrees == 270       ? RotateAngle::kRight90
                               : RotateAngle::kNone;
    guess.confidence = std::max(0.0, static_cast<double>(confidence));
    return guess;
}

} // namespace orva

// The pools of recognisers behind the interface.
#include "scanlib/ocr/text_recognition.h"

#include "scanlib/base/library_log.h"
#include "scanlib/ocr/engine_library.h"
#include "scanlib/ocr/letter_cells.h"
#include "scanlib/ocr/models.h"
#include "scanlib/ocr/orientation.h"
#include "scanlib/ocr/recogniser_pool.h"
#include "scanlib/ocr/straightening.h"
#include "scanlib/ocr/text_engine.h"
#include "scanlib/page/ops/reduced.h"
#include "scanlib/page/ops/skew.h"

#include <cmath>
#include <mutex>
#include <new>
#include <thread>

namespace orva {

namespace {

/// Tilts of less than this cost the recognition nothing.
constexpr double kLeastTilt = 1.0;
/// What the measure of tilt wants.
constexpr double kTiltDpi = 100;

/// What a worker needs for a page, with the memory of the page before.
struct Reader
{
    std::unique_ptr<TextEngine> engine;
    GrayPicture picture;
    GrayPicture straight;
};

using ReaderPool = RecogniserPool<Reader>;

/// Gives a reader back when the page is done, in whatever way.
class Borrowed
{
public:
    explicit Borrowed(ReaderPool& pool)
        : m_pool(pool)
    {
    }
    ~Borrowed()
    {
        if (m_reader) {
            m_pool.give(std::move(m_reader));
        }
    }
    Borrowed(const Borrowed&) = delete;
    Borrowed& operator=(const Borrowed&) = delete;

    Status take(const RecognitionSettings& settings, const std::string& languages)
    {
        m_reader = m_pool.take();
        if (m_reader) {
            return {};
        }
        std::filesystem::path folder;
        if (Status status = findModels(settings, languages, folder); !status.ok()) {
            return status;
        }
        auto made = std::make_unique<Reader>();
        Status status = makeEngine(settings.engineFile, made->engine);
        if (status.ok()) {
            status = made->engine->load(folder, languages);
        }
        if (!status.ok()) {
            return status;
        }
        libraryLog("models %s loaded from %s", languages.c_str(), folder.c_str());
        m_reader = std::move(made);
        return {};
    }
    Reader& operator*() { return *m_reader; }
    Reader* operator->() { return m_reader.get(); }

private:
    ReaderPool& m_pool;
    ReaderPool::Item m_reader;
};

/// Reads the page as if it lay straight; the words' places are those on the page as it lies.
Status readStraight(const Page& page, const StopWish& stop, Reader& reader, PageText& out)
{
    takeGray(page, wholePage(page), 1, reader.picture);
    const double tilt = textSkewDegrees(reducedGray(page, kTiltDpi).gray);
    if (std::abs(tilt) < kLeastTilt) {
        Status status = reader.engine->read(reader.picture, stop, out);
        placeWordsOnInk(reader.picture, out);
        return status;
    }
    const Straightening straightening(reader.picture.width, reader.picture.height, tilt);
    straightening.straighten(reader.picture, reader.straight);
    Status status = reader.engine->read(reader.straight, stop, out);
    placeWordsOnInk(reader.straight, out);
    straightening.tiltBack(out);
    return status;
}

template <typename Body>
Status guarded(Body body)
{
    try {
        return body();
    } catch (const std::bad_alloc&) {
        return { kNoMemory, "no memory for the recognition" };
    } catch (const std::exception& error) {
        return { kRecognitionFailed, error.what() };
    }
}

class PooledRecognition : public TextRecognition
{
public:
    explicit PooledRecognition(const RecognitionSettings& settings)
        : m_settings(settings)
    {
    }

    ~PooledRecognition() override { waitWarm(); }

    void warmUp() override
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (!m_warming.joinable() && !m_text.hasFree()) {
            m_warming = std::thread([this] {
                const Status loaded = loadFirst(m_text, m_settings.languages);
                if (!loaded.ok()) {
                    libraryLog("%s", loaded.detail().c_str());
                }
            });
        }
    }

    Status prepare(const RecognitionNeeds& needs) override
    {
        Status status;
        if (needs.orientation) {
            status = loadFirst(m_orientation, kOrientationModel);
        }
        if (status.ok() && needs.text) {
            waitWarm();
            status = loadFirst(m_text, m_settings.languages);
        }
        return status;
    }

    Status read(const Page& page, const StopWish& stop, PageText& out) override
    {
        out = {};
        return guarded([&]() -> Status {
            Borrowed reader(m_text);
            if (Status status = reader.take(m_settings, m_settings.languages); !status.ok()) {
                return status;
            }
            return readStraight(page, stop, *reader, out);
        });
    }

    Status findTurn(
        const Page& page, TextOrientation mode, const StopWish& stop, RotateAngle& out) override
    {
        out = RotateAngle::kNone;
        return guarded([&]() -> Status {
            Borrowed reader(m_orientation);
            if (Status status = reader.take(m_settings, kOrientationModel); !status.ok()) {
                return status;
            }
            const OrientationGuess guess =
                guessOrientation(page, mode, *reader->engine, reader->picture);
            if (isSure(guess) || mode != TextOrientation::kComplex) {
                out = isSure(guess) ? guess.turn : RotateAngle::kNone;
                return {};
            }
            Borrowed words(m_text);
            Status status = words.take(m_settings, m_settings.languages);
            if (status.ok()) {
                status = readTurns(page, *words->engine, words->picture, stop, out);
            }
            return status;
        });
    }

private:
    /// One free recogniser or what stands in its way.
    Status loadFirst(ReaderPool& pool, const std::string& languages)
    {
        return guarded([&] {
            Borrowed first(pool);
            return first.take(m_settings, languages);
        });
    }

    void waitWarm()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (m_warming.joinable()) {
            m_warming.join();
        }
    }

    const RecognitionSettings m_settings;
    std::mutex m_mutex; ///< guards the thread
    std::thread m_warming;
    ReaderPool m_text;
    ReaderPool m_orientation;
};

} // namespace

std::unique_ptr<TextRecognition> makeTextRecognition(const RecognitionSettings& settings)
{
    return std::make_unique<PooledRecognition>(settings);
}

} // namespace orva

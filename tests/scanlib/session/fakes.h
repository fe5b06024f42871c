// Scripted parts for the session: a scanner, an image room and a file format whose files tell what
// is in them, and a recorder behind the two callbacks.
#pragma once

#include "scanlib/session/session.h"
#include "tests/scanlib/temporary_folder.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace fakes {

using namespace std::chrono_literals;

/// What the scanner does; shared by all devices of a test, read while they run.
struct DeviceScript
{
    int sheets = 3;
    bool duplex = false;
    int sidePixels = 64; ///< width and height
    std::chrono::milliseconds perSide { 0 };
    std::map<int, orva::ResultCode> faultAtSide;
    bool paper = true;
    int button = 0;
    orva::DeviceTiming timing { { true, 1, 60, 1, 'm', 15 }, {}, true, false, 2.0F, true };

    std::atomic<bool> openHangs { false }; ///< until it is cancelled, or 10 s

    orva::AcquireSettings settings; ///< the last
    std::atomic<int> waits { 0 }; ///< for the next side
    std::atomic<int> delivered { 0 };
    std::atomic<int> endBatches { 0 };
    std::atomic<int> opens { 0 };
    std::atomic<int> inside { 0 }; ///< calls running now: more than one is a fault of the session
    std::atomic<bool> overlapped { false };
};

/// What the image room and the encoder do.
struct PageScript
{
    std::function<void(int number)> duringEncode;
    int failOperationsAt = 0;
    int blankSide = 0;
    bool wholeSheets = false;
    int failWriterAtPage = 0; ///< the writer finds the disk full at this page
    std::atomic<int> encoded { 0 };
    std::atomic<int> groups { 0 };
};

struct Event
{
    int state = 0; ///< kErrorEvent for the error callback
    int page = 0; ///< or the error code
    std::string file;
    std::chrono::steady_clock::time_point time;
};
constexpr int kErrorEvent = 1000;

/// Behind the plain callback functions; one test at a time.
class Recorder
{
public:
    static Recorder& instance();
    static void state(int state, int page, std::string file);
    static int error(int code);

    void reset();
    /// Called within the callback, after the event was recorded.
    void setHook(std::function<void(const Event&)> hook);
    std::vector<Event> events();
    int count(int state);
    std::vector<std::string> files();
    bool waitFor(int state, int number, std::chrono::milliseconds limit = 10s);

private:
    void record(Event event);

    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::vector<Event> m_events;
    std::function<void(const Event&)> m_hook;
};

class FakeDriver : public orva::Driver
{
public:
    explicit FakeDriver(DeviceScript& script, std::vector<orva::DeviceIdentity> list = {});
    const char* name() const override { return "fake"; }
    std::vector<orva::DeviceIdentity> enumerate(std::chrono::milliseconds limit) override;
    std::unique_ptr<orva::Device> create(const orva::DeviceIdentity& identity) override;

    std::vector<orva::DeviceIdentity> list;

private:
    DeviceScript& m_script;
};

orva::PageTools fakeTools(PageScript& script);

/// Recognises nothing: every page comes with one word of a letter of its own, wordOf(number),
/// but the one that cannot be read.
class WordyRecognition : public orva::TextRecognition
{
public:
    explicit WordyRecognition(int unreadable = 0, std::size_t letters = 20'000);
    void warmUp() override { }
    orva::Status prepare(const orva::RecognitionNeeds& needs) override;
    orva::Status read(
        const orva::Page& page, const orva::StopWish& stop, orva::PageText& out) override;
    orva::Status findTurn(const orva::Page& page, orva::TextOrientation mode,
        const orva::StopWish& stop, orva::RotateAngle& out) override;

private:
    const int m_unreadable;
    const std::size_t m_letters;
};
std::string wordOf(int number, std::size_t letters = 20'000);

/// Pages (by number) that a file of the fake format holds; {-1} when it is not complete.
std::vector<int> pagesOf(const std::filesystem::path& file);

struct FileChoice
{
    orva::FileFormat format = orva::FileFormat::kJpg;
    bool multiPage = false;
    bool overwrite = false;
};
FileParam fileParam(const std::filesystem::path& folder, const FileChoice& choice = {});

/// An initialised session with a scanner selected, output in a folder of its own.
class SessionTest : public ::testing::Test
{
protected:
    SessionTest();
    ~SessionTest() override;

    orva::SessionParts parts();
    /// What a test has otherwise; applied by parts().
    std::function<void(orva::SessionParts&)> changeParts;
    /// Releases the session and makes a new one, as a new start of the application does.
    void restart();
    void setUpSession();
    void choose(const FileChoice& choice);
    /// All pages in all files of the output folder, in the order of the file names.
    std::vector<int> savedPages();
    std::vector<std::string> visibleNames();
    /// Until the recovery that Init started has nothing left to save.
    void waitForRecovery();

    TemporaryFolder folder;
    std::filesystem::path output;
    DeviceScript device;
    PageScript pages;
    orva::PipelineLimits limits { 2, 1U << 20U };
    std::unique_ptr<orva::Session> session;
};

std::vector<int> upTo(int last);

} // namespace fakes

// The session under the tests: what it is made of, what it was heard to say, and its files.
#include "tests/scanlib/session/fakes.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <numeric>
#include <sstream>
#include <thread>

using namespace orva;

namespace fakes {

Recorder& Recorder::instance()
{
    static Recorder recorder;
    return recorder;
}

void Recorder::state(int state, int page, std::string file)
{
    instance().record({ state, page, std::move(file), std::chrono::steady_clock::now() });
}

int Recorder::error(int code)
{
    instance().record({ kErrorEvent, code, "", std::chrono::steady_clock::now() });
    return 0;
}

void Recorder::record(Event event)
{
    std::function<void(const Event&)> hook;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_events.push_back(event);
        hook = m_hook;
        m_changed.notify_all();
    }
    if (hook) {
        hook(event);
    }
}

void Recorder::reset()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_events.clear();
    m_hook = nullptr;
}

void Recorder::setHook(std::function<void(const Event&)> hook)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_hook = std::move(hook);
}

std::vector<Event> Recorder::events()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_events;
}

int Recorder::count(int state)
{
    const std::vector<Event> all = events();
    return static_cast<int>(std::count_if(
        all.begin(), all.end(), [&](const Event& event) { return event.state == state; }));
}

std::vector<std::string> Recorder::files()
{
    std::vector<std::string> files;
    for (const Event& event : events()) {
        if (event.state == 2) {
            files.push_back(event.file);
        }
    }
    return files;
}

bool Recorder::waitFor(int state, int number, std::chrono::milliseconds limit)
{
    std::unique_lock<std::mutex> lock(m_mutex);
    return m_changed.wait_for(lock, limit, [&] {
        return std::count_if(m_events.begin(), m_events.end(), [&](const Event& event) {
            return event.state == state;
        }) >= number;
    });
}

std::vector<int> pagesOf(const std::filesystem::path& file)
{
    std::istringstream lines(contentOf(file));
    std::vector<int> numbers;
    int end = -1;
    for (std::string line; std::getline(lines, line);) {
        int value = 0;
        if (std::sscanf(line.c_str(), "page %d", &value) == 1) {
            numbers.push_back(value);
        } else if (std::sscanf(line.c_str(), "end %d", &value) == 1) {
            end = value;
        }
    }
    return end == static_cast<int>(numbers.size()) ? numbers : std::vector<int> { -1 };
}

FileParam fileParam(const std::filesystem::path& folder, const FileChoice& choice)
{
    FileParam param {};
    std::strncpy(param.szFilePath, folder.c_str(), sizeof(param.szFilePath) - 1);
    std::strncpy(param.szIndex, "001", sizeof(param.szIndex) - 1);
    param.bSameNameCover = choice.overwrite ? 1 : 0;
    param.nFormatIndex = static_cast<int>(choice.format);
    param.nMultiPage = choice.multiPage ? 1 : 0;
    return param;
}

SessionTest::SessionTest()
    : output(folder.path() / "out")
{
    std::filesystem::create_directory(output);
    Recorder::instance().reset();
    setUpSession();
}

WordyRecognition::WordyRecognition(int unreadable, std::size_t letters)
    : m_unreadable(unreadable)
    , m_letters(letters)
{
}

Status WordyRecognition::prepare(const RecognitionNeeds& /*needs*/)
{
    return {};
}

Status WordyRecognition::read(const Page& page, const StopWish& /*stop*/, PageText& out)
{
    return page.number == m_unreadable
        ? Status(kRecognitionFailed, "cannot be read")
        : parsePageText(
            "P 0 0 9 9\nL 0 0 9 9 9 9\nW 0 0 9 9 50 " + wordOf(page.number, m_letters) + '\n', out);
}

Status WordyRecognition::findTurn(
    const Page& /*page*/, TextOrientation /*mode*/, const StopWish& /*stop*/, RotateAngle& out)
{
    out = RotateAngle::kNone;
    return {};
}

std::string wordOf(int number, std::size_t letters)
{
    return std::string(letters, static_cast<char>('a' + number % 26));
}

SessionTest::~SessionTest()
{
    session.reset();
    EXPECT_FALSE(device.overlapped) << "two threads were in the device at one time";
}

SessionParts SessionTest::parts()
{
    SessionParts result;
    result.paths.spool = folder.path() / "spool";
    result.makeDrivers = [this](const LibraryPaths&) {
        std::vector<std::unique_ptr<Driver>> drivers;
        drivers.push_back(std::make_unique<FakeDriver>(device));
        return drivers;
    };
    result.tools = fakeTools(pages);
    result.config.limits = limits;
    result.paths.config = folder.path() / "orva-sdk.conf";
    if (changeParts) {
        changeParts(result);
    }
    return result;
}

void SessionTest::setUpSession()
{
    session = std::make_unique<Session>(parts());
    EXPECT_EQ(session->init(), kOk);
    EXPECT_EQ(session->scannerCount(), 1);
    EXPECT_EQ(session->selectScanner(0), kOk);
    session->setStateCallback(Recorder::state);
    session->setErrorCallback(Recorder::error);
    choose({});
}

void SessionTest::restart()
{
    session.reset();
    setUpSession();
}

void SessionTest::choose(const FileChoice& choice)
{
    EXPECT_EQ(session->setFileParam(fileParam(output, choice)), kOk);
}

std::vector<std::string> SessionTest::visibleNames()
{
    std::vector<std::string> names = namesIn(output);
    names.erase(std::remove_if(names.begin(), names.end(),
                    [](const std::string& name) { return name.front() == '.'; }),
        names.end());
    return names;
}

std::vector<int> SessionTest::savedPages()
{
    std::vector<int> all;
    for (const std::string& name : visibleNames()) {
        const std::vector<int> some = pagesOf(output / name);
        all.insert(all.end(), some.begin(), some.end());
    }
    return all;
}

void SessionTest::waitForRecovery()
{
    const auto deadline = std::chrono::steady_clock::now() + 20s;
    while (
        !namesIn(folder.path() / "spool").empty() && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::sleep_for(2ms);
    }
}

std::vector<int> upTo(int last)
{
    std::vector<int> numbers(static_cast<std::size_t>(last));
    std::iota(numbers.begin(), numbers.end(), 1);
    return numbers;
}

} // namespace fakes

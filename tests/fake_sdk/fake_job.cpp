#include "tests/fake_sdk/fake_job.h"

#include "sdk/result_codes.h"

#include <array>
#include <chrono>
#include <cstdint>
#include <fstream>

namespace fake {
namespace {

void putNumber(std::string& out, std::uint32_t value, int bytes)
{
    for (int i = 0; i < bytes; ++i) {
        out += static_cast<char>((value >> (8 * i)) & 0xFFU);
    }
}

// A 24-bit BMP with a gradient, whatever the name says: readers go by the content.
std::string pictureBytes(int width, int height)
{
    constexpr int kHeader = 54;
    const int rowBytes = (width * 3 + 3) / 4 * 4;
    const int imageBytes = rowBytes * height;
    std::string out = "BM";
    putNumber(out, static_cast<std::uint32_t>(kHeader + imageBytes), 4);
    putNumber(out, 0, 4);
    putNumber(out, kHeader, 4);
    putNumber(out, 40, 4);
    putNumber(out, static_cast<std::uint32_t>(width), 4);
    putNumber(out, static_cast<std::uint32_t>(height), 4);
    putNumber(out, 1, 2);
    putNumber(out, 24, 2);
    for (int i = 0; i < 6; ++i) {
        putNumber(out, 0, 4);
    }
    for (int y = 0; y < height; ++y) {
        std::string row(static_cast<std::size_t>(rowBytes), '\0');
        for (int x = 0; x < width * 3; ++x) {
            row[static_cast<std::size_t>(x)] = static_cast<char>((x + y) & 0x7F);
        }
        out += row;
    }
    return out;
}

} // namespace

Jobs::~Jobs()
{
    finishAll();
}

void Jobs::setStateCallback(OrvaStateCallback callback)
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_stateCallback = callback;
}

void Jobs::setErrorCallback(OrvaErrorCallback callback)
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_errorCallback = callback;
}

int Jobs::run(const JobScript& script, const std::string& folder)
{
    {
        const std::lock_guard<std::mutex> guard(m_mutex);
        if (m_running) {
            return orva::kBusy;
        }
        m_running = true;
        m_cancelled = false;
    }
    std::thread worker([&] { play(script, folder); });
    worker.join();
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_running = false;
    m_changed.notify_all();
    return m_cancelled ? orva::kCancelled : orva::kOk;
}

void Jobs::play(const JobScript& script, const std::string& folder)
{
    for (const Step& step : script.steps) {
        if (cancelled()) {
            break;
        }
        perform(step, folder);
    }
    for (int i = 0; i < script.ends; ++i) {
        reportState(-1, 0, {});
    }
}

void Jobs::perform(const Step& step, const std::string& folder)
{
    switch (step.kind) {
    case Step::Kind::kState:
        reportState(step.number, step.page, step.name);
        break;
    case Step::Kind::kImage: {
        const std::string path = folder + '/' + step.name;
        std::ofstream(path, std::ios::binary) << pictureBytes(step.width, step.height);
        reportState(2, step.page, path);
        break;
    }
    case Step::Kind::kError:
        reportError(step.number);
        break;
    case Step::Kind::kSleep:
        pauseFor(step.number);
        break;
    case Step::Kind::kWait:
        waitForRelease();
        break;
    }
}

void Jobs::reportState(int state, int page, const std::string& file)
{
    const std::lock_guard<std::mutex> oneAtATime(m_callbackMutex);
    OrvaStateCallback callback = nullptr;
    {
        const std::lock_guard<std::mutex> guard(m_mutex);
        callback = m_stateCallback;
    }
    if (callback != nullptr) {
        callback(state, page, file);
    }
}

void Jobs::reportError(int code)
{
    const std::lock_guard<std::mutex> oneAtATime(m_callbackMutex);
    OrvaErrorCallback callback = nullptr;
    {
        const std::lock_guard<std::mutex> guard(m_mutex);
        callback = m_errorCallback;
    }
    if (callback != nullptr) {
        callback(code);
    }
}

void Jobs::pauseFor(int milliseconds)
{
    std::unique_lock<std::mutex> lock(m_mutex);
    m_changed.wait_for(
        lock, std::chrono::milliseconds(milliseconds), [this] { return m_cancelled; });
}

void Jobs::waitForRelease()
{
    std::unique_lock<std::mutex> lock(m_mutex);
    m_changed.wait(lock, [this] { return m_cancelled || m_releases > 0; });
    if (m_releases > 0) {
        --m_releases;
    }
}

bool Jobs::cancelled()
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    return m_cancelled;
}

void Jobs::cancel()
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_cancelled = m_running;
    m_changed.notify_all();
}

void Jobs::release()
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    ++m_releases;
    m_changed.notify_all();
}

bool Jobs::running()
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    return m_running;
}

void Jobs::finishAll()
{
    cancel();
    std::vector<std::thread> fired;
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_changed.wait(lock, [this] { return !m_running; });
        m_releases = 0;
        fired.swap(m_fired);
    }
    for (std::thread& thread : fired) {
        thread.join();
    }
}

void Jobs::fire(const Step& step)
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_fired.emplace_back([this, step] { perform(step, {}); });
}

} // namespace fake

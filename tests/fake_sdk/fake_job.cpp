#include "tests/fake_sdk/fake_job.h"

#include "sdk/result_codes.h"

#include <fstream>

namespace fake {
namespace {

// A PNM picture, whatever the name says: readers go by the content.
void writePicture(const std::string& path, int width, int height)
{
    std::ofstream out(path, std::ios::binary);
    out << "P6\n" << width << ' ' << height << "\n255\n";
    for (int i = 0; i < width * height * 3; ++i) {
        out.put(static_cast<char>(i & 0x7F));
    }
}

} // namespace

int Jobs::run(const std::vector<Line>& steps, int ends, const std::string& folder)
{
    {
        const std::lock_guard<std::mutex> guard(m_mutex);
        if (m_running) {
            return orva::kBusy;
        }
        m_running = true;
        m_cancelled = false;
    }
    std::thread([&] {
        for (const Line& step : steps) {
            if (!m_cancelled) {
                perform(step, folder);
            }
        }
        for (int i = 0; i < ends; ++i) {
            report(-1, 0, {});
        }
    }).join();
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_running = false;
    m_changed.notify_all();
    return m_cancelled ? orva::kCancelled : orva::kOk;
}

void Jobs::perform(const Line& step, const std::string& folder)
{
    const std::string& kind = step.at(1);
    if (kind == "state") {
        report(integer(step, 2), integer(step, 3), step.at(4));
    } else if (kind == "image") {
        const std::string path = folder + '/' + step.at(2);
        writePicture(path, integer(step, 3), integer(step, 4));
        report(2, 0, path);
    } else if (kind == "error") {
        const std::lock_guard<std::mutex> oneAtATime(m_callbackMutex);
        if (OrvaErrorCallback callback = onError) {
            callback(integer(step, 2));
        }
    } else {
        waitForRelease();
    }
}

void Jobs::report(int state, int page, const std::string& file)
{
    const std::lock_guard<std::mutex> oneAtATime(m_callbackMutex);
    if (OrvaStateCallback callback = onState) {
        callback(state, page, file);
    }
}

void Jobs::waitForRelease()
{
    std::unique_lock<std::mutex> lock(m_mutex);
    m_changed.wait(lock, [this] { return m_cancelled || m_releases > 0; });
    m_releases -= m_releases > 0 ? 1 : 0;
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

void Jobs::fire(const Line& step)
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_fired.emplace_back([this, step] { perform(step, {}); });
}

} // namespace fake

#include "app/search_alarm.h"

#include "log/Log.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <utility>

namespace {

// The handler's end of the pipe; -1 while nobody listens.
std::atomic<int> wakeUpEnd { -1 };
static_assert(std::atomic<int>::is_always_lock_free, "used in a signal handler");

} // namespace

void getOnLineScanDevice(int /*signalNumber*/)
{
    static constexpr char kTrace[] = "getOnLineScanDevice--\n";
    const int keptError = errno;
    // Nothing can be done here about a write that fails.
    [[maybe_unused]] ssize_t written = ::write(STDOUT_FILENO, kTrace, sizeof kTrace - 1);
    const int end = wakeUpEnd.load();
    if (end >= 0) {
        written = ::write(end, "!", 1);
    }
    errno = keptError;
}

SearchAlarm::SearchAlarm(std::function<void()> search)
    : m_search(std::move(search))
{
    std::array<int, 2> ends {};
    if (::pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) != 0) {
        runLog("[func:%s]no pipe for the search alarm: %s", __func__, std::strerror(errno));
        return;
    }
    m_readEnd = ends[0];
    m_writeEnd = ends[1];
    m_notifier = std::make_unique<QSocketNotifier>(m_readEnd, QSocketNotifier::Read);
    QObject::connect(m_notifier.get(), &QSocketNotifier::activated, m_notifier.get(), [this] {
        m_notifier->setEnabled(false);
        m_search();
    });
    wakeUpEnd = m_writeEnd;
}

SearchAlarm::~SearchAlarm()
{
    wakeUpEnd = -1;
    m_notifier.reset();
    if (m_readEnd >= 0) {
        ::close(m_readEnd);
        ::close(m_writeEnd);
    }
}

// The one-second alarm after which scanners are searched. The signal only wakes the event loop; the
// search runs from there, on the GUI thread.
#pragma once

#include <QSocketNotifier>

#include <functional>
#include <memory>

/// Handler of SIGALRM. Writes its trace line and wakes the event loop; nothing else is safe in
/// here.
void getOnLineScanDevice(int signalNumber);

/// One at a time. GUI thread; needs the application object.
class SearchAlarm
{
public:
    /// `search` runs once, from the event loop, after the handler was called. Where the system
    /// gives no pipe it never runs, and the run log says why.
    explicit SearchAlarm(std::function<void()> search);
    /// Takes the handler out of use; a signal that comes later only writes its trace line.
    ~SearchAlarm();
    SearchAlarm(const SearchAlarm&) = delete;
    SearchAlarm& operator=(const SearchAlarm&) = delete;

private:
    std::function<void()> m_search;
    int m_readEnd = -1;
    int m_writeEnd = -1;
    std::unique_ptr<QSocketNotifier> m_notifier;
};

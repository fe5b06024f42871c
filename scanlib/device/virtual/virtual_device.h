// Behaves as the real thing does: one side after the other, sheets leave the tray as they go
// through, faults come at the sheet that they are armed for.
#pragma once

#include "scanlib/base/library_paths.h"
#include "scanlib/device/device.h"
#include "scanlib/device/virtual/scanner_state.h"
#include "scanlib/device/virtual/sheet_placing.h"
#include "scanlib/device/virtual/tray.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <set>
#include <vector>

namespace orva {

DeviceIdentity virtualScannerIdentity();

class VirtualDevice : public Device
{
public:
    explicit VirtualDevice(const LibraryPaths& paths);

    const DeviceIdentity& identity() const override { return m_identity; }
    Status open() override;
    const std::vector<PaperSource>& sources() const override { return m_sources; }
    Status configure(const AcquireSettings& settings) override;
    Status nextPage(Page& page, bool& endOfFeed, const CancelToken& cancel) override;
    void endBatch() override;
    void requestCancel() noexcept override;
    Status hasPaper(bool& result) override;
    Status pressedButton(int& value) override;
    Status timing(DeviceTiming& result) override;
    Status setTimes(int sleep, int autoOff) override;
    Status setPrefeed(bool enable, float seconds) override;

private:
    /// Of one job. A sheet leaves the tray once its last side is delivered, or at the end of the
    /// job.
    struct Job
    {
        bool configured = false;
        AcquireSettings settings;
        SourceKind kind = SourceKind::kFeeder;
        bool fromSamples = false;
        int sheets = 0; ///< that have begun to go through
        bool backDue = false; ///< the front of current was delivered
        Sheet current;
        int frontWidth = 0; ///< pixels of the side delivered last
        int frontHeight = 0;
        std::deque<Sheet> waiting;
        std::set<std::string>
            gone; ///< fed in this job; a file that could not be moved is not fed twice
    };

    bool cancelled(const CancelToken& cancel) const;
    Status reachable() const;
    void fillFromTray();
    Status feedSheet(const ScannerState& state, bool& endOfFeed, const CancelToken& cancel);
    Status armedFault(const ScannerState& state, int sheet, const CancelToken& cancel);
    Status readSide(Page& page);
    void sheetIsThrough();
    /// false when cancelled
    bool waitUntil(std::chrono::steady_clock::time_point end, const CancelToken& cancel);
    std::vector<Sheet> sheetsInFeeder(bool& fromSamples) const;

    const DeviceIdentity m_identity = virtualScannerIdentity();
    const StateStore m_store;
    const std::filesystem::path m_samples;
    std::vector<PaperSource> m_sources;
    Job m_job;

    std::atomic<bool> m_cancelRequested { false };
    std::mutex m_waitMutex;
    std::condition_variable m_wake;
};

} // namespace orva

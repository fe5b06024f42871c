// One open scanner, seen from the SANE thread: what it offers, how it is set, how a side is read.
// All calls on the SANE thread, except where noted.
#pragma once

#include "scanlib/device/sane/frame_assembler.h"
#include "scanlib/device/sane/sane_options.h"
#include "scanlib/device/sane/sane_runtime.h"

#include <atomic>
#include <chrono>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace orva {

class SaneScanner
{
public:
    explicit SaneScanner(std::shared_ptr<SaneRuntime> runtime)
        : m_runtime(std::move(runtime))
    {
    }

    /// Opens and probes; does nothing when it is open and to be trusted. type is the device's own
    /// description, for scanners without a source option.
    Status open(const std::string& key, const std::string& type);
    void close();
    bool isOpen() const { return m_handle != nullptr; }
    const std::vector<PaperSource>& sources() const { return m_sources; }

    Status configure(const AcquireSettings& settings);
    /// Uses the memory that the page's pixels hold.
    Status nextSide(Page& page, bool& endOfFeed);
    /// Ends the batch with its one cancel, if it has not had it. Closes a scanner that is
    /// distrusted.
    void endBatch();

    Status hasPaper(bool& result);
    Status pressedButton(int& value);
    Status timing(DeviceTiming& result);
    Status setTimes(int sleep, int autoOff);

    // Any thread:

    /// Seen between two calls. Stays set until clearCancel.
    void askToCancel() { m_cancelAsked.store(true); }
    void clearCancel() { m_cancelAsked.store(false); }
    /// How long the scan call that runs now has been running; empty between calls.
    std::optional<std::chrono::milliseconds> callAge() const;
    /// true while that call is sane_start.
    bool callIsStart() const { return m_callIsStart.load(); }
    /// Number of the batch that runs, or comes next.
    unsigned batch() const { return m_batch.load(); }
    /// sane_cancel while a call runs; at most once a batch, together with the one of endBatch. Does
    /// nothing when that batch is over: a late request must not hit the next job.
    void cancelFromOutside(unsigned batch);
    /// The handle may be dead (cable pulled, silence): it is closed with the batch, and whoever
    /// needs the scanner next opens it anew.
    void distrust() { m_distrusted.store(true); }

private:
    struct SourcePlan
    {
        std::string sourceText; ///< value of "source", empty: leave it
        std::string duplexOption; ///< "duplex" and the like; empty: none
        bool duplex = false;
        bool pixelUnits = false;
        double leftMm = 0; ///< of the area's corner in the driver's own coordinates
        double topMm = 0;
    };
    /// Marks a scan call, so that the waiting thread sees how long it runs.
    class Call;

    Status apply(const AcquireSettings& settings);
    void findSources(const std::string& type);
    void addSource(SourceKind kind, const SourcePlan& plan);
    Status selectSource(const SourcePlan& plan);
    Status setMode(ColorMode mode);
    Status setResolution(const AcquireSettings& settings);
    Status setArea(const AcquireSettings& settings, const SourcePlan& plan);
    void setSheetSize(const Words& names, double wantedMm);
    void setDoubleFeed(bool detect);
    Status setNumberIfAny(const std::string& name, double value);
    void rememberButtons();
    double buttonState(const SaneOption& option) const;

    Status startFrame();
    Status readFrame(FrameAssembler& assembler, bool& noDocuments);
    Status cancelled();
    void sendCancel();
    void sendCancelLocked();
    void finishBatch();
    Status faultOf(SANE_Status status, const char* call);

    const std::shared_ptr<SaneRuntime> m_runtime;
    SANE_Handle m_handle = nullptr;
    std::string m_key; ///< of the open device
    std::unique_ptr<SaneOptions> m_options;
    std::vector<PaperSource> m_sources;
    std::vector<SourcePlan> m_plans;
    std::vector<double> m_buttonStates; ///< in the order of kButtonOptions

    AcquireSettings m_settings;
    double m_dpiX = 0; ///< as the scanner rounds it
    double m_dpiY = 0;
    std::vector<SANE_Byte> m_buffer; ///< of one read
    int m_sides = 0; ///< delivered in this batch
    bool m_configured = false;
    bool m_wantGray = false; ///< the scanner delivers colour only, grey is asked for

    std::atomic<bool> m_cancelAsked { false };
    std::atomic<bool> m_batchBegun { false };
    std::atomic<bool> m_cancelSent { false };
    std::atomic<bool> m_distrusted { false };
    std::atomic<bool> m_callIsStart { false };
    std::atomic<unsigned> m_batch { 0 };
    std::atomic<std::int64_t> m_callSince { 0 }; ///< steady clock, ms; 0: no call runs
    std::mutex m_cancelMutex; ///< held during sane_cancel, so that it never meets sane_close
};

} // namespace orva

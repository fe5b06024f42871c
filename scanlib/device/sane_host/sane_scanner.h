// One open scanner as the helper drives it: what it offers, how it is set, how a side is read.
// SANE thread, except where noted.
#pragma once

#include "scanlib/device/sane/host_messages.h"
#include "scanlib/device/sane_host/sane_options.h"
#include "scanlib/device/sane_host/side_sink.h"

#include <atomic>
#include <chrono>
#include <memory>
#include <mutex>
#include <optional>

namespace orva {

struct ScannerPauses
{
    std::chrono::milliseconds busy { 500 }; ///< before a scanner that is busy is started again
    std::chrono::milliseconds noData { 25'000 }; ///< reads that give nothing, one after the other
};

class SaneScanner
{
public:
    SaneScanner(const SaneApi& api, const ScannerPauses& pauses)
        : m_api(api)
        , m_pauses(pauses)
    {
    }

    // scanner_open.cpp
    /// Opens and probes; does nothing when it is open and to be trusted.
    Status open(const OpenRequest& request);
    void close();
    bool isOpen() const { return m_handle != nullptr; }
    const std::vector<PaperSource>& sources() const { return m_sources; }

    // scanner_settings.cpp
    /// batch: what a cancel names.
    Status configure(const AcquireSettings& settings, unsigned batch);

    // scanner_read.cpp
    Status nextSide(SideSink& sink, SideReport& report);
    /// Ends the batch with its one cancel, if it has not had it. Closes a scanner that is
    /// distrusted.
    void endBatch();

    // scanner_sensors.cpp
    Status hasPaper(bool& result);
    /// The button pressed since the last call (codes.h, Button); 0 when none.
    Status pressedButton(int& value);
    Status timing(DeviceTiming& result);
    Status setTimes(int sleep, int autoOff);

    // Any thread:

    unsigned batch() const { return m_batch.load(); }
    /// The batch shall end; seen between two calls.
    void askToCancel(unsigned batch) { m_cancelledBatch.store(batch); }
    /// How long the scan call that runs now has been running; empty between calls.
    std::optional<std::chrono::milliseconds> callAge() const;
    /// sane_cancel while a call runs; at most once a batch, together with the one of endBatch. Does
    /// nothing when that batch is over: a late request must not hit the next job.
    void cancelFromOutside(unsigned batch);

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
    struct ButtonState
    {
        std::string option;
        int value = 0; ///< what a press means; 0: the text of the option tells
        double number = 0; ///< at the last look
        std::string text;
    };
    /// Marks a scan call, so that others see how long it runs.
    class Call;

    // scanner_open.cpp
    void findSources(const std::string& type);
    void addSource(SourceKind kind, const SourcePlan& plan);
    std::string sourceTextFor(SourceKind kind, const std::vector<std::string>& texts) const;
    std::string findDuplexOption() const;
    const std::string* overrideOf(const std::string& key) const;

    // scanner_settings.cpp
    Status apply(const AcquireSettings& settings);
    Status selectSource(const SourcePlan& plan);
    Status setMode(ColorMode mode);
    Status setResolution(const AcquireSettings& settings);
    Status setArea(const AcquireSettings& settings, const SourcePlan& plan);
    void setSheetSize(const Words& names, double wantedMm);
    void setGuards(bool detect);
    Status setDropout(ColorDropout dropout);
    Status setNumberIfAny(const std::string& name, double value);

    // scanner_sensors.cpp
    void rememberButtons();
    void look(ButtonState& button, bool& pressed);

    // scanner_read.cpp
    bool cancelAsked() const { return m_cancelledBatch.load() == m_batch.load(); }
    Status startFrame();
    Status shapeOfFrame(FrameShape& shape);
    Status readFrame(SideSink& sink, bool& noDocuments);
    void sendCancelLocked();
    void finishBatch();
    Status faultOf(SANE_Status status, const char* call);

    const SaneApi& m_api;
    const ScannerPauses m_pauses;
    SANE_Handle m_handle = nullptr;
    std::unique_ptr<SaneOptions> m_options;
    ModelOverrides m_overrides;
    std::vector<PaperSource> m_sources;
    std::vector<SourcePlan> m_plans;
    std::vector<ButtonState> m_buttons;

    AcquireSettings m_settings;
    double m_dpiX = 0; ///< as the scanner rounds it
    double m_dpiY = 0;
    int m_sides = 0; ///< delivered in this batch
    bool m_configured = false;
    bool m_wantGray = false; ///< the scanner delivers colour only, grey is asked for
    bool m_distrusted = false; ///< the handle may be dead: it is closed with the batch

    static constexpr unsigned kNoBatch = ~0U;
    std::atomic<unsigned> m_batch { 0 };
    std::atomic<unsigned> m_cancelledBatch { kNoBatch };
    std::atomic<std::int64_t> m_callSince { 0 }; ///< steady clock, ms; 0: no call runs
    std::mutex m_cancelMutex; ///< the two below, and held during sane_cancel
    bool m_batchBegun = false;
    bool m_cancelSent = false;
};

/// To the log, where going on is better than giving up.
void logProblem(const Status& status);

} // namespace orva

// The library behind its entry points: one scanner at a time, one set of settings, one job. Every
// public function may be called by any thread at any time; what is not legal in the present state
// is refused with a code (session_state.h). Answers are result codes, or counts and values from 0
// on.
#pragma once

#include "scanlib/base/cancel_token.h"
#include "scanlib/base/library_paths.h"
#include "scanlib/device/device.h"
#include "scanlib/session/callback_dispatcher.h"
#include "scanlib/session/device_registry.h"
#include "scanlib/session/job_settings.h"
#include "scanlib/session/library_config.h"
#include "scanlib/session/page_tools.h"
#include "scanlib/session/scan_job.h"
#include "scanlib/session/session_state.h"
#include "sdk/records.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace orva {

/// What the session is made of; tests put in scripted parts.
struct SessionParts
{
    LibraryPaths paths;
    std::function<std::vector<std::unique_ptr<Driver>>(const LibraryPaths&)> makeDrivers;
    PageTools tools;
    LibraryConfig config; ///< where the settings file says nothing
    /// UnInit: how long a job may take to end by itself once cancelled, then once its callbacks are
    /// muted.
    std::chrono::milliseconds endingLimit { 3000 };
    std::chrono::milliseconds mutedLimit { 10000 };
};

class Session
{
public:
    explicit Session(SessionParts parts);
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    // session.cpp: the library itself
    int init();
    /// Cancels a running job and waits for it; kBusy from inside a callback, or when the job does
    /// not end in time. Afterwards no thread of the library is left, but for a recogniser that
    /// hangs.
    int unInit();
    int setLogInfo(bool enable, const std::string& file);
    int setStateCallback(OrvaStateCallback callback);
    int setErrorCallback(OrvaErrorCallback callback);
    int clearTmpData();

    // session_devices.cpp: the list, the selected scanner and what is known of it
    int scannerCount();
    int scannerName(int index, std::string& name);
    int selectScanner(int index);
    /// The selected scanner, with the name of the list.
    int currentScanner(DeviceIdentity& identity);
    /// 0 ready, 1 a job runs.
    int scannerState() const;

    // session_settings.cpp: the settings of the next job
    int sourceCount();
    int sourceName(int index, std::string& name);
    int setSource(int index);
    int currentSource();
    int setColorMode(int mode);
    int colorMode();
    int paperCount();
    int paperName(int index, std::string& name);
    int paperSize(int index, PaperSize& paper);
    int paperSizeMax(double& widthMm, double& heightMm);
    int setPaperSize(const PaperSize& area, int index);
    int currentPaperSize(PaperSize& area);
    int resolutionCount();
    int resolutionName(int index, std::string& name);
    int resolution(int index, int& x, int& y);
    int setResolution(int x, int y);
    int currentResolution(int& x, int& y);
    int setJpegQuality(int index);
    int setImageParam(const ImageParam& param);
    int setFileParam(const FileParam& param);
    int documentTypes(std::vector<stFileTypeParam>& rows) const;

    // session_hardware.cpp: asks the device
    int setPrefeed(bool enable, float seconds);
    int prefeed(float& seconds);
    int havePaper();
    int setScannerTime(int sleep, int autoOff);
    int scannerSleepTime(int& sleep, int& autoOff);
    int buttonStatus();
    int deviceInfo(std::string& json);
    /// kNotSupported, once there is a scanner to say it of.
    int notOffered();

    // session_scan.cpp: the job
    int scan();
    int cancelScan();
    int pageParameters(_tagPageParameter& page);

private:
    using Lock = std::unique_lock<std::mutex>;

    /// Runs the body with the lock when the state permits it.
    template <typename Body>
    int with(Need need, Body body);
    /// The same, with the device open and what it offers known.
    template <typename Body>
    int withOpened(Need need, Body body);

    /// While the lock is held for the device's answer: who wants the lock urgently finds it here.
    class AskingDevice
    {
    public:
        explicit AskingDevice(Session& session);
        ~AskingDevice();
        AskingDevice(const AskingDevice&) = delete;
        AskingDevice& operator=(const AskingDevice&) = delete;

    private:
        Session& m_session;
    };
    /// The lock; a device that keeps somebody waiting under it is interrupted.
    Lock lockInterrupting();

    static Status outputNotSet() { return { kBadFileName, "SetFileParam has not been called" }; }
    void forgetSettings();
    Status ensureOpened();
    void adoptSource(std::size_t index);
    const PaperSource& source() const { return m_sources[m_acquire.source]; }
    bool waitForJobEnd(Lock& lock, std::chrono::milliseconds limit);
    Status jobSettings(JobSettings& settings);
    std::shared_ptr<ScanJob> currentJob() const;
    void endJob(SessionState before, const ScanJob& job);

    const SessionParts m_parts;

    mutable std::mutex m_mutex; ///< all below; never held while a job runs or a callback is called
    std::condition_variable m_jobEnded;
    std::atomic<SessionState> m_state { SessionState::kClosed };
    bool m_closing = false;
    LibraryConfig m_config; ///< as it was at init
    /// With its models from the first use to unInit.
    std::unique_ptr<TimedRecognition> m_recognition;
    Callbacks m_callbacks;
    std::unique_ptr<DeviceRegistry> m_registry;
    std::thread m_recovery;
    std::unique_ptr<CancelToken> m_recoveryCancel;
    std::atomic<bool> m_recovering { false };

    std::unique_ptr<Device> m_device; ///< the job's alone while one runs
    int m_deviceIndex = -1;
    DeviceIdentity m_identity;
    std::vector<PaperSource> m_sources; ///< empty until the device has been open once

    AcquireSettings m_acquire;
    EncodeOptions m_encode;
    bool m_hasImageParam = false;
    ImageParam m_imageParam {};
    DocumentType m_documentType = DocumentType::kTextAndPictures;
    Status m_outputStatus = outputNotSet();
    OutputSettings m_output;
    _tagPageParameter m_lastSide {};

    mutable std::mutex m_jobMutex; ///< short; so that a cancellation never waits for the device
    bool m_cancelWanted = false;
    Device* m_asked = nullptr; ///< of AskingDevice
    std::shared_ptr<ScanJob> m_job;
};

template <typename Body>
int Session::with(Need need, Body body)
{
    const Lock lock(m_mutex);
    const ResultCode refusal = permitted(m_state, need);
    return refusal != kOk ? refusal : body();
}

template <typename Body>
int Session::withOpened(Need need, Body body)
{
    return with(need, [&]() -> int {
        const AskingDevice asking(*this);
        const Status opened = ensureOpened();
        return opened.ok() ? body() : opened.code();
    });
}

} // namespace orva

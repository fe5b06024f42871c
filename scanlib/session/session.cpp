#include "scanlib/session/session.h"

#include "scanlib/base/library_log.h"
#include "scanlib/session/recovery.h"

namespace orva {

Session::Session(SessionParts parts)
    : m_parts(std::move(parts))
{
}

Session::~Session()
{
    unInit();
}

int Session::init()
{
    const Lock lock(m_mutex);
    if (m_state != SessionState::kClosed) {
        return kOk;
    }
    m_config = readLibraryConfig(m_parts.paths.config, m_parts.config);
    m_registry =
        std::make_unique<DeviceRegistry>(m_parts.makeDrivers(m_parts.paths), m_config.listingLimit);
    m_registry->startListing();
    if (m_parts.tools.makeTextRecognition) {
        m_recognition = std::make_unique<TimedRecognition>(
            m_parts.tools.makeTextRecognition(m_config.recognition), m_config.limits.readingLimit);
    }
    m_recoveryCancel = std::make_unique<CancelToken>();
    m_recovering = true;
    m_recovery = std::thread([this] {
        recoverJobs(m_parts.paths.spool, m_parts.tools, *m_recoveryCancel);
        m_recovering = false;
    });
    m_state = SessionState::kIdle;
    libraryLog("initialised");
    return kOk;
}

Session::AskingDevice::AskingDevice(Session& session)
    : m_session(session)
{
    const std::lock_guard<std::mutex> lock(m_session.m_jobMutex);
    m_session.m_asked = m_session.m_device.get();
}

Session::AskingDevice::~AskingDevice()
{
    const std::lock_guard<std::mutex> lock(m_session.m_jobMutex);
    m_session.m_asked = nullptr;
}

Session::Lock Session::lockInterrupting()
{
    constexpr std::chrono::milliseconds kPause(10);
    Lock lock(m_mutex, std::try_to_lock);
    while (!lock.owns_lock()) {
        {
            const std::lock_guard<std::mutex> jobLock(m_jobMutex);
            if (m_asked != nullptr) {
                m_asked->requestCancel(); // again and again: the next call may have begun
            }
        }
        std::this_thread::sleep_for(kPause);
        lock.try_lock();
    }
    return lock;
}

bool Session::waitForJobEnd(Lock& lock, std::chrono::milliseconds limit)
{
    return m_jobEnded.wait_for(lock, limit, [this] { return !hasJob(m_state); });
}

int Session::unInit()
{
    if (const std::shared_ptr<ScanJob> job = currentJob(); job && job->isCallbackThread()) {
        libraryLog("UnInit from a callback is refused");
        return kBusy;
    }
    Lock lock = lockInterrupting();
    if (m_state == SessionState::kClosed) {
        return kOk;
    }
    m_closing = true;
    cancelScan();
    if (!waitForJobEnd(lock, m_parts.endingLimit)) {
        libraryLog("the job takes long to end; its callbacks are muted");
        if (const std::shared_ptr<ScanJob> job = currentJob()) {
            job->mute();
        }
        if (!waitForJobEnd(lock, m_parts.mutedLimit)) {
            libraryLog("the job does not end");
            m_closing = false;
            return kBusy;
        }
    }
    m_recoveryCancel->cancel();
    if (m_recovery.joinable()) {
        m_recovery.join();
    }
    m_device.reset();
    m_deviceIndex = -1;
    m_sources.clear();
    m_registry.reset();
    m_recognition.reset();
    forgetSettings();
    m_closing = false;
    m_state = SessionState::kClosed;
    libraryLog("released");
    return kOk;
}

/// With the lock held. What callers have set and what the last job left: the next life begins as
/// the first one did.
void Session::forgetSettings()
{
    m_callbacks = {};
    m_identity = {};
    m_acquire = {};
    m_encode = {};
    m_hasImageParam = false;
    m_imageParam = {};
    m_documentType = DocumentType::kTextAndPictures;
    m_outputStatus = outputNotSet();
    m_output = {};
    m_lastSide = {};
}

int Session::setLogInfo(bool enable, const std::string& file)
{
    setLibraryLog(enable, file);
    return kOk;
}

int Session::setStateCallback(OrvaStateCallback callback)
{
    return with(Need::kNoJob, [&] {
        m_callbacks.state = callback;
        return kOk;
    });
}

int Session::setErrorCallback(OrvaErrorCallback callback)
{
    return with(Need::kNoJob, [&] {
        m_callbacks.error = callback;
        return kOk;
    });
}

int Session::clearTmpData()
{
    return with(Need::kOpen, [&]() -> int {
        // The recovery clears up as it goes; what it still holds must not be taken from it.
        return m_recovering ? kOk : clearSpool(m_parts.paths.spool).code();
    });
}

} // namespace orva

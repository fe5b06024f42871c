// Session: the job.
#include "scanlib/base/library_log.h"
#include "scanlib/session/session.h"

namespace orva {

std::shared_ptr<ScanJob> Session::currentJob() const
{
    const std::lock_guard<std::mutex> lock(m_jobMutex);
    return m_job;
}

/// With the lock held. What is wrong before a job begins.
Status Session::jobSettings(JobSettings& settings)
{
    if (!m_device) {
        return { kNoScannerSelected, "no scanner is selected" };
    }
    {
        const AskingDevice asking(*this);
        if (Status status = ensureOpened(); !status.ok()) {
            return status;
        }
    }
    if (!m_outputStatus.ok()) {
        return m_outputStatus;
    }
    settings.acquire = m_acquire;
    settings.acquire.detectDoubleFeed = m_imageParam.bMultiFeed != 0;
    if (m_hasImageParam) {
        settings.image = m_parts.tools.imageSettings(m_imageParam, m_acquire.mode);
    }
    settings.image.mode = m_acquire.mode;
    settings.image.document = m_documentType;
    if (settings.image.dropout != ColorDropout::kNone) {
        const bool grey =
            m_acquire.mode == ColorMode::kGray || m_acquire.mode == ColorMode::kBlackWhite;
        if (grey && source().dropsColor && !settings.image.reinforcedDropout) {
            // by the light of the lamp: better than can be told from a colour picture
            settings.acquire.dropout = settings.image.dropout;
            settings.image.dropout = ColorDropout::kNone;
        } else {
            settings.acquire.mode =
                ColorMode::kColor; // a colour is gone from grey before it can be told
        }
    }
    settings.output = m_output;
    settings.encode = m_encode;
    return {};
}

int Session::scan()
{
    SessionState before = SessionState::kClosed;
    std::shared_ptr<ScanJob> job;
    Status why;
    {
        const Lock lock(m_mutex);
        const ResultCode refusal = permitted(m_state, Need::kNoJob);
        if (refusal != kOk || m_closing) {
            return refusal != kOk ? refusal : kBusy;
        }
        before = m_state;
        {
            const std::lock_guard<std::mutex> jobLock(m_jobMutex);
            m_cancelWanted = false;
            m_state = SessionState::kScanning;
        }
        try {
            JobSettings settings;
            why = jobSettings(settings);
            job = std::make_shared<ScanJob>(settings, m_parts.tools, m_config.limits,
                m_parts.paths.spool, m_callbacks, m_recognition.get());
        } catch (...) {
            m_state = before;
            m_jobEnded.notify_all();
            throw;
        }
        const std::lock_guard<std::mutex> jobLock(m_jobMutex);
        m_job = job;
        if (m_cancelWanted) {
            job->cancel();
        }
    }
    libraryLog("job begins");
    const ResultCode code = why.ok() ? job->run(*m_device) : job->refuse(why);
    libraryLog("job ends: %d", code);
    endJob(before, *job);
    return code;
}

void Session::endJob(SessionState before, const ScanJob& job)
{
    const Lock lock(m_mutex);
    m_lastSide = job.lastSide();
    const std::lock_guard<std::mutex> jobLock(m_jobMutex);
    m_job.reset();
    m_state = before;
    m_jobEnded.notify_all();
}

int Session::cancelScan()
{
    const std::lock_guard<std::mutex> lock(m_jobMutex);
    SessionState expected = SessionState::kScanning;
    m_state.compare_exchange_strong(expected, SessionState::kCancelling);
    if (hasJob(m_state)) {
        m_cancelWanted = true;
        if (m_job) {
            m_job->cancel();
        } else if (m_asked != nullptr) {
            m_asked->requestCancel(); // it is just being opened for the job
        }
    }
    return m_state == SessionState::kClosed ? kNotInitialised : kOk;
}

int Session::pageParameters(_tagPageParameter& page)
{
    return with(Need::kScanner, [&] {
        const std::shared_ptr<ScanJob> job = currentJob();
        page = job ? job->lastSide() : m_lastSide;
        return kOk;
    });
}

} // namespace orva

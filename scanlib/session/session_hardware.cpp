// Session: what only the device can answer. Refused while a job runs, since the device is the
// job's.
#include "scanlib/session/device_info_text.h"
#include "scanlib/session/session.h"

namespace orva {

int Session::setPrefeed(bool enable, float seconds)
{
    return withOpened(
        Need::kFreeScanner, [&]() -> int { return m_device->setPrefeed(enable, seconds).code(); });
}

int Session::prefeed(float& seconds)
{
    return withOpened(Need::kFreeScanner, [&]() -> int {
        DeviceTiming timing;
        const Status status = m_device->timing(timing);
        if (!status.ok()) {
            return status.code();
        }
        if (!timing.prefeedCapable) {
            return kNotSupported;
        }
        seconds = timing.prefeedSeconds;
        return kOk;
    });
}

int Session::havePaper()
{
    return withOpened(Need::kFreeScanner, [&]() -> int {
        // The device answers for the source that it was given last.
        Status status = m_device->configure(m_acquire);
        bool paper = false;
        if (status.ok()) {
            status = m_device->hasPaper(paper);
        }
        return !status.ok() ? status.code() : paper ? 1 : 0;
    });
}

int Session::setScannerTime(int sleep, int autoOff)
{
    return withOpened(
        Need::kFreeScanner, [&]() -> int { return m_device->setTimes(sleep, autoOff).code(); });
}

int Session::scannerSleepTime(int& sleep, int& autoOff)
{
    return withOpened(Need::kFreeScanner, [&]() -> int {
        DeviceTiming timing;
        const Status status = m_device->timing(timing);
        if (!status.ok()) {
            return status.code();
        }
        if (!timing.sleep.enabled && !timing.autoOff.enabled) {
            return kNotSupported;
        }
        // A time that the device does not keep stays as the caller has it.
        sleep = timing.sleep.enabled ? timing.sleep.value : sleep;
        autoOff = timing.autoOff.enabled ? timing.autoOff.value : autoOff;
        return kOk;
    });
}

int Session::buttonStatus()
{
    // Not opened for this: a scanner that is away would be waited for at every look.
    const int code = with(Need::kFreeScanner, [&]() -> int {
        int button = 0;
        const Status status = m_device->pressedButton(button);
        return status.ok() ? button : status.code();
    });
    return code == kBusy && hasJob(m_state) ? 0 : code;
}

int Session::notOffered()
{
    return with(Need::kScanner, [] { return kNotSupported; });
}

int Session::deviceInfo(std::string& json)
{
    return withOpened(Need::kFreeScanner, [&]() -> int {
        DeviceTiming timing;
        const Status status = m_device->timing(timing);
        if (status.ok()) {
            json = deviceInfoText(timing);
        }
        return status.code();
    });
}

} // namespace orva

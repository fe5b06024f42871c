// What a scanner must offer to the library: describe itself, take the settings of a job, deliver
// one side after the other, be cancelled. One folder a driver; nothing above this header knows
// drivers.
#pragma once

#include "scanlib/base/cancel_token.h"
#include "scanlib/base/page.h"
#include "scanlib/base/status.h"
#include "sdk/codes.h"

#include <chrono>
#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace orva {

/// What is known of a device before it is opened. UTF-8.
struct DeviceIdentity
{
    std::string key; ///< the driver's own name of the device; opens it again
    std::string name; ///< what the operator sees; the registry makes it unique
    std::string serial; ///< empty when unknown
    std::string vidPid; ///< "vvvv:pppp"-like, at most 7 bytes are shown; empty when unknown
    std::string driverVersion; ///< at most 15 bytes are shown
    std::string firmwareVersion; ///< at most 15 bytes are shown
    std::string deviceClass; ///< "AvH4", "AvF" or empty
};

/// Scan area of a paper, millimetres from the top left corner of the source's largest area.
struct PaperSize
{
    std::string name;
    double leftMm = 0;
    double topMm = 0;
    double widthMm = 0;
    double heightMm = 0;
};

enum class SourceKind
{
    kFlatbed,
    kFeeder,
    kDuplex
};

struct PaperSource
{
    std::string name; ///< kSourceFlatbed, kSourceFeeder or kSourceDuplex
    SourceKind kind = SourceKind::kFlatbed;
    double maxWidthMm = 0;
    double maxHeightMm = 0;
    std::vector<PaperSize> papers; ///< the ones that the source can hold, "自动" last
    std::vector<int> resolutions; ///< dots per inch, ascending, 75 to 600
    bool dropsColor = false; ///< a grey scan can leave out red, green or blue by itself
};

/// A time that the device keeps itself.
struct TimingCapability
{
    bool enabled = false;
    int min = 0;
    int max = 0;
    int step = 1;
    char unit = 'm'; ///< 'm' minutes, 'h' hours
    int value = 0;
};

struct DeviceTiming
{
    TimingCapability sleep;
    TimingCapability autoOff;
    bool prefeedCapable = false;
    bool prefeedEnabled = false;
    float prefeedSeconds = 0;
    bool high = false; ///< the model with the maker's advanced options
};

/// Settings that the device itself must know. What it cannot do is done afterwards on the page.
struct AcquireSettings
{
    std::size_t source = 0; ///< index into sources()
    PaperSize area;
    int dpiX = 200;
    int dpiY = 200;
    ColorMode mode =
        ColorMode::kColor; ///< black-and-white and multi-stream are made from grey or colour
    bool detectDoubleFeed = false; ///< and what else guards the paper
    ColorDropout dropout = ColorDropout::kNone; ///< grey only, where the source drops colours
};

/// One thread at a time, except requestCancel. No call blocks for ever: a device that does not
/// answer gives kDeviceTimeout.
class Device
{
public:
    virtual ~Device() = default;

    virtual const DeviceIdentity& identity() const = 0;
    /// Opens the device if it is not open, and reads what it offers. It stays open between jobs.
    virtual Status open() = 0;
    /// Valid after open; at least one source.
    virtual const std::vector<PaperSource>& sources() const = 0;

    /// Before the first side of a job.
    virtual Status configure(const AcquireSettings& settings) = 0;
    /// Delivers the next side: pixels as grey or colour (black-and-white only where the device has
    /// a true 1-bit mode), resolution, sheet and side; the page's number is set by the caller.
    /// Memory that the page's pixels hold is used again; they are unspecified unless a side comes.
    /// endOfFeed true (and ok): no more sides. kNoPaper: not even a first one.
    /// kCancelled once the token is set or requestCancel was called. Any other code ends the job.
    virtual Status nextPage(Page& page, bool& endOfFeed, const CancelToken& cancel) = 0;
    /// Once after the last nextPage of a job, also after a fault.
    virtual void endBatch() = 0;
    /// Asks a running nextPage, or an opening that takes long, to return soon with kCancelled. Any
    /// thread, at any time; never blocks.
    virtual void requestCancel() noexcept = 0;

    /// true when the feeder of the configured source holds paper; a flatbed always does.
    virtual Status hasPaper(bool& result) = 0;
    /// The button pressed since the last call (codes.h, Button); 0 when none.
    virtual Status pressedButton(int& value) = 0;

    virtual Status timing(DeviceTiming& result) = 0;
    /// -1 leaves a time as it is. kNotSupported where the device has none, kValueOutOfRange else.
    virtual Status setTimes(int sleep, int autoOff) = 0;
    virtual Status setPrefeed(bool enable, float seconds) = 0;
};

/// A way to reach devices.
class Driver
{
public:
    virtual ~Driver() = default;
    /// For the log.
    virtual const char* name() const = 0;
    /// Lists what is attached. Returns after the limit at the latest with what is known by then.
    virtual std::vector<DeviceIdentity> enumerate(std::chrono::milliseconds limit) = 0;
    /// Asks a running enumerate, and those to come, to return soon. Any thread; never blocks.
    virtual void stopEnumerating() noexcept { }
    /// The device need not be open yet.
    virtual std::unique_ptr<Device> create(const DeviceIdentity& identity) = 0;
};

} // namespace orva

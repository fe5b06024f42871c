// What the library asks of its SANE helper and what comes back. The library asks one thing at a
// time and waits for the answer; kCancel and kSlotFreed go in between and have none.
#pragma once

#include "scanlib/device/device.h"
#include "scanlib/device/sane/found_devices.h"
#include "scanlib/device/sane/frame_shape.h"
#include "scanlib/device/sane/wire.h"

#include <utility>

namespace orva {

enum class HostMessage : std::uint16_t
{
    // requests; each is answered by kAnswer with the same id: a status, then what is named here
    kSearch = 1, ///< found devices
    kOpen, ///< key, type, overrides; sources
    kConfigure, ///< settings; its id is the number of the batch
    kNextSide, ///< SideReport, after the frames of the side
    kEndBatch,
    kHasPaper, ///< flag
    kButton, ///< number
    kTiming, ///< DeviceTiming
    kSetTimes, ///< sleep, off
               // in between
    kCancel, ///< batch
    kSlotFreed, ///< the oldest slot of the ring that was handed over
                // from the helper
    kAnswer,
    kFrame, ///< FrameShape
    kLines, ///< bytes; they lie in the next slot of the ring
    kFrameEnd,
    kLog, ///< text
};

// Descriptors of the helper process.
inline constexpr int kHostSocketFd = 3;
inline constexpr int kHostRingFd = 4;

/// Lines on their way lie here: shared memory, slots used in turn.
inline constexpr std::size_t kSlotBytes = 256 * 1024; // stays in the second-level cache
inline constexpr std::size_t kSlots = 8;
inline constexpr std::size_t kRingBytes = kSlotBytes * kSlots;

/// What is said of a model in place of what its driver says; keys as in orva-sane-models.conf.
using ModelOverrides = std::vector<std::pair<std::string, std::string>>;

/// What is known of a side besides its lines.
struct SideReport
{
    bool endOfFeed = false;
    bool makeGray = false; ///< the scanner delivers colour only, grey is wanted
    double dpiX = 0;
    double dpiY = 0;
    int sheet = 0;
    Side side = Side::kFront;
};

struct OpenRequest
{
    std::string key;
    std::string type; ///< the device's own description, for scanners without a source option
    ModelOverrides overrides;
};

void put(WireWriter& to, const Status& status);
void put(WireWriter& to, const OpenRequest& request);
void put(WireWriter& to, const std::vector<FoundDevice>& devices); ///< as many as fit
void put(WireWriter& to, const std::vector<PaperSource>& sources);
void put(WireWriter& to, const AcquireSettings& settings);
void put(WireWriter& to, const DeviceTiming& timing);
void put(WireWriter& to, const FrameShape& shape);
void put(WireWriter& to, const SideReport& report);

Status getStatus(WireReader& from);
OpenRequest getOpenRequest(WireReader& from);
std::vector<FoundDevice> getFoundDevices(WireReader& from);
std::vector<PaperSource> getSources(WireReader& from);
AcquireSettings getSettings(WireReader& from);
DeviceTiming getTiming(WireReader& from);
FrameShape getFrameShape(WireReader& from);
SideReport getSideReport(WireReader& from);

} // namespace orva

// What a search found: names for the operator, one entry a scanner, facts from the kernel's list of
// USB devices.
#pragma once

#include "scanlib/device/device.h"

#include <string>
#include <vector>

namespace orva {

struct FoundDevice
{
    std::string key;
    std::string vendor;
    std::string model;
    std::string type;
    std::string serial;
    std::string vidPid;
};

/// Vendor and model, the vendor once. Network drivers put the vendor in front of the model or give
/// their protocol for it.
std::string fullName(const FoundDevice& device);

/// One scanner found by several drivers is listed once; the list keeps its order.
std::vector<FoundDevice> withoutDuplicates(const std::vector<FoundDevice>& devices);

inline constexpr char kUsbFolder[] = "/sys/bus/usb/devices";

/// Adds serial number and vendor:product of a device whose key names its USB bus and address.
void addUsbFacts(FoundDevice& device, const std::string& usbFolder = kUsbFolder);

/// true when the key names a USB bus and address where nothing is any more: plugging in again gives
/// a new address, and a handle from before is dead. false when that cannot be told.
bool isUnplugged(const std::string& key, const std::string& usbFolder = kUsbFolder);

/// Names a device for the operator.
DeviceIdentity identityOf(const FoundDevice& device);

} // namespace orva

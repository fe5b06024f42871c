#include "scanlib/device/sane/sane_runtime.h"

#include "scanlib/base/library_log.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace orva {

namespace {

std::string textOrEmpty(SANE_String_Const text)
{
    return text != nullptr ? text : "";
}

/// The IPv4 address that a network driver puts into the key or the type; empty for local devices.
std::string networkAddress(const FoundDevice& device)
{
    for (const std::string* text : { &device.key, &device.type }) {
        for (std::size_t i = 0; i < text->size(); ++i) {
            const std::size_t end =
                std::min(text->find_first_not_of("0123456789.", i), text->size());
            const std::string candidate = text->substr(i, end - i);
            constexpr std::size_t kShortest = 7; // 1.2.3.4
            if (candidate.size() >= kShortest
                && std::count(candidate.begin(), candidate.end(), '.') == 3) {
                return candidate;
            }
            i = std::max(i, end); // at a character that belongs to no number, or behind one
        }
    }
    return {};
}

/// Network drivers of the same scanner put the vendor's name in front of the model, or not.
std::string fullName(const FoundDevice& device)
{
    const bool repeated = device.model.compare(0, device.vendor.size(), device.vendor) == 0;
    return repeated ? device.model : device.vendor + " " + device.model;
}

std::string firstLine(const std::filesystem::path& file)
{
    std::ifstream stream(file);
    std::string line;
    std::getline(stream, line);
    return line;
}

} // namespace

Status SaneRuntime::initialise()
{
    if (m_initialised) {
        return {};
    }
    if (m_api.init == sane_init) {
        keepLibraryMapped(); // the drivers that are loaded now cannot be unloaded cleanly
    }
    SANE_Int version = 0;
    const SANE_Status status = m_api.init(&version, nullptr);
    if (status == SANE_STATUS_GOOD && SANE_VERSION_MAJOR(version) != SANE_CURRENT_MAJOR) {
        return { kNotSupported, "SANE of another major version" };
    }
    m_initialised = status == SANE_STATUS_GOOD;
    return saneFailure(status, "sane_init");
}

void SaneRuntime::search()
{
    if (Status status = initialise(); !status.ok()) {
        libraryLog("sane: %s", status.detail().c_str());
        return;
    }
    if (m_openDevices > 0) {
        return;
    }
    const SANE_Device** list = nullptr;
    const SANE_Status status = m_api.getDevices(&list, SANE_FALSE);
    if (status != SANE_STATUS_GOOD || list == nullptr) {
        libraryLog("sane: %s", saneFailure(status, "sane_get_devices").detail().c_str());
        return;
    }
    std::vector<FoundDevice> devices;
    for (; *list != nullptr; ++list) {
        FoundDevice device { textOrEmpty((*list)->name), textOrEmpty((*list)->vendor),
            textOrEmpty((*list)->model), textOrEmpty((*list)->type), {}, {} };
        addUsbFacts(device);
        libraryLog("sane: found %s (%s %s, %s)", device.key.c_str(), device.vendor.c_str(),
            device.model.c_str(), device.type.c_str());
        devices.push_back(std::move(device));
    }
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_found = withoutDuplicates(devices);
}

std::vector<FoundDevice> SaneRuntime::found() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_found;
}

SaneLease::~SaneLease()
{
    const std::chrono::milliseconds limit = runtime->limits().stop;
    if (!runtime->thread().stop(limit)) {
        libraryLog("sane: a driver does not answer; its thread is left behind");
    }
    runtime->cancelThread().stop(limit / 4);
}

std::vector<FoundDevice> withoutDuplicates(const std::vector<FoundDevice>& devices)
{
    std::vector<FoundDevice> kept;
    for (const FoundDevice& device : devices) {
        const std::string address = networkAddress(device);
        const auto same = [&](const FoundDevice& other) {
            return other.key == device.key
                || (!address.empty() && address == networkAddress(other)
                    && fullName(other) == fullName(device));
        };
        if (!device.key.empty() && std::none_of(kept.begin(), kept.end(), same)) {
            kept.push_back(device);
        }
    }
    return kept;
}

void addUsbFacts(FoundDevice& device, const std::string& usbFolder)
{
    constexpr char kMark[] = "libusb:"; // then "bus:address"
    const std::size_t mark = device.key.find(kMark);
    int bus = 0;
    int address = 0;
    if (mark == std::string::npos
        || std::sscanf(device.key.c_str() + mark, "libusb:%d:%d", &bus, &address) != 2) {
        return;
    }
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(usbFolder, error)) {
        if (std::atoi(firstLine(entry.path() / "busnum").c_str()) == bus
            && std::atoi(firstLine(entry.path() / "devnum").c_str()) == address) {
            device.serial = firstLine(entry.path() / "serial");
            device.vidPid =
                firstLine(entry.path() / "idVendor") + ":" + firstLine(entry.path() / "idProduct");
            return;
        }
    }
}

} // namespace orva

#include "scanlib/device/sane/sane_runtime.h"

#include "scanlib/base/library_log.h"

#include <algorithm>
#include <cctype>
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
            std::string candidate = text->substr(i, end - i);
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

std::string lowerCase(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(),
        [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

std::string firstLine(const std::filesystem::path& file)
{
    std::ifstream stream(file);
    std::string line;
    std::getline(stream, line);
    return line;
}

/// Bus and address as the drivers write them: "...libusb:001:012".
bool usbPlace(const std::string& key, int& bus, int& address)
{
    const std::size_t mark = key.find("libusb:");
    return mark != std::string::npos
        && std::sscanf(key.c_str() + mark, "libusb:%d:%d", &bus, &address) == 2;
}

/// The folder of a device in the kernel's list; empty when it is not there. listed tells whether
/// there is a list at all.
std::filesystem::path usbEntry(int bus, int address, const std::string& usbFolder, bool& listed)
{
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(usbFolder, error)) {
        listed = true;
        if (std::atoi(firstLine(entry.path() / "busnum").c_str()) == bus
            && std::atoi(firstLine(entry.path() / "devnum").c_str()) == address) {
            return entry.path();
        }
    }
    return {};
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

std::string fullName(const FoundDevice& device)
{
    const std::string vendor = lowerCase(device.vendor);
    const std::string model = lowerCase(device.model);
    const bool isProtocol = vendor == "escl" || vendor == "wsd";
    const bool repeated = model.compare(0, vendor.size(), vendor) == 0;
    return isProtocol || repeated ? device.model : device.vendor + " " + device.model;
}

std::vector<FoundDevice> withoutDuplicates(const std::vector<FoundDevice>& devices)
{
    std::vector<FoundDevice> kept;
    for (const FoundDevice& device : devices) {
        const std::string address = networkAddress(device);
        const auto same = [&](const FoundDevice& other) {
            return other.key == device.key
                || (!address.empty() && address == networkAddress(other)
                    && lowerCase(fullName(other)) == lowerCase(fullName(device)));
        };
        if (!device.key.empty() && std::none_of(kept.begin(), kept.end(), same)) {
            kept.push_back(device);
        }
    }
    return kept;
}

void addUsbFacts(FoundDevice& device, const std::string& usbFolder)
{
    int bus = 0;
    int address = 0;
    bool listed = false;
    if (!usbPlace(device.key, bus, address)) {
        return;
    }
    const std::filesystem::path entry = usbEntry(bus, address, usbFolder, listed);
    if (!entry.empty()) {
        device.serial = firstLine(entry / "serial");
        device.vidPid = firstLine(entry / "idVendor") + ":" + firstLine(entry / "idProduct");
    }
}

bool isUnplugged(const std::string& key, const std::string& usbFolder)
{
    int bus = 0;
    int address = 0;
    bool listed = false;
    return usbPlace(key, bus, address) && usbEntry(bus, address, usbFolder, listed).empty()
        && listed;
}

} // namespace orva

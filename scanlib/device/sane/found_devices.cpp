#include "scanlib/device/sane/found_devices.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace orva {

namespace {

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

/// Text that is fit for a list, a line of a log and the name of a folder.
std::string tidyName(const std::string& text)
{
    std::string name;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        const bool blank = byte <= ' ' || byte == 0x7f;
        if (name.empty() && (blank || c == '.')) {
            continue; // a folder that begins with a dot is hidden
        }
        if (!blank) {
            name += c == '/' || c == '\\' ? '-' : c;
        } else if (name.back() != ' ') {
            name += ' ';
        }
    }
    return name.substr(0, name.find_last_not_of(' ') + 1);
}

} // namespace

std::string fullName(const FoundDevice& device)
{
    const std::string vendor = lowerCase(device.vendor);
    const std::string model = lowerCase(device.model);
    const bool isProtocol = vendor == "escl" || vendor == "wsd";
    const bool repeated = model.compare(0, vendor.size(), vendor) == 0;
    return isProtocol || repeated ? device.model : device.vendor + " " + device.model;
}

DeviceIdentity identityOf(const FoundDevice& device)
{
    DeviceIdentity identity;
    identity.key = device.key;
    identity.name = tidyName(fullName(device));
    if (identity.name.empty()) {
        identity.name = tidyName(device.key);
    }
    identity.serial = device.serial;
    identity.vidPid = device.vidPid;
    identity.driverVersion = device.key.substr(0, device.key.find(':'));
    return identity;
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

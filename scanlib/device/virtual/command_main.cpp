// virtual-scanner: what hands do at a real scanner. Puts paper in and takes it out, presses
// buttons, arms faults, shows the state. Talks to the library through the state folder only.
#include "scanlib/base/library_paths.h"
#include "scanlib/device/virtual/image_file.h"
#include "scanlib/device/virtual/scanner_state.h"
#include "scanlib/device/virtual/tray.h"
#include "sdk/codes.h"

#include <CLI/CLI.hpp>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <map>
#include <string>
#include <system_error>
#include <vector>

namespace {

namespace fs = std::filesystem;
using orva::ScannerState;
using orva::StateStore;
using orva::Status;

int report(const Status& status)
{
    if (!status.ok()) {
        std::cerr << "virtual-scanner: " << status.detail() << '\n';
    }
    return status.ok() ? 0 : 1;
}

Status notDone(const fs::path& file, const std::error_code& error)
{
    return { orva::kFileWrite, file.string() + ": " + error.message() };
}

/// Hidden copies in the tray of the sheets that are being put in: the feeder never sees half of
/// one. What is not put in goes away at the end, also after a fault.
class SheetCopies
{
public:
    explicit SheetCopies(fs::path tray)
        : m_tray(std::move(tray))
    {
    }
    ~SheetCopies()
    {
        for (const fs::path& copy : m_copies) {
            std::error_code ignored;
            fs::remove(copy, ignored);
        }
    }
    SheetCopies(const SheetCopies&) = delete;
    SheetCopies& operator=(const SheetCopies&) = delete;

    Status make(const fs::path& from)
    {
        m_copies.push_back(m_tray
            / ("." + std::to_string(::getpid()) + "-" + std::to_string(m_copies.size()) + ".new"));
        std::error_code error;
        fs::copy_file(from, m_copies.back(), fs::copy_options::overwrite_existing, error);
        ::chmod(m_copies.back().c_str(), 0666);
        return error ? notDone(from, error) : Status();
    }

    Status putIn(std::size_t index, const std::string& name)
    {
        std::error_code error;
        fs::rename(m_copies[index], m_tray / name, error);
        return error ? notDone(m_tray / name, error) : Status();
    }

    /// Of commands that were stopped while they copied.
    void removeLeftovers() const
    {
        std::error_code error;
        for (fs::directory_iterator entry(m_tray, error), end; !error && entry != end;
             entry.increment(error)) {
            const std::string name = entry->path().filename().string();
            int process = 0;
            if (entry->path().extension() == ".new"
                && std::sscanf(name.c_str(), ".%d-", &process) == 1 && process > 0
                && ::kill(process, 0) != 0 && errno == ESRCH) {
                std::error_code ignored;
                fs::remove(entry->path(), ignored);
            }
        }
    }

private:
    const fs::path m_tray;
    std::vector<fs::path> m_copies;
};

/// The files that are named, a folder standing for the images in it.
Status filesNamed(const std::vector<std::string>& names, std::vector<fs::path>& files)
{
    for (const std::string& name : names) {
        const fs::path path(name);
        std::error_code ignored;
        if (fs::is_directory(path, ignored)) {
            const std::vector<fs::path> images = orva::imagesOf(path);
            if (images.empty()) {
                return { orva::kDamagedPage, path.string() + ": no images in this folder" };
            }
            files.insert(files.end(), images.begin(), images.end());
        } else if (!fs::is_regular_file(path, ignored)) {
            return { orva::kDamagedPage, path.string() + ": no such file" };
        } else if (!orva::isImageName(path)) {
            return { orva::kDamagedPage,
                path.string() + ": the feeder takes .jpg, .png, .tif, .pnm, .pbm, .pgm and .ppm" };
        } else {
            files.push_back(path);
        }
    }
    return {};
}

/// A wrong name puts no sheet in. A damaged image is put in, with a warning: it is a way to see
/// what becomes of one.
Status loadFiles(const StateStore& store, const std::vector<std::string>& names)
{
    std::vector<fs::path> files;
    if (Status status = filesNamed(names, files); !status.ok()) {
        return status;
    }
    for (const fs::path& file : files) {
        int count = 0;
        if (Status status = orva::countImages(file, count); !status.ok()) {
            std::cerr << "virtual-scanner: warning: " << status.detail() << '\n';
        }
    }
    if (Status status = store.prepare(); !status.ok()) {
        return status;
    }
    SheetCopies copies(store.tray());
    copies.removeLeftovers();
    for (const fs::path& file : files) { // before the lock: others wait for it two seconds only
        if (Status status = copies.make(file); !status.ok()) {
            return status;
        }
    }
    Status done;
    const Status status = store.update([&](ScannerState& state) {
        state.empty = false;
        const std::vector<std::string> trayNames = orva::trayNames(files, store.tray());
        for (std::size_t i = 0; i < files.size() && done.ok(); ++i) {
            done = copies.putIn(i, trayNames[i]);
        }
    });
    return status.ok() ? done : status;
}

Status moveAll(const fs::path& from, const fs::path& to)
{
    std::error_code error;
    std::vector<fs::path> files;
    for (const fs::directory_entry& entry : fs::directory_iterator(from, error)) {
        if (entry.is_regular_file(error) && entry.path().filename().string().front() != '.') {
            files.push_back(entry.path());
        }
    }
    for (const fs::path& file : files) {
        fs::rename(file, to / file.filename(), error);
        if (error) {
            return notDone(file, error);
        }
    }
    return {};
}

/// Moves all sheets from one folder to the other; empty says whether the feeder is bare afterwards.
Status moveSheets(const StateStore& store, const fs::path& from, const fs::path& to, bool empty)
{
    Status moved;
    const Status status = store.update([&](ScannerState& state) {
        moved = moveAll(from, to);
        state.empty = empty;
        state.openFile.clear();
        state.openPage = 0;
    });
    return status.ok() ? moved : status;
}

std::string faultText(const orva::ScannerFaults& faults)
{
    std::string text;
    const auto add = [&](bool armed, const std::string& name) {
        text += armed ? (text.empty() ? "" : ", ") + name : "";
    };
    const auto sheet = [](int number) { return " at sheet " + std::to_string(number); };
    add(faults.unplugged, "unplugged");
    add(faults.coverOpen, "cover open");
    add(faults.jamSheet > 0, "jam" + sheet(faults.jamSheet));
    add(faults.doubleFeedSheet > 0, "double feed" + sheet(faults.doubleFeedSheet));
    add(faults.unplugSheet > 0, "unplugged" + sheet(faults.unplugSheet));
    add(faults.hangSheet > 0,
        "hang" + sheet(faults.hangSheet) + " for " + std::to_string(faults.hangMs) + " ms");
    add(faults.slowMs > 0, "slow, " + std::to_string(faults.slowMs) + " ms a side");
    return text.empty() ? "none" : text;
}

void printStatus(const StateStore& store)
{
    const ScannerState state = store.read();
    const std::size_t sheets = orva::listSheets(store.tray()).size();
    std::cout << "tray      " << store.tray().string() << '\n' << "sheets    ";
    if (sheets > 0) {
        std::cout << sheets << '\n';
    } else {
        std::cout << (state.empty ? "none" : "none of yours, the sample sheets are fed") << '\n';
    }
    std::cout << "fed       " << orva::listSheets(store.fed()).size() << '\n'
              << "sleep     " << state.sleepMinutes << " min\n"
              << "auto off  " << state.autoOffHours << " h\n"
              << "pre-feed  ";
    if (state.prefeed) {
        std::cout << state.prefeedSeconds << " s\n";
    } else {
        std::cout << "off\n";
    }
    std::cout << "faults    " << faultText(state.faults) << '\n';
}

void printJson(const StateStore& store)
{
    const ScannerState state = store.read();
    const orva::ScannerFaults& faults = state.faults;
    const auto truth = [](bool value) { return value ? "true" : "false"; };
    std::cout << "{\"sheets\": " << orva::listSheets(store.tray()).size()
              << ", \"fed\": " << orva::listSheets(store.fed()).size()
              << ", \"samples\": " << truth(!state.empty)
              << ", \"sleepMinutes\": " << state.sleepMinutes
              << ", \"autoOffHours\": " << state.autoOffHours
              << ", \"prefeed\": " << truth(state.prefeed)
              << ", \"prefeedSeconds\": " << state.prefeedSeconds
              << ", \"pressesWaiting\": " << state.presses.size()
              << ", \"faults\": {\"unplugged\": " << truth(faults.unplugged)
              << ", \"coverOpen\": " << truth(faults.coverOpen)
              << ", \"jamSheet\": " << faults.jamSheet
              << ", \"doubleFeedSheet\": " << faults.doubleFeedSheet
              << ", \"unplugSheet\": " << faults.unplugSheet
              << ", \"hangSheet\": " << faults.hangSheet << ", \"hangMs\": " << faults.hangMs
              << ", \"slowMs\": " << faults.slowMs << "}}\n";
}

/// Puts the number of the button in the place of its name.
std::string buttonNumber(std::string& name)
{
    static const std::map<std::string, orva::Button> names {
        { "scan", orva::Button::kScan },
        { "open", orva::Button::kScanAndOpen },
        { "window", orva::Button::kToggleWindow },
        { "cancel", orva::Button::kCancel },
    };
    const auto found = names.find(CLI::detail::to_lower(name));
    if (found == names.end()) {
        return "no button '" + name + "'; there are scan, open, window and cancel";
    }
    name = std::to_string(static_cast<int>(found->second));
    return {};
}

int run(int argc, char** argv)
{
    CLI::App app("What hands do at the virtual scanner", "virtual-scanner");
    app.require_subcommand(1);
    std::string folder = orva::installedLibraryPaths().virtualScanner.string();
    app.add_option("--folder", folder, "State folder of the scanner, if not the installed one");

    auto* load = app.add_subcommand("load", "Put sheets into the tray, in the order given");
    std::vector<std::string> files;
    bool again = false;
    bool samples = false;
    load->add_option("files", files,
        "JPEG, PNG, TIFF or PNM, or folders of them; x-front and x-back are one sheet");
    load->add_flag("--again", again, "Put the sheets that were fed back into the tray");
    load->add_flag(
        "--samples", samples, "Let the sample sheets be fed again while the tray is empty");

    auto* unload = app.add_subcommand("unload", "Take all sheets out, the sample sheets too");

    auto* press = app.add_subcommand("press", "Press a button of the scanner");
    int button = 0;
    press->add_option("button", button, "scan, open, window or cancel")
        ->required()
        ->transform(CLI::Validator(buttonNumber, ""));

    auto* fault = app.add_subcommand("fault", "Arm a fault; sheets count from 1 in every job");
    fault->require_subcommand(1);
    int sheet = 0;
    int ms = 0;
    const CLI::Range anySheet(1, 1'000'000);
    const CLI::Range anyTime(1, 600'000);
    auto* jam = fault->add_subcommand("jam", "Paper jam, once");
    jam->add_option("--sheet", sheet)->required()->check(anySheet);
    auto* doubleFeed =
        fault->add_subcommand("double-feed", "Two sheets at once; seen only if asked for");
    doubleFeed->add_option("--sheet", sheet)->required()->check(anySheet);
    auto* cover = fault->add_subcommand("cover-open", "Open cover, until cleared");
    auto* unplugged = fault->add_subcommand("unplugged", "Gone, now or at a sheet, until cleared");
    unplugged->add_option("--sheet", sheet)->check(anySheet);
    auto* slow = fault->add_subcommand("slow", "A side takes at least this long, until cleared");
    slow->add_option("--ms", ms)->required()->check(anyTime);
    auto* hang = fault->add_subcommand("hang", "Silence at a sheet, once");
    hang->add_option("--sheet", sheet)->required()->check(anySheet);
    hang->add_option("--ms", ms, "how long, 30000 if not given")->check(anyTime);
    auto* clear = fault->add_subcommand("clear", "Take all faults away");

    auto* show = app.add_subcommand("status", "Show paper, times and faults");
    bool json = false;
    show->add_flag("--json", json, "For programs");

    constexpr int kUsageError = 2;
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : kUsageError;
    }

    const StateStore store { fs::path(folder) };
    if (show->parsed()) {
        json ? printJson(store) : printStatus(store);
        return 0;
    }
    if (unload->parsed()) {
        return report(moveSheets(store, store.tray(), store.fed(), true));
    }
    if (load->parsed()) {
        if (files.empty() && !again && !samples) {
            std::cerr << "virtual-scanner: load what? Name files, or --again, or --samples\n";
            return kUsageError;
        }
        if (again) {
            if (const int code = report(moveSheets(store, store.fed(), store.tray(), false));
                code != 0) {
                return code;
            }
        }
        return report(loadFiles(store, files));
    }
    return report(store.update([&](ScannerState& state) {
        constexpr std::size_t kPressesKept = 8; // nobody presses more often between two looks
        orva::ScannerFaults& faults = state.faults;
        if (press->parsed() && state.presses.size() < kPressesKept) {
            state.presses.push_back({ button, orva::nowMs() });
        } else if (jam->parsed()) {
            faults.jamSheet = sheet;
        } else if (doubleFeed->parsed()) {
            faults.doubleFeedSheet = sheet;
        } else if (cover->parsed()) {
            faults.coverOpen = true;
        } else if (unplugged->parsed()) {
            faults.unplugSheet = sheet;
            faults.unplugged = sheet == 0;
        } else if (slow->parsed()) {
            faults.slowMs = ms;
        } else if (hang->parsed()) {
            constexpr int kUsualSilenceMs = 30'000;
            faults.hangSheet = sheet;
            faults.hangMs = ms > 0 ? ms : kUsualSilenceMs;
        } else if (clear->parsed()) {
            faults = orva::ScannerFaults();
        }
    }));
}

} // namespace

int main(int argc, char** argv)
{
    try {
        return run(argc, argv);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "virtual-scanner: %s\n", error.what());
        return 1;
    }
}

#include "tests/journeys/display.h"

#include "tests/support/sandbox.h"
#include "tests/support/wait.h"

#include <X11/Xlib.h>

#include <cstdio>
#include <filesystem>
#include <sstream>
#include <stdexcept>

// Xlib's words for these collide with those of the test library.
#undef None
#undef Bool
#undef Status

namespace {

using namespace std::chrono_literals;

/// Empty while it has no end.
std::string firstLine(const std::string& text)
{
    const std::size_t end = text.find('\n');
    return end == std::string::npos ? std::string() : text.substr(0, end);
}

struct CloseConnection
{
    void operator()(::Display* display) const { ::XCloseDisplay(display); }
};
using Connection = std::unique_ptr<::Display, CloseConnection>;

} // namespace

VirtualDisplay::VirtualDisplay()
{
    // The number gets a file of its own: Xvfb complains about each number that is taken. Without
    // -noreset the server starts anew when its last client leaves, and refuses the next.
    const std::string number = Sandbox::path("display-number");
    m_server = std::make_unique<Process>(
        Command { { "sh", "-c", "exec Xvfb -displayfd 3 \"$@\" 3>\"$0\"", number, "-screen", "0",
                      "1366x768x24", "-nolisten", "tcp", "-noreset" },
            {}, "/", false, {} },
        Sandbox::path("xvfb.out"));
    if (!waitUntil([&] { return !firstLine(readBytes(number)).empty(); }, 20s)) {
        throw std::runtime_error("no display: " + m_server->output());
    }
    m_name = ":" + firstLine(readBytes(number));
    m_manager = std::make_unique<Process>(tool({ "openbox" }), Sandbox::path("openbox.out"));
    const auto managed = [&] {
        return run(tool({ "xprop", "-root", "_NET_SUPPORTING_WM_CHECK" })).output.find("window id")
            != std::string::npos;
    };
    if (!waitUntil(managed, 20s)) {
        throw std::runtime_error("no window manager: " + m_manager->output());
    }
}

VirtualDisplay::~VirtualDisplay() = default;

Command VirtualDisplay::tool(std::vector<std::string> words) const
{
    return { std::move(words),
        { { "DISPLAY", m_name }, { "LC_ALL", "C.UTF-8" }, { "WAYLAND_DISPLAY", {} } }, "/", false,
        {} };
}

WindowId VirtualDisplay::find(const std::string& title) const
{
    const Finished search =
        run(tool({ "xdotool", "search", "--onlyvisible", "--name", "^" + title + "$" }));
    std::istringstream lines(search.output);
    WindowId window = 0;
    return lines >> window ? window : 0;
}

WindowId VirtualDisplay::wait(const std::string& title, std::chrono::milliseconds limit) const
{
    WindowId window = 0;
    waitUntil([&] { return (window = find(title)) != 0; }, limit);
    return window;
}

bool VirtualDisplay::waitGone(const std::string& title, std::chrono::milliseconds limit) const
{
    return waitUntil([&] { return find(title) == 0; }, limit);
}

std::string VirtualDisplay::focused() const
{
    return firstLine(run(tool({ "xdotool", "getwindowfocus", "getwindowname" })).output);
}

void VirtualDisplay::key(WindowId window, const std::string& key) const
{
    run(tool({ "xdotool", "windowactivate", "--sync", std::to_string(window), "key",
            "--clearmodifiers", key }),
        5s);
}

void VirtualDisplay::type(WindowId window, const std::string& text) const
{
    run(tool({ "xdotool", "windowactivate", "--sync", std::to_string(window), "type",
            "--clearmodifiers", "--delay", "20", text }),
        10s);
}

std::string VirtualDisplay::clipboard() const
{
    const Connection connection(::XOpenDisplay(m_name.c_str()));
    if (!connection) {
        return {};
    }
    ::Display* display = connection.get();
    const auto window =
        ::XCreateSimpleWindow(display, ::XDefaultRootWindow(display), 0, 0, 1, 1, 0, 0, 0);
    const ::Atom text = ::XInternAtom(display, "UTF8_STRING", 0);
    const ::Atom place = ::XInternAtom(display, "JOURNEY", 0);
    ::XConvertSelection(
        display, ::XInternAtom(display, "CLIPBOARD", 0), text, place, window, CurrentTime);
    XEvent event {};
    if (!waitUntil([&] { return ::XCheckTypedEvent(display, SelectionNotify, &event) != 0; }, 5s)
        || event.xselection.property == 0) {
        return {};
    }
    ::Atom type = 0;
    int format = 0;
    unsigned long count = 0;
    unsigned long left = 0;
    unsigned char* bytes = nullptr;
    ::XGetWindowProperty(
        display, window, place, 0, 1L << 20, 0, text, &type, &format, &count, &left, &bytes);
    std::string found =
        bytes == nullptr ? std::string() : std::string(reinterpret_cast<char*>(bytes), count);
    ::XFree(bytes);
    return found;
}

void VirtualDisplay::click(WindowId window, int x, int y, int times) const
{
    const std::string id = std::to_string(window);
    const Finished geometry = run(tool({ "xdotool", "getwindowgeometry", "--shell", id }));
    const auto number = [&](const std::string& name) {
        const std::size_t at = geometry.output.find(name + "=");
        return at == std::string::npos ? 0
                                       : std::atoi(geometry.output.c_str() + at + name.size() + 1);
    };
    const int left = x < 0 ? number("WIDTH") + x : x;
    const int top = y < 0 ? number("HEIGHT") + y : y;
    run(tool({ "xdotool", "mousemove", "--window", id, std::to_string(left), std::to_string(top),
        "click", "--repeat", std::to_string(times), "--delay", "30", "1" }));
}

void VirtualDisplay::pressCloseButton(WindowId window) const
{
    const Connection connection(::XOpenDisplay(m_name.c_str()));
    if (!connection) {
        return;
    }
    XEvent event {};
    event.xclient.type = ClientMessage;
    event.xclient.window = window;
    event.xclient.message_type = ::XInternAtom(connection.get(), "_NET_CLOSE_WINDOW", 0);
    event.xclient.format = 32;
    event.xclient.data.l[1] = 2; // asked for by the user, not by a program
    ::XSendEvent(connection.get(), ::XDefaultRootWindow(connection.get()), 0,
        SubstructureNotifyMask | SubstructureRedirectMask, &event);
    ::XSync(connection.get(), 0);
}

std::string VirtualDisplay::screenshot(const std::string& name) const
{
    const std::string folder = TARVEX_BUILD_DIR "/journeys";
    std::filesystem::create_directories(folder);
    const std::string file = folder + "/" + name + ".png";
    run(tool({ "import", "-window", "root", file }));
    return file;
}

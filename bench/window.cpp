// Starts the application on the present display and tells, in milliseconds, when its windows can be
// seen. A window counts once it is mapped and something is painted in it. Closes the last one.
//
//   bench_window PROGRAM SPLASH-TITLE SEARCH-LINE DIALOG-TITLE
//
// Prints "splash_ms=", from the start of the process to the splash, and "dialog_ms=", from the line
// on standard output that begins the search for devices to the dialog that lists them.
#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

constexpr auto kLimit = std::chrono::seconds(20); ///< for each thing that is waited for
constexpr auto kLookAnyway = std::chrono::milliseconds(20); ///< should an event be missed

double millisecondsBetween(Clock::time_point from, Clock::time_point to)
{
    return std::chrono::duration<double, std::milli>(to - from).count();
}

void require(bool condition, const std::string& what)
{
    if (!condition) {
        throw std::runtime_error(what);
    }
}

class Screen
{
public:
    Screen()
        : m_display(XOpenDisplay(nullptr))
    {
        require(m_display != nullptr, "no display");
        XSetErrorHandler([](Display*, XErrorEvent*) { return 0; }); // windows come and go
        m_root = DefaultRootWindow(m_display);
        m_utf8 = XInternAtom(m_display, "UTF8_STRING", False);
        m_name = XInternAtom(m_display, "_NET_WM_NAME", False);
        XSelectInput(m_display, m_root, SubstructureNotifyMask);
    }
    Screen(const Screen&) = delete;
    Screen& operator=(const Screen&) = delete;
    ~Screen() { XCloseDisplay(m_display); }

    int descriptor() const { return ConnectionNumber(m_display); }

    /// true when windows have changed since the last call.
    bool changed()
    {
        bool any = false;
        while (XPending(m_display) > 0) {
            XEvent event;
            XNextEvent(m_display, &event);
            any = true;
        }
        return any;
    }

    /// The viewable window of this title; 0 when there is none.
    Window find(const std::string& title) { return findBelow(m_root, title, 0); }

    /// true when the window shows more than one colour.
    bool isPainted(Window window)
    {
        XWindowAttributes attributes;
        if (XGetWindowAttributes(m_display, window, &attributes) == 0
            || attributes.map_state != IsViewable) {
            return false;
        }
        XImage* const image =
            XGetImage(m_display, window, 0, 0, static_cast<unsigned>(attributes.width),
                static_cast<unsigned>(attributes.height), AllPlanes, ZPixmap);
        if (image == nullptr) {
            return false;
        }
        bool painted = false;
        const unsigned long first = XGetPixel(image, 0, 0);
        for (int y = 0; y < image->height && !painted; ++y) {
            for (int x = 0; x < image->width && !painted; ++x) {
                painted = XGetPixel(image, x, y) != first;
            }
        }
        XDestroyImage(image);
        return painted;
    }

    void askToClose(Window window)
    {
        XEvent event {};
        event.xclient.type = ClientMessage;
        event.xclient.window = window;
        event.xclient.message_type = XInternAtom(m_display, "WM_PROTOCOLS", False);
        event.xclient.format = 32;
        event.xclient.data.l[0] =
            static_cast<long>(XInternAtom(m_display, "WM_DELETE_WINDOW", False));
        event.xclient.data.l[1] = CurrentTime;
        XSendEvent(m_display, window, False, NoEventMask, &event);
        XFlush(m_display);
    }

private:
    std::string titleOf(Window window)
    {
        Atom type = None;
        int format = 0;
        unsigned long count = 0;
        unsigned long left = 0;
        unsigned char* bytes = nullptr;
        if (XGetWindowProperty(m_display, window, m_name, 0, 256, False, m_utf8, &type, &format,
                &count, &left, &bytes)
                != Success
            || bytes == nullptr) {
            return {};
        }
        std::string title(reinterpret_cast<const char*>(bytes), count);
        XFree(bytes);
        return title;
    }

    Window findBelow(Window window, const std::string& title, int depth)
    {
        constexpr int kFrames = 3; // a window manager puts frames around windows
        Window root = 0;
        Window parent = 0;
        Window* children = nullptr;
        unsigned count = 0;
        if (depth > kFrames
            || XQueryTree(m_display, window, &root, &parent, &children, &count) == 0) {
            return 0;
        }
        const std::vector<Window> below(children, children + count);
        XFree(children);
        for (const Window child : below) {
            XWindowAttributes attributes;
            const bool viewable = XGetWindowAttributes(m_display, child, &attributes) != 0
                && attributes.map_state == IsViewable;
            if (viewable && titleOf(child) == title) {
                return child;
            }
            if (const Window found = findBelow(child, title, depth + 1); found != 0) {
                return found;
            }
        }
        return 0;
    }

    Display* m_display;
    Window m_root = 0;
    Atom m_utf8 = None;
    Atom m_name = None;
};

/// The application, and what it has written to its standard output so far.
class Application
{
public:
    explicit Application(const char* program)
    {
        int ends[2];
        require(pipe2(ends, O_CLOEXEC) == 0, "no pipe");
        m_output = ends[0];
        fcntl(m_output, F_SETFL, O_NONBLOCK);
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
        char* const arguments[] = { const_cast<char*>(program), nullptr };
        m_started = Clock::now();
        const int failed = posix_spawn(&m_pid, program, &actions, nullptr, arguments, environ);
        posix_spawn_file_actions_destroy(&actions);
        close(ends[1]);
        require(failed == 0, std::string("cannot start ") + program);
    }
    Application(const Application&) = delete;
    Application& operator=(const Application&) = delete;
    ~Application()
    {
        if (m_pid > 0) {
            kill(m_pid, SIGKILL);
            waitpid(m_pid, nullptr, 0);
        }
        close(m_output);
    }

    Clock::time_point started() const { return m_started; }
    int descriptor() const { return m_output; }

    /// true when the text stands in what has been written.
    bool hasWritten(const std::string& text)
    {
        char buffer[4096];
        for (ssize_t got = 0; (got = read(m_output, buffer, sizeof buffer)) > 0;) {
            m_text.append(buffer, static_cast<std::size_t>(got));
        }
        return m_text.find(text) != std::string::npos;
    }

    /// Its exit status.
    int waitForEnd()
    {
        const Clock::time_point end = Clock::now() + kLimit;
        int status = 0;
        while (waitpid(m_pid, &status, WNOHANG) == 0) {
            require(Clock::now() < end, "the application does not end");
            hasWritten("");
            usleep(1000);
        }
        m_pid = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }

private:
    pid_t m_pid = -1;
    int m_output = -1;
    std::string m_text;
    Clock::time_point m_started;
};

void waitForLine(Application& application, const std::string& line)
{
    const Clock::time_point end = Clock::now() + kLimit;
    while (!application.hasWritten(line + "\n")) {
        require(Clock::now() < end, "the line did not come: " + line);
        pollfd source { application.descriptor(), POLLIN, 0 };
        poll(&source, 1, 100);
    }
}

Window waitForWindow(Screen& screen, const std::string& title)
{
    const Clock::time_point end = Clock::now() + kLimit;
    Clock::time_point looked {};
    Window window = 0;
    while (window == 0 || !screen.isPainted(window)) {
        require(Clock::now() < end, "the window did not come: " + title);
        if (window == 0 && (screen.changed() || Clock::now() - looked >= kLookAnyway)) {
            looked = Clock::now();
            window = screen.find(title);
            continue;
        }
        pollfd source { screen.descriptor(), POLLIN, 0 };
        poll(&source, 1, 1);
    }
    return window;
}

int measure(const char* program, const char* splash, const char* line, const char* dialog)
{
    Screen screen;
    Application application(program);
    waitForWindow(screen, splash);
    const double splashMs = millisecondsBetween(application.started(), Clock::now());
    waitForLine(application, line);
    const Clock::time_point search = Clock::now();
    const Window window = waitForWindow(screen, dialog);
    const double dialogMs = millisecondsBetween(search, Clock::now());
    screen.askToClose(window);
    const int status = application.waitForEnd();
    require(status == 0, "the application ended with " + std::to_string(status));
    std::printf("splash_ms=%.1f dialog_ms=%.1f\n", splashMs, dialogMs);
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    try {
        require(argc == 5, "usage: see the head of the source");
        return measure(argv[1], argv[2], argv[3], argv[4]);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}

// A display of its own with a window manager, and the hands of an operator on it.
#pragma once

#include "tests/journeys/process.h"

#include <chrono>
#include <memory>
#include <string>

/// Number of a window on the display; 0 is none.
using WindowId = unsigned long;

/// Needs a Sandbox. Xvfb takes a free number; both programs end with the object.
class VirtualDisplay
{
public:
    VirtualDisplay();
    ~VirtualDisplay();
    VirtualDisplay(const VirtualDisplay&) = delete;
    VirtualDisplay& operator=(const VirtualDisplay&) = delete;

    /// ":7"
    const std::string& name() const { return m_name; }

    /// The visible window whose title matches the whole extended regular expression; 0 when there
    /// is none now.
    WindowId find(const std::string& title) const;
    /// Waits for it; 0 when it does not come in time.
    WindowId wait(
        const std::string& title, std::chrono::milliseconds limit = std::chrono::seconds(20)) const;
    /// False when it is still there after the limit.
    bool waitGone(
        const std::string& title, std::chrono::milliseconds limit = std::chrono::seconds(10)) const;

    /// Title of the window that keys go to.
    std::string focused() const;
    /// Gives the window the focus, by way of the window manager, which else may move it on to
    /// another one, and presses a key ("Return", "ctrl+q").
    void key(WindowId window, const std::string& key) const;
    /// Gives the window the focus and types a text of plain letters, digits and signs.
    void type(WindowId window, const std::string& text) const;
    /// Text on the clipboard; empty when there is none or its owner does not answer.
    std::string clipboard() const;
    /// Clicks at a place inside the window; negative numbers count from the right and lower edge.
    void click(WindowId window, int x, int y, int times = 1) const;
    /// What the close button of its title bar does: asks the window manager to close it.
    void pressCloseButton(WindowId window) const;
    /// Saves the whole display as <build>/journeys/<name>.png and tells its path.
    std::string screenshot(const std::string& name) const;

private:
    Command tool(std::vector<std::string> words) const;

    std::string m_name;
    std::unique_ptr<Process> m_server;
    std::unique_ptr<Process> m_manager;
};

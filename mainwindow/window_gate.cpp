#include "mainwindow/window_gate.h"

#include "mainwindow/mainwindow.h"

void WindowGate::notify()
{
    const std::lock_guard<std::mutex> lock(mutex);
    changed.notify_all();
}

bool WindowGate::shut(std::chrono::milliseconds limit)
{
    std::unique_lock<std::mutex> lock(mutex);
    window = nullptr;
    closing = true;
    changed.notify_all();
    return changed.wait_for(lock, limit, [this] { return users == 0; });
}

WindowUse::WindowUse(std::shared_ptr<WindowGate> gate)
    : m_gate(std::move(gate))
{
    if (m_gate == nullptr) {
        return;
    }
    const std::lock_guard<std::mutex> lock(m_gate->mutex);
    m_window = m_gate->window;
    if (m_window != nullptr) {
        ++m_gate->users;
        m_job = m_window->jobNumber();
    }
}

void WindowUse::leave()
{
    if (m_window != nullptr) {
        const std::lock_guard<std::mutex> lock(m_gate->mutex);
        m_window = nullptr;
        --m_gate->users;
        m_gate->changed.notify_all();
    }
}

// The toolkit swallows the close button of a window under a modal dialog. This lets the one through
// that is pressed while the progress of a scan is in front. X11 only; elsewhere it does nothing.
#pragma once

#include <QAbstractNativeEventFilter>
#include <QWidget>

#include <cstdint>
#include <functional>

/// Hears the window manager's requests for as long as it lives. GUI thread.
class BlockedClose : public QAbstractNativeEventFilter
{
public:
    /// `onClose` is called for each request that is meant for the window, blocked or not, before
    /// the toolkit handles it. It must not close anything by itself, only queue that.
    BlockedClose(const QWidget& window, std::function<void()> onClose);
    ~BlockedClose() override;
    BlockedClose(const BlockedClose&) = delete;
    BlockedClose& operator=(const BlockedClose&) = delete;

    bool nativeEventFilter(const QByteArray& eventType, void* message, long* result) override;

private:
    const QWidget& m_window;
    std::function<void()> m_onClose;
    std::uint32_t m_deleteWindow = 0; ///< the request's atom; 0 on other platforms
};

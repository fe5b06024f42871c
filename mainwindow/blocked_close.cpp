#include "mainwindow/blocked_close.h"

#include <QGuiApplication>

#include <xcb/xcb.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <utility>

namespace {

constexpr std::uint8_t kSentBit = 0x80; // set in events that another program has sent

/// Atoms are the same for all connections to a display. 0 when it cannot be asked.
xcb_atom_t deleteWindowAtom()
{
    constexpr char kName[] = "WM_DELETE_WINDOW";
    xcb_atom_t atom = 0;
    xcb_connection_t* const connection = ::xcb_connect(nullptr, nullptr);
    if (::xcb_connection_has_error(connection) == 0) {
        const auto cookie = ::xcb_intern_atom(connection, 0, std::strlen(kName), kName);
        const std::unique_ptr<xcb_intern_atom_reply_t, decltype(&std::free)> reply(
            ::xcb_intern_atom_reply(connection, cookie, nullptr), &std::free);
        atom = reply ? reply->atom : 0;
    }
    ::xcb_disconnect(connection);
    return atom;
}

} // namespace

BlockedClose::BlockedClose(const QWidget& window, std::function<void()> onClose)
    : m_window(window)
    , m_onClose(std::move(onClose))
{
    if (QGuiApplication::platformName() == QLatin1String("xcb")) {
        m_deleteWindow = deleteWindowAtom();
        qApp->installNativeEventFilter(this);
    }
}

BlockedClose::~BlockedClose() = default; // the base class takes the filter out

bool BlockedClose::nativeEventFilter(const QByteArray& eventType, void* message, long* /*result*/)
{
    if (m_deleteWindow == 0 || eventType != "xcb_generic_event_t") {
        return false;
    }
    const auto* event = static_cast<const xcb_client_message_event_t*>(message);
    // a window that has no number yet gets none by this question
    if ((event->response_type & ~kSentBit) == XCB_CLIENT_MESSAGE && event->format == 32
        && event->data.data32[0] == m_deleteWindow && event->window == m_window.internalWinId()) {
        m_onClose();
    }
    return false;
}

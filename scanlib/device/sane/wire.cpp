#include "scanlib/device/sane/wire.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/uio.h>

// Both ends may be threads of one process, as in tests: the thread sanitizer does not know that
// what came before sending comes before receiving.
#ifdef __SANITIZE_THREAD__
#include <sanitizer/tsan_interface.h>
#define WIRE_SENDS() __tsan_release(&g_wire)
#define WIRE_RECEIVED() __tsan_acquire(&g_wire)
namespace {
char g_wire;
}
#else
#define WIRE_SENDS()
#define WIRE_RECEIVED()
#endif

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace orva {

namespace {

struct Header
{
    std::uint32_t version = 0x4f534831; ///< changes with the messages
    std::uint32_t id = 0;
    std::uint16_t kind = 0;
    std::uint16_t unused = 0;
};

bool waitFor(int socket, short events, std::chrono::milliseconds limit)
{
    const auto deadline = std::chrono::steady_clock::now() + limit;
    pollfd poll { socket, events, 0 };
    for (;;) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
            deadline - std::chrono::steady_clock::now());
        const int count = ::poll(&poll, 1, static_cast<int>(std::max<long>(0, left.count())));
        if (count >= 0 || errno != EINTR) {
            return count > 0;
        }
    }
}

} // namespace

WireWriter& WireWriter::put(std::string_view text)
{
    put(static_cast<std::uint32_t>(text.size()));
    m_bytes.insert(m_bytes.end(), text.begin(), text.end());
    return *this;
}

void WireReader::copy(void* to, std::size_t size)
{
    m_ok = m_ok && size <= m_bytes.size() - m_position;
    if (m_ok && size > 0) {
        std::memcpy(to, m_bytes.data() + m_position, size);
        m_position += size;
    }
}

std::string WireReader::text()
{
    const auto size = get<std::uint32_t>();
    m_ok = m_ok && size <= m_bytes.size() - m_position;
    std::string text(m_ok ? size : 0, '\0');
    copy(text.data(), text.size());
    return text;
}

bool sendWire(int socket, const WireMessage& message, std::chrono::milliseconds limit)
{
    Header header;
    header.id = message.id;
    header.kind = message.kind;
    iovec parts[] = { { &header, sizeof header },
        { const_cast<std::uint8_t*>(message.body.data()), message.body.size() } };
    if (sizeof header + message.body.size() > kWireMostBytes) {
        return false;
    }
    msghdr packet {};
    packet.msg_iov = parts;
    packet.msg_iovlen = 2;
    WIRE_SENDS();
    for (;;) {
        if (::sendmsg(socket, &packet, MSG_NOSIGNAL | MSG_DONTWAIT) >= 0) {
            return true;
        }
        const bool full = errno == EAGAIN || errno == EWOULDBLOCK;
        if (errno != EINTR && !(full && waitFor(socket, POLLOUT, limit))) {
            return false;
        }
    }
}

WireResult receiveWire(int socket, WireMessage& message)
{
    Header header;
    message.body.resize(kWireMostBytes - sizeof header);
    iovec parts[] = { { &header, sizeof header }, { message.body.data(), message.body.size() } };
    msghdr packet {};
    packet.msg_iov = parts;
    packet.msg_iovlen = 2;
    ssize_t size = 0;
    do {
        size = ::recvmsg(socket, &packet, MSG_DONTWAIT);
    } while (size < 0 && errno == EINTR);
    if (size < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) {
        return WireResult::kNothing;
    }
    if (size <= 0) {
        return WireResult::kClosed;
    }
    if (static_cast<std::size_t>(size) < sizeof header || header.version != Header().version
        || (packet.msg_flags & MSG_TRUNC) != 0) {
        return WireResult::kBroken;
    }
    WIRE_RECEIVED();
    message.id = header.id;
    message.kind = header.kind;
    message.body.resize(static_cast<std::size_t>(size) - sizeof header);
    return WireResult::kMessage;
}

bool waitReadable(int socket, std::chrono::milliseconds limit)
{
    return waitFor(socket, POLLIN, limit);
}

} // namespace orva

// Messages between the library and its SANE helper: one packet of a SOCK_SEQPACKET socket each,
// numbers in the byte order of the machine, texts with their length. Both ends are of one build;
// what does not fit is refused all the same.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace orva {

struct WireMessage
{
    std::uint16_t kind = 0;
    std::uint32_t id = 0; ///< of a request, repeated in whatever answers it
    std::vector<std::uint8_t> body;
};

inline constexpr std::size_t kWireMostBytes = 64 * 1024; ///< of a whole message

enum class WireResult
{
    kMessage,
    kNothing, ///< within the time
    kClosed, ///< the other end is gone
    kBroken, ///< a packet that is no message of this version
};

/// Numbers and texts one behind the other.
class WireWriter
{
public:
    template <typename Number,
        typename = std::enable_if_t<std::is_arithmetic_v<Number> || std::is_enum_v<Number>>>
    WireWriter& put(Number value)
    {
        const auto* bytes = reinterpret_cast<const std::uint8_t*>(&value);
        m_bytes.insert(m_bytes.end(), bytes, bytes + sizeof value);
        return *this;
    }
    WireWriter& put(std::string_view text);
    std::vector<std::uint8_t> take() { return std::move(m_bytes); }
    std::size_t size() const { return m_bytes.size(); }

private:
    std::vector<std::uint8_t> m_bytes;
};

/// Reads the same back. Past the end everything is 0 or empty, and ok() is false.
class WireReader
{
public:
    explicit WireReader(const std::vector<std::uint8_t>& bytes)
        : m_bytes(bytes)
    {
    }
    template <typename Number>
    Number get()
    {
        static_assert(std::is_arithmetic_v<Number> || std::is_enum_v<Number>);
        Number value {};
        copy(&value, sizeof value);
        return value;
    }
    bool flag() { return get<std::uint8_t>() != 0; }
    std::string text();
    bool ok() const { return m_ok; }

private:
    void copy(void* to, std::size_t size);

    const std::vector<std::uint8_t>& m_bytes;
    std::size_t m_position = 0;
    bool m_ok = true;
};

/// false when the other end is gone, or does not take the message within the time.
bool sendWire(int socket, const WireMessage& message, std::chrono::milliseconds limit);
WireResult receiveWire(int socket, WireMessage& message);
/// true when the socket can be read, or is closed, within the time.
bool waitReadable(int socket, std::chrono::milliseconds limit);

} // namespace orva

#include "scanlib/writers/biff_records.h"

#include <algorithm>
#include <cstring>

namespace orva {

namespace {

constexpr unsigned kSst = 0x00FC;
constexpr unsigned kContinue = 0x003C;
constexpr unsigned kWideCharacters = 1;
constexpr std::size_t kTextHeadBytes = 3; // length and width of the characters: never cut

bool needsWide(const std::u16string& text)
{
    return std::any_of(text.begin(), text.end(), [](char16_t unit) { return unit > 0xFF; });
}

} // namespace

RecordData& RecordData::put(std::uint64_t value, int bytes)
{
    for (int i = 0; i < bytes; ++i) {
        m_bytes.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
    }
    return *this;
}

RecordData& RecordData::f64(double value)
{
    std::uint64_t bits = 0;
    static_assert(sizeof bits == sizeof value);
    std::memcpy(&bits, &value, sizeof bits);
    return put(bits, 8);
}

void RecordData::characters(const std::u16string& text)
{
    const bool wide = needsWide(text);
    u8(wide ? kWideCharacters : 0);
    for (const char16_t unit : text) {
        put(unit, wide ? 2 : 1);
    }
}

RecordData& RecordData::shortText(const std::u16string& text)
{
    u8(static_cast<unsigned>(text.size()));
    characters(text);
    return *this;
}

RecordData& RecordData::longText(const std::u16string& text)
{
    u16(static_cast<unsigned>(text.size()));
    characters(text);
    return *this;
}

void addRecord(std::vector<std::uint8_t>& stream, unsigned kind, const RecordData& data)
{
    const auto size = static_cast<unsigned>(data.bytes().size());
    const RecordData head = RecordData().u16(kind).u16(size);
    stream.insert(stream.end(), head.bytes().begin(), head.bytes().end());
    stream.insert(stream.end(), data.bytes().begin(), data.bytes().end());
}

std::uint32_t SharedTexts::add(const std::u16string& text)
{
    ++m_uses;
    const auto [at, isNew] = m_numbers.emplace(text, static_cast<std::uint32_t>(m_texts.size()));
    if (isNew) {
        m_texts.push_back(text);
    }
    return at->second;
}

void SharedTexts::write(std::vector<std::uint8_t>& stream) const
{
    unsigned kind = kSst;
    RecordData data;
    data.u32(m_uses).u32(static_cast<std::uint32_t>(m_texts.size()));
    const auto next = [&] {
        addRecord(stream, kind, data);
        kind = kContinue;
        data = RecordData();
    };
    for (const std::u16string& text : m_texts) {
        const bool wide = needsWide(text);
        const std::size_t unitBytes = wide ? 2 : 1;
        if (data.bytes().size() + kTextHeadBytes + unitBytes > kMaxRecordBytes) {
            next();
        }
        data.u16(static_cast<unsigned>(text.size())).u8(wide ? kWideCharacters : 0);
        for (const char16_t unit : text) {
            if (data.bytes().size() + unitBytes > kMaxRecordBytes) {
                next();
                data.u8(wide ? kWideCharacters : 0); // said again for the rest of the text
            }
            wide ? data.u16(unit) : data.u8(unit);
        }
    }
    next();
}

} // namespace orva

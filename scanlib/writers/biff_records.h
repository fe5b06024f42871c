// The records that a BIFF8 stream is made of (the workbook stream of an xls file): little-endian,
// two bytes kind, two bytes length, at most 8,224 bytes of data; longer ones go on in CONTINUE.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

namespace orva {

inline constexpr std::size_t kMaxRecordBytes = 8224;

/// The data of one record while it grows.
class RecordData
{
public:
    RecordData& u8(unsigned value) { return put(value, 1); }
    RecordData& u16(unsigned value) { return put(value, 2); }
    RecordData& u32(std::uint32_t value) { return put(value, 4); }
    RecordData& f64(double value);
    /// Length in one byte or two, then whether the characters have one byte or two, then they.
    RecordData& shortText(const std::u16string& text);
    RecordData& longText(const std::u16string& text);
    const std::vector<std::uint8_t>& bytes() const { return m_bytes; }

private:
    RecordData& put(std::uint64_t value, int bytes);
    void characters(const std::u16string& text);
    std::vector<std::uint8_t> m_bytes;
};

/// Data up to kMaxRecordBytes.
void addRecord(std::vector<std::uint8_t>& stream, unsigned kind, const RecordData& data);

/// The texts of all cells of a workbook, each kept once.
class SharedTexts
{
public:
    /// Its number. At most 32,767 units of UTF-16.
    std::uint32_t add(const std::u16string& text);
    /// The SST record with its CONTINUE records: a text is cut between two characters only.
    void write(std::vector<std::uint8_t>& stream) const;

private:
    std::vector<std::u16string> m_texts;
    std::unordered_map<std::u16string, std::uint32_t> m_numbers;
    std::uint32_t m_uses = 0;
};

} // namespace orva

// Layout after ICC.1:2001-04: header of 128 bytes, tag table, tag data at multiples of four bytes;
// numbers are big-endian, coordinates are fixed point with 16 bits behind the point.
#include "scanlib/writers/srgb_profile.h"

#include <array>
#include <cmath>

namespace orva {

namespace {

constexpr std::size_t kHeaderBytes = 128;
constexpr unsigned kCurvePoints = 1024;

class Bytes
{
public:
    void put16(unsigned value) { put(value, 2); }
    void put32(unsigned value) { put(value, 4); }
    void fixed(double value) { put32(static_cast<unsigned>(std::lround(value * 65536.0))); }
    void text(const std::string& value) { m_data += value; }
    void zeros(std::size_t count) { m_data.append(count, '\0'); }
    void align() { zeros((4 - m_data.size() % 4) % 4); }
    std::size_t size() const { return m_data.size(); }
    const std::string& data() const { return m_data; }

private:
    void put(unsigned value, int bytes)
    {
        for (int i = bytes - 1; i >= 0; --i) {
            m_data.push_back(static_cast<char>(value >> (8 * i) & 0xFFU));
        }
    }
    std::string m_data;
};

std::string description(const std::string& name)
{
    Bytes bytes;
    bytes.text("desc");
    bytes.put32(0);
    bytes.put32(static_cast<unsigned>(name.size() + 1));
    bytes.text(name);
    bytes.zeros(1 + 8 + 3 + 67); // end of text, no Unicode name, no Macintosh name
    return bytes.data();
}

std::string plainText(const std::string& value)
{
    Bytes bytes;
    bytes.text("text");
    bytes.put32(0);
    bytes.text(value);
    bytes.zeros(1);
    return bytes.data();
}

std::string coordinates(double x, double y, double z)
{
    Bytes bytes;
    bytes.text("XYZ ");
    bytes.put32(0);
    bytes.fixed(x);
    bytes.fixed(y);
    bytes.fixed(z);
    return bytes.data();
}

std::string toneCurve()
{
    Bytes bytes;
    bytes.text("curv");
    bytes.put32(0);
    bytes.put32(kCurvePoints);
    for (unsigned i = 0; i < kCurvePoints; ++i) {
        const double v = static_cast<double>(i) / (kCurvePoints - 1);
        const double linear = v <= 0.04045 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4);
        bytes.put16(static_cast<unsigned>(std::lround(linear * 65535.0)));
    }
    return bytes.data();
}

struct Tag
{
    const char* name;
    std::size_t part; ///< index into the data; three tags share one curve
};

} // namespace

std::string sRgbProfile()
{
    // Primaries seen under the D50 light of the profile's own space.
    const std::array<std::string, 7> parts { description("sRGB IEC61966-2.1"),
        plainText("No copyright, use freely"), coordinates(0.96420, 1.0, 0.82491),
        coordinates(0.43607, 0.22249, 0.01392), coordinates(0.38515, 0.71687, 0.09708),
        coordinates(0.14307, 0.06061, 0.71410), toneCurve() };
    constexpr std::array<Tag, 9> kTags { { { "desc", 0 }, { "cprt", 1 }, { "wtpt", 2 },
        { "rXYZ", 3 }, { "gXYZ", 4 }, { "bXYZ", 5 }, { "rTRC", 6 }, { "gTRC", 6 },
        { "bTRC", 6 } } };

    const std::size_t dataStart = kHeaderBytes + 4 + 12 * kTags.size();
    Bytes data;
    std::array<std::size_t, 7> offsets {};
    for (std::size_t i = 0; i < parts.size(); ++i) {
        offsets[i] = dataStart + data.size();
        data.text(parts[i]);
        data.align();
    }

    Bytes profile;
    profile.put32(static_cast<unsigned>(dataStart + data.size()));
    profile.put32(0); // made by no particular colour module
    profile.put32(0x02100000); // version 2.1
    profile.text("mntrRGB XYZ ");
    for (const unsigned part : { 2000U, 1U, 1U, 0U, 0U, 0U }) { // date and time
        profile.put16(part);
    }
    profile.text("acsp");
    profile.zeros(4 + 4 + 4 + 4 + 8 + 4); // platform, flags, maker, model, attributes; perceptual
    profile.fixed(0.96420);
    profile.fixed(1.0);
    profile.fixed(0.82491);
    profile.zeros(kHeaderBytes - profile.size());
    profile.put32(static_cast<unsigned>(kTags.size()));
    for (const Tag& tag : kTags) {
        profile.text(tag.name);
        profile.put32(static_cast<unsigned>(offsets[tag.part]));
        profile.put32(static_cast<unsigned>(parts[tag.part].size()));
    }
    profile.text(data.data());
    return profile.data();
}

} // namespace orva

#include "scanlib/writers/page_rulings.h"

#include "scanlib/base/units.h"
#include "scanlib/writers/output_file.h"

#include <turbojpeg.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <memory>
#include <utility>

namespace orva {

namespace {

constexpr double kWorkingDpi = 150; // a hairline of a quarter point still darkens a pixel
constexpr int kContrast = 40; // levels, of a line against the paper on either side
constexpr double kMostThicknessMm = 1.0;
constexpr double kLeastLengthMm = 6;
constexpr double kBridgeMm = 2; // between pieces of one line
constexpr int kGapPixels = 2; // of noise within a piece
constexpr int kDriftPixels = 3; // between pieces of one line
constexpr std::size_t kMostPieces = 20000;

struct FreeDecoder
{
    void operator()(void* handle) const { tjDestroy(handle); }
};

struct GrayArea
{
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> pixels;

    std::uint8_t at(int x, int y) const
    {
        return pixels[static_cast<std::size_t>(y) * static_cast<std::size_t>(width)
            + static_cast<std::size_t>(x)];
    }
    void resize(int newWidth, int newHeight, std::uint8_t value)
    {
        width = newWidth;
        height = newHeight;
        pixels.assign(
            static_cast<std::size_t>(newWidth) * static_cast<std::size_t>(newHeight), value);
    }
    std::uint8_t* row(int y)
    {
        return pixels.data() + static_cast<std::size_t>(y) * static_cast<std::size_t>(width);
    }
};

/// Grey, at a whole fraction of the resolution; false when it cannot be decoded.
bool decode(const std::vector<std::uint8_t>& bytes, int fraction, GrayArea& out)
{
    const std::unique_ptr<void, FreeDecoder> handle(tjInitDecompress());
    int width = 0;
    int height = 0;
    int subsampling = 0;
    int space = 0;
    const auto size = static_cast<unsigned long>(bytes.size());
    if (!handle
        || tjDecompressHeader3(
               handle.get(), bytes.data(), size, &width, &height, &subsampling, &space)
            != 0) {
        return false;
    }
    const tjscalingfactor factor { 1, fraction };
    out.resize(TJSCALED(width, factor), TJSCALED(height, factor), 0);
    return tjDecompress2(handle.get(), bytes.data(), size, out.pixels.data(), out.width, 0,
               out.height, TJPF_GRAY, 0)
        == 0;
}

/// The picture turned straight, and where its top left corner lies among the straight places.
struct StraightPicture
{
    GrayArea picture;
    double left = 0;
    double top = 0;
};

StraightPicture straightPicture(const GrayArea& tilted, double slope)
{
    const double length = std::hypot(1.0, slope);
    const double cosine = 1 / length;
    const double sine = slope / length;
    StraightPicture straight;
    straight.left = std::min(0.0, sine * tilted.height);
    straight.top = std::min(0.0, -sine * tilted.width);
    const double across = cosine * tilted.width + std::abs(sine) * tilted.height;
    const double down = cosine * tilted.height + std::abs(sine) * tilted.width;
    straight.picture.resize(
        static_cast<int>(std::ceil(across)), static_cast<int>(std::ceil(down)), 255);
    for (int v = 0; v < straight.picture.height; ++v) {
        std::uint8_t* const row = straight.picture.row(v);
        const double y = v + straight.top;
        for (int u = 0; u < straight.picture.width; ++u) {
            const double x = u + straight.left;
            const auto fromX = static_cast<int>(std::lround(cosine * x - sine * y));
            const auto fromY = static_cast<int>(std::lround(cosine * y + sine * x));
            if (fromX >= 0 && fromY >= 0 && fromX < tilted.width && fromY < tilted.height) {
                row[u] = tilted.at(fromX, fromY);
            }
        }
    }
    return straight;
}

GrayArea transposed(const GrayArea& picture)
{
    GrayArea out;
    out.resize(picture.height, picture.width, 0);
    for (int y = 0; y < out.height; ++y) {
        std::uint8_t* const row = out.row(y);
        for (int x = 0; x < out.width; ++x) {
            row[x] = picture.at(y, x);
        }
    }
    return out;
}

/// 1 where a pixel is darker than those at `reach` above and below; solid areas and slow changes of
/// the paper stay 0.
GrayArea ridges(const GrayArea& picture, int reach)
{
    GrayArea out;
    out.resize(picture.width, picture.height, 0);
    for (int y = reach; y < picture.height - reach; ++y) {
        std::uint8_t* const row = out.row(y);
        for (int x = 0; x < picture.width; ++x) {
            const int paper = std::min(picture.at(x, y - reach), picture.at(x, y + reach));
            row[x] = paper - picture.at(x, y) > kContrast ? 1 : 0;
        }
    }
    return out;
}

/// Long runs of ridge pixels in one row of the picture or its neighbours.
std::vector<Ruling> pieces(const GrayArea& ridge, int leastLength)
{
    std::vector<Ruling> found;
    for (int y = 1; y + 1 < ridge.height && found.size() <= kMostPieces; ++y) {
        int start = -1;
        int last = -1;
        for (int x = 0; x <= ridge.width; ++x) {
            const bool marked =
                x < ridge.width && (ridge.at(x, y - 1) | ridge.at(x, y) | ridge.at(x, y + 1)) != 0;
            if (marked) {
                start = start < 0 ? x : start;
                last = x;
            } else if (start >= 0 && (x - last > kGapPixels || x == ridge.width)) {
                if (last - start >= leastLength) {
                    found.push_back({ static_cast<double>(y), static_cast<double>(start),
                        static_cast<double>(last) + 1 });
                }
                start = -1;
            }
        }
    }
    return found;
}

/// Pieces of one line become one, at the middle of them all.
std::vector<Ruling> joined(const std::vector<Ruling>& all, double bridge)
{
    struct Line
    {
        Ruling ruling;
        double lastAt;
        double weight;
    };
    std::vector<Line> lines;
    for (const Ruling& piece : all) { // from top to bottom
        const double length = piece.to - piece.from;
        const auto own = std::find_if(lines.begin(), lines.end(), [&](const Line& line) {
            return piece.at - line.lastAt <= kDriftPixels && piece.from < line.ruling.to + bridge
                && line.ruling.from < piece.to + bridge;
        });
        if (own == lines.end()) {
            lines.push_back({ piece, piece.at, length });
            continue;
        }
        Ruling& ruling = own->ruling;
        ruling.at = (ruling.at * own->weight + piece.at * length) / (own->weight + length);
        own->weight += length;
        own->lastAt = piece.at;
        ruling.from = std::min(ruling.from, piece.from);
        ruling.to = std::max(ruling.to, piece.to);
    }
    std::vector<Ruling> rulings;
    rulings.reserve(lines.size());
    for (const Line& line : lines) {
        rulings.push_back(line.ruling);
    }
    return rulings;
}

std::vector<Ruling> linesAcross(const GrayArea& picture, double dpi)
{
    const double millimetre = dpi / units::kMillimetresPerInch;
    const int reach = std::max(2, static_cast<int>(std::ceil(kMostThicknessMm * millimetre)));
    const std::vector<Ruling> found =
        pieces(ridges(picture, reach), static_cast<int>(kLeastLengthMm * millimetre));
    return found.size() > kMostPieces ? std::vector<Ruling> {}
                                      : joined(found, kBridgeMm * millimetre);
}

void place(std::vector<Ruling>& rulings, double scale, double across, double along)
{
    for (Ruling& ruling : rulings) {
        ruling = { (ruling.at + across) * scale, (ruling.from + along) * scale,
            (ruling.to + along) * scale };
    }
}

} // namespace

Rulings findRulings(const EncodedPage& page, double slope)
{
    const double dpi = page.dpiX > 0 ? page.dpiX : units::kAssumedDpi;
    int fraction = 1; // of those that the codec has
    while (fraction < 8 && dpi / (2 * fraction) >= kWorkingDpi) {
        fraction *= 2;
    }
    std::vector<std::uint8_t> bytes;
    GrayArea tilted;
    if (!readPayload(page, bytes).ok() || !decode(bytes, fraction, tilted)) {
        return {};
    }
    const StraightPicture straight = straightPicture(tilted, slope);
    Rulings rulings;
    rulings.across = linesAcross(straight.picture, dpi / fraction);
    rulings.down = linesAcross(transposed(straight.picture), dpi / fraction);
    place(rulings.across, fraction, straight.top, straight.left);
    place(rulings.down, fraction, straight.left, straight.top);
    return rulings;
}

} // namespace orva

#include "scanlib/device/virtual/sheet_placing.h"

#include "scanlib/device/papers.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <utility>
#include <vector>

namespace orva {

namespace {

/// Which source samples make one output sample. Weights add up to kOne.
struct Tap
{
    int first = 0;
    int count = 0; ///< 0: outside the sheet
    std::size_t weights = 0; ///< index of the first weight
};

constexpr int kWeightBits = 14;
constexpr int kOne = 1 << kWeightBits;

struct Axis
{
    std::vector<Tap> taps;
    std::vector<int> weights;
};

/// A triangle as wide as one output sample, or one source sample when that is wider.
/// offset is the source position of the output's edge.
Axis makeAxis(int outputSize, int sourceSize, double sourcePerOutput, double offset)
{
    Axis axis;
    axis.taps.resize(static_cast<std::size_t>(outputSize));
    const double radius = std::max(1.0, sourcePerOutput);
    std::vector<double> raw;
    for (int i = 0; i < outputSize; ++i) {
        const double centre = offset + (i + 0.5) * sourcePerOutput;
        if (centre < 0 || centre >= sourceSize) {
            continue;
        }
        const int first = std::max(0, static_cast<int>(std::ceil(centre - radius - 0.5)));
        const int last =
            std::min(sourceSize - 1, static_cast<int>(std::floor(centre + radius - 0.5)));
        raw.clear();
        double sum = 0;
        for (int s = first; s <= last; ++s) {
            raw.push_back(std::max(0.0, 1 - std::abs(s + 0.5 - centre) / radius));
            sum += raw.back();
        }
        Tap& tap = axis.taps[static_cast<std::size_t>(i)];
        tap.first = first;
        tap.weights = axis.weights.size();
        tap.count = static_cast<int>(raw.size());
        int rest = kOne;
        for (const double weight : raw) {
            axis.weights.push_back(static_cast<int>(std::lround(weight / sum * kOne)));
            rest -= axis.weights.back();
        }
        axis.weights[tap.weights + raw.size() / 2] += rest; // rounding; keeps white exactly white
    }
    return axis;
}

void resampleLine(const std::uint8_t* from, int channels, const Axis& axis, std::uint8_t* to)
{
    for (const Tap& tap : axis.taps) {
        if (tap.count == 0) {
            std::fill(to, to + channels, 255);
            to += channels;
            continue;
        }
        const int* weights = axis.weights.data() + tap.weights;
        for (int c = 0; c < channels; ++c) {
            int sum = kOne / 2;
            const std::uint8_t* sample = from + tap.first * channels + c;
            for (int i = 0; i < tap.count; ++i, sample += channels) {
                sum += weights[i] * *sample;
            }
            *to++ = static_cast<std::uint8_t>(std::clamp(sum >> kWeightBits, 0, 255));
        }
    }
}

Page resampled(const Page& sheet, int width, int height, const ScanArea& area)
{
    Page page;
    page.allocate(width, height, sheet.format);
    const int channels = sheet.format == PixelFormat::kRgb ? 3 : 1;
    const Axis columns =
        makeAxis(width, sheet.width, sheet.dpiX / area.dpiX, area.leftMm / kMmPerInch * sheet.dpiX);
    const Axis rows = makeAxis(
        height, sheet.height, sheet.dpiY / area.dpiY, area.topMm / kMmPerInch * sheet.dpiY);
    const std::size_t stride = page.stride();
    int window = 1; // narrowed source lines that are in use at the same time
    for (const Tap& tap : rows.taps) {
        window = std::max(window, tap.count);
    }
    std::vector<std::uint8_t> lines(stride * static_cast<std::size_t>(window));
    std::vector<int> held(static_cast<std::size_t>(window), -1);
    std::vector<int> sums(stride);
    for (int y = 0; y < height; ++y) {
        const Tap& tap = rows.taps[static_cast<std::size_t>(y)];
        if (tap.count == 0) {
            std::fill(page.row(y), page.row(y) + stride, 255);
            continue;
        }
        std::fill(sums.begin(), sums.end(), kOne / 2);
        for (int i = 0; i < tap.count; ++i) {
            const int source = tap.first + i;
            const auto slot = static_cast<std::size_t>(source % window);
            std::uint8_t* line = lines.data() + slot * stride;
            if (held[slot] != source) {
                resampleLine(sheet.row(source), channels, columns, line);
                held[slot] = source;
            }
            const int weight = rows.weights[tap.weights + static_cast<std::size_t>(i)];
            for (std::size_t x = 0; x < stride; ++x) {
                sums[x] += weight * line[x];
            }
        }
        std::uint8_t* to = page.row(y);
        for (std::size_t x = 0; x < stride; ++x) {
            to[x] = static_cast<std::uint8_t>(std::clamp(sums[x] >> kWeightBits, 0, 255));
        }
    }
    return page;
}

Page shifted(const Page& sheet, int width, int height, int left, int top)
{
    Page page;
    page.width = width;
    page.height = height;
    page.format = sheet.format;
    page.pixels.assign(page.stride() * static_cast<std::size_t>(height), 255);
    const std::size_t pixel = static_cast<std::size_t>(bitsPerPixel(sheet.format)) / 8;
    const int fromX = std::max(0, left);
    const int toX = std::max(0, -left);
    const int count = std::min(sheet.width - fromX, width - toX);
    for (int y = std::max(0, -top); count > 0 && y < height && y + top < sheet.height; ++y) {
        std::memcpy(page.row(y) + static_cast<std::size_t>(toX) * pixel,
            sheet.row(y + top) + static_cast<std::size_t>(fromX) * pixel,
            static_cast<std::size_t>(count) * pixel);
    }
    return page;
}

/// Resolutions that come from rounded widths are a few hundredths off.
bool sameResolution(double a, double b)
{
    return std::abs(a - b) <= b * 0.002;
}

} // namespace

int pixelsOf(double mm, double dpi)
{
    return std::max(1, static_cast<int>(std::lround(mm / kMmPerInch * dpi)));
}

void placeSheet(Page& page, const ScanArea& area)
{
    const auto take = [&](Page placed) { // the pixels only; sheet, side and number stay
        page.pixels = std::move(placed.pixels);
        page.width = placed.width;
        page.height = placed.height;
    };
    const int width = pixelsOf(area.widthMm, area.dpiX);
    const int height = pixelsOf(area.heightMm, area.dpiY);
    if (!sameResolution(page.dpiX, area.dpiX) || !sameResolution(page.dpiY, area.dpiY)) {
        take(resampled(page, width, height, area));
    } else {
        const auto left = static_cast<int>(std::lround(area.leftMm / kMmPerInch * area.dpiX));
        const auto top = static_cast<int>(std::lround(area.topMm / kMmPerInch * area.dpiY));
        if (left != 0 || top != 0 || width != page.width || height != page.height) {
            take(shifted(page, width, height, left, top));
        }
    }
    page.dpiX = area.dpiX;
    page.dpiY = area.dpiY;
}

} // namespace orva

#include "scanlib/page/ops/tone.h"

#include "scanlib/page/ops/levels.h"
#include "scanlib/page/ops/page_sample.h"
#include "scanlib/page/ops/paper_map.h"
#include "scanlib/page/ops/row_loops.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace orva {

namespace {

constexpr double kMargin = 0.08; // of the paper's level
constexpr double kUnitGain = 8192; // a gain of 1; gains go up to 7.99
constexpr double kMostGain = 7.99;
constexpr int kHistogramStep = 2; // samples; a quarter of them gives the same levels

/// For every byte a factor that makes the paper white; empty where there is nothing to do.
class Gains
{
public:
    Gains() = default;
    Gains(PaperMap map, const Page& page)
        : m_map(std::move(map))
        , m_channels(page.format == PixelFormat::kRgb ? 3 : 1)
        , m_width(page.width)
        , m_row(page.stride())
    {
        for (const std::array<float, 4>& level : m_map.levels) {
            for (int c = 0; c < m_channels; ++c) {
                const double white =
                    std::max(1.0, level[static_cast<std::size_t>(c)] * (1 - kMargin));
                m_values.push_back(
                    static_cast<std::uint16_t>(kUnitGain * std::min(kMostGain, 255.0 / white)));
            }
        }
    }

    bool any() const { return !m_values.empty(); }
    const std::uint16_t* row(int y)
    {
        if (y / kRowsAlike != m_block) {
            m_block = y / kRowsAlike;
            spreadOver(m_map, m_values, m_channels, m_block * kRowsAlike + kRowsAlike / 2, m_width,
                m_row.data());
        }
        return m_row.data();
    }

private:
    PaperMap m_map;
    int m_channels = 1;
    int m_width = 0;
    int m_block = -1;
    std::vector<std::uint16_t> m_values;
    std::vector<std::uint16_t> m_row;
};

// Written so that only 16 bits a value are needed: the product's upper half, then 5 bits of
// fraction.
std::uint8_t lightened(std::uint8_t level, std::uint16_t gain)
{
    const auto wide = static_cast<std::uint16_t>(level << 8U);
    const auto product =
        static_cast<std::uint16_t>((static_cast<std::uint32_t>(wide) * gain) >> 16U);
    const auto rounded =
        static_cast<std::uint16_t>(static_cast<std::uint16_t>(product + 16U) >> 5U);
    return static_cast<std::uint8_t>(rounded > 255 ? std::uint16_t { 255 } : rounded);
}

/// Of the page as the gains leave it.
Histogram histogramOf(const Page& page, Gains& gains)
{
    const PageSample sample = sampleOf(page);
    if (!gains.any()) {
        return sample.histogram();
    }
    Histogram histogram {};
    const bool color = sample.channels == 3;
    for (int y = 0; y < sample.height; y += kHistogramStep) {
        const std::uint16_t* const gain = gains.row(y * sample.step);
        for (int x = 0; x < sample.width; x += kHistogramStep) {
            const std::uint8_t* const pixel = sample.color(x, y);
            const std::uint16_t* const at =
                gain + static_cast<std::size_t>(x * sample.step) * sample.channels;
            ++histogram[color ? luma(lightened(pixel[0], at[0]), lightened(pixel[1], at[1]),
                            lightened(pixel[2], at[2]))
                              : static_cast<std::uint8_t>(lightened(pixel[0], at[0]))];
        }
    }
    return histogram;
}

} // namespace

ToneTable toneTable(int brightness, int contrast, double gamma)
{
    ToneTable table {};
    const double shift = brightness / 100.0;
    const bool step = contrast >= 100;
    const double slope = contrast <= 0 ? (100 + contrast) / 100.0
        : step                         ? 0.0
                                       : 100.0 / (100 - contrast);
    for (std::size_t level = 0; level < table.size(); ++level) {
        const double centred = static_cast<double>(level) / 255.0 - 0.5;
        const double turned = step ? (centred < 0 ? 0.0 : 1.0) : centred * slope + 0.5;
        const double bent = std::pow(std::clamp(turned + shift, 0.0, 1.0), 1.0 / gamma);
        table[level] = static_cast<std::uint8_t>(std::lround(bent * 255.0));
    }
    return table;
}

void applyTones(Page& page, const ToneRequest& request)
{
    if (page.format == PixelFormat::kBlackWhite) {
        return;
    }
    Gains gains = request.removeBackground ? Gains(paperMapOf(page), page) : Gains();
    std::optional<LevelStretch> levels;
    std::optional<ToneTable> table;
    if (request.autoLevels) {
        levels = levelStretch(histogramOf(page, gains));
    } else if (request.brightness != 0 || request.contrast != 0 || request.gamma != 1.0) {
        table = toneTable(request.brightness, request.contrast, request.gamma);
    }
    const std::size_t count = page.stride();
    for (int y = 0; y < page.height; ++y) {
        std::uint8_t* const row = page.row(y);
        if (gains.any()) {
            rowLoops().lighten(row, gains.row(y), count);
        }
        if (levels) {
            rowLoops().stretch(row, levels->dark, levels->light, count);
        }
        if (table) {
            std::transform(
                row, row + count, row, [&](std::uint8_t level) { return (*table)[level]; });
        }
    }
}

} // namespace orva

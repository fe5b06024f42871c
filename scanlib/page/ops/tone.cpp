#include "scanlib/page/ops/tone.h"

#include <algorithm>
#include <cmath>

namespace orva {

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

void applyTone(Page& page, const ToneTable& table)
{
    if (page.format == PixelFormat::kBlackWhite) {
        return;
    }
    for (std::uint8_t& value : page.pixels) {
        value = table[value];
    }
}

void applyTone(Page& page, const std::array<ToneTable, 3>& tables)
{
    if (page.format != PixelFormat::kRgb) {
        applyTone(page, tables[0]);
        return;
    }
    std::uint8_t* const end = page.pixels.data() + page.pixels.size();
    for (std::uint8_t* pixel = page.pixels.data(); pixel != end; pixel += 3) {
        pixel[0] = tables[0][pixel[0]];
        pixel[1] = tables[1][pixel[1]];
        pixel[2] = tables[2][pixel[2]];
    }
}

} // namespace orva

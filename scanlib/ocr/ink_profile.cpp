#include "scanlib/ocr/ink_profile.h"

#include <array>
#include <cmath>

namespace orva {

namespace {

/// The grey between paper and ink, from the levels that a hundredth and half of the pixels pass.
int inkLevel(const std::array<int, 256>& histogram, int count)
{
    const auto level = [&](int pixels) {
        int sum = 0;
        int value = 0;
        while (value < 255 && (sum += histogram[static_cast<std::size_t>(value)]) < pixels) {
            ++value;
        }
        return value;
    };
    const int black = level(count / 50);
    const int paper = level(count * 2 / 3);
    return paper - black < 40 ? 0 : (black + paper) / 2;
}

} // namespace

InkProfile inkProfileOf(const GrayPicture& picture, const TextLine& line, int left, int right)
{
    InkProfile profile;
    profile.left = std::clamp(left, 0, picture.width);
    right = std::clamp(right, profile.left, picture.width);
    const double slope =
        static_cast<double>(line.baselineRight - line.baselineLeft) / std::max(1, line.box.width());
    const auto forEachPixel = [&](auto&& visit) {
        for (int x = profile.left; x < right; ++x) {
            const int down = static_cast<int>(std::lround(slope * (x - line.box.left)));
            const int base = line.baselineLeft + down;
            const int top = std::max(0, std::max(line.box.top, base - line.box.height()));
            const int bottom =
                std::min({ picture.height, line.box.bottom, base + line.box.height() / 4 });
            for (int y = top; y < bottom; ++y) {
                visit(x, picture.pixels[static_cast<std::size_t>(y) * picture.width + x]);
            }
        }
    };
    std::array<int, 256> histogram {};
    int count = 0;
    forEachPixel([&](int, std::uint8_t value) {
        ++histogram[value];
        ++count;
    });
    const int level = inkLevel(histogram, count);
    profile.ink.assign(static_cast<std::size_t>(right - profile.left), 0);
    const double part = 1.0 / std::max(1, line.box.height());
    forEachPixel([&](int x, std::uint8_t value) {
        if (value < level) {
            profile.ink[static_cast<std::size_t>(x - profile.left)] += part;
        }
    });
    profile.sums.assign(1, 0);
    profile.empty.assign(1, 0);
    for (const double ink : profile.ink) {
        profile.sums.push_back(profile.sums.back() + ink);
        profile.empty.push_back(profile.empty.back() + (ink > InkProfile::kLeastInk ? 0 : 1));
    }
    return profile;
}

} // namespace orva

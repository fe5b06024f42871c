#include "scanlib/writers/ofd_text_layer.h"

#include "scanlib/base/units.h"
#include "scanlib/writers/text_placing.h"
#include "scanlib/writers/xml_text.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <vector>

namespace orva {

namespace {

std::string decimals(double value)
{
    char text[32] = "";
    std::snprintf(text, sizeof text, "%.3f", value);
    std::string result = text;
    std::replace(result.begin(), result.end(), ',', '.'); // the host may run under any locale
    return result;
}

void addUtf8(std::string& out, char32_t letter)
{
    const auto tail = [&](unsigned shift) {
        out += static_cast<char>(0x80U | ((letter >> shift) & 0x3FU));
    };
    if (letter < 0x80) {
        out += static_cast<char>(letter);
    } else if (letter < 0x800) {
        out += static_cast<char>(0xC0U | (letter >> 6U));
        tail(0);
    } else if (letter < 0x10000) {
        out += static_cast<char>(0xE0U | (letter >> 12U));
        tail(6);
        tail(0);
    } else {
        out += static_cast<char>(0xF0U | (letter >> 18U));
        tail(12);
        tail(6);
        tail(0);
    }
}

/// The letters of a line with the places where they begin, pixels along the line.
struct Letters
{
    std::string text;
    std::vector<double> starts;
};

Letters lettersOn(const LayerLine& line)
{
    Letters letters;
    for (const LayerRun& run : line.runs) {
        const double advance = run.length / static_cast<double>(run.letters.size());
        for (std::size_t i = 0; i < run.letters.size(); ++i) {
            addUtf8(letters.text, run.letters[i]);
            letters.starts.push_back(run.start + advance * static_cast<double>(i));
        }
    }
    return letters;
}

/// One fewer than there are letters.
std::string advances(const std::vector<double>& starts, double mmPerPixel)
{
    std::string list;
    for (std::size_t i = 1; i < starts.size(); ++i) {
        list += (list.empty() ? "" : " ") + decimals((starts[i] - starts[i - 1]) * mmPerPixel);
    }
    return list;
}

std::string textObject(const TextLine& line, double mmX, double mmY, int id)
{
    const LayerLine place = layerLine(line);
    const Letters letters = lettersOn(place);
    if (letters.starts.empty()) {
        return {};
    }
    const double left = line.box.left * mmX;
    const double top = line.box.top * mmY;
    const double first = letters.starts.front();
    constexpr double kLevelMm = 0.1; // of a line that is told without its slope
    const double fall = place.slope * (letters.starts.back() - first) * mmY;
    const bool isLevel = std::abs(fall) < kLevelMm;
    const double x = (place.vertical ? place.base : first) * mmX - left;
    const double y =
        (place.vertical ? first + place.size : place.base + place.slope * first) * mmY - top;
    const std::string steps = advances(letters.starts, place.vertical ? mmY : mmX);
    const std::string delta =
        steps.empty() ? "" : (place.vertical ? " DeltaY=\"" : " DeltaX=\"") + steps + "\"";
    const std::string falls =
        !isLevel ? " DeltaY=\"" + advances(letters.starts, place.slope * mmY) + "\"" : "";
    return "<ofd:TextObject ID=\"" + std::to_string(id) + "\" Boundary=\"" + decimals(left) + " "
        + decimals(top) + " " + decimals(std::max(1, line.box.width()) * mmX) + " "
        + decimals(std::max(1, line.box.height()) * mmY) + "\" Font=\"" + std::to_string(kFontId)
        + "\" Size=\"" + decimals(place.size * (place.vertical ? mmX : mmY))
        + "\"><ofd:FillColor Value=\"0 0 0\" Alpha=\"0\"/><ofd:TextCode X=\"" + decimals(x)
        + "\" Y=\"" + decimals(y) + "\"" + delta + falls + ">" + xmlEscaped(letters.text)
        + "</ofd:TextCode></ofd:TextObject>";
}

double mmPerPixel(double dpi)
{
    return units::kMillimetresPerInch / (dpi > 0 ? dpi : units::kAssumedDpi);
}

} // namespace

std::string ofdTextObjects(const PageText& text, const EncodedPage& page, int& lastId)
{
    std::string out;
    for (const Paragraph& paragraph : text.paragraphs) {
        for (const TextLine& line : paragraph.lines) {
            const std::string object =
                textObject(line, mmPerPixel(page.dpiX), mmPerPixel(page.dpiY), lastId + 1);
            lastId += object.empty() ? 0 : 1;
            out += object;
        }
    }
    return out;
}

} // namespace orva

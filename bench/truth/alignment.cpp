#include "bench/truth/alignment.h"

#include <algorithm>

namespace truth {

namespace {

enum Step : unsigned char
{
    kTakeBoth,
    kDropWanted,
    kDropGot
};

} // namespace

Alignment aligned(const QString& wanted, const QString& got)
{
    const int rows = wanted.size() + 1;
    const int columns = got.size() + 1;
    std::vector<unsigned char> steps(static_cast<std::size_t>(rows) * columns, kDropGot);
    std::vector<int> above(columns);
    std::vector<int> line(columns);
    for (int x = 0; x < columns; ++x) {
        above[x] = x;
    }
    for (int y = 1; y < rows; ++y) {
        unsigned char* step = &steps[static_cast<std::size_t>(y) * columns];
        line[0] = y;
        step[0] = kDropWanted;
        for (int x = 1; x < columns; ++x) {
            const int both = above[x - 1] + (wanted[y - 1] == got[x - 1] ? 0 : 1);
            const int best = std::min({ both, above[x] + 1, line[x - 1] + 1 });
            line[x] = best;
            step[x] = best == both ? kTakeBoth : best == above[x] + 1 ? kDropWanted : kDropGot;
        }
        std::swap(above, line);
    }
    Alignment result { above[columns - 1], std::vector<int>(got.size(), -1) };
    for (int y = rows - 1, x = columns - 1; y > 0 || x > 0;) {
        const unsigned char step = steps[static_cast<std::size_t>(y) * columns + x];
        if (step == kTakeBoth && y > 0 && x > 0) {
            --y;
            --x;
            if (wanted[y] == got[x]) {
                result.match[x] = y;
            }
        } else if (step == kDropWanted) {
            --y;
        } else {
            --x;
        }
    }
    return result;
}

QString normalised(const QString& text)
{
    QString plain;
    for (QChar letter : text.normalized(QString::NormalizationForm_KC)) {
        switch (letter.unicode()) {
        case 0x2018:
        case 0x2019:
        case 0x60:
            letter = '\'';
            break;
        case 0x201C:
        case 0x201D:
            letter = '"';
            break;
        case 0x2010:
        case 0x2011:
        case 0x2013:
        case 0x2014:
        case 0x2212:
            letter = '-';
            break;
        default:
            break;
        }
        if (!letter.isSpace()) {
            plain += letter;
        }
    }
    return plain;
}

} // namespace truth

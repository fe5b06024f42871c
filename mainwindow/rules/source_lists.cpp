#include "mainwindow/rules/source_lists.h"

#include "mainwindow/rules/settings_keys.h"
#include "sdk/codes.h"

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace rules {

namespace {

QString fromView(std::string_view text)
{
    return QString::fromUtf8(text.data(), static_cast<int>(text.size()));
}

/// The first of the texts that the list has, else its first entry, else -1.
ListChoice choice(const QStringList& offered, const QStringList& wishes)
{
    ListChoice result { offered, offered.isEmpty() ? -1 : 0 };
    for (const QString& wish : wishes) {
        const int index = offered.indexOf(wish);
        if (index >= 0) {
            result.selected = index;
            break;
        }
    }
    return result;
}

} // namespace

bool isDuplexSource(const QString& source)
{
    return source.contains(fromView(orva::kDuplexMark));
}

bool isFeederSource(const QString& source)
{
    return source.contains(QLatin1String("ADF"));
}

int defaultSource(const QStringList& sources)
{
    const auto feeder = std::find_if(sources.begin(), sources.end(), isFeederSource);
    if (feeder != sources.end()) {
        return static_cast<int>(feeder - sources.begin());
    }
    return sources.isEmpty() ? -1 : 0;
}

ListChoice paperChoice(const QStringList& offered, const QString& previous)
{
    return choice(offered, { previous, QString::fromUtf8(kFactoryPaper) });
}

ListChoice resolutionChoice(const QStringList& offered, const QString& previous)
{
    return choice(offered, { previous, QString::fromUtf8(kFactoryResolution) });
}

ListChoice mergeChoice(const QString& source, const QString& previous)
{
    constexpr std::size_t kForOneSide = 3; // the ways to merge come behind
    const std::size_t count = isDuplexSource(source) ? orva::kMergeTexts.size() : kForOneSide;
    QStringList items;
    for (std::size_t i = 0; i < count; ++i) {
        items << fromView(orva::kMergeTexts[i]);
    }
    return choice(items, { previous });
}

ListChoice defaultPaperChoice(const QStringList& offered)
{
    return choice(offered, { QString::fromUtf8(kFactoryPaper) });
}

ListChoice defaultResolutionChoice(const QStringList& offered)
{
    return choice(offered, { QString::fromUtf8(kFactoryResolution) });
}

} // namespace rules

// Makes the truth set: scans of real text whose every letter, angle, hole and stamp is known.
//
//   truth-set FOLDER [--seed NUMBER]
//
// Reads the Debian Reference in Chinese and English (packages debian-reference-zh-cn and -en).
#include "bench/truth/plan.h"

#include <QDir>
#include <QGuiApplication>

#include <cstdio>
#include <stdexcept>

namespace {

using namespace truth;

void save(const QImage& picture, const QString& file, int quality)
{
    if (!picture.save(file, nullptr, quality)) {
        throw std::runtime_error("cannot write " + file.toStdString());
    }
}

QVector<Block> chapterOf(const PagePlan& plan)
{
    const QString language = QString(plan.language) == "zh" ? "zh-cn" : "en";
    return readDocument(
        QString("/usr/share/debian-reference/%1.%2.html").arg(plan.chapter, language));
}

void makePage(const PagePlan& plan, int number, std::uint64_t seed, const QString& folder)
{
    PageTruth page;
    page.name = QString("%1-%2-%3").arg(number, 2, 10, QChar('0')).arg(plan.language, plan.layout);
    page.language = plan.language;
    page.layout = plan.layout;
    page.blank = page.layout == "blank";
    const QVector<Block> blocks = chapterOf(plan);
    const PrintedPage front =
        printPage(blocks, plan.start, { page.language, page.layout, plan.points, plan.sans });
    QImage back;
    if (plan.scan.bleed > 0) {
        back =
            printPage(blocks, plan.start + 25, { page.language, "text", plan.points, false }).ink;
    }
    page.lines = front.lines;
    page.table = front.table;
    page.tableWords = front.tableWords;
    page.photos = front.photos;
    Dice dice(seed * 1000 + static_cast<std::uint64_t>(number));
    const Scan scan = scanPage(front, back, plan.scan, dice, page);
    save(scan.picture, folder + '/' + page.name + ".jpg", 92);
    save(front.ink, folder + '/' + page.name + "-ink.png", 50);
    if (!scan.stampMask.isNull()) {
        save(scan.stampMask, folder + '/' + page.name + "-stamp.png", 50);
    }
    writeTruth(page, folder);
}

int run(const QStringList& words)
{
    const bool seeded = words.size() == 4 && words[2] == "--seed";
    if (words.size() != 2 && !seeded) {
        throw std::runtime_error("usage: truth-set FOLDER [--seed NUMBER]");
    }
    const std::uint64_t seed = seeded ? words[3].toULongLong() : 1;
    QDir().mkpath(words[1]);
    int number = 0;
    for (const PagePlan& plan : pagePlans()) {
        makePage(plan, ++number, seed, words[1]);
    }
    std::printf("%d pages in %s\n", number, qPrintable(words[1]));
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QGuiApplication application(argc, argv);
    try {
        return run(QGuiApplication::arguments());
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}

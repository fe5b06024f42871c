// Draws the sample sheets of the virtual scanner into the folder given. Runs while building.
#include "scanlib/device/virtual/samples/sheet_pages.h"
#include "scanlib/device/virtual/samples/sheet_paper.h"

#include <QFontDatabase>
#include <QGuiApplication>
#include <QImage>
#include <QString>

#include <cstdio>

namespace {

bool save(QImage image, const QString& folder, const char* name)
{
    constexpr double kMetrePerInch = 0.0254;
    image.setDotsPerMeterX(qRound(samples::kDpi / kMetrePerInch));
    image.setDotsPerMeterY(qRound(samples::kDpi / kMetrePerInch));
    const bool saved = image.save(folder + QLatin1Char('/') + QLatin1String(name), "JPG", 80);
    if (!saved) {
        std::fprintf(stderr, "cannot write %s\n", name);
    }
    return saved;
}

} // namespace

int main(int argc, char** argv)
{
    QGuiApplication application(argc, argv);
    if (argc != 2) {
        std::fprintf(stderr, "usage: draw_sample_sheets FOLDER\n");
        return 2;
    }
    if (!QFontDatabase().families().contains(QStringLiteral("Noto Sans CJK SC"))) {
        std::fprintf(stderr, "the fonts of fonts-noto-cjk are missing\n");
        return 1;
    }
    using samples::scanned;
    const QString folder = QString::fromLocal8Bit(argv[1]);
    const bool done =
        save(scanned(samples::noticePage(), { 0.8, 0, false }, 1), folder, "01-notice.jpg")
        && save(scanned(samples::expensesPage(), { -1.5, 45, false }, 2), folder, "02-expenses.jpg")
        && save(scanned(samples::picturePage(), {}, 3), folder, "03-picture.jpg")
        && save(scanned(samples::letterPage(), { 2.2, 60, true }, 4), folder, "04-letter.jpg")
        && save(scanned(samples::agreementPage(), { -0.6, 0, true }, 5), folder,
            "05-agreement-front.jpg")
        && save(
            scanned(samples::blankPage(), { -0.6, 0, false }, 6), folder, "05-agreement-back.jpg")
        && save(
            scanned(samples::formFrontPage(), { 1.1, 0, false }, 7), folder, "06-form-front.jpg")
        && save(
            scanned(samples::formBackPage(), { -1.1, 0, false }, 8), folder, "06-form-back.jpg");
    return done ? 0 : 1;
}

#include "dialogs/look.h"

#include <QApplication>
#include <QFile>
#include <QFontDatabase>
#include <QPalette>
#include <QStyleFactory>

// Outside every namespace: the macro declares a function.
static void registerResources()
{
    Q_INIT_RESOURCE(orvascan);
}

namespace look {
namespace {

constexpr int kTextPointSize = 10;
constexpr const char* kDoneProperty = "tarvexLook";

QPalette palette()
{
    QPalette colors(QColor(0xf3f5f8));
    colors.setColor(QPalette::Window, QColor(0xf3f5f8));
    colors.setColor(QPalette::Base, Qt::white);
    colors.setColor(QPalette::AlternateBase, QColor(0xf8fafc));
    colors.setColor(QPalette::Highlight, QColor(0x2563eb));
    colors.setColor(QPalette::HighlightedText, Qt::white);
    colors.setColor(QPalette::Link, QColor(0x1d4ed8));
    colors.setColor(QPalette::ToolTipBase, QColor(0x1f2937));
    colors.setColor(QPalette::ToolTipText, QColor(0xf9fafb));
    for (const QPalette::ColorRole role :
        { QPalette::WindowText, QPalette::Text, QPalette::ButtonText }) {
        colors.setColor(role, QColor(0x1f2937));
        colors.setColor(QPalette::Disabled, role, QColor(0x6f7988));
    }
    colors.setColor(QPalette::PlaceholderText, QColor(0x6f7988));
    return colors;
}

/// The desktop's font when it knows Chinese, else the first usual one that is installed: mixing a
/// Latin font with fallback characters gives lines of uneven height.
QFont textFont()
{
    QFont font = QApplication::font();
    const QFontDatabase database;
    if (!database.writingSystems(font.family()).contains(QFontDatabase::SimplifiedChinese)) {
        const QStringList installed = database.families(QFontDatabase::SimplifiedChinese);
        for (const char* family : { "Noto Sans CJK SC", "Source Han Sans SC", "Source Han Sans CN",
                 "WenQuanYi Micro Hei" }) {
            if (installed.contains(QLatin1String(family))) {
                font.setFamily(QLatin1String(family));
                break;
            }
        }
    }
    font.setPointSize(kTextPointSize);
    return font;
}

} // namespace

void prepareScaling()
{
    QApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QApplication::setHighDpiScaleFactorRoundingPolicy(
        Qt::HighDpiScaleFactorRoundingPolicy::PassThrough);
}

void install()
{
    registerResources();
    if (qApp->property(kDoneProperty).toBool()) {
        return;
    }
    qApp->setProperty(kDoneProperty, true);
    QApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    QApplication::setPalette(palette());
    QApplication::setFont(textFont());
    QFile sheet(QStringLiteral(":/look/look.qss"));
    if (sheet.open(QIODevice::ReadOnly)) {
        qApp->setStyleSheet(QString::fromUtf8(sheet.readAll()));
    }
    QApplication::setWindowIcon(appIcon());
}

QIcon appIcon()
{
    registerResources();
    QIcon icon;
    for (const int size : { 16, 22, 24, 32, 48, 64, 128, 256 }) {
        icon.addFile(QStringLiteral(":/icons/appicon-%1.png").arg(size), QSize(size, size));
    }
    icon.addFile(QStringLiteral(":/icons/appicon-256@2x.png"), QSize(512, 512));
    return icon;
}

QIcon icon(const QString& name)
{
    registerResources();
    const QString file = QStringLiteral(":/icons/%1.png").arg(name);
    QIcon icon;
    if (!QFile::exists(file)) {
        return icon;
    }
    icon.addFile(file, QSize(), QIcon::Normal, QIcon::Off);
    const QString chosen = QStringLiteral(":/icons/%1-on.png").arg(name);
    if (QFile::exists(chosen)) {
        icon.addFile(chosen, QSize(), QIcon::Normal, QIcon::On);
    }
    const QString white = QStringLiteral(":/icons/%1-white.png").arg(name);
    if (QFile::exists(white)) {
        icon.addFile(white, QSize(), QIcon::Selected, QIcon::Off);
    }
    return icon;
}

QPixmap pixmap(const QIcon& icon, int size, const QWidget* widget)
{
    const qreal ratio = widget->devicePixelRatioF();
    QPixmap picture = icon.pixmap(QSize(size, size) * ratio);
    // The icon may already have multiplied by the application's ratio.
    picture =
        picture.scaled(QSize(size, size) * ratio, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    picture.setDevicePixelRatio(ratio);
    return picture;
}

} // namespace look

void applyDialogLook(QDialog* dialog)
{
    look::install();
    // said in full, or window managers offer to minimise and maximise as well
    dialog->setWindowFlags(Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint
        | Qt::WindowSystemMenuHint | Qt::WindowCloseButtonHint);
    dialog->setWindowIcon(look::appIcon());
}

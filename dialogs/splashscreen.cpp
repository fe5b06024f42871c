#include "dialogs/splashscreen.h"

#include "app/timing.h"
#include "dialogs/look.h"

#include <QCloseEvent>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QTimer>

namespace {

constexpr int kMostDots = 6;
constexpr int kIconSize = 64;
constexpr int kSplashPointSize = 10;

QString searchText(int dots)
{
    return QStringLiteral("     设备搜索中") + QString(dots, QLatin1Char('.'));
}

} // namespace

splashScreen::splashScreen(QWidget* parent)
    : QDialog(parent)
    , m_searchLabel(new QLabel(this))
    , m_timer(new QTimer(this))
    , m_dots(kMostDots)
{
    applyDialogLook(this);
    setObjectName(QStringLiteral("splashScreen"));
    setWindowFlag(Qt::WindowMinimizeButtonHint, false);
    setWindowFlag(Qt::WindowMaximizeButtonHint, false);
    setWindowTitle(QStringLiteral("Velmar扫描软件"));

    auto* iconLabel = new QLabel(this);
    iconLabel->setPixmap(look::pixmap(look::appIcon(), kIconSize, this));

    QFont font = m_searchLabel->font();
    font.setPointSize(kSplashPointSize);
    m_searchLabel->setFont(font);
    m_searchLabel->setObjectName(QStringLiteral("searchLabel"));
    m_searchLabel->setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    m_searchLabel->setText(QStringLiteral("设备搜索中....."));
    // Wide enough for the longest text, so that the window does not move with the dots.
    const QFontMetrics metrics(font);
    m_searchLabel->setMinimumWidth(metrics.horizontalAdvance(searchText(kMostDots)) + 8);

    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(32, 28, 40, 28);
    layout->setSpacing(12);
    layout->addWidget(iconLabel);
    layout->addWidget(m_searchLabel, 1);
    layout->setSizeConstraint(QLayout::SetFixedSize);

    connect(m_timer, &QTimer::timeout, this, &splashScreen::onUpdateDevSearchLabel);
    m_timer->start(timing::kSplashStep);
}

void splashScreen::onUpdateDevSearchLabel()
{
    m_dots = m_dots >= kMostDots ? 1 : m_dots + 1;
    m_searchLabel->setText(searchText(m_dots));
}

void splashScreen::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Escape) {
        hide();
        close();
        return;
    }
    QDialog::keyPressEvent(event);
}

void splashScreen::closeEvent(QCloseEvent* event)
{
    m_closed = 1;
    m_timer->stop();
    event->accept();
}

#include "dialogs/statusmesbox.h"

#include "dialogs/look.h"
#include "dialogs/scan_status_texts.h"
#include "log/Log.h"

#include <QPushButton>
#include <QStyle>

namespace {

/// The size of the box. A message that does not fit makes it larger: it is never cut.
constexpr QSize kBoxSize(200, 120);
constexpr QSize kCancelButtonSize(100, 30);

} // namespace

StatusMessageBox::StatusMessageBox()
{
    applyDialogLook(this);
    setModal(false); // a message box is modal by itself; exec() makes it so where that is wanted
    setTextFormat(Qt::PlainText);
    m_cancelButton = new QPushButton(QStringLiteral("取消  扫描"));
    m_cancelButton->resize(kCancelButtonSize);
    // By way of the box: only there the clicked button is already known.
    connect(this, &QMessageBox::buttonClicked, this, &StatusMessageBox::onCancelScan);
}

StatusMessageBox::~StatusMessageBox()
{
    disconnect(this, &QMessageBox::buttonClicked, this, &StatusMessageBox::onCancelScan);
    if (m_hasCancelButton) {
        removeButton(m_cancelButton);
    }
    delete m_cancelButton;
}

void StatusMessageBox::getErrorCode(QString path)
{
    m_catalogue.getErrorCode(path);
}

bool StatusMessageBox::ShowStatusError(int code)
{
    if (m_hasCancelButton) {
        takeCancelButtonOut();
        runLog("-----------------[func:%s]-------------removeButton\n", __func__);
    }
    cont entry;
    if (const cont* found = m_catalogue.find(code)) {
        entry = *found;
    } else {
        runLog("[func:%s]The error code is not exist!", __func__);
        entry.isShow = QStringLiteral("1");
        entry.contents = QStringLiteral("未找到的错误定义");
    }
    const bool hidden = entry.isShow != QLatin1String("1");
    if (!hidden || !isVisible()) { // the message that the operator is reading stays
        setText(entry.contents);
    }
    const QByteArray isShow = entry.isShow.toUtf8();
    if (hidden) {
        runLog("[func:%s][isShow:%s]error MsgBox is not show!", __func__, isShow.constData());
        return false;
    }
    runLog("[func:%s]isShow = %s, contents = %s", __func__, isShow.constData(),
        entry.contents.toUtf8().constData());

    setSingleYesButton();
    setIcon(entry.isError ? QMessageBox::Critical : QMessageBox::Information);
    setWindowIcon(style()->standardIcon(
        entry.isError ? QStyle::SP_MessageBoxCritical : QStyle::SP_MessageBoxInformation, nullptr,
        this));
    setWindowTitle(entry.isError ? QStringLiteral("错 误") : QStringLiteral("提示"));
    return true;
}

void StatusMessageBox::CustomMsgBox(QString title, QString text)
{
    setSingleYesButton();
    setWindowIcon(style()->standardIcon(QStyle::SP_MessageBoxQuestion, nullptr, this));
    setIcon(QMessageBox::Information);
    setWindowTitle(title);
    setText(text);
}

void StatusMessageBox::placeOver(const QWidget& dialog)
{
    move(dialog.geometry().center() - QRect(QPoint(), kBoxSize).center());
}

void StatusMessageBox::ShowStatusInfo(int code, int scanPage, int dealPage, int ocrPage)
{
    switch (code) {
    case kScanStarted:
        setStandardButtons(QMessageBox::NoButton);
        if (!m_hasCancelButton) {
            addButton(m_cancelButton, QMessageBox::YesRole);
            m_cancelButton->show();
            m_hasCancelButton = true;
        }
        break;
    case kScanProgress:
        setStandardButtons(QMessageBox::NoButton);
        break;
    case kScanFinished:
        if (m_hasCancelButton) {
            takeCancelButtonOut();
        }
        setSingleYesButton();
        break;
    default:
        break;
    }
    const ScanStatusTexts texts = scanStatusTexts(code, scanPage, dealPage, ocrPage);
    setWindowTitle(texts.title);
    setText(texts.text);
}

void StatusMessageBox::onCancelScan()
{
    if (m_hasCancelButton && clickedButton() == m_cancelButton) {
        runLog("-----------------[func:%s]------------click function\n", __func__);
        takeCancelButtonOut();
    }
}

void StatusMessageBox::setSingleYesButton()
{
    setStandardButtons(QMessageBox::Yes);
    setButtonText(QMessageBox::Yes, QStringLiteral("确 定"));
    setDefaultButton(QMessageBox::Yes);
}

void StatusMessageBox::takeCancelButtonOut()
{
    removeButton(m_cancelButton);
    m_cancelButton->hide();
    m_hasCancelButton = false;
}

void StatusMessageBox::forceSize()
{
    // The base class has just fixed the size that the message needs.
    setFixedSize(size().expandedTo(kBoxSize));
    update();
}

void StatusMessageBox::closeEvent(QCloseEvent* /*event*/) { }

void StatusMessageBox::hideEvent(QHideEvent* /*event*/) { }

void StatusMessageBox::showEvent(QShowEvent* event)
{
    QMessageBox::showEvent(event);
    forceSize();
}

void StatusMessageBox::resizeEvent(QResizeEvent* event)
{
    QMessageBox::resizeEvent(event);
    forceSize();
}

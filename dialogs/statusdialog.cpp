#include "dialogs/statusdialog.h"

#include "dialogs/look.h"
#include "dialogs/scan_status_texts.h"
#include "log/Log.h"
#include "ui_statusdialog.h"

#include <cstdio>

namespace {

/// The smallest size; text and button that need more room make the dialog larger.
constexpr QSize kProgressSize(165, 134);
constexpr QSize kLabelSize(131, 71);
constexpr QSize kButtonSize(80, 22);
constexpr int kSideMargin = 16;
constexpr int kTopMargin = 16;
constexpr int kGap = 8;
constexpr int kBottomMargin = 14;

QString cancelText()
{
    return QStringLiteral("取消扫描");
}

QString doneText()
{
    return QStringLiteral("确 定");
}

} // namespace

StatusDialog::StatusDialog(QWidget* parent)
    : QDialog(parent)
    , ui(std::make_unique<Ui::StatusDialog>())
{
    applyDialogLook(this);
    ui->setupUi(this);
    // While paper runs the keys belong to the dialog: the Enter that started the scan, held a
    // moment too long, must not cancel it. Tab leads to the button.
    setFocusPolicy(Qt::StrongFocus);
    ui->pushButton->setAutoDefault(false);
}

StatusDialog::~StatusDialog() = default;

void StatusDialog::ShowStatusInfo(int code, int scanPage, int dealPage, int ocrPage)
{
    runLog("[func:ShowStatusInfo]ScanPage = %d, DealPage = %d, OcrPage = %d", scanPage, dealPage,
        ocrPage);
    if (m_cancelled) {
        ui->pushButton->setEnabled(false);
    }
    switch (code) {
    case kScanStarted:
        ui->pushButton->setText(cancelText());
        ui->pushButton->setDefault(false);
        ui->pushButton->setEnabled(false);
        ui->pushButton->hide();
        setFocus();
        m_cancelled = false;
        break;
    case kScanProgress:
        ui->pushButton->setText(cancelText());
        ui->pushButton->setEnabled(true);
        ui->pushButton->show();
        break;
    case kScanFinished:
        std::printf("SCAN_OVER ");
        std::fflush(stdout);
        ui->pushButton->setText(doneText());
        ui->pushButton->setEnabled(true);
        ui->pushButton->show();
        ui->pushButton->setDefault(true);
        ui->pushButton->setFocus();
        break;
    default:
        break;
    }
    const ScanStatusTexts texts = scanStatusTexts(code, scanPage, dealPage, ocrPage);
    setWindowTitle(texts.title);
    ui->label->setText(texts.text);
    // before it is shown: a new size while it comes up would lose the place of its frame
    fitToText();
}

void StatusDialog::on_pushButton_clicked()
{
    if (ui->pushButton->text() == cancelText()) {
        m_cancelled = true;
        emit SignalsInformCancelScan();
        ui->pushButton->setText(doneText());
    }
    hide();
}

/// Escape and the title bar do what the button does: no scan goes on behind a closed dialog.
/// While there is no button, the dialog stays.
void StatusDialog::reject()
{
    if (ui->pushButton->isVisible() && ui->pushButton->isEnabled()) {
        on_pushButton_clicked();
    }
}

// Never shrinks while it is shown: page counts that gain a digit must not make it jump to and fro.
void StatusDialog::fitToText()
{
    ensurePolished();
    const QSize label = kLabelSize.expandedTo(ui->label->sizeHint());
    const QSize button = kButtonSize.expandedTo(ui->pushButton->sizeHint());
    const QSize needed(std::max(label.width(), button.width()) + 2 * kSideMargin,
        kTopMargin + label.height() + kGap + button.height() + kBottomMargin);
    const QSize whole = kProgressSize.expandedTo(needed);
    setMinimumSize(whole);
    resize(size().expandedTo(whole));

    ui->label->setGeometry(kSideMargin, kTopMargin, width() - 2 * kSideMargin,
        height() - kTopMargin - kGap - button.height() - kBottomMargin);
    ui->pushButton->setGeometry((width() - button.width()) / 2,
        height() - kBottomMargin - button.height(), button.width(), button.height());
}

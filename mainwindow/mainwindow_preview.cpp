// The preview page: its summary, the image of the last preview, and opening that image.
#include "app/common.h"
#include "app/timing.h"
#include "log/Log.h"
#include "mainwindow/main_window_ui.h"
#include "mainwindow/mainwindow.h"
#include "mainwindow/rules/preview_summary.h"

#include <QDesktopServices>
#include <QFile>
#include <QFileInfo>
#include <QImageReader>
#include <QTimer>
#include <QUrl>

#include <sys/stat.h>

#include <cstdio>

namespace {

/// More than an A3 page at 600 dpi has, and 400 MB of memory.
constexpr qint64 kMostPreviewPixels = 100'000'000;

} // namespace

void MainWindow::onSetPreviewConfigInfo()
{
    rules::SummaryControls controls;
    controls.timeNamed = ui->timeNameRadio->isChecked();
    controls.coverSameName = ui->sameNameCoverRadio->isChecked();
    controls.separator = ui->seperateCombo->currentText();
    controls.prefix = ui->fileNamePreEdit->text();
    controls.colorMode = ui->colorModeComBo->currentText();
    controls.source = ui->scanSourceComBo->currentText();
    controls.paper = ui->paperTypeComBo->currentText();
    controls.resolution = ui->DPIComBo->currentText();
    controls.rotation = ui->rotAngleComBox->currentText();
    controls.autoCrop = ui->autoCropChkBox->isChecked();
    controls.autoLevel = ui->autopLevelchkBox->isChecked();
    controls.brightness = ui->lightSlider->value();
    controls.contrast = ui->contraSlider->value();
    controls.threshold = ui->threholdSlider->value();
    controls.gamma = ui->gammaSpinBox->value();

    const rules::PreviewSummary summary = rules::previewSummary(controls);
    ui->fileNameVL->setText(summary.fileNameVL);
    ui->fileSameCoverVL->setText(summary.fileSameCoverVL);
    ui->fileSepareteVL->setText(summary.fileSepareteVL);
    ui->filePreSwitchVL->setText(summary.filePreSwitchVL);
    ui->scanColorModeVL->setText(summary.scanColorModeVL);
    ui->scanSourceVL->setText(summary.scanSourceVL);
    ui->scanPaperSizeVL->setText(summary.scanPaperSizeVL);
    ui->scanDPISizeVL->setText(summary.scanDPISizeVL);
    ui->autoCropVL->setText(summary.autoCropVL);
    ui->autoLevelVL->setText(summary.autoLevelVL);
    ui->rotAngleVL->setText(summary.rotAngleVL);
    ui->constraVL->setText(summary.constraVL);
    ui->threholdValueVL->setText(summary.threholdValueVL);
    ui->brightValueVL->setText(summary.brightValueVL);
    ui->gammaValueVL->setText(summary.gammaValueVL);
}

void MainWindow::onProcessScanFile(QString fileName, int nState)
{
    const std::string file = fileName.toStdString();
    runLog("[func%s] filename = %s nState = %d", __func__, file.c_str(), nState);
    if (fileName.isEmpty()) {
        return;
    }
    if (!QFileInfo::exists(fileName)) {
        runLog("[func:%s]filename: %s does not exist!", __func__, file.c_str());
        return;
    }
    showPreviewImage(fileName);
    m_lastPreviewFile = fileName;
    keepPreviewCopy(file);

    // The scanned file goes a little later; a timer, so that the window answers meanwhile.
    m_previewFilesToDelete.append(fileName);
    QTimer::singleShot(timing::kPreviewHold, this, [this, fileName] {
        if (m_previewFilesToDelete.removeOne(fileName)) {
            QFile::remove(fileName);
            runLog("预览图部分");
        }
    });
}

void MainWindow::showPreviewImage(const QString& fileName)
{
    QImageReader reader(fileName);
    reader.setAutoTransform(true);
    const QSize size = reader.size();
    if (static_cast<qint64>(size.width()) * size.height() > kMostPreviewPixels) {
        runLog("[func:%s]%s: %d x %d pixels are too many to be shown", "onProcessScanFile",
            qUtf8Printable(fileName), size.width(), size.height());
        return;
    }
    const QImage image = reader.read();
    if (!image.isNull()) {
        const qreal ratio = ui->imagePreviewVL->devicePixelRatioF();
        QPixmap shown = QPixmap::fromImage(image).scaled(
            ui->imagePreviewVL->size() * ratio, Qt::KeepAspectRatio, Qt::SmoothTransformation);
        shown.setDevicePixelRatio(ratio);
        ui->imagePreviewVL->setPixmap(shown);
    }
}

void MainWindow::keepPreviewCopy(const std::string& file)
{
    if (QFile::exists(tmp_preview)) {
        QFile::remove(tmp_preview);
    }
    const std::string copy = tmp_preview.toStdString();
    const int result = com_copy_file(file, copy);
    if (result != 0) {
        runLog("[func:%s]copy file fail:[%d]", "onProcessScanFile", result);
        QFile::remove(tmp_preview); // half an image
    } else if (::chmod(copy.c_str(), 0777) != 0) {
        runLog("[func:%s]tmp_preview:%s chmod fail!", "onProcessScanFile", copy.c_str());
    }
}

/// The scanned files of previews that are still to be deleted go at once: before the next job,
/// whose files may have the same names, and before the window closes.
void MainWindow::deletePreviewFiles()
{
    while (!m_previewFilesToDelete.isEmpty()) {
        QFile::remove(m_previewFilesToDelete.takeFirst());
        runLog("预览图部分");
    }
}

void MainWindow::slot_showPreivew()
{
    ++m_previewClicks;
    std::printf("click this preview:%d\n", m_previewClicks);
    const QString file = QFileInfo(tmp_preview).absoluteFilePath();
    if (QFileInfo::exists(tmp_preview)) {
        openLocalFile(file);
        runLog("[func:%s]open file :%s success!", __func__, qUtf8Printable(file));
    } else {
        runLog("[func:%s]the file:%s is not exist!", __func__, qUtf8Printable(file));
    }
}

void MainWindow::openLocalFile(const QString& path)
{
    QDesktopServices::openUrl(QUrl::fromLocalFile(QFileInfo(path).absoluteFilePath()));
}

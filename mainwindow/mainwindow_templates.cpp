// Templates: the dialog, the controls as a template, and a template applied to the controls.
#include "app/common.h"
#include "log/Log.h"
#include "mainwindow/main_window_ui.h"
#include "mainwindow/mainwindow.h"
#include "mainwindow/rules/file_param.h"
#include "mainwindow/rules/naming_rules.h"
#include "mainwindow/rules/param_codes.h"
#include "mainwindow/rules/settings_keys.h"
#include "sdk/codes.h"
#include "templates/templateSaveAndExtract.h"

#include <QFile>
#include <QFileInfo>

namespace {

/// What templateInfoStatus tells: type, and values on the way.
constexpr int kApplying = 4;
constexpr int kNamesNext = 20;
constexpr int kImageNext = 40;
constexpr int kApplied = 100;
constexpr int kRefused = -1;

/// The item with this text, or no current item.
void showText(QComboBox* list, const QString& text)
{
    list->setCurrentIndex(list->findText(text, Qt::MatchExactly | Qt::MatchCaseSensitive));
}

// Template files are edited by hand too. What follows keeps a control from taking what an operator
// could not have given it: a rule that has disabled a control has set it as well.

void showIndex(QComboBox* list, int index)
{
    list->setCurrentIndex(rules::storedIndex(index, list->count(), list->currentIndex()));
}

void check(QAbstractButton* button, bool on)
{
    if (button->isEnabled()) {
        button->setChecked(on);
    }
}

/// A text that nobody could have typed counts as missing.
QString typedOrNothing(const QString& text, bool (*isValid)(const QString&))
{
    return isValid(text) ? text : QString();
}

} // namespace

void MainWindow::onTemplateSaveAndGet()
{
    if (m_job.active) {
        return;
    }
    const Busy busy(*this);
    templateSaveAndExtract dialog(m_CurrentSelectDevName, QString(), 0, nullptr);
    connect(&dialog, &templateSaveAndExtract::templateInfoCollect, this,
        &MainWindow::onTemplateInfoCollect);
    connect(
        this, &MainWindow::templateInfoSave, &dialog, &templateSaveAndExtract::onTemplateInfoSave);
    connect(
        &dialog, &templateSaveAndExtract::templateInfoSave, this, &MainWindow::onTemplateInfoSave);
    connect(this, &MainWindow::templateInfoStatus, &dialog,
        &templateSaveAndExtract::onTemplateInfoStatus);
    dialog.exec();
}

void MainWindow::onTemplateInfoCollect()
{
    ScanTemplateParam param;
    param.fileType = ui->comboBox_doc->currentIndex();
    param.savePath = ui->filePathEdit->text();
    param.imageFormat = ui->fileTypeCombo->currentText();
    param.compression = ui->imageCompressCombo->currentText();
    param.timeNameType = ui->timeNametypeCombo->currentText();
    param.timeNamePrefix = ui->fileNamePreEdit->text();
    param.serialStart = ui->nameNoSerialEdit->text();
    param.separator = ui->seperateCombo->currentText();
    param.serialLength = static_cast<std::uint8_t>(ui->nameNoLenSpinBox->value());
    param.overwriteSameName = ui->sameNameCoverRadio->isChecked();
    param.nameByTime = ui->timeNameRadio->isChecked();
    param.useFilePrefix = !ui->fileNamePreEdit->text().isEmpty();
    param.colorMode = ui->colorModeComBo->currentText();
    param.dropoutColor = ui->ColorDropoutComBox->currentText();
    param.autoRotateMode = ui->autoRotateModComBox->currentText();
    param.scanSource = ui->scanSourceComBo->currentText();
    param.paperSize = ui->paperTypeComBo->currentText();
    param.resolution = ui->DPIComBo->currentText();
    param.merge = ui->MergeComBo->currentText();
    param.denoise = ui->DenoiseComBo->currentText();
    param.autoBackgroundColor = ui->autoBColorChkBox->isChecked();
    param.autoCrop = ui->autoCropChkBox->isChecked();
    param.removeHoles = ui->RemoveHoleChkBox->isChecked();
    param.autoLevel = ui->autopLevelchkBox->isChecked();
    param.multiStreamOutput =
        rules::colorModeCode(param.colorMode) == static_cast<int>(orva::ColorMode::kMultiStream);
    param.autoTextOrientation = ui->autoRotatChkBox->isChecked();
    param.colorDropout = ui->ColorDropoutchkBox->isChecked();
    param.multiFeedDetection = ui->MultiFeedChkBox->isChecked();
    param.multiPage = ui->multipage_radio->isChecked();
    param.brightness = static_cast<std::int16_t>(ui->lightSpinBox->value());
    setContrastPercent(param, ui->constraSpinBox->value());
    param.threshold = static_cast<std::uint16_t>(ui->threholdSpinBox->value());
    param.gamma = ui->gammaSpinBox->value();
    param.rotationIndex = static_cast<std::uint16_t>(ui->rotAngleComBox->currentIndex());
    param.skipBlankPages = ui->checkBox_blank->isChecked();
    param.blankThreshold = ui->BlankSlider->value();
    emit templateInfoSave(param);
}

void MainWindow::onTemplateInfoSave(ScanTemplateParam param)
{
    if (checkWritable(QFile::encodeName(param.savePath).constData()) != 0
        || !QFileInfo(param.savePath).isDir() || !rules::isOutputFolder(param.savePath)) {
        runLog("template can not write:%s", qUtf8Printable(param.savePath));
        emit templateInfoStatus(kApplying, kRefused);
        return;
    }
    // the source first: papers, resolutions and the merge list follow it
    showText(ui->scanSourceComBo, param.scanSource);
    (param.multiPage ? ui->multipage_radio : ui->singlepage_radio)->setChecked(true);
    showIndex(ui->comboBox_doc, param.fileType);
    ui->filePathEdit->setText(param.savePath);
    showIndex(ui->rotAngleComBox, param.autoTextOrientation ? 0 : param.rotationIndex);
    showText(ui->fileTypeCombo, param.imageFormat);
    limitPageChoice(); // the radio button may have gone where the same file type had put it
    showText(ui->imageCompressCombo, param.compression);
    showText(ui->timeNametypeCombo, param.timeNameType);
    showText(ui->seperateCombo, param.separator);
    showText(ui->colorModeComBo, param.colorMode);
    showText(ui->paperTypeComBo, param.paperSize);
    showText(ui->DPIComBo, param.resolution);
    showText(ui->MergeComBo, param.merge);
    if (ui->DenoiseComBo->isEnabled()) {
        showText(ui->DenoiseComBo, param.denoise);
    }
    emit templateInfoStatus(kApplying, kNamesNext);
    applyTemplateNames(param);
    emit templateInfoStatus(kApplying, kImageNext);
    applyTemplateImage(param);
    emit templateInfoStatus(kApplying, kApplied);
}

void MainWindow::applyTemplateNames(const ScanTemplateParam& param)
{
    (param.nameByTime ? ui->timeNameRadio : ui->serialNameRadio)->setChecked(true);
    (param.overwriteSameName ? ui->sameNameCoverRadio : ui->sameNameAddNoRadio)->setChecked(true);
    ui->nameNoLenSpinBox->setValue(param.serialLength);
    ui->fileNamePreEdit->setText(typedOrNothing(param.timeNamePrefix, rules::isPrefix));
    ui->nameNoSerialEdit->setText(typedOrNothing(param.serialStart, rules::isSerialStart));
    ui->lightSpinBox->setValue(param.brightness);
    ui->gammaSpinBox->setValue(param.gamma);
    ui->constraSpinBox->setValue(contrastPercent(param));
    ui->threholdSpinBox->setValue(param.threshold);
}

void MainWindow::applyTemplateImage(const ScanTemplateParam& param)
{
    check(ui->autoCropChkBox, param.autoCrop);
    ui->RemoveHoleChkBox->setChecked(param.removeHoles);
    ui->autoRotatChkBox->setChecked(param.autoTextOrientation);
    ui->MultiFeedChkBox->setChecked(param.multiFeedDetection);
    check(ui->autopLevelchkBox, param.autoLevel);
    ui->autoBColorChkBox->setChecked(param.autoBackgroundColor);
    const int dropout = ui->ColorDropoutComBox->findText(
        param.dropoutColor, Qt::MatchExactly | Qt::MatchCaseSensitive);
    if (dropout >= 0) {
        ui->ColorDropoutComBox->setCurrentIndex(dropout);
    } else {
        ui->ColorDropoutchkBox->setChecked(false);
    }
    ui->checkBox_blank->setChecked(param.skipBlankPages);
    ui->BlankSlider->setValue(param.blankThreshold);
    setBlankControls();
}

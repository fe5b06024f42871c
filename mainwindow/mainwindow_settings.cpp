// The settings of a device: from its file into the controls when it has been chosen, and back when
// the window closes. Keys, orders and factory values are the table of rules/settings_keys.
#include "app/common.h"
#include "log/Log.h"
#include "log/itprojectlog.h"
#include "mainwindow/backupsetting.h"
#include "mainwindow/main_window_ui.h"
#include "mainwindow/mainwindow.h"
#include "mainwindow/rules/naming_rules.h"

#include <QDir>
#include <QSignalBlocker>
#include <QStandardPaths>

#include <cstdio>

namespace {

void showStored(QComboBox* list, const QVariant& value)
{
    list->setCurrentIndex(rules::storedIndex(value.toInt(), list->count(), list->currentIndex()));
}

/// Nobody could have typed or chosen it: the field stays empty, and the run log tells.
QString acceptable(const char* key, const QVariant& value, bool (*isValid)(const QString&))
{
    QString text = value.toString();
    if (isValid(text)) {
        return text;
    }
    runLog("[func:%s]%s of the settings file is not usable and is left out", "readSetting", key);
    return {};
}

/// One of two buttons that exclude one another.
void choose(QAbstractButton* whenTrue, QAbstractButton* whenFalse, bool value)
{
    (value ? whenTrue : whenFalse)->setChecked(true);
}

} // namespace

QString MainWindow::settingsFile() const
{
    return rules::deviceFile(QString::fromStdString(g_strCommonPath), m_appOwner,
        m_CurrentSelectDevName, QStringLiteral(".ini"));
}

void MainWindow::readSetting()
{
    std::puts("readSetting------------------------------------------------");
    if (m_CurrentSelectDevName.isEmpty()) {
        runLog("[func:%s] m_CurrentSelectDevName is not exist!", __func__);
        return;
    }
    const backupSetting store(settingsFile());
    for (const rules::ReadStep& step : rules::readOrder()) {
        const rules::SettingRow& row = rules::settingRow(step.id);
        const QVariant value = store.value(row.group, row.readKey, QVariant());
        if (step.id == rules::Setting::kFirstStart) {
            m_firstStart = value.toInt();
            std::printf("==================================firstStartFlag=%d,\n", m_firstStart);
            if (m_firstStart == 0) {
                runLog("[%s][%d]应用窗口首次使用", __func__, __LINE__);
                applyFactorySet();
                followLoadedSettings();
                return;
            }
        } else if (step.id == rules::Setting::kScanDeviceName) {
            const int different = QString::compare(value.toString(), m_CurrentSelectDevName);
            std::printf("==================================qsDevName=%d,"
                        "m_currentScannerInfo.DevName)=%s\n",
                different, qUtf8Printable(m_CurrentSelectDevName));
            if (different != 0) {
                runLog("[%s][%d]本次扫描设备与上次不同", __func__, __LINE__);
                applyFactorySet();
                followLoadedSettings();
                return;
            }
        } else {
            applySetting(step, value);
        }
    }
    RotAngleDisable();
    AutoLevelDisableLogic();
    AutoLevelEnable();
    onPrecessfileNamePreChkBox();
    followLoadedSettings();
}

/// What depends on settings but has no key: folders of a first use, pages of the file type, the
/// log.
void MainWindow::followLoadedSettings()
{
    if (ui->filePathEdit->text().isEmpty()) {
        const QString documents =
            QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
        ui->filePathEdit->setText(QDir(documents).filePath(QStringLiteral("扫描文件")));
    }
    if (ui->LogFilePathEdit->text().isEmpty()) {
        ui->LogFilePathEdit->setText(QString::fromLocal8Bit(IOFLog.destination()));
    }
    // a file may hold what no clicking leads to
    EnableLogicMethod();
    applyControls(rules::kColorModeControls);
    ColorDropoutChanged();
    setBlankControls();
    limitPageChoice();
    onchangePaperType();
    onSetLogConfig();
}

void MainWindow::writeSetting()
{
    if (m_CurrentSelectDevName.isEmpty()) {
        runLog("[func:%s] m_CurrentSelectDevName is not exist!", __func__);
        std::puts("MainWindow::writeSetting() m_CurrentSelectDevName.length()=0");
        return;
    }
    const QString file = settingsFile();
    std::printf("---------------BackUpPath:%s\n", qUtf8Printable(file));
    backupSetting store(file);
    for (const rules::Setting id : rules::writeOrder()) {
        const rules::SettingRow& row = rules::settingRow(id);
        store.setValue(row.group, row.writeKey, gatherSetting(id));
    }
}

void MainWindow::applySetting(const rules::ReadStep& step, const QVariant& value)
{
    using rules::Setting;
    switch (step.id) {
    case Setting::kGeometry:
        restoreGeometry(value.toByteArray());
        break;
    case Setting::kState:
        restoreState(value.toByteArray(), 0);
        break;
    case Setting::kLogLevel:
        showStored(ui->comboSetLogLevel, value);
        break;
    case Setting::kLogSavePath:
        ui->LogFilePathEdit->setText(value.toString());
        break;
    default:
        applyFileSetting(step, value);
        applyImageSetting(step, value);
    }
}

void MainWindow::applyFileSetting(const rules::ReadStep& step, const QVariant& value)
{
    using rules::Setting;
    const char* const key = rules::settingRow(step.id).readKey;
    switch (step.id) {
    case Setting::kFileType:
        showStored(ui->comboBox_doc, value);
        break;
    case Setting::kFileSavePath:
        ui->filePathEdit->setText(acceptable(key, value, rules::isOutputFolder));
        break;
    case Setting::kIsMultiPage:
        choose(ui->multipage_radio, ui->singlepage_radio, value.toInt() == 1);
        break;
    case Setting::kFileFormat:
        showStored(ui->fileTypeCombo, value);
        break;
    case Setting::kFileCompressSize:
        showStored(ui->imageCompressCombo, value);
        break;
    case Setting::kIsTimeSave:
        choose(ui->timeNameRadio, ui->serialNameRadio, value.toBool());
        break;
    case Setting::kIsCoverSameNameFile:
        choose(ui->sameNameCoverRadio, ui->sameNameAddNoRadio, value.toBool());
        break;
    case Setting::kFileNameHead:
        ui->fileNamePreEdit->setText(acceptable(key, value, rules::isPrefix));
        break;
    case Setting::kFileStartBit:
        if (!step.again) {
            ui->nameNoSerialEdit->setText(acceptable(key, value, rules::isSerialStart));
        } else {
            runLog("FileStartBit:%s", qUtf8Printable(value.toString()));
        }
        break;
    case Setting::kFileRefreshState:
        m_fileRefreshState = value.toBool();
        break;
    case Setting::kFileDefBit:
        m_fileDefBit = value.toInt();
        break;
    case Setting::kIsDefineFileCut:
        showStored(ui->seperateCombo, value);
        break;
    case Setting::kFileTimeFormat:
        showStored(ui->timeNametypeCombo, value);
        break;
    case Setting::kFileTimeFormatEnable:
        ui->timeNametypeCombo->setEnabled(value.toBool());
        break;
    case Setting::kSpinBoxEnable:
        ui->nameNoLenSpinBox->setEnabled(value.toBool());
        break;
    case Setting::kSpinBoxValue:
        if (step.again) {
            m_serialDigits = value.toInt();
        } else {
            ui->nameNoLenSpinBox->setValue(value.toInt());
            onSetSpinBoxValue(ui->nameNoLenSpinBox->value()); // for a value that was there before
        }
        break;
    case Setting::kSendStartBit:
        m_sendStartBit = value.toBool();
        break;
    default:
        break;
    }
}

void MainWindow::applyImageSetting(const rules::ReadStep& step, const QVariant& value)
{
    using rules::Setting;
    switch (step.id) {
    case Setting::kScanSource:
        selectSource(rules::storedIndex(
            value.toInt(), ui->scanSourceComBo->count(), ui->scanSourceComBo->currentIndex()));
        break;
    case Setting::kScanColorMode:
        showStored(ui->colorModeComBo, value);
        setFilterColor();
        break;
    case Setting::kScanPaperSize:
        showStored(ui->paperTypeComBo, value);
        break;
    case Setting::kScanDpi:
        showStored(ui->DPIComBo, value);
        break;
    case Setting::kImageMerge:
        showStored(ui->MergeComBo, value);
        break;
    case Setting::kImageDenoise:
        showStored(ui->DenoiseComBo, value);
        break;
    case Setting::kImageRotAngle:
        showStored(ui->rotAngleComBox, value);
        break;
    case Setting::kAutoBColor:
        ui->autoBColorChkBox->setChecked(value.toBool());
        break;
    case Setting::kAutoRotate:
        ui->autoRotatChkBox->setChecked(value.toBool());
        break;
    case Setting::kAutoRotateMode:
        showStored(ui->autoRotateModComBox, value);
        break;
    case Setting::kRemoveHole:
        ui->RemoveHoleChkBox->setChecked(value.toBool());
        break;
    case Setting::kAutoCrop:
        ui->autoCropChkBox->setChecked(value.toBool());
        break;
    case Setting::kMultiFeed:
        ui->MultiFeedChkBox->setChecked(value.toBool());
        break;
    case Setting::kAutoLevel:
        ui->autopLevelchkBox->setChecked(value.toBool());
        break;
    case Setting::kBrightness:
        ui->lightSpinBox->setValue(value.toInt());
        ui->lightSlider->setValue(value.toInt());
        break;
    case Setting::kContrast:
        ui->constraSpinBox->setValue(value.toInt());
        ui->contraSlider->setValue(value.toInt());
        break;
    case Setting::kThreshold:
        ui->threholdSpinBox->setValue(value.toInt());
        ui->threholdSlider->setValue(value.toInt());
        break;
    case Setting::kGammaSlider:
        ui->gammaSlider->setValue(value.toInt());
        break;
    case Setting::kGamma:
        showStoredGamma(value.toDouble());
        break;
    case Setting::kBlankCheck:
        ui->checkBox_blank->setChecked(value.toBool());
        break;
    case Setting::kBlankNum:
        ui->BlankSlider->setValue(value.toInt());
        ui->label_Blank->setNum(ui->BlankSlider->value());
        break;
    default:
        break;
    }
}

/// The slider holds the stored position. It follows the spin box, unless a document type had left
/// it at its truncated value, which comes back as it was.
void MainWindow::showStoredGamma(double gamma)
{
    const int stored = ui->gammaSlider->value();
    ui->gammaSpinBox->setValue(gamma);
    const int truncated = rules::truncatedSlider(ui->gammaSpinBox->value());
    if (stored == qMax(truncated, ui->gammaSlider->minimum())) {
        const QSignalBlocker blocked(ui->gammaSlider);
        ui->gammaSlider->setValue(stored);
    }
}

QVariant MainWindow::gatherSetting(rules::Setting id) const
{
    using rules::Setting;
    switch (id) {
    case Setting::kGeometry:
        return saveGeometry();
    case Setting::kState:
        return saveState(0);
    case Setting::kFirstStart:
        return 1;
    case Setting::kScanDeviceName:
        return m_CurrentSelectDevName;
    case Setting::kLogLevel:
        return ui->comboSetLogLevel->currentIndex();
    case Setting::kLogSavePath:
        return ui->LogFilePathEdit->text();
    default:
        break;
    }
    const QVariant file = gatherFileSetting(id);
    return file.isValid() ? file : gatherImageSetting(id);
}

QVariant MainWindow::gatherFileSetting(rules::Setting id) const
{
    using rules::Setting;
    switch (id) {
    case Setting::kFileType:
        return ui->comboBox_doc->currentIndex();
    case Setting::kFileSavePath:
        return ui->filePathEdit->text();
    case Setting::kIsMultiPage:
        return ui->multipage_radio->isChecked() ? 1 : 0;
    case Setting::kFileFormat:
        return ui->fileTypeCombo->currentIndex();
    case Setting::kFileCompressSize:
        return ui->imageCompressCombo->currentIndex();
    case Setting::kIsTimeSave:
        return ui->timeNameRadio->isChecked();
    case Setting::kIsCoverSameNameFile:
        return ui->sameNameCoverRadio->isChecked();
    case Setting::kFileNameHead:
        return ui->fileNamePreEdit->text();
    case Setting::kFileStartBit:
        return ui->nameNoSerialEdit->text();
    case Setting::kFileRefreshState:
        return m_fileRefreshState;
    case Setting::kFileDefBit:
        return m_fileDefBit;
    case Setting::kIsDefineFileCut:
        return ui->seperateCombo->currentIndex();
    case Setting::kFileTimeFormat:
        return ui->timeNametypeCombo->currentIndex();
    case Setting::kFileTimeFormatEnable:
        return ui->timeNametypeCombo->isEnabled();
    case Setting::kSpinBoxEnable:
        return ui->nameNoLenSpinBox->isEnabled();
    case Setting::kSpinBoxValue:
        return ui->nameNoLenSpinBox->value();
    case Setting::kSendStartBit:
        return m_sendStartBit;
    default:
        return {};
    }
}

QVariant MainWindow::gatherImageSetting(rules::Setting id) const
{
    using rules::Setting;
    switch (id) {
    case Setting::kScanSource:
        return ui->scanSourceComBo->currentIndex();
    case Setting::kScanColorMode:
        return ui->colorModeComBo->currentIndex();
    case Setting::kScanPaperSize:
        return ui->paperTypeComBo->currentIndex();
    case Setting::kScanDpi:
        return ui->DPIComBo->currentIndex();
    case Setting::kImageMerge:
        return ui->MergeComBo->currentIndex();
    case Setting::kImageDenoise:
        return ui->DenoiseComBo->currentIndex();
    case Setting::kImageRotAngle:
        return ui->rotAngleComBox->currentIndex();
    case Setting::kAutoBColor:
        return ui->autoBColorChkBox->isChecked();
    case Setting::kAutoRotate:
        return ui->autoRotatChkBox->isChecked();
    case Setting::kAutoRotateMode:
        return ui->autoRotateModComBox->currentIndex();
    case Setting::kColorDropout:
        return ui->ColorDropoutComBox->currentIndex();
    case Setting::kReinforcedDropout:
        return ui->ColorDropoutchkBox->isChecked();
    case Setting::kRemoveHole:
        return ui->RemoveHoleChkBox->isChecked();
    case Setting::kAutoCrop:
        return ui->autoCropChkBox->isChecked();
    case Setting::kMultiFeed:
        return ui->MultiFeedChkBox->isChecked();
    case Setting::kAutoLevel:
        return ui->autopLevelchkBox->isChecked();
    case Setting::kBrightness:
        return ui->lightSpinBox->value();
    case Setting::kContrast:
        return ui->constraSpinBox->value();
    case Setting::kThreshold:
        return ui->threholdSlider->value();
    case Setting::kGammaSlider:
        return ui->gammaSlider->value();
    case Setting::kGamma:
        return ui->gammaSpinBox->value();
    case Setting::kBlankCheck:
        return ui->checkBox_blank->isChecked();
    case Setting::kBlankNum:
        return ui->BlankSlider->value();
    default:
        return {};
    }
}

// The three ways to restore factory values, and the factory set of a first use.
#include "mainwindow/main_window_ui.h"
#include "mainwindow/mainwindow.h"
#include "mainwindow/rules/param_codes.h"

namespace {

void selectText(QComboBox* list, const char* text)
{
    list->setCurrentIndex(list->findText(QString::fromUtf8(text)));
}

} // namespace

void MainWindow::applyFactorySet()
{
    ui->timeNameRadio->setChecked(true);
    ui->sameNameCoverRadio->setChecked(true);
    ui->singlepage_radio->setChecked(true);
    ui->fileTypeCombo->setCurrentIndex(0);
    ui->comboBox_doc->setCurrentIndex(0);
    setDefaultLogicValue();
    setDefaultValueForButton();
    SetDefaultHlevelSetForButton();
    onPrecessfileNamePreChkBox();
}

void MainWindow::setDefaultValueForButton()
{
    selectDefaultSource();
    selectText(ui->paperTypeComBo, rules::kFactoryPaper);
    selectText(ui->DPIComBo, rules::kFactoryResolution);
    selectText(ui->colorModeComBo, rules::kFactoryColorMode);
    selectText(ui->rotAngleComBox, rules::kFactoryRotation);
    selectText(ui->ColorDropoutComBox, rules::kFactoryDropout);
}

void MainWindow::SetDefaultHlevelSetForButton()
{
    ui->autoBColorChkBox->setChecked(false);
    ui->DenoiseComBo->setCurrentIndex(0);
    ui->MergeComBo->setCurrentIndex(0);
    ui->ColorDropoutComBox->setCurrentIndex(0);
    ui->ColorDropoutComBox->setEnabled(false);
    ui->ColorDropoutchkBox->setChecked(false);
    ui->RemoveHoleChkBox->setChecked(false);
    ui->autoCropChkBox->setChecked(true);
    ui->MultiFeedChkBox->setChecked(false);
    ui->rotAngleComBox->setCurrentIndex(0);
    ui->autoRotatChkBox->setChecked(false);
    ui->autoRotateModComBox->setCurrentIndex(0);
    ui->autoRotateModComBox->setEnabled(false);
    ui->checkBox_blank->setChecked(false);
    ui->label_Blank->setText(QString::number(rules::kFactoryBlankThreshold));
    ui->BlankSlider->setValue(rules::kFactoryBlankThreshold);

    const QString colorMode = ui->colorModeComBo->currentText();
    if (!ui->autopLevelchkBox->isChecked() && !rules::isBlackWhite(colorMode)) {
        ui->autopLevelchkBox->setChecked(true);
    }
    if (rules::holdsBlackWhite(colorMode)) {
        ui->DenoiseComBo->setEnabled(false);
    }
}

void MainWindow::setDefaultLogicValue()
{
    if (const auto tone = documentTone()) {
        showTone(*tone);
        return;
    }
    showTone(rules::factoryTone());
    ui->checkBox_blank->setChecked(false);
    ui->label_Blank->setText(QString::number(rules::kFactoryBlankThreshold));
    ui->BlankSlider->setValue(rules::kFactoryBlankThreshold);
    setBlankControls();
}

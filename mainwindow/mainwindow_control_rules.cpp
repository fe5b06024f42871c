// Which control follows which: the slots that gather, ask rules/control_rules and apply its steps,
// and the lists that hang on the paper source.
#include "log/Log.h"
#include "mainwindow/main_window_ui.h"
#include "mainwindow/mainwindow.h"
#include "mainwindow/rules/source_lists.h"
#include "sdk/result_codes.h"

#include <QSignalBlocker>

#include <array>

namespace {

constexpr std::size_t kListNameSize = 256;

QStringList itemsOf(const QComboBox* list)
{
    QStringList items;
    for (int i = 0; i < list->count(); ++i) {
        items.append(list->itemText(i));
    }
    return items;
}

/// Shows other items without firing the list's slots half way; one change is told at the end.
void refill(QComboBox* list, const rules::ListChoice& choice)
{
    const QString before = list->currentText();
    {
        const QSignalBlocker blocked(list);
        list->clear();
        list->addItems(choice.items);
        list->setCurrentIndex(choice.selected);
    }
    if (list->currentText() != before) {
        emit list->currentIndexChanged(list->currentIndex());
    }
}

} // namespace

std::vector<QWidget*> MainWindow::widgetsOf(rules::Control control) const
{
    using rules::Control;
    switch (control) {
    case Control::kBrightness:
        return { ui->lightSlider, ui->lightSpinBox };
    case Control::kContrast:
        return { ui->contraSlider, ui->constraSpinBox };
    case Control::kGamma:
        return { ui->gammaSlider, ui->gammaSpinBox };
    case Control::kThreshold:
        return { ui->threholdSlider, ui->threholdSpinBox };
    case Control::kToneDefaults:
        return { ui->argSetDefaultBtn };
    case Control::kAutoLevel:
        return { ui->autopLevelchkBox };
    case Control::kRotation:
        return { ui->rotAngleComBox };
    case Control::kTextMode:
        return { ui->autoRotateModComBox };
    case Control::kDropout:
        return { ui->ColorDropoutComBox };
    case Control::kReinforcedDropout:
        return { ui->ColorDropoutchkBox };
    case Control::kDenoise:
        return { ui->DenoiseComBo };
    case Control::kBlankThreshold:
        return { ui->BlankSlider, ui->label_Blank };
    case Control::kSinglePage:
        return { ui->singlepage_radio };
    case Control::kMultiPage:
        return { ui->multipage_radio };
    case Control::kAutoCrop:
        return { ui->autoCropChkBox };
    }
    return {};
}

/// In their order: a change fires the slots wired to its control before the next step.
void MainWindow::applySteps(const rules::ControlSteps& steps)
{
    for (const rules::ControlStep& step : steps) {
        for (QWidget* widget : widgetsOf(step.control)) {
            if (step.change == rules::Change::kEnable) {
                widget->setEnabled(step.value != 0);
            } else if (auto* button = qobject_cast<QAbstractButton*>(widget)) {
                button->setChecked(step.value != 0);
            } else if (auto* list = qobject_cast<QComboBox*>(widget)) {
                list->setCurrentIndex(step.value);
            }
        }
    }
}

rules::ControlState MainWindow::controlState() const
{
    rules::ControlState state;
    state.colorMode = ui->colorModeComBo->currentText();
    state.autoLevel = ui->autopLevelchkBox->isChecked();
    state.textOrientation = ui->autoRotatChkBox->isChecked();
    state.dropout = ui->ColorDropoutComBox->currentText();
    state.removeBlank = ui->checkBox_blank->isChecked();
    state.fileType = ui->fileTypeCombo->currentText();
    state.paper = ui->paperTypeComBo->currentText();
    return state;
}

void MainWindow::applyControls(rules::Controls controls)
{
    applySteps(rules::controlSteps(controlState(), controls));
}

int MainWindow::AutoLevelDisableLogic()
{
    applySteps(rules::autoLevelDisableLogic());
    return 0;
}

int MainWindow::EnableLogicMethod()
{
    applyControls(rules::kToneControls);
    return 0;
}

int MainWindow::AutoLevelEnable()
{
    if (ui->autopLevelchkBox->isChecked()) {
        AutoLevelDisableLogic();
        m_autoLevelFlag = rules::kAutoLevelOn;
        EnableLogicMethod(); // nothing more to do, unless a template checks the box in 黑白
        return 0;
    }
    runLog("info:AutoLevelDisable");
    EnableLogicMethod();
    m_autoLevelFlag = rules::kAutoLevelOff;
    return 0;
}

int MainWindow::RotAngleDisable()
{
    m_autoRotateFlag = ui->autoRotatChkBox->isChecked() ? 1 : 0;
    ui->autoRotateModComBox->setCurrentIndex(0);
    applyControls(rules::kRotationControls);
    return 0;
}

void MainWindow::ColorDropoutChanged()
{
    applyControls(rules::kReinforcedControls);
}

void MainWindow::onchangeColorMode()
{
    const rules::ColorModeRule rule = rules::colorModeChanged(
        ui->colorModeComBo->currentText(), ui->autopLevelchkBox->isChecked(), m_autoLevelFlag);
    if (rule.intoBlackWhite) {
        runLog("[fun:%s]更改为黑白模式", __func__);
    } else {
        runLog("[fun:%s]---更改为非黑白模式", __func__);
    }
    applySteps(rule.before);
    if (rule.negateFlag) {
        m_autoLevelFlag = -m_autoLevelFlag;
    }
    EnableLogicMethod();
    applyControls(rules::kColorModeControls);
    onGetFileName(); // several streams have names of their own
}

void MainWindow::onchangePaperType()
{
    applyControls(rules::kPaperControls);
}

void MainWindow::onchangeDocType()
{
    if (const auto tone = documentTone()) {
        showTone(*tone);
    }
}

/// The device's defaults for the document type; none when it has no such row.
std::optional<rules::ToneValues> MainWindow::documentTone()
{
    std::vector<stFileTypeParam> rows;
    const int result = m_OrvaSdk->GetImageParam(rows);
    const stFileTypeParam* row = rules::toneRow(result, rows, ui->comboBox_doc->currentIndex());
    return row != nullptr ? std::make_optional(rules::toneOfRow(*row)) : std::nullopt;
}

/// The slider shows the truncated gamma of a row, which its coupling with the spin box would undo.
void MainWindow::showTone(const rules::ToneValues& tone)
{
    ui->lightSlider->setValue(tone.brightness);
    ui->lightSpinBox->setValue(tone.brightness);
    ui->contraSlider->setValue(tone.contrast);
    ui->constraSpinBox->setValue(tone.contrast);
    ui->threholdSpinBox->setValue(tone.threshold);
    ui->threholdSlider->setValue(tone.threshold);
    const QSignalBlocker blockedSpinBox(ui->gammaSpinBox);
    const QSignalBlocker blockedSlider(ui->gammaSlider);
    ui->gammaSpinBox->setValue(tone.gamma);
    ui->gammaSlider->setValue(tone.gammaSlider);
}

void MainWindow::onSetGammaDoublespinBox(int tenths)
{
    // Setting the value that it has would rewrite "2" as "2.0" while somebody types "2.7".
    if (rules::sliderOfGamma(ui->gammaSpinBox->value()) != tenths) {
        ui->gammaSpinBox->setValue(rules::gammaOfSlider(tenths));
    }
}

void MainWindow::onSetGammaSlider(double gamma)
{
    ui->gammaSlider->setValue(rules::sliderOfGamma(gamma));
}

void MainWindow::setFilterColor()
{
    applyControls(rules::kDropoutControls);
}

void MainWindow::setBlankControls()
{
    applyControls(rules::kBlankControls);
}

void MainWindow::limitPageChoice()
{
    applyControls(rules::kPageControls);
}

/// The two buttons exclude one another; the example name is all that follows.
void MainWindow::IsMulPageStateChange()
{
    onGetFileName();
}

void MainWindow::onchangeScanSource()
{
    setDpiPaperSourceValue(kSourceChanged);
    setMergeRangeValue();
}

QStringList MainWindow::libraryNames(int count, int (COrva_SDK::*nameOf)(int, char*)) const
{
    QStringList names;
    for (int i = 0; i < count; ++i) {
        std::array<char, kListNameSize> name {};
        (m_OrvaSdk->*nameOf)(i, name.data());
        name.back() = '\0';
        names.append(QString::fromUtf8(name.data()));
    }
    return names;
}

void MainWindow::setDpiPaperSourceValue(int reason)
{
    if (reason == kNewDevice) {
        const QStringList sources =
            libraryNames(m_OrvaSdk->GetScanSourceCount(), &COrva_SDK::GetScanSourceName);
        const QSignalBlocker blocked(ui->scanSourceComBo);
        refill(ui->scanSourceComBo, { sources, rules::defaultSource(sources) });
        setDefaultDpiPaperSourceValue();
        return;
    }
    if (ui->scanSourceComBo->currentIndex() >= 0) {
        m_OrvaSdk->SetScanSource(ui->scanSourceComBo->currentIndex());
    }
    refill(ui->paperTypeComBo,
        rules::paperChoice(libraryNames(m_OrvaSdk->GetPaperCount(), &COrva_SDK::GetPaperName),
            ui->paperTypeComBo->currentText()));
    refill(ui->DPIComBo,
        rules::resolutionChoice(
            libraryNames(m_OrvaSdk->GetResolutionCount(), &COrva_SDK::GetResolutionName),
            ui->DPIComBo->currentText()));
}

/// The device's own defaults: first feeder, A4, 200, double-feed detection.
void MainWindow::setDefaultDpiPaperSourceValue()
{
    selectDefaultSource();
    refill(ui->paperTypeComBo, rules::defaultPaperChoice(itemsOf(ui->paperTypeComBo)));
    refill(ui->DPIComBo, rules::defaultResolutionChoice(itemsOf(ui->DPIComBo)));
    ui->MultiFeedChkBox->setChecked(true);
    EnableLogicMethod();
}

/// Whether the source's slot is wired yet or not: the lists follow, once.
void MainWindow::selectSource(int index)
{
    {
        const QSignalBlocker blocked(ui->scanSourceComBo);
        ui->scanSourceComBo->setCurrentIndex(index);
    }
    onchangeScanSource();
}

void MainWindow::selectDefaultSource()
{
    selectSource(rules::defaultSource(itemsOf(ui->scanSourceComBo)));
}

void MainWindow::setMergeRangeValue()
{
    refill(ui->MergeComBo,
        rules::mergeChoice(ui->scanSourceComBo->currentText(), ui->MergeComBo->currentText()));
}

void MainWindow::setMergeRangeValue(int index, int keepChoice)
{
    setMergeRangeValue();
    if (keepChoice == 0) {
        ui->MergeComBo->setCurrentIndex(index);
    }
}

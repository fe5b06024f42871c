// From the controls to the scanner library, in the fixed order: source, paper, resolution, colour
// mode, JPEG quality, then the two records.
#include "log/Log.h"
#include "mainwindow/main_window_ui.h"
#include "mainwindow/mainwindow.h"
#include "mainwindow/rules/naming_rules.h"
#include "mainwindow/rules/param_codes.h"
#include "sdk/result_codes.h"

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstring>

namespace {

constexpr std::size_t kSourceNameSize = 64;
constexpr std::size_t kListNameSize = 256;
constexpr std::size_t kSerialNumberSize = 64;

/// Index of the library's entry with exactly these bytes; -1 when there is none.
template <std::size_t size>
int findName(COrva_SDK& sdk, int count, int (COrva_SDK::*nameOf)(int, char*), const QString& wanted)
{
    const std::string text = wanted.toStdString();
    for (int i = 0; i < count; ++i) {
        std::array<char, size> name {};
        (sdk.*nameOf)(i, name.data());
        name.back() = '\0';
        if (std::strcmp(name.data(), text.c_str()) == 0) {
            return i;
        }
    }
    return -1;
}

std::uint8_t flag(int value)
{
    return value != 0 ? 1 : 0;
}

} // namespace

int MainWindow::onSetScanConfig(int IsScanPreview)
{
    acceptCallbacks();
    if (sendSource() != 0) {
        return -1;
    }
    sendPaper();
    sendResolution();
    m_OrvaSdk->SetColorMode(SetSDKColorMode());
    m_OrvaSdk->SetJPGQulity(SetSDKCompressSize());

    ImageParam image {};
    SetSDKImageParam(&image);
    m_OrvaSdk->SetMultiFeed(image.bMultiFeed != 0);

    FileParam file {};
    if (fillFileRecord(IsScanPreview, &file) != 0) {
        return -1;
    }
    std::printf(
        "In TarvexBaseUI before SetImageParam m_fileName.nFormatIndex: %d \n", file.nFormatIndex);
    std::printf(
        "In TarvexBaseUI before SetImageParam m_fileName.nMultiPage: %d \n", file.nMultiPage);
    m_OrvaSdk->SetImageParam(image);
    std::puts("In TarvexBaseUI before SetFileParam ");
    m_OrvaSdk->SetFileParam(file);
    logSentParameters(image, file);
    return 0;
}

int MainWindow::sendSource()
{
    const QString wanted = ui->scanSourceComBo->currentText();
    const int index = findName<kSourceNameSize>(
        *m_OrvaSdk, m_OrvaSdk->GetScanSourceCount(), &COrva_SDK::GetScanSourceName, wanted);
    if (index < 0) {
        return 0;
    }
    runLog("读取出来的strScanSource = %s", qUtf8Printable(wanted));
    std::printf("onSetScanConfig(int IsScanPreview) i=%d\n", index);
    const int result = m_OrvaSdk->SetScanSource(index);
    if (result != orva::kOk) {
        runLog("++++++++++++++++++source_set ret = %d", result);
        return -1;
    }
    return 0;
}

void MainWindow::sendPaper()
{
    const QString wanted = ui->paperTypeComBo->currentText();
    const int index = findName<kListNameSize>(
        *m_OrvaSdk, m_OrvaSdk->GetPaperCount(), &COrva_SDK::GetPaperName, wanted);
    if (index < 0) {
        return;
    }
    double left = 0;
    double top = 0;
    double width = 0;
    double height = 0;
    m_OrvaSdk->GetPaperSize(index, left, top, width, height);
    m_OrvaSdk->SetPaperSize(left, top, width, height, index);
    runLog("读取出来的strPaper = %s ", qUtf8Printable(wanted));
}

void MainWindow::sendResolution()
{
    const QString wanted = ui->DPIComBo->currentText();
    const int index = findName<kListNameSize>(
        *m_OrvaSdk, m_OrvaSdk->GetResolutionCount(), &COrva_SDK::GetResolutionName, wanted);
    if (index < 0) {
        return;
    }
    int x = 0;
    int y = 0;
    m_OrvaSdk->GetResolution(index, x, y);
    m_OrvaSdk->SetResolution(x, y);
    runLog("读取出来的strRes = %s", qUtf8Printable(wanted));
}

void MainWindow::SetSDKImageParam(ImageParam* param)
{
    std::puts("MainWindow::SetSDKImageParam() ");
    // Byte by byte, so that the padding, which the library receives too, is zero.
    std::memset(param, 0, sizeof(*param));
    param->bAutoLevel = flag(SetSDKAutoLevel());
    param->bAutoCropDeskew = flag(SetSDKAutoCrop());
    if (rules::holdsBlackWhite(ui->colorModeComBo->currentText())) {
        param->nThresold = ui->threholdSpinBox->value();
    } else {
        param->nBrightness = ui->lightSpinBox->value();
        param->nContrast = ui->constraSpinBox->value();
        param->nGamma = static_cast<float>(ui->gammaSpinBox->value());
    }
    param->nRotateAngle = SetSDKRotateAngle();
    param->nColorDropout = SetSDKColorDropout();
    param->bAdvColorDropout = flag(SetSDKAdv_ColorDropout());
    param->nSplit = SetSDKSplit();
    param->nMerge = SetSDKMerge();
    param->nDenoise = SetSDKDenoise();
    param->nBackGround = SetSDKBackGround();
    param->bAutoText = flag(SetSDKAutoText());
    param->nAutoTextMode = SetSDKAutoTextMod();
    param->bMultiFeed = flag(SetSDKMultiFeed());
    param->bRemoveHole = flag(SetSDKRemoveHole());
    param->bRemoveBlank = flag(ui->checkBox_blank->isChecked() ? 1 : 0);
    param->nBlankThresoldValue = ui->BlankSlider->value();
    param->bDeviceOption = flag(m_deviceOption);
}

rules::FileControls MainWindow::fileControls()
{
    rules::FileControls controls;
    controls.folder = ui->filePathEdit->text();
    controls.prefix = QString::fromStdString(SetSDKNamePre());
    controls.separator = QString::fromStdString(SetSDKSeparator());
    controls.timeNamed = NamedIsTimeOrNumber() == 1;
    if (controls.timeNamed) {
        controls.dateOrder = SetSDKTimeNameType();
    }
    controls.serialStart = QString::fromStdString(SetSDKSerialNameStart());
    controls.serialDigits = ui->nameNoLenSpinBox->value();
    controls.coverSameName = ui->sameNameCoverRadio->isChecked();
    controls.multiPage = SetSDKIsMultipage();
    controls.fileFormat = SetSDKFileFormat();
    controls.docType = ui->comboBox_doc->currentIndex();
    return controls;
}

/// 0; -1 when a text does not fit or the folder cannot be written, which the operator was told.
int MainWindow::fillFileRecord(int IsScanPreview, FileParam* param)
{
    const rules::FileControls controls = fileControls();
    rules::FileParamFault fault = rules::fillFileParam(controls, IsScanPreview == 1, param);
    if (fault == rules::FileParamFault::kNone) {
        if (param->bTimeNamed == 0) {
            runLog("++++++++++++Set NameStartBit = %s ++++++++++", param->szIndex);
        }
        std::puts("MainWindow::onSetScanConfig() ---1");
        if (JudgeIsWriteablePath(controls.folder.toStdString()) != 0) {
            return -1;
        }
        fault = rules::setFolder(controls.folder, param);
    }
    if (fault != rules::FileParamFault::kNone) {
        const rules::Notice notice = rules::faultNotice(fault);
        dynamic_state_msg_box(notice.title, notice.text);
        return -1;
    }
    return 0;
}

void MainWindow::logSentParameters(const ImageParam& image, const FileParam& file)
{
    const int colorMode = rules::colorModeCode(ui->colorModeComBo->currentText());
    for (const std::string& line :
        rules::sentParameterLines(colorMode, ui->imageCompressCombo->currentIndex(), image, file)) {
        runLog("%s", line.c_str());
    }
    std::fputs(rules::blankPageLine(image).c_str(), stdout);
    std::array<char, kSerialNumberSize> serial {};
    m_OrvaSdk->GetScannerSN(serial.data(), static_cast<int>(serial.size()));
    serial.back() = '\0';
    runLog("# SDK get Scanner SN = %s #", serial.data());
}

int MainWindow::SetSDKColorMode()
{
    return rules::colorModeCode(ui->colorModeComBo->currentText());
}

int MainWindow::SetSDKCompressSize()
{
    const int index = ui->imageCompressCombo->currentIndex();
    runLog("[func:%s]---imageCompressCombo->currentIndex= %d ", __func__, index);
    return index;
}

int MainWindow::SetSDKFileFormat()
{
    return rules::fileFormatCode(ui->fileTypeCombo->currentText());
}

int MainWindow::SetSDKRotateAngle()
{
    runLog("[func:%s]-------currentindex = %d", __func__, ui->rotAngleComBox->currentIndex());
    return rules::rotateCode(ui->rotAngleComBox->currentText());
}

int MainWindow::SetSDKColorDropout()
{
    return rules::dropoutCode(ui->ColorDropoutComBox->currentText());
}

int MainWindow::SetSDKAdv_ColorDropout()
{
    return ui->ColorDropoutchkBox->isChecked() ? 1 : 0;
}

int MainWindow::SetSDKSplit()
{
    const int code = rules::splitCode(ui->MergeComBo->currentText());
    runLog("[func:%s] %d", __func__, code);
    return code;
}

int MainWindow::SetSDKMerge()
{
    const int code = rules::mergeCode(ui->MergeComBo->currentText());
    runLog("[func:%s]-------ret_value = %d", __func__, code);
    return code;
}

int MainWindow::SetSDKAutoCrop()
{
    return ui->autoCropChkBox->isChecked() ? 1 : 0;
}

int MainWindow::SetSDKMultiFeed()
{
    return ui->MultiFeedChkBox->isChecked() ? 1 : 0;
}

int MainWindow::SetSDKAutoLevel()
{
    return ui->autopLevelchkBox->isChecked() ? 1 : 0;
}

int MainWindow::SetSDKBackGround()
{
    return ui->autoBColorChkBox->isChecked() ? 1 : 0;
}

int MainWindow::SetSDKAutoText()
{
    return ui->autoRotatChkBox->isChecked() ? 1 : 0;
}

int MainWindow::SetSDKAutoTextMod()
{
    const int code = rules::textModeCode(
        ui->autoRotatChkBox->isChecked(), ui->autoRotateModComBox->currentText());
    runLog("[func:%s] %d", __func__, code);
    return code;
}

int MainWindow::SetSDKRemoveHole()
{
    return ui->RemoveHoleChkBox->isChecked() ? 1 : 0;
}

int MainWindow::SetSDKDenoise()
{
    return rules::denoiseCode(ui->DenoiseComBo->currentIndex());
}

int MainWindow::SetSDKIsMultipage()
{
    return rules::multiPageCode(
        ui->singlepage_radio->isChecked(), ui->multipage_radio->isChecked());
}

int MainWindow::NamedIsTimeOrNumber()
{
    return rules::timeNamedCode(ui->timeNameRadio->isChecked(), ui->serialNameRadio->isChecked());
}

int MainWindow::SetSDKTimeNameType()
{
    const int code = rules::timeNameTypeCode(ui->timeNametypeCombo->currentText());
    if (code < 0) {
        runLog("%s", rules::kTimeNameTypeError);
    }
    return code;
}

std::string MainWindow::SetSDKNamePre()
{
    return ui->fileNamePreEdit->text().toStdString();
}

std::string MainWindow::SetSDKSeparator()
{
    return rules::separatorValue(ui->seperateCombo->currentText()).toStdString();
}

std::string MainWindow::SetSDKSerialNameStart()
{
    return ui->nameNoSerialEdit->text().toStdString();
}

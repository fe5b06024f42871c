// Output folder and file names: the controls that go into a name, the example, the serial start
// after a job. The scanner library names the files itself, by the rule of rules/naming_rules.h.
#include "app/common.h"
#include "dialogs/folder_choice.h"
#include "log/Log.h"
#include "mainwindow/main_window_ui.h"
#include "mainwindow/mainwindow.h"
#include "mainwindow/rules/naming_rules.h"
#include "sdk/codes.h"

#include <QDateTime>
#include <QIntValidator>

namespace {

const QString kPathTitle = QStringLiteral("路径异常");

} // namespace

void MainWindow::onGetFileSavePath()
{
    const Busy busy(*this);
    const QString folder = chosenFolder(this, ui->filePathEdit->text());
    if (folder.isEmpty()) {
        return;
    }
    FileParam probe {};
    const rules::FileParamFault fault = rules::setFolder(folder, &probe);
    if (fault != rules::FileParamFault::kNone) {
        const rules::Notice notice = rules::faultNotice(fault);
        dynamic_state_msg_box(notice.title, notice.text);
        return;
    }
    ui->filePathEdit->setText(folder);
}

int MainWindow::JudgeIsWriteablePath(std::string destPath)
{
    if (createfolder(destPath.c_str()) != 0) {
        runLog("[func:%s] destPath:%s createfolder failed!!", __func__, destPath.c_str());
        dynamic_state_msg_box(kPathTitle, QStringLiteral("当前目录无创建权限!\n请重新选择路径!"));
        return -1;
    }
    runLog("[func:%s] destPath:%s createfolder success!!", __func__, destPath.c_str());
    if (checkWritable(destPath.c_str()) != 0) {
        runLog("[func:%s] destPath:%s do not have writable authority!", __func__, destPath.c_str());
        dynamic_state_msg_box(kPathTitle, QStringLiteral("当前目录无写权限\n请重新选择路径!"));
        return -1;
    }
    runLog("[func:%s] destPath:%s have writable authority!", __func__, destPath.c_str());
    return 0;
}

QString MainWindow::GetCurrentTime()
{
    return rules::timeStamp(QDateTime::currentDateTime(), ui->seperateCombo->currentText(),
        ui->timeNametypeCombo->currentText());
}

QString MainWindow::GetDefStartBit()
{
    return rules::defStartBit(ui->nameNoSerialEdit->text(), ui->nameNoLenSpinBox->value());
}

void MainWindow::onGetFileName()
{
    rules::NamingControls controls;
    controls.prefix = ui->fileNamePreEdit->text();
    controls.separator = ui->seperateCombo->currentText();
    controls.byTime = NamedIsTimeOrNumber() == 1;
    controls.dateOrder = ui->timeNametypeCombo->currentText();
    controls.serialStart = ui->nameNoSerialEdit->text();
    controls.serialDigits = ui->nameNoLenSpinBox->value();
    controls.fileType = ui->fileTypeCombo->currentText();
    controls.severalStreams = SetSDKColorMode() == static_cast<int>(orva::ColorMode::kMultiStream);
    ui->fileNameExampleLine->setText(rules::exampleName(controls, QDateTime::currentDateTime()));
}

/// Date order and serial number exclude one another.
void MainWindow::onProcessFileNameForm()
{
    const bool byTime = NamedIsTimeOrNumber() == 1;
    ui->timeNametypeCombo->setEnabled(byTime);
    ui->nameNoSerialEdit->setEnabled(!byTime);
    ui->nameNoLenSpinBox->setEnabled(!byTime);
    onGetFileName();
}

void MainWindow::onPrecessfileNamePreChkBox()
{
    onProcessFileNameForm();
}

void MainWindow::onSetSpinBoxValue(int digits)
{
    const rules::SerialFieldChange change =
        rules::serialDigitsChanged(digits, ui->nameNoSerialEdit->text());
    if (change.text != ui->nameNoSerialEdit->text()) {
        ui->nameNoSerialEdit->setText(change.text);
    }
    if (change.integerValidator) {
        delete ui->nameNoSerialEdit->validator();
        ui->nameNoSerialEdit->setValidator(new QIntValidator(0, change.top, ui->nameNoSerialEdit));
    }
    if (change.refreshExample) {
        onGetFileName();
    }
}

void MainWindow::onNameNoSerialEdit()
{
    const QString typed = ui->nameNoSerialEdit->text();
    onSetSpinBoxValue(ui->nameNoLenSpinBox->value());
    if (ui->nameNoSerialEdit->text() != typed) {
        showNameHint(QStringLiteral("起始位不超过序号长度；序号长度为0时不使用起始位"));
    }
}

void MainWindow::onChangeNameNoSerial(int serial)
{
    // a start that the operator has changed in the meantime stays
    if (!m_job.namedBySerial || ui->nameNoSerialEdit->text() != m_job.serialText) {
        return;
    }
    const rules::SerialAdvance next = rules::advanceSerial(
        m_job.serialText, ui->nameNoLenSpinBox->value(), m_job.counters.filesOfJob(serial));
    if (next.grew) {
        runLog("[func:%s]serial start %s has more digits than chosen", __func__,
            qUtf8Printable(next.text));
        // the digit count first: a longer text would be cut to it
        ui->nameNoLenSpinBox->setValue(next.digits);
        showNameHint(QStringLiteral("序号已进位，序号长度改为%1").arg(next.digits));
    }
    if (next.exhausted) {
        runLog("[func:%s]serial numbers are used up after %s", __func__,
            qUtf8Printable(m_job.serialText));
        ui->sameNameAddNoRadio->setChecked(true); // the next job must not replace this one's files
        QMetaObject::invokeMethod(
            this,
            [this] {
                dynamic_state_msg_box(QStringLiteral("序号已用完"),
                    QStringLiteral("序号已超出最大长度，同名文件将追加编号\n请重新设置起始位!"));
            },
            Qt::QueuedConnection);
    }
    m_job.serialText = next.text;
    ui->nameNoSerialEdit->setText(next.text);
}

/// Stays until the operator goes on with the fields of the name.
void MainWindow::showNameHint(const QString& text)
{
    ui->nameHintLabel->setText(text);
}

// Devices: the list for the dialog, what choosing one means, what the window shows for it.
#include "dialogs/onlinescanners.h"
#include "log/Log.h"
#include "mainwindow/main_window_ui.h"
#include "mainwindow/mainwindow.h"
#include "mainwindow/rules/device_rules.h"

#include <QGuiApplication>
#include <QScreen>

#include <pwd.h>
#include <unistd.h>

#include <array>
#include <exception>
#include <utility>

namespace {

using NameBuffer = std::array<char, 64>;

constexpr int kVidPidSize = 8;
constexpr int kVersionSize = 16;

/// A text of the library, whatever it has left in the buffer.
std::string text(NameBuffer& buffer)
{
    buffer.back() = '\0';
    return buffer.data();
}

QString currentUserName()
{
    const passwd* entry = ::getpwuid(::getuid());
    return entry != nullptr ? QString::fromLocal8Bit(entry->pw_name) : QString();
}

} // namespace

int MainWindow::getOnLineScanDevices(std::vector<_tagdevicesInfomationItem>& devices)
{
    runLog("[func:%s]", __func__);
    const int count = m_OrvaSdk->GetScannerCount();
    for (int index = 0; index < count; ++index) {
        m_OrvaSdk->SelectScanner(index);
        _tagdevicesInfomationItem item;
        NameBuffer name {};
        m_OrvaSdk->GetScannerName(index, name.data());
        item.name = text(name);
        NameBuffer vidPid {};
        m_OrvaSdk->GetScannerVIDPID(vidPid.data(), kVidPidSize);
        item.vidPid = text(vidPid);
        NameBuffer version1 {};
        NameBuffer version2 {};
        m_OrvaSdk->GetScannerVersion(version1.data(), kVersionSize, version2.data(), kVersionSize);
        item.version1 = text(version1);
        item.version2 = text(version2);
        NameBuffer serial {};
        m_OrvaSdk->GetScannerSN(serial.data(), static_cast<int>(serial.size()));
        item.serialNumber = text(serial);
        devices.push_back(item);
        m_devList.push_back(item);
    }
    return 0;
}

void MainWindow::slot_onlinescanners_quit()
{
    runLog("print ----> unInit this word");
    close();
}

void MainWindow::onSelScanDeviceSig(QString name)
{
    const std::string wanted = name.toStdString();
    int found = -1;
    for (std::size_t i = 0; i < m_devList.size() && found < 0; ++i) {
        if (m_devList[i].name == wanted) {
            found = static_cast<int>(i);
        }
    }
    runLog("[func:%s] currentDevIndex = %d, m_devList = %d deviceName = %s ", __func__, found,
        static_cast<int>(m_devList.size()), wanted.c_str());
    if (found < 0) {
        ui->templateBtn->setEnabled(false);
        onDisableScanButton();
        setMergeRangeValue();
        finishSelection();
        return;
    }

    m_currentScannerInfo = m_devList[static_cast<std::size_t>(found)];
    m_CurrentSelectDevName = name;
    m_isASerial = rules::isASerial(m_currentScannerInfo.serialNumber);
    bindDevice(name);

    setDpiPaperSourceValue(kNewDevice);
    setMergeRangeValue(0, 0);
    readSetting();
    connect(ui->scanSourceComBo, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
        &MainWindow::onchangeScanSource, Qt::UniqueConnection);

    fillAboutPage();
    setMergeRangeValue();
    JudgeIsOrvascan();
    placeOnScreen();
    NameBuffer deviceClass {};
    m_OrvaSdk->GetScannerClass(deviceClass.data());
    m_devClass = text(deviceClass);
    m_currentScannerInfo.deviceClass = m_devClass;
    finishSelection();
}

/// Controls that the device has, its pre-feed time, the window, the monitor of its buttons.
void MainWindow::finishSelection()
{
    showDeviceControls();
    if (rules::appliesPrefeed(m_devClass)) {
        m_OrvaSdk->SetPreFeed(m_stPrefeed.nEnable, m_stPrefeed.value);
        m_prefeedTime = m_stPrefeed.value;
    } else {
        ui->button_setPrefeed->hide();
    }
    show();
    Thread2GetScannerKeyStatus();
}

/// Leaves the device with this name selected in the library, and reads what it tells about itself.
void MainWindow::bindDevice(const QString& name)
{
    const int count = m_OrvaSdk->GetScannerCount();
    for (int index = 0; index < count; ++index) {
        m_OrvaSdk->SelectScanner(index);
        NameBuffer buffer {};
        m_OrvaSdk->GetScannerName(index, buffer.data());
        const std::string scanner = text(buffer);
        runLog("[func:%s]currentScannerName:%s", "onSelScanDeviceSig", scanner.c_str());
        if (QString::fromLocal8Bit(scanner.c_str()) != name) {
            continue;
        }
        try {
            const int result = m_OrvaSdk->GetDevInfo(m_stSleep, m_stAutoOff, m_stPrefeed, m_isHigh);
            runLog("[func:GetDevInfo()]GetDevInfo return %d", result);
        } catch (const std::exception& error) {
            // a malformed pre-feed text: the device is usable, its records stay as they were
            runLog("[func:%s]GetDevInfo: %s", "onSelScanDeviceSig", error.what());
        }
        return;
    }
}

void MainWindow::fillAboutPage()
{
    const rules::AboutTexts texts = rules::aboutTexts(currentUserName(), m_CurrentSelectDevName,
        QString::fromStdString(m_currentScannerInfo.serialNumber),
        QString::fromStdString(m_currentScannerInfo.version1),
        QString::fromStdString(m_currentScannerInfo.version2));
    setWindowTitle(texts.windowTitle);
    ui->appNameLabel->setText(texts.appName);
    ui->currentDeviceLabel->setText(texts.device);
    ui->currentDeviceSNLabel->setText(texts.serialNumber);
    ui->currentDeviceVersionLabel->setText(texts.versions);
}

int MainWindow::JudgeIsOrvascan()
{
    m_deviceOption = rules::hasDeviceOptions(m_CurrentSelectDevName) ? 1 : 0;
    if (m_deviceOption == 0) {
        runLog("%s", rules::kNoDeviceOptions);
    }
    ui->button_SetSleepTime->setEnabled(m_deviceOption != 0);
    ui->button_setPrefeed->setEnabled(m_deviceOption != 0);
    ui->MultiFeedChkBox->setEnabled(m_deviceOption != 0);
    EnableLogicMethod();
    return m_deviceOption;
}

void MainWindow::placeOnScreen()
{
    const QScreen* screen = QGuiApplication::primaryScreen();
    if (screen != nullptr) {
        move(rules::windowPosition(screen->geometry().size(), size()));
    }
}

void MainWindow::showDeviceControls()
{
    const rules::HiddenControls hidden = rules::hiddenControls(m_isASerial, m_devClass, m_isHigh);
    const std::pair<bool, QWidget*> controls[] = {
        { hidden.multiFeed, ui->MultiFeedChkBox },
        { hidden.filterColorLabel, ui->label_filterColor },
        { hidden.colorDropout, ui->ColorDropoutComBox },
        { hidden.reinforcedDropout, ui->ColorDropoutchkBox },
        { hidden.textModeLabel, ui->label_35 },
        { hidden.textMode, ui->autoRotateModComBox },
        { hidden.prefeedButton, ui->button_setPrefeed },
        { hidden.removeHole, ui->RemoveHoleChkBox },
    };
    for (const auto& [hide, control] : controls) {
        if (hide) {
            control->hide();
        }
    }
}

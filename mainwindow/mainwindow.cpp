// Construction of the main window, the wiring of its controls, and its event filter. What the slots
// do is in the topic files.
#include "mainwindow/mainwindow.h"

#include "app/common.h"
#include "app/install_paths.h"
#include "log/Log.h"
#include "mainwindow/blocked_close.h"
#include "mainwindow/main_window_ui.h"
#include "mainwindow/rules/naming_rules.h"

#include <QApplication>
#include <QDesktopServices>
#include <QEvent>
#include <QUrl>

#include <cstdio>

namespace {

constexpr char kPreviewImageName[] = "Orvascan_preview_image.jpg";
constexpr char kLibraryLogName[] = "/OrvaLog/tarvex-base-hld.log";
constexpr char kVersion[] = "3.0.15.15";

const auto kIndexChanged = QOverload<int>::of(&QComboBox::currentIndexChanged);
const auto kValueChanged = QOverload<int>::of(&QSpinBox::valueChanged);

/// A slider and its spin box follow each other.
void follow(QSlider* slider, QSpinBox* spinBox)
{
    QObject::connect(slider, &QSlider::valueChanged, spinBox, &QSpinBox::setValue);
    QObject::connect(spinBox, kValueChanged, slider, &QSlider::setValue);
}

} // namespace

MainWindow* g_mainWindow = nullptr;

MainWindow::MainWindow(QWidget* parent)
    : QMainWindow(parent)
    , ui(std::make_unique<MainWindowUi>())
    , m_gate(std::make_shared<WindowGate>())
    , tmp_preview(QString::fromStdString(g_strCommonPath) + kPreviewImageName)
    , m_ErrorCodePath(install_paths::kErrorCatalogue)
    , m_BackupSettingPath(install_paths::kBackupFolder)
    , m_appOwner(getAppOwnUsr())
    , m_libraryLog(g_strCommonPath + m_appOwner.toStdString() + kLibraryLogName)
    , m_version(kVersion)
    , m_keys(m_gate->keys)
{
    m_gate->window = this;
    buildWidgets();
    loadLibrary();
    std::puts("SlotsConnect");
    SlotsConnect();
    runLog("[func:%s][m_SDKInit = %d],[m_SDKClear = %d]", __func__, m_SDKInit, m_SDKClear);
    runLog("[func:%s][tmp_preview = %s]", __func__, qUtf8Printable(tmp_preview));
    runLog("[func:%s][ErrorCodePath = %s]", __func__, qUtf8Printable(m_ErrorCodePath));
    // the slots wired above agree with the controls from the first moment
    EnableLogicMethod();
    RotAngleDisable();
    setFilterColor();
    setBlankControls();
    limitPageChoice();
    onPrecessfileNamePreChkBox();
    slot_Logout();
}

MainWindow::~MainWindow()
{
    endRunningJob();
    ThreadKeyOver();
    refuseCallbacks();
    if (m_libraryHeld) {
        runLog("[func:%s]a call into the scanner library does not return, it stays loaded",
            "~MainWindow");
    } else {
        m_OrvaSdk->UnInit();
    }
    releaseDialogs();
}

void MainWindow::buildWidgets()
{
    ui->setupUi(this);
    ui->appVersionNoLabel->setText(QStringLiteral("应用版本: ") + m_version);
    ui->autoRotatChkBox->hide();
    ui->imagePreviewVL->installEventFilter(this);
    ui->OrvaWebSiteLabel_2->installEventFilter(this);
}

void MainWindow::loadLibrary()
{
    m_gate->library = std::make_unique<COrva_SDK>();
    m_OrvaSdk = m_gate->library.get();
    const int result = m_OrvaSdk->LoadDll();
    if (result != 0) {
        runLog("[LoadDll()][nRet = %d]", result);
        return;
    }
    m_OrvaSdk->SetLogInfo(true, m_libraryLog.c_str());
    m_SDKInit = m_OrvaSdk->Init();
    m_SDKClear = m_OrvaSdk->ClearTmpData();
    std::printf("m_OrvaSdk->ClearTmpData() return %d\n", m_SDKClear);
}

void MainWindow::SlotsConnect()
{
    connectWindowSignals();
    connectButtons();
    connectNaming();
    connectControlRules();
    connectPages();
}

void MainWindow::connectWindowSignals()
{
    connect(this, &MainWindow::ShowPreviewImage, this, &MainWindow::slot_showPreivew);
    connect(this, &MainWindow::ShowOrvaWebSite, this, &MainWindow::slot_OpenWebSite);
    connect(this, &MainWindow::scanStatusOccur, this, &MainWindow::onShowScanStatus);
    connect(this, &MainWindow::scanStatusError, this, &MainWindow::onShowScanError);
    connect(this, &MainWindow::scanBtnEnable, this, &MainWindow::onEnableScanBtn);
    connect(this, &MainWindow::scanFileAccept, this, &MainWindow::onProcessScanFile);
    connect(this, &MainWindow::FinalChangeNameNoSerial, this, &MainWindow::onChangeNameNoSerial);
    connect(this, &MainWindow::final_signal_iof_batch, this, &MainWindow::slot_on_iof_batch);
    connect(qApp, &QCoreApplication::aboutToQuit, this, &MainWindow::onApplicationQuit);
    hearBlockedClose();
}

void MainWindow::connectButtons()
{
    const auto unique = Qt::UniqueConnection;
    connect(ui->scanMainBtn, &QPushButton::clicked, this, &MainWindow::onStartScan, unique);
    connect(
        ui->preViewBtn, &QPushButton::clicked, this, &MainWindow::onSetPreviewConfigInfo, unique);
    connect(ui->preViewBtn, &QPushButton::clicked, this, &MainWindow::onStartPreViewScan, unique);
    connect(
        ui->templateBtn, &QPushButton::clicked, this, &MainWindow::onTemplateSaveAndGet, unique);
    connect(ui->exitMainBtn, &QPushButton::clicked, this, &MainWindow::close);
    connect(
        ui->baseSetDefaultBtn, &QPushButton::clicked, this, &MainWindow::setDefaultValueForButton);
    connect(ui->argSetDefaultBtn, &QPushButton::clicked, this, &MainWindow::setDefaultLogicValue);
    connect(ui->HlevelSetDefaultBtn, &QPushButton::clicked, this,
        &MainWindow::SetDefaultHlevelSetForButton);
}

void MainWindow::connectNaming()
{
    connect(ui->selPathBtn, &QPushButton::clicked, this, &MainWindow::onGetFileSavePath);
    connect(ui->sameNameCoverRadio, &QRadioButton::toggled, this, &MainWindow::onGetFileName);
    for (QComboBox* list : { ui->seperateCombo, ui->fileTypeCombo, ui->timeNametypeCombo }) {
        connect(list, kIndexChanged, this, &MainWindow::onGetFileName);
    }
    connect(ui->nameNoLenSpinBox, kValueChanged, this, &MainWindow::onGetFileName);
    connect(ui->fileNamePreEdit, &QLineEdit::textChanged, this, &MainWindow::onGetFileName);
    connect(ui->nameNoSerialEdit, &QLineEdit::textChanged, this, &MainWindow::onGetFileName);
    connect(ui->timeNameRadio, &QRadioButton::toggled, this, &MainWindow::onProcessFileNameForm);
    connect(ui->serialNameRadio, &QRadioButton::toggled, this, &MainWindow::onProcessFileNameForm);
    connect(ui->nameNoLenSpinBox, kValueChanged, this, &MainWindow::onSetSpinBoxValue);
    connect(ui->nameNoSerialEdit, &QLineEdit::textEdited, this, &MainWindow::onNameNoSerialEdit);
    // what a field does not take, it does not take silently
    connect(ui->fileNamePreEdit, &QLineEdit::inputRejected, this, [this] {
        showNameHint(
            QStringLiteral("名称前缀仅支持英文或数字，最多%1个字符").arg(rules::kPrefixMaxLength));
    });
    connect(ui->nameNoSerialEdit, &QLineEdit::inputRejected, this, [this] {
        showNameHint(QStringLiteral("起始位仅支持数字，最多%1位").arg(rules::kSerialMaxLength));
    });
    const auto clearHint = [this] { showNameHint(QString()); };
    connect(ui->fileNamePreEdit, &QLineEdit::editingFinished, this, clearHint);
    connect(ui->nameNoSerialEdit, &QLineEdit::editingFinished, this, clearHint);
    connect(ui->nameNoLenSpinBox, kValueChanged, this, clearHint);
}

void MainWindow::connectControlRules()
{
    connect(ui->colorModeComBo, kIndexChanged, this, &MainWindow::onchangeColorMode);
    connect(ui->paperTypeComBo, kIndexChanged, this, &MainWindow::onchangePaperType);
    connect(ui->comboBox_doc, kIndexChanged, this, &MainWindow::onchangeDocType);
    connect(ui->fileTypeCombo, kIndexChanged, this, &MainWindow::limitPageChoice);
    connect(ui->singlepage_radio, &QRadioButton::toggled, this, &MainWindow::IsMulPageStateChange);
    connect(ui->multipage_radio, &QRadioButton::toggled, this, &MainWindow::IsMulPageStateChange);
    follow(ui->lightSlider, ui->lightSpinBox);
    follow(ui->contraSlider, ui->constraSpinBox);
    follow(ui->threholdSlider, ui->threholdSpinBox);
    connect(ui->gammaSlider, &QSlider::valueChanged, this, &MainWindow::onSetGammaDoublespinBox);
    connect(ui->gammaSpinBox, QOverload<double>::of(&QDoubleSpinBox::valueChanged), this,
        &MainWindow::onSetGammaSlider);
    connect(ui->autopLevelchkBox, &QCheckBox::stateChanged, this, &MainWindow::AutoLevelEnable);
    connect(ui->autoRotatChkBox, &QCheckBox::stateChanged, this, &MainWindow::RotAngleDisable);
    connect(ui->ColorDropoutComBox, kIndexChanged, this, &MainWindow::ColorDropoutChanged);
    connect(ui->checkBox_blank, &QCheckBox::stateChanged, this, &MainWindow::setBlankControls);
    connect(ui->BlankSlider, &QSlider::valueChanged, ui->label_Blank,
        QOverload<int>::of(&QLabel::setNum));
}

void MainWindow::connectPages()
{
    // until a preview fixes it, the summary tells what one would be made with
    connect(ui->tabWidget, &QTabWidget::currentChanged, this, [this] {
        if (m_lastPreviewFile.isEmpty()) {
            onSetPreviewConfigInfo();
        }
    });
    connect(ui->button_clear_tmpdata, &QPushButton::clicked, this, &MainWindow::slot_ClearTmpData);
    connect(ui->button_SetSleepTime, &QPushButton::clicked, this, &MainWindow::onOpenDevSleepTime);
    connect(ui->button_setPrefeed, &QPushButton::clicked, this, &MainWindow::onOpenDevPrefeed);
    connect(ui->SetLogSavePathBth, &QPushButton::clicked, this, &MainWindow::onGetLogSavePath);
    connect(ui->comboSetLogLevel, kIndexChanged, this, &MainWindow::onSetLogConfig,
        Qt::UniqueConnection);
    connect(
        ui->button_log_controller, &QPushButton::clicked, this, &MainWindow::onOpenLogController);
    connect(ui->btn_Login, &QPushButton::clicked, this, &MainWindow::slot_Login);
    connect(ui->btn_Logout, &QPushButton::clicked, this, &MainWindow::slot_Logout);
    connect(ui->btn_ChangePwd, &QPushButton::clicked, this, &MainWindow::slot_ChangePwd);
    connect(ui->btn_Log_Management, &QPushButton::clicked, this, &MainWindow::slot_Log_Management);
}

bool MainWindow::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == ui->imagePreviewVL && event->type() == QEvent::MouseButtonDblClick) {
        emit ShowPreviewImage();
        return true;
    }
    if (watched == ui->OrvaWebSiteLabel_2) {
        return false;
    }
    return QMainWindow::eventFilter(watched, event);
}

void MainWindow::slot_OpenWebSite()
{
    ++m_webSiteClicks;
    std::printf("click this website label:%d\n", m_webSiteClicks);
    QDesktopServices::openUrl(QUrl(ui->OrvaWebSiteLabel_2->text()));
}

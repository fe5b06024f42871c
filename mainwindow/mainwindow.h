// The application's one top-level window: owner of the scanner binding, the current device, the
// jobs and the dialogs. The class is cut into topic files, mainwindow_<topic>.cpp; what a slot
// decides stands in rules/, without widgets.
#pragma once

#include "mainwindow/rules/control_rules.h"
#include "mainwindow/rules/file_param.h"
#include "mainwindow/rules/scan_progress.h"
#include "mainwindow/rules/settings_keys.h"
#include "mainwindow/rules/tone_values.h"
#include "mainwindow/window_gate.h"
#include "sdk/COrva_SDK.h"
#include "templates/template_record.h"

#include <QMainWindow>
#include <QString>
#include <QStringList>

#include <pthread.h>

#include <array>
#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

class BlockedClose;
struct MainWindowUi;
class MainWindow;
class onlineScanners;
class StatusDialog;
class StatusMessageBox;
class templateSaveAndExtract;

/// Guards the running flag of the button monitor and every poll of the buttons. Made by
/// Thread2GetScannerKeyStatus, destroyed by ThreadKeyOver.
extern pthread_mutex_t KeyPressMutex;
extern pthread_cond_t KeyPressCond;

/// The window that the library's callbacks address; set each time a job is configured, null before
/// and after. Not the same as g_MainWindow of start-up.
extern MainWindow* g_mainWindow;

/// One discovered device.
struct _tagdevicesInfomationItem
{
    std::string name;
    std::string vidPid;
    std::string serialNumber;
    std::string version1; ///< the driver's
    std::string version2; ///< the firmware's
    std::string deviceClass; ///< filled for the current device only
};

/// The running or last job. Counters and flags belong to all threads.
struct JobRun
{
    std::atomic<unsigned> number { 0 }; ///< of this job; callbacks belong to the one they met
    std::atomic<bool> atWork { false }; ///< Scan was called: what the library says is of this job
    rules::JobCounters counters;
    std::atomic<bool> ending {
        false
    }; ///< the end was reported, an error too, or Scan has returned
    std::atomic<bool> endTaken { false }; ///< the library or the worker tells the end of the job
    std::atomic<bool> endTold { false }; ///< and has told all of it
    std::atomic<bool> keysResumed { false }; ///< a callback resumed the monitor, or will
    std::atomic<int> lastError { 0 }; ///< reported in this job; 0 none
    std::atomic<int> queuedReports { 0 }; ///< of progress, that the GUI thread has not seen yet
    bool active = false; ///< GUI thread: from the click until the buttons are back
    bool isPreview = false; ///< set before the worker starts
    bool namedBySerial = false; ///< GUI thread, as it started
    QString serialText; ///< GUI thread, the serial start as it started
    bool startAgain = false; ///< GUI thread: a button was pressed while the job was ending
};

class MainWindow : public QMainWindow
{
    Q_OBJECT

public:
    /// Builds the widgets, loads and initialises the library, wires the controls. GUI thread.
    explicit MainWindow(QWidget* parent = nullptr);
    /// Ends what still runs, then releases the library. Closing runs it in place.
    ~MainWindow() override;

    // devices
    /// Appends every device that the library lists, also to the window's own list. Always 0.
    int getOnLineScanDevices(std::vector<_tagdevicesInfomationItem>& devices);
    int JudgeIsOrvascan();

    // library parameters; each translates one control
    /// 1 preview, 0 scan. 0 when everything was sent, -1 when the source or the folder is refused.
    int onSetScanConfig(int IsScanPreview);
    void SetSDKImageParam(ImageParam* param);
    int SetSDKColorMode();
    int SetSDKCompressSize();
    int SetSDKFileFormat();
    int SetSDKRotateAngle();
    int SetSDKColorDropout();
    int SetSDKAdv_ColorDropout();
    int SetSDKSplit();
    int SetSDKMerge();
    int SetSDKAutoCrop();
    int SetSDKMultiFeed();
    int SetSDKAutoLevel();
    int SetSDKBackGround();
    int SetSDKAutoText();
    int SetSDKAutoTextMod();
    int SetSDKRemoveHole();
    int SetSDKDenoise();
    int SetSDKIsMultipage();
    int NamedIsTimeOrNumber();
    int SetSDKTimeNameType();
    std::string SetSDKNamePre();
    std::string SetSDKSeparator();
    std::string SetSDKSerialNameStart();

    // file names
    int JudgeIsWriteablePath(std::string destPath);
    QString GetCurrentTime();
    QString GetDefStartBit();
    void onPrecessfileNamePreChkBox();

    // settings
    void readSetting();
    void writeSetting();

    // control rules
    int AutoLevelDisableLogic();
    int EnableLogicMethod();
    /// Refills the lists that hang on the source: kSourceChanged, or kNewDevice, which fills the
    /// sources too and selects the device's defaults.
    void setDpiPaperSourceValue(int reason);
    static constexpr int kSourceChanged = 1;
    static constexpr int kNewDevice = 2;
    void setDefaultDpiPaperSourceValue();
    /// Refills the merge list for the current source and keeps the choice where it can be kept.
    void setMergeRangeValue();
    /// The same; without keepChoice it selects that entry.
    void setMergeRangeValue(int index, int keepChoice);
    void setFilterColor();
    void setBlankControls();

    // job log
    int SetOutLogLevel();

    // notices
    /// The modal notice of the whole application: title, text, one button.
    void dynamic_state_msg_box(QString title, QString text);
    void UpdateUserName(QString name);

    /// Of the running or last job; 0 before the first.
    unsigned jobNumber() const { return m_job.number; }

    // bodies of the threads and what the library calls
    static void* doScanner(void* mainWindow);
    static void* GetScannerKeyStatus(void* mainWindow);
    static void SdkScanCallBack(int nState, int nPage, std::string FileName);
    static void SdkScanPreviewCallBack(int nState, int nPage, std::string FileName);
    static int SdkScanErrorCodeCallBack(int nErrorCode);
    static int SdkScanPreviewErrorCodeCallBack(int nErrorCode);

    COrva_SDK* m_OrvaSdk = nullptr; ///< owned, through the gate
    int m_SDKInit = 0; ///< result of Init; 0 while the library is not loaded
    int m_SDKClear = 0; ///< result of the last ClearTmpData
    onlineScanners* m_onlineScanners = nullptr; ///< dialog of the devices; owned once stored here

public slots:
    // scan
    void onStartScan();
    void onStartPreViewScan();
    int slotCancelScan();
    void onEnableScanBtn();
    void onDisableScanButton();
    void slot_on_iof_batch();
    // preview
    void onSetPreviewConfigInfo();
    void onProcessScanFile(QString fileName, int nState);
    void slot_showPreivew();
    void slot_OpenWebSite();
    // button monitor
    void Thread2GetScannerKeyStatus();
    void ThreadKeyStart();
    /// Returns when the monitor has stopped polling. On the GUI thread the window answers
    /// meanwhile.
    void ThreadKeyPause();
    void ThreadKeyOver();
    // devices
    void onSelScanDeviceSig(QString name);
    void slot_onlinescanners_quit();
    // file names
    void onGetFileSavePath();
    void onGetFileName();
    void onProcessFileNameForm();
    void onSetSpinBoxValue(int digits);
    void onNameNoSerialEdit();
    void onChangeNameNoSerial(int serial);
    // control rules
    void onchangeScanSource();
    void onchangeColorMode();
    void onchangePaperType();
    void onchangeDocType();
    void IsMulPageStateChange();
    void onSetGammaDoublespinBox(int tenths);
    void onSetGammaSlider(double gamma);
    int AutoLevelEnable();
    int RotAngleDisable();
    void ColorDropoutChanged();
    // restore defaults
    void setDefaultValueForButton();
    void setDefaultLogicValue();
    void SetDefaultHlevelSetForButton();
    // templates
    void onTemplateSaveAndGet();
    void onTemplateInfoCollect();
    void onTemplateInfoSave(ScanTemplateParam param);
    // device times
    void slot_ClearTmpData();
    void onOpenDevSleepTime();
    void slotUpdateTimeValue(int sleepTime, int autoOffTime);
    void onOpenDevPrefeed();
    void slotUpdatePrefeedTimeValue(float time);
    // job log and accounts
    void onGetLogSavePath();
    void onSetLogConfig();
    void onOpenLogController();
    void slot_Login();
    void slotProcessLogin();
    void slot_Logout();
    void slot_ChangePwd();
    void slot_Log_Management();
    // notices
    void onShowScanStatus(int code, int scanPage, int dealPage, int ocrPage);
    void onShowScanError(int code);

signals:
    void ShowPreviewImage();
    void ShowOrvaWebSite();
    void scanStatusOccur(int isEnd, int scanned, int saved, int nState);
    void scanStatusError(int code);
    void scanBtnEnable();
    void scanFileAccept(QString fileName, int nState);
    void FinalChangeNameNoSerial(int serial);
    void final_signal_iof_batch();
    void templateInfoSave(ScanTemplateParam param);
    void templateInfoStatus(int type, int value);
    void SignalThreadKeyStart();
    void SignalThreadKeyPause();
    void SignalThreadKeyOver();
    void SignalThreadStartScan();

protected:
    void closeEvent(QCloseEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    friend struct MainWindowProbe; ///< the tests' look at counters and flags

    /// While one lives, the window is inside a dialog or a wait and must not be destroyed. Does
    /// nothing on other threads than the GUI's.
    class Busy
    {
    public:
        explicit Busy(MainWindow& window);
        ~Busy();
        Busy(const Busy&) = delete;
        Busy& operator=(const Busy&) = delete;

    private:
        MainWindow& m_window;
    };

    // construction
    void buildWidgets();
    void loadLibrary();
    void SlotsConnect();
    void connectWindowSignals();
    void connectButtons();
    void connectNaming();
    void connectControlRules();
    void connectPages();

    // devices
    void bindDevice(const QString& name);
    void finishSelection();
    void fillAboutPage();
    void placeOnScreen();
    void showDeviceControls();

    // scan
    struct JobKind;
    static const JobKind kScanJob;
    static const JobKind kPreviewJob;
    void startJob(const JobKind& kind);
    void abandonStart();
    void takeNextJobNumber();
    void resetJob(bool preview);
    bool startWorker();
    void closeUnreportedJob(int scanResult);
    void advanceSerialAfterError();
    std::vector<std::string> scannedFiles();
    std::array<QWidget*, 5> jobButtons() const;

    // callbacks
    bool takeState(const std::string& fileName);
    void applyEmissions(
        const rules::ScanEmissions& out, const QString& previewFile, int nState, unsigned job);
    static int reportError(int code, const rules::ErrorSteps& steps);
    void acceptCallbacks();
    void refuseCallbacks();

    // preview
    void showPreviewImage(const QString& fileName);
    void keepPreviewCopy(const std::string& file);
    void deletePreviewFiles();
    void openLocalFile(const QString& path);

    // button monitor
    static bool parkWhilePaused(WindowGate& gate);
    static void sleepBetweenPolls(const KeyThreadState& keys);
    static void dispatchButton(const std::shared_ptr<WindowGate>& gate, int button);
    static void onVal0KeyPress(const std::shared_ptr<WindowGate>& gate);
    bool takeOpenRequest(std::vector<std::string>& files);
    void onVal1KeyPress();
    void onVal2KeyPress();
    void onVal4KeyPress();
    void onVal8KeyPress();
    void toggleWindow();
    bool stopPolling();
    bool pauseForDevice();
    /// Waits until `done`, at most `limit`. On the GUI thread events are delivered meanwhile.
    bool waitAnswering(std::chrono::milliseconds limit, const std::function<bool()>& done);

    // file names
    void showNameHint(const QString& text);

    // settings
    void applyFactorySet();
    QString settingsFile() const;
    void applySetting(const rules::ReadStep& step, const QVariant& value);
    void applyFileSetting(const rules::ReadStep& step, const QVariant& value);
    void applyImageSetting(const rules::ReadStep& step, const QVariant& value);
    void showStoredGamma(double gamma);
    void followLoadedSettings();
    QVariant gatherSetting(rules::Setting id) const;
    QVariant gatherFileSetting(rules::Setting id) const;
    QVariant gatherImageSetting(rules::Setting id) const;

    // control rules
    rules::ControlState controlState() const;
    void applyControls(rules::Controls controls);
    void applySteps(const rules::ControlSteps& steps);
    std::vector<QWidget*> widgetsOf(rules::Control control) const;
    QStringList libraryNames(int count, int (COrva_SDK::*nameOf)(int, char*)) const;
    void selectSource(int index);
    void selectDefaultSource();
    std::optional<rules::ToneValues> documentTone();
    void showTone(const rules::ToneValues& tone);
    void limitPageChoice();

    // library parameters
    int sendSource();
    void sendPaper();
    void sendResolution();
    rules::FileControls fileControls();
    int fillFileRecord(int IsScanPreview, FileParam* param);
    void logSentParameters(const ImageParam& image, const FileParam& file);

    // templates
    void applyTemplateNames(const ScanTemplateParam& param);
    void applyTemplateImage(const ScanTemplateParam& param);

    // notices and job log
    StatusMessageBox& messageBox();
    void runNotice(StatusMessageBox& box, const QString& title, const QString& text);
    void hideProgress();
    void followLogConfig(int levelIndex, const QString& folder);

    // closing
    void hearBlockedClose();
    bool endRunningJob();
    void requestFinish();
    void finishClosing();
    void onApplicationQuit();
    void releaseDialogs();

    std::unique_ptr<MainWindowUi> ui;
    std::shared_ptr<WindowGate> m_gate;

    // fixed paths and texts
    QString tmp_preview;
    QString m_ErrorCodePath;
    QString m_BackupSettingPath;
    QString m_appOwner;
    std::string m_libraryLog;
    QString m_version;

    // device
    std::vector<_tagdevicesInfomationItem> m_devList;
    _tagdevicesInfomationItem m_currentScannerInfo;
    QString m_CurrentSelectDevName;
    std::string m_devClass;
    bool m_isASerial = false;
    int m_deviceOption = 0; ///< 1: a device with the maker's own options
    stSleep_AutoOff m_stSleep {};
    stSleep_AutoOff m_stAutoOff {};
    structPrefeed m_stPrefeed {};
    int m_isHigh = 0;
    float m_prefeedTime = 0.0F; ///< as last applied to the device

    // job
    JobRun m_job;
    std::atomic<int> m_IsOccurError { 1 }; ///< KEPT: 1 means no error so far, 0 an error
    std::mutex m_filesMutex;
    std::vector<std::string> m_scannedFiles; ///< guarded by m_filesMutex
    char m_startTime[128] = {};
    char m_endTime[128] = {};
    KeyThreadState& m_keys; ///< the gate's
    QString m_keyLabel; ///< prepared by button 4, shown nowhere

    // preview
    QString m_lastPreviewFile;
    QStringList m_previewFilesToDelete;
    int m_previewClicks = 0;
    int m_webSiteClicks = 0;

    // control rules
    int m_autoLevelFlag = 0; ///< 1 on, -1 switched off
    int m_autoRotateFlag = 0; ///< 1 automatic text orientation, 0 fixed rotation

    // settings without a control
    int m_firstStart = 0;
    bool m_fileRefreshState = false;
    int m_fileDefBit = 0;
    bool m_sendStartBit = false;
    int m_serialDigits = 0;

    // dialogs, made on first use
    StatusMessageBox* m_statusMessageBox = nullptr;
    StatusDialog* m_statusDialog = nullptr;
    bool m_noticeShown = false; ///< the box is a notice that waits for its answer

    // closing
    std::unique_ptr<BlockedClose> m_blockedClose;
    int m_busy = 0;
    bool m_closing = false;
    bool m_finishRequested = false;
    bool m_libraryHeld = false; ///< a thread is stuck in the library, which must not be released
};

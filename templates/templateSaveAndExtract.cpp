#include "templates/templateSaveAndExtract.h"

#include "dialogs/look.h"
#include "dialogs/work_status.h"
#include "log/Log.h"
#include "ui_templateSaveAndExtract.h"

#include <QGuiApplication>
#include <QKeyEvent>
#include <QMessageBox>
#include <QPoint>
#include <QScreen>
#include <QSignalBlocker>
#include <QValidator>

#include <utility>

namespace {

constexpr QPoint kBoxOffset(100, 230);
constexpr int kSmallScreen = 600; ///< pixels
constexpr int kMaxNameLength = 200;
/// The main window's progress reports while it applies a template.
constexpr int kApplyReport = 4;
constexpr int kReportFailed = -1;
constexpr int kReportDone = 100;

/// Accepts what a template can be called; the rest cannot be typed.
class NameValidator : public QValidator
{
public:
    using QValidator::QValidator;
    State validate(QString& text, int& /*position*/) const override
    {
        return TemplateStore::canHold(text) ? Acceptable : Invalid;
    }
};

/// Where a box goes while the template dialog is hidden.
QPoint centredOn(const QRect& screen, const QSize& box)
{
    if (screen.width() <= kSmallScreen || screen.height() <= kSmallScreen) {
        return { 0, 0 };
    }
    return { (screen.width() - box.width()) / 2, (screen.height() - box.height() - 60) / 2 };
}

} // namespace

templateSaveAndExtract::templateSaveAndExtract(
    QString modelName, QString second, int openingMode, QWidget* parent)
    : QDialog(parent)
    , m_ui(std::make_unique<Ui::templateSaveAndExtract>())
    , m_second(std::move(second))
    , m_openingMode(openingMode)
{
    qRegisterMetaType<ScanTemplateParam>("ScanTemplateParam");
    applyDialogLook(this);
    m_ui->setupUi(this);
    m_ui->inTemplateLEdit->setValidator(new NameValidator(m_ui->inTemplateLEdit));
    m_ui->inTemplateLEdit->setMaxLength(kMaxNameLength);
    setAppTitleName(modelName);
    initConnect();
    intShell();
}

templateSaveAndExtract::~templateSaveAndExtract() = default;

void templateSaveAndExtract::setAppTitleName(const QString& name)
{
    m_modelName = name.isEmpty() ? QStringLiteral("未识别扫描仪") : name;
    m_store = std::make_unique<TemplateStore>(m_modelName);
    setWindowTitle(QStringLiteral("模板保存和读取   ") + m_modelName);
}

void templateSaveAndExtract::initConnect()
{
    using Self = templateSaveAndExtract;
    connect(m_ui->inOutSelChkBox, &QCheckBox::stateChanged, this, &Self::selSaveAndExtractTemplate);
    connect(m_ui->inTemplateLEdit, &QLineEdit::textChanged, this, &Self::onInTemplateLEdit);
    connect(m_ui->cancelBtn, &QPushButton::clicked, this, &Self::onProcessCancelBtn);
    connect(this, &Self::workStatus, this, &Self::onProcessWorkStatus);
    connect(m_ui->outTemplateList, &QListWidget::itemSelectionChanged, this,
        &Self::onProcessTemplateChanged);
    connect(m_ui->deleteBtn, &QPushButton::clicked, this, &Self::onProcessDeleteBtn);
    connect(m_ui->okBtn, &QPushButton::clicked, this, &Self::onProcessokBtn);
}

void templateSaveAndExtract::intShell()
{
    if (!m_store->checkAccessAuthority()) {
        m_ui->okBtn->setEnabled(false);
        m_ui->deleteBtn->setEnabled(false);
        m_ui->inOutSelChkBox->setEnabled(false);
        m_ui->inTemplateframe->setEnabled(false);
        m_ui->outTemplateframe->setEnabled(false);
        // Once the dialog stands: a modal dialog that opens later would block the box.
        QMetaObject::invokeMethod(
            this, [this] { emit workStatus(work_status::kNoAccess, 0); }, Qt::QueuedConnection);
        return;
    }
    m_store->enumAllTemplateName();
    m_ui->inTemplateLEdit->clear();
    m_ui->outTemplateList->clear();
    m_ui->outTemplateList->addItems(m_store->names());
    {
        const QSignalBlocker blocker(m_ui->inOutSelChkBox);
        m_ui->inOutSelChkBox->setChecked(!m_store->names().isEmpty());
    }
    selSaveAndExtractTemplate();
}

QString templateSaveAndExtract::currentListName() const
{
    const QListWidgetItem* item = m_ui->outTemplateList->currentItem();
    return item == nullptr ? QString() : item->text();
}

void templateSaveAndExtract::selSaveAndExtractTemplate()
{
    const bool extract = m_ui->inOutSelChkBox->isChecked();
    m_ui->inTemplateframe->setEnabled(!extract);
    m_ui->outTemplateframe->setEnabled(extract);
    m_ui->deleteBtn->setText(QStringLiteral("删除模板"));
    if (extract) {
        const bool chosen = !currentListName().isEmpty();
        m_ui->okBtn->setEnabled(chosen);
        m_ui->deleteBtn->setEnabled(chosen);
        m_ui->okBtn->setText(QStringLiteral("应用"));
        m_ui->warnningInfoLabel->setText(QStringLiteral("选择一个模板，应用到主界面的设置。"));
        m_ui->outTemplateList->setFocus();
    } else {
        m_ui->deleteBtn->setEnabled(false);
        m_ui->okBtn->setEnabled(!m_ui->inTemplateLEdit->text().isEmpty());
        m_ui->okBtn->setText(QStringLiteral("添加模板"));
        m_ui->warnningInfoLabel->setText(
            QStringLiteral("把主界面当前的设置保存为新模板。名称不能含有 / 和 \\。"));
        m_ui->inTemplateLEdit->setFocus();
    }
}

void templateSaveAndExtract::onProcessTemplateChanged()
{
    const bool chosen = m_ui->outTemplateList->currentRow() >= 0;
    m_ui->okBtn->setEnabled(chosen);
    m_ui->deleteBtn->setEnabled(chosen);
}

void templateSaveAndExtract::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Escape) {
        hide();
        close();
        return;
    }
    QDialog::keyPressEvent(event);
}

void templateSaveAndExtract::closeEvent(QCloseEvent* event)
{
    QDialog::closeEvent(event);
}

void templateSaveAndExtract::onInTemplateLEdit()
{
    m_ui->okBtn->setEnabled(!m_ui->inTemplateLEdit->text().isEmpty());
}

void templateSaveAndExtract::onProcessokBtn()
{
    if (m_ui->inOutSelChkBox->isChecked()) {
        getTemplateInfoToShell();
    } else {
        saveShellInfoToTemplate();
    }
}

void templateSaveAndExtract::saveShellInfoToTemplate()
{
    const QString name = TemplateStore::storedName(m_ui->inTemplateLEdit->text());
    if (name.isEmpty()) {
        emit workStatus(work_status::kAddNameEmpty, 0);
        return;
    }
    if (m_store->names().contains(name)) {
        emit workStatus(work_status::kAddNameExists, 0);
        return;
    }
    if (!ask(work_status::kAskAdd, name)) {
        return;
    }
    m_store->setCurrentName(name);
    showWorkStatus(work_status::kAdding, 0, name);
    emit templateInfoCollect();
    if (m_lastStatus == work_status::kAdding) { // nobody answered; that box has no button
        m_store->setCurrentName(QString());
        emit workStatus(work_status::kAddFailed, 0);
    }
}

void templateSaveAndExtract::onTemplateInfoSave(ScanTemplateParam param)
{
    const QString name = m_store->currentName();
    const bool saved = m_store->templateSave(param) == TemplateStore::kDone;
    m_store->setCurrentName(QString());
    if (!saved) {
        emit workStatus(work_status::kAddFailed, 0);
        return;
    }
    m_ui->outTemplateList->addItem(name);
    m_store->addName(name);
    emit workStatus(work_status::kAdded, 0);
}

void templateSaveAndExtract::getTemplateInfoToShell()
{
    const QString name = currentListName();
    if (name.isEmpty()) {
        emit workStatus(work_status::kApplyFailed, 0);
        return;
    }
    if (!ask(work_status::kAskApply, name)) {
        return;
    }
    emit workStatus(work_status::kReading, 0);
    ScanTemplateParam param;
    if (m_store->ReadTemplatesInfo(&param, name) < 0) {
        emit workStatus(work_status::kApplyFailed, 0);
        return;
    }
    emit templateInfoSave(param);
    if (m_lastStatus == work_status::kReading) { // nobody answered; that box has no button
        emit workStatus(work_status::kApplyFailed, 0);
    }
}

void templateSaveAndExtract::onTemplateInfoStatus(int type, int value)
{
    if (type != kApplyReport) {
        return;
    }
    if (value == kReportFailed) {
        runLog("失败1:TEMPLATE_FLASH_FAIL");
        emit workStatus(work_status::kApplyFailed, 0);
    } else if (value == kReportDone) {
        emit workStatus(work_status::kApplied, 0);
    }
}

void templateSaveAndExtract::onProcessDeleteBtn()
{
    const QString name = currentListName();
    if (name.isEmpty()) {
        emit workStatus(work_status::kDeleteNameEmpty, 0);
        return;
    }
    if (!ask(work_status::kAskDelete, name)) {
        return;
    }
    switch (deleteTemplateItemfromList(name)) {
    case 0:
        emit workStatus(work_status::kDeleted, 0);
        break;
    case -1:
        emit workStatus(work_status::kDeleteNameEmpty, 0);
        break;
    case -2:
        emit workStatus(work_status::kDeleteUnknown, 0);
        break;
    default:
        emit workStatus(work_status::kDeleteFailed, 0);
        break;
    }
    if (m_store->names().isEmpty()) {
        m_ui->okBtn->setEnabled(false);
        m_ui->deleteBtn->setEnabled(false);
    }
}

int templateSaveAndExtract::deleteTemplateItemfromList(const QString& name)
{
    if (name.isEmpty()) {
        return -1;
    }
    if (!m_store->names().contains(name)) {
        return -2;
    }
    if (m_store->deleteTemplateItem(name) != TemplateStore::kDone) {
        return -3;
    }
    m_store->removeName(name);
    m_ui->outTemplateList->clear();
    m_ui->outTemplateList->addItems(m_store->names());
    onProcessTemplateChanged();
    return 0;
}

void templateSaveAndExtract::onProcessCancelBtn()
{
    const bool unsaved =
        !m_ui->inOutSelChkBox->isChecked() && !m_ui->inTemplateLEdit->text().isEmpty();
    if (!unsaved || ask(work_status::kAskExit)) {
        close();
    }
}

void templateSaveAndExtract::onProcessWorkStatus(int code, int value)
{
    showWorkStatus(code, value, QString());
}

void templateSaveAndExtract::showWorkStatus(int code, int value, const QString& name)
{
    if (!m_statusBox) {
        m_statusBox = std::make_unique<statusMessageDialog>();
    }
    m_lastStatus = code;
    m_statusBox->SetStatusInfo(code, value, name);
    if (isVisible()) {
        m_statusBox->move(pos() + kBoxOffset);
    } else {
        m_statusBox->move(
            centredOn(QGuiApplication::primaryScreen()->geometry(), m_statusBox->size()));
    }
    m_statusBox->show();
}

bool templateSaveAndExtract::ask(int code, const QString& name)
{
    showWorkStatus(code, 0, name);
    return m_statusBox->exec() == QMessageBox::Yes;
}

#include "dialogs/onlinescanners.h"

#include "dialogs/look.h"

#include <QCloseEvent>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

namespace {

constexpr QSize kDialogSize(420, 320);
constexpr int kTextPointSize = 10;

} // namespace

onlineScanners::onlineScanners(QWidget* parent)
    : QDialog(parent)
    , m_titleLabel(new QLabel(QStringLiteral("请选择扫描设备"), this))
    , m_deviceList(new QListWidget(this))
    , m_emptyHint(
          new QLabel(QStringLiteral("未发现扫描设备。\n请检查电源和连接线后重新打开程序。")))
    , m_okBtn(new QPushButton(QStringLiteral("确定"), this))
    , m_cancelBtn(new QPushButton(QStringLiteral("取消"), this))
{
    applyDialogLook(this);
    setObjectName(QStringLiteral("onlineScanners"));
    setWindowFlag(Qt::WindowMinimizeButtonHint, false);
    setWindowFlag(Qt::WindowMaximizeButtonHint, false);
    setWindowTitle(QStringLiteral("Velmar数字化安全采集系统"));
    QFont textFont = font();
    textFont.setPointSize(kTextPointSize);
    setFont(textFont);

    m_titleLabel->setObjectName(QStringLiteral("titleLabel"));
    m_titleLabel->setProperty("look", QStringLiteral("heading"));
    m_titleLabel->setBuddy(m_deviceList);
    m_deviceList->setObjectName(QStringLiteral("deviceList"));
    m_deviceList->setIconSize(QSize(20, 20));
    m_emptyHint->setProperty("look", QStringLiteral("hint"));
    m_emptyHint->setAlignment(Qt::AlignCenter);
    m_okBtn->setObjectName(QStringLiteral("okBtn"));
    m_okBtn->setDefault(true);
    m_okBtn->setEnabled(false);
    m_cancelBtn->setObjectName(QStringLiteral("cancelBtn"));
    m_cancelBtn->setAutoDefault(false);
    for (QPushButton* button : { m_okBtn, m_cancelBtn }) {
        button->setMinimumWidth(96);
    }

    auto* listLayout = new QVBoxLayout(m_deviceList);
    listLayout->addWidget(m_emptyHint);
    auto* buttons = new QHBoxLayout;
    buttons->setSpacing(12);
    buttons->addStretch();
    buttons->addWidget(m_okBtn);
    buttons->addWidget(m_cancelBtn);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(20, 16, 20, 16);
    layout->setSpacing(12);
    layout->addWidget(m_titleLabel);
    layout->addWidget(m_deviceList, 1);
    layout->addLayout(buttons);
    setFixedSize(kDialogSize.expandedTo(layout->minimumSize()));
    m_deviceList->setFocus();

    connect(m_deviceList, &QListWidget::itemSelectionChanged, this,
        &onlineScanners::onSelectScannerItem);
    connect(m_deviceList, &QListWidget::itemDoubleClicked, this, &onlineScanners::onPrecessOkBtn);
    connect(m_okBtn, &QPushButton::clicked, this, &onlineScanners::onPrecessOkBtn);
    connect(m_cancelBtn, &QPushButton::clicked, this, &onlineScanners::onPrecessCancelBtn);
}

int onlineScanners::addNewDeviceItem(QString& name)
{
    if (name.isEmpty()) {
        return -1;
    }
    m_emptyHint->hide();
    auto* item = new QListWidgetItem(look::icon(QStringLiteral("scanner")), name, m_deviceList);
    item->setToolTip(name);
    return 0;
}

void onlineScanners::setCurScanner(int row)
{
    if (row >= 0 && row < m_deviceList->count()) {
        m_deviceList->setCurrentRow(row);
    } else {
        clearSelection();
    }
}

int onlineScanners::getSelScanner(QString& name)
{
    const QListWidgetItem* item = m_deviceList->currentItem();
    if (item == nullptr) {
        return -1;
    }
    name = item->text();
    return 0;
}

void onlineScanners::onPrecessOkBtn()
{
    m_okBtn->setEnabled(false);
    QString name;
    if (getSelScanner(name) == 0) {
        m_selected = 1;
        m_selectedRow = m_deviceList->currentRow();
        m_selectedName = name;
        if (!name.isEmpty()) {
            emit selScanDeviceSig(name);
        }
    } else {
        clearSelection();
    }
    close();
}

void onlineScanners::onPrecessCancelBtn()
{
    m_closed = 1;
    clearSelection();
    close();
}

void onlineScanners::onSelectScannerItem()
{
    m_okBtn->setEnabled(m_deviceList->currentRow() >= 0);
}

void onlineScanners::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Escape) {
        m_closed = 1;
        hide();
        close();
        return;
    }
    QDialog::keyPressEvent(event);
}

void onlineScanners::closeEvent(QCloseEvent* event)
{
    m_closed = 1;
    event->accept();
    if (m_selected == 0 && !m_quitSent) {
        m_quitSent = true;
        hide();
        emit unInitmainWindow();
    }
}

void onlineScanners::clearSelection()
{
    m_selected = 0;
    m_selectedRow = -1;
    m_selectedName.clear();
    m_deviceList->setCurrentRow(-1);
}

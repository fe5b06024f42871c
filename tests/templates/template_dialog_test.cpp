// The template dialog with a main window played by the test: every question, status and refusal.
#include "dialogs/statusmessagedialog.h"
#include "templates/templateSaveAndExtract.h"
#include "tests/support/sandbox.h"

#include <QApplication>
#include <QCheckBox>
#include <QFile>
#include <QFrame>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <memory>

namespace {

statusMessageDialog* statusBox()
{
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        if (auto* box = qobject_cast<statusMessageDialog*>(widget)) {
            return box->isVisible() ? box : nullptr;
        }
    }
    return nullptr;
}

QPushButton* boxButton(const QString& caption)
{
    statusMessageDialog* box = statusBox();
    if (box != nullptr) {
        for (QPushButton* button : box->findChildren<QPushButton*>()) {
            if (button->text() == caption) {
                return button;
            }
        }
    }
    return nullptr;
}

/// Answers one question and remembers it.
class Answer
{
public:
    explicit Answer(const QString& caption)
    {
        QObject::connect(&m_timer, &QTimer::timeout, [this, caption] {
            if (QPushButton* button = boxButton(caption)) {
                m_timer.stop();
                text = statusBox()->text();
                button->click();
            } else if (statusBox() != nullptr && ++m_misses > 200) {
                m_timer.stop();
                ADD_FAILURE() << "no button " << caption.toStdString();
                statusBox()->close();
            }
        });
        m_timer.start(5);
    }
    QString text;

private:
    QTimer m_timer;
    int m_misses = 0;
};

class TemplateDialogTest : public ::testing::Test
{
protected:
    TemplateDialogTest() { m_store.checkAccessAuthority(); }

    void store(const QStringList& names)
    {
        for (const QString& name : names) {
            ScanTemplateParam param;
            param.resolution = QStringLiteral("300");
            m_store.setCurrentName(name);
            ASSERT_EQ(0, m_store.templateSave(param));
        }
    }
    void open()
    {
        dialog = std::make_unique<templateSaveAndExtract>(
            QStringLiteral("Model"), QString(), 0, nullptr);
        dialog->show();
    }
    /// A main window that hands over its settings when asked.
    void answerCollect()
    {
        QObject::connect(dialog.get(), &templateSaveAndExtract::templateInfoCollect, [this] {
            ScanTemplateParam param;
            param.resolution = QStringLiteral("600");
            dialog->onTemplateInfoSave(param);
        });
    }
    template <typename Widget>
    Widget* get(const char* name)
    {
        auto* widget = dialog->findChild<Widget*>(QLatin1String(name));
        EXPECT_NE(nullptr, widget) << name;
        return widget;
    }
    QPushButton* ok() { return get<QPushButton>("okBtn"); }
    QPushButton* del() { return get<QPushButton>("deleteBtn"); }
    QPushButton* cancel() { return get<QPushButton>("cancelBtn"); }
    QLineEdit* name() { return get<QLineEdit>("inTemplateLEdit"); }
    QListWidget* list() { return get<QListWidget>("outTemplateList"); }
    QCheckBox* mode() { return get<QCheckBox>("inOutSelChkBox"); }
    /// Text of the status box on the screen, which is closed with its button.
    QString status()
    {
        const QString text = statusBox() == nullptr ? QString() : statusBox()->text();
        if (QPushButton* button = boxButton(QStringLiteral("确 定"))) {
            button->click();
        }
        return text;
    }
    QStringList stored()
    {
        m_store.enumAllTemplateName();
        return m_store.names();
    }

    Sandbox sandbox;
    std::unique_ptr<templateSaveAndExtract> dialog;

private:
    TemplateStore m_store { QStringLiteral("Model") };
};

const QString kYes = QStringLiteral("确 定");
const QString kNo = QStringLiteral("取 消");

TEST_F(TemplateDialogTest, opens_for_saving_when_there_is_no_template)
{
    open();
    EXPECT_FALSE(mode()->isChecked());
    EXPECT_TRUE(get<QFrame>("inTemplateframe")->isEnabled());
    EXPECT_FALSE(get<QFrame>("outTemplateframe")->isEnabled());
    EXPECT_FALSE(ok()->isEnabled() || del()->isEnabled());
    QTest::keyClicks(name(), QStringLiteral("a/b\\c=d]%"));
    EXPECT_EQ(QStringLiteral("abc=d]%"), name()->text()) << "what the file cannot hold";
    EXPECT_TRUE(ok()->isEnabled());
}

TEST_F(TemplateDialogTest, opens_for_applying_when_there_is_one)
{
    store({ QStringLiteral("合同"), QStringLiteral("发票") });
    open();
    EXPECT_TRUE(mode()->isChecked());
    EXPECT_FALSE(get<QFrame>("inTemplateframe")->isEnabled());
    EXPECT_EQ(2, list()->count());
    EXPECT_FALSE(ok()->isEnabled());
    list()->setCurrentRow(1);
    EXPECT_TRUE(ok()->isEnabled());
    EXPECT_TRUE(del()->isEnabled());
    mode()->setChecked(false);
    EXPECT_FALSE(ok()->isEnabled());
    EXPECT_FALSE(del()->isEnabled());
    mode()->setChecked(true);
    EXPECT_TRUE(ok()->isEnabled());
}

TEST_F(TemplateDialogTest, adding_asks_collects_and_stores)
{
    open();
    answerCollect();
    name()->setText(QStringLiteral("票据%1"));
    Answer answer(kYes);
    ok()->click();
    EXPECT_EQ(QStringLiteral("添加模板票据%1?\n"), answer.text);
    EXPECT_EQ(QStringLiteral("添加成功\n     "), status());
    EXPECT_EQ(QStringList { QStringLiteral("票据%1") }, stored());
    ASSERT_EQ(1, list()->count());

    ok()->click();
    EXPECT_EQ(QStringLiteral("该模板名称已存在\n     请重新输入"), status());
}

TEST_F(TemplateDialogTest,
    a_declined_or_failed_adding_stores_nothing_and_leaves_no_box_without_buttons)
{
    open();
    QSignalSpy collect(dialog.get(), &templateSaveAndExtract::templateInfoCollect);
    name()->setText(QStringLiteral("t"));
    {
        const Answer answer(kNo);
        ok()->click();
    }
    EXPECT_EQ(0, collect.count());
    EXPECT_EQ(nullptr, statusBox());
    {
        const Answer answer(kYes); // no main window answers
        ok()->click();
    }
    EXPECT_EQ(1, collect.count());
    EXPECT_EQ(QStringLiteral("添加失败\n     请检查"), status());

    answerCollect();
    const std::string folder = Sandbox::userFolder() + "/Model/Model.conf.new";
    ASSERT_EQ(0, ::mkdir(folder.c_str(), 0777)); // the file cannot be written
    {
        const Answer answer(kYes);
        ok()->click();
    }
    EXPECT_EQ(QStringLiteral("添加失败\n     请检查"), status());
    EXPECT_EQ(0, list()->count());
    EXPECT_TRUE(stored().isEmpty());
}

TEST_F(TemplateDialogTest, applying_hands_the_record_over_and_shows_how_it_went)
{
    store({ QStringLiteral("合同") });
    open();
    list()->setCurrentRow(0);
    ScanTemplateParam received;
    int reply = 100;
    QObject::connect(dialog.get(), &templateSaveAndExtract::templateInfoSave,
        [&](const ScanTemplateParam& param) {
            received = param;
            dialog->onTemplateInfoStatus(4, 20);
            dialog->onTemplateInfoStatus(7, -1); // of no concern
            EXPECT_EQ(QStringLiteral("数据读取开始\n         "), statusBox()->text());
            dialog->onTemplateInfoStatus(4, reply);
        });
    Answer answer(kYes);
    ok()->click();
    EXPECT_EQ(QStringLiteral("确定应用(合同)\n模板?\n"), answer.text);
    EXPECT_EQ(QStringLiteral("300"), received.resolution);
    EXPECT_EQ(QStringLiteral("成功\n     "), status());

    reply = -1;
    const Answer again(kYes);
    ok()->click();
    EXPECT_EQ(QStringLiteral("失败\n     请检查"), status());

    QFile::remove(QString::fromStdString(Sandbox::userFolder() + "/Model/Model.conf"));
    received.resolution.clear();
    const Answer third(kYes);
    ok()->click();
    EXPECT_EQ(QStringLiteral("失败\n     请检查"), status());
    EXPECT_TRUE(received.resolution.isEmpty());

    store({ QStringLiteral("合同") });
    QObject::disconnect(dialog.get(), &templateSaveAndExtract::templateInfoSave, nullptr, nullptr);
    const Answer unheard(kYes); // nobody answers
    ok()->click();
    EXPECT_EQ(QStringLiteral("失败\n     请检查"), status());
}

TEST_F(TemplateDialogTest, deleting_takes_the_template_out_of_file_and_list)
{
    store({ QStringLiteral("a"), QStringLiteral("b") });
    open();
    list()->setCurrentRow(0);
    {
        const Answer answer(kNo);
        del()->click();
    }
    EXPECT_EQ(2, list()->count());
    Answer answer(kYes);
    del()->click();
    EXPECT_EQ(QStringLiteral("删除模板a?\n"), answer.text);
    EXPECT_EQ(QStringLiteral("删除成功\n     "), status());
    EXPECT_EQ(QStringList { QStringLiteral("b") }, stored());
    ASSERT_EQ(1, list()->count());

    list()->setCurrentRow(0);
    const Answer last(kYes);
    del()->click();
    status();
    EXPECT_FALSE(ok()->isEnabled());
    EXPECT_FALSE(del()->isEnabled());
    EXPECT_TRUE(stored().isEmpty());
}

TEST_F(TemplateDialogTest, a_template_that_cannot_be_deleted_stays_in_the_list)
{
    store({ QStringLiteral("a") });
    open();
    list()->setCurrentRow(0);
    QFile::remove(QString::fromStdString(Sandbox::userFolder() + "/Model/Model.conf"));
    {
        const Answer answer(kYes);
        del()->click();
    }
    EXPECT_EQ(QStringLiteral("删除失败\n     请检查"), status());
    EXPECT_EQ(1, list()->count());

    list()->item(0)->setText(QStringLiteral("unknown"));
    {
        const Answer answer(kYes);
        del()->click();
    }
    EXPECT_EQ(QStringLiteral("模板不存在\n     请检查"), status());
    list()->item(0)->setText(QString());
    del()->click();
    EXPECT_EQ(QStringLiteral("模板名为空\n   请检查 "), status());
}

TEST_F(TemplateDialogTest, closing_asks_only_for_a_name_that_would_be_lost)
{
    open();
    cancel()->click();
    EXPECT_FALSE(dialog->isVisible());
    dialog->show();
    name()->setText(QStringLiteral("x"));
    Answer stay(kNo);
    cancel()->click();
    EXPECT_EQ(QStringLiteral("请确定是否退出\n"), stay.text);
    EXPECT_TRUE(dialog->isVisible());
    const Answer leave(kYes);
    cancel()->click();
    EXPECT_FALSE(dialog->isVisible());
    dialog->show();
    QTest::keyClick(dialog.get(), Qt::Key_Escape);
    EXPECT_FALSE(dialog->isVisible());
}

TEST_F(TemplateDialogTest, a_folder_that_cannot_be_had_disables_everything_and_says_so)
{
    ::rmdir((Sandbox::userFolder() + "/Model").c_str());
    writeBytes(Sandbox::userFolder() + "/Model", "a file");
    open();
    EXPECT_FALSE(ok()->isEnabled() || del()->isEnabled() || mode()->isEnabled());
    EXPECT_FALSE(get<QFrame>("inTemplateframe")->isEnabled());
    EXPECT_FALSE(get<QFrame>("outTemplateframe")->isEnabled());
    ASSERT_TRUE(QTest::qWaitFor([] { return statusBox() != nullptr; }));
    EXPECT_EQ(QStringLiteral("文件访问失败\n      "), status());
    cancel()->click();
    EXPECT_FALSE(dialog->isVisible());
}

} // namespace

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

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

const QString kYes = "确 定";
const QString kNo = "取 消";

statusMessageDialog* statusBox()
{
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        auto* box = qobject_cast<statusMessageDialog*>(widget);
        if (box != nullptr && box->isVisible()) {
            return box;
        }
    }
    return nullptr;
}

bool pressInBox(const QString& caption)
{
    statusMessageDialog* box = statusBox();
    for (QAbstractButton* button : box != nullptr ? box->buttons() : QList<QAbstractButton*>()) {
        if (button->text() == caption) {
            button->click();
            return true;
        }
    }
    return false;
}

class TemplateDialogTest : public ::testing::Test
{
protected:
    TemplateDialogTest() { m_store.checkAccessAuthority(); }

    void store(const QStringList& names)
    {
        for (const QString& each : names) {
            ScanTemplateParam param;
            param.resolution = "300";
            m_store.setCurrentName(each);
            ASSERT_EQ(0, m_store.templateSave(param));
        }
    }
    QStringList stored()
    {
        m_store.enumAllTemplateName();
        return m_store.names();
    }
    void open()
    {
        dialog = std::make_unique<templateSaveAndExtract>("Model", QString(), 0, nullptr);
        dialog->show();
        ok = dialog->findChild<QPushButton*>("okBtn");
        del = dialog->findChild<QPushButton*>("deleteBtn");
        name = dialog->findChild<QLineEdit*>("inTemplateLEdit");
        list = dialog->findChild<QListWidget*>("outTemplateList");
        mode = dialog->findChild<QCheckBox*>("inOutSelChkBox");
        list->setCurrentRow(0);
    }
    /// Clicks, answers the one question, and tells it.
    QString asked(QPushButton* clicked, const QString& answer)
    {
        QString question;
        QTimer timer;
        QObject::connect(&timer, &QTimer::timeout, [&] {
            const QString text = statusBox() != nullptr ? statusBox()->text() : QString();
            if (question.isEmpty() && !text.isEmpty()) {
                question = text;
                EXPECT_TRUE(pressInBox(answer)) << text.toStdString();
            }
        });
        timer.start(5);
        clicked->click();
        return question;
    }
    /// Text of the status box on the screen, which is closed with its button.
    static QString status()
    {
        const QString text = statusBox() == nullptr ? QString() : statusBox()->text();
        pressInBox(kYes);
        return text;
    }
    /// Click, answer yes, and the status that this leads to.
    QString after(QPushButton* clicked)
    {
        asked(clicked, kYes);
        return status();
    }
    /// A main window that hands over its settings when asked.
    void answerCollect()
    {
        QObject::connect(dialog.get(), &templateSaveAndExtract::templateInfoCollect,
            [this] { dialog->onTemplateInfoSave(ScanTemplateParam()); });
    }

    Sandbox sandbox;
    std::unique_ptr<templateSaveAndExtract> dialog;
    QPushButton *ok = nullptr, *del = nullptr;
    QLineEdit* name = nullptr;
    QListWidget* list = nullptr;
    QCheckBox* mode = nullptr;
    const std::string file = Sandbox::userFolder() + "/Model/Model.conf";

private:
    TemplateStore m_store { "Model" };
};

} // namespace

TEST_F(TemplateDialogTest, OpensForSavingWithoutTemplatesAndForApplyingWithSome)
{
    open();
    EXPECT_FALSE(mode->isChecked() || ok->isEnabled() || del->isEnabled());
    QTest::keyClicks(name, "a/b\\c=d]%");
    EXPECT_EQ(name->text(), "abc=d]%") << "what the file cannot hold";
    EXPECT_TRUE(ok->isEnabled());

    store({ "合同", "发票" });
    open();
    EXPECT_EQ(list->count(), 2);
    for (const bool applying : { true, false, true }) {
        mode->setChecked(applying);
        EXPECT_EQ(dialog->findChild<QFrame*>("inTemplateframe")->isEnabled(), !applying);
        EXPECT_EQ(dialog->findChild<QFrame*>("outTemplateframe")->isEnabled(), applying);
        EXPECT_EQ(ok->isEnabled(), applying) << "a template is chosen, a name is not typed";
        EXPECT_EQ(del->isEnabled(), applying);
    }
}

TEST_F(TemplateDialogTest, AddingAsksCollectsAndStores)
{
    open();
    const QSignalSpy collect(dialog.get(), &templateSaveAndExtract::templateInfoCollect);
    name->setText("票据%1");
    EXPECT_EQ(asked(ok, kNo), "添加模板票据%1?\n");
    EXPECT_EQ(collect.count(), 0);
    EXPECT_EQ(statusBox(), nullptr);
    EXPECT_EQ(after(ok), "添加失败\n     请检查") << "no main window answers";
    EXPECT_EQ(collect.count(), 1);

    answerCollect();
    const std::string blocked = file + ".new";
    ASSERT_EQ(0, ::mkdir(blocked.c_str(), 0777)); // the file cannot be written
    EXPECT_EQ(after(ok), "添加失败\n     请检查");
    EXPECT_EQ(list->count(), 0);
    ::rmdir(blocked.c_str());
    EXPECT_EQ(after(ok), "添加成功\n     ");
    EXPECT_EQ(stored(), QStringList { "票据%1" });
    EXPECT_EQ(list->count(), 1);
    ok->click();
    EXPECT_EQ(status(), "该模板名称已存在\n     请重新输入");
}

TEST_F(TemplateDialogTest, ApplyingHandsTheRecordOverAndShowsHowItWent)
{
    store({ "合同" });
    open();
    EXPECT_EQ(after(ok), "失败\n     请检查") << "nobody answers";
    ScanTemplateParam received;
    int reply = 100;
    QObject::connect(dialog.get(), &templateSaveAndExtract::templateInfoSave,
        [&](const ScanTemplateParam& param) {
            received = param;
            dialog->onTemplateInfoStatus(4, 20);
            dialog->onTemplateInfoStatus(7, -1); // of no concern
            EXPECT_EQ(statusBox()->text(), "数据读取开始\n         ");
            dialog->onTemplateInfoStatus(4, reply);
        });
    EXPECT_EQ(asked(ok, kYes), "确定应用(合同)\n模板?\n");
    EXPECT_EQ(status(), "成功\n     ");
    EXPECT_EQ(received.resolution, "300");
    reply = -1;
    EXPECT_EQ(after(ok), "失败\n     请检查");
    QFile::remove(QString::fromStdString(file));
    received.resolution.clear();
    EXPECT_EQ(after(ok), "失败\n     请检查");
    EXPECT_TRUE(received.resolution.isEmpty());
}

TEST_F(TemplateDialogTest, DeletingTakesTheTemplateOutOfFileAndListOrLeavesItThere)
{
    store({ "a", "b" });
    open();
    EXPECT_EQ(asked(del, kNo), "删除模板a?\n");
    EXPECT_EQ(list->count(), 2);
    EXPECT_EQ(after(del), "删除成功\n     ");
    EXPECT_EQ(stored(), QStringList { "b" });
    ASSERT_EQ(list->count(), 1);

    list->setCurrentRow(0);
    QFile::rename(QString::fromStdString(file), QString::fromStdString(file + "x"));
    EXPECT_EQ(after(del), "删除失败\n     请检查");
    list->item(0)->setText("unknown");
    EXPECT_EQ(after(del), "模板不存在\n     请检查");
    list->item(0)->setText(QString());
    del->click();
    EXPECT_EQ(status(), "模板名为空\n   请检查 ");

    list->item(0)->setText("b");
    QFile::rename(QString::fromStdString(file + "x"), QString::fromStdString(file));
    EXPECT_EQ(after(del), "删除成功\n     ");
    EXPECT_FALSE(ok->isEnabled() || del->isEnabled());
    EXPECT_TRUE(stored().isEmpty());
}

TEST_F(TemplateDialogTest, ClosingAsksOnlyForANameThatWouldBeLost)
{
    open();
    auto* cancel = dialog->findChild<QPushButton*>("cancelBtn");
    cancel->click();
    EXPECT_FALSE(dialog->isVisible());
    dialog->show();
    name->setText("x");
    EXPECT_EQ(asked(cancel, kNo), "请确定是否退出\n");
    EXPECT_TRUE(dialog->isVisible());
    asked(cancel, kYes);
    EXPECT_FALSE(dialog->isVisible());
    dialog->show();
    QTest::keyClick(dialog.get(), Qt::Key_Escape);
    EXPECT_FALSE(dialog->isVisible());
}

TEST_F(TemplateDialogTest, AFolderThatCannotBeHadDisablesEverythingAndSaysSo)
{
    ::rmdir((Sandbox::userFolder() + "/Model").c_str());
    writeBytes(Sandbox::userFolder() + "/Model", "a file");
    open();
    EXPECT_FALSE(ok->isEnabled() || del->isEnabled() || mode->isEnabled());
    for (const char* frame : { "inTemplateframe", "outTemplateframe" }) {
        EXPECT_FALSE(dialog->findChild<QFrame*>(frame)->isEnabled());
    }
    ASSERT_TRUE(QTest::qWaitFor([] { return statusBox() != nullptr; }));
    EXPECT_EQ(status(), "文件访问失败\n      ");
}

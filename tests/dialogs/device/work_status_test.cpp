// The box of the template work: texts, buttons and how it can be left.
#include "dialogs/statusmessagedialog.h"
#include "dialogs/work_status.h"
#include "tests/support/answer_modal.h"
#include "tests/support/screenshot.h"

#include <QAbstractButton>
#include <QLabel>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

namespace {

TEST(WorkStatus, arguments_stand_where_they_belong_and_are_not_interpreted)
{
    EXPECT_EQ(QStringLiteral("数据保存中...\n     已完成40%"), workStatusNotice(5, 40, {}).text);
    EXPECT_EQ(QStringLiteral("添加模板A4?\n"), workStatusNotice(24, 0, QStringLiteral("A4")).text);
    EXPECT_EQ(QStringLiteral("确定应用(%1%n)\n模板?\n"),
        workStatusNotice(31, 0, QStringLiteral("%1%n")).text);
}

TEST(WorkStatus, a_code_without_an_entry_is_an_empty_notice)
{
    for (const int code : { -2, 1, 18, 19, 26, 27, 30, 32, 1000 }) {
        const WorkStatusNotice notice = workStatusNotice(code, 7, QStringLiteral("x"));
        EXPECT_TRUE(notice.title.isEmpty() && notice.text.isEmpty()) << code;
        EXPECT_EQ(WorkStatusButtons::kYes, notice.buttons) << code;
        EXPECT_EQ(WorkStatusIcon::kInformation, notice.icon) << code;
    }
}

TEST(StatusMessageDialog, one_box_takes_every_form)
{
    statusMessageDialog box;
    box.SetStatusInfo(17, 0, QStringLiteral("合同"));
    EXPECT_EQ(QStringLiteral("确 定"), box.button(QMessageBox::Yes)->text());
    EXPECT_EQ(QStringLiteral("取 消"), box.button(QMessageBox::No)->text());
    EXPECT_EQ(QMessageBox::Warning, box.icon());
    box.show();
    EXPECT_GE(box.width(), 200);
    EXPECT_GE(box.height(), 105);
    saveScreenshot(box, QStringLiteral("work_status_question"));
    box.SetStatusInfo(25, 0, QStringLiteral("合同"));
    EXPECT_TRUE(box.buttons().isEmpty());
    box.SetStatusInfo(21, 0, {});
    EXPECT_EQ(1, box.buttons().size());
    EXPECT_EQ(QStringLiteral("模板添加"), box.windowTitle());
    EXPECT_FALSE(box.windowIcon().isNull());
}

TEST(StatusMessageDialog, no_text_is_cut)
{
    statusMessageDialog box;
    const auto expectWhole = [&box](int code, const QString& name) {
        SCOPED_TRACE(code);
        box.SetStatusInfo(code, 100, name);
        box.show();
        const auto* label = box.findChild<QLabel*>(QStringLiteral("qt_msgbox_label"));
        ASSERT_NE(nullptr, label);
        EXPECT_GE(label->width(), label->minimumSizeHint().width());
        EXPECT_GE(label->height(), label->heightForWidth(label->width()));
        EXPECT_TRUE(box.rect().contains(label->geometry()));
        for (const QAbstractButton* button : box.buttons()) {
            EXPECT_GE(button->width(), button->sizeHint().width());
            EXPECT_TRUE(box.rect().contains(QRect(button->mapTo(&box, QPoint()), button->size())));
        }
    };
    for (int code = -1; code < 32; ++code) {
        expectWhole(code, QStringLiteral("A4"));
    }
    expectWhole(17, QStringLiteral("二〇二六年度 合同扫描 双面 灰度 三百点").repeated(4));
    box.SetStatusInfo(21, 0, {});
    EXPECT_EQ(QSize(200, 105), box.size()) << "shrinks again";
}

TEST(StatusMessageDialog, only_the_yes_button_means_yes)
{
    statusMessageDialog box;
    box.SetStatusInfo(17, 0, QStringLiteral("合同"));
    {
        const AnswerModal yes(QStringLiteral("确 定"));
        EXPECT_EQ(QMessageBox::Yes, box.exec());
    }
    {
        const AnswerModal escape([](QDialog& dialog) { QTest::keyClick(&dialog, Qt::Key_Escape); });
        EXPECT_NE(QMessageBox::Yes, box.exec());
    }
    {
        const AnswerModal titleBar([](QDialog& dialog) { dialog.close(); });
        EXPECT_NE(QMessageBox::Yes, box.exec());
    }
    const auto byReturn = [&box](int code) {
        box.SetStatusInfo(code, 0, QStringLiteral("合同"));
        const AnswerModal press([](QDialog& dialog) { QTest::keyClick(&dialog, Qt::Key_Return); });
        return box.exec();
    };
    EXPECT_NE(QMessageBox::Yes, byReturn(17)) << "what is deleted does not come back";
    EXPECT_EQ(QMessageBox::Yes, byReturn(24));
}

} // namespace

// The box of the template work: texts, buttons and how it can be left.
#include "dialogs/statusmessagedialog.h"
#include "dialogs/work_status.h"
#include "tests/support/answer_modal.h"

#include <QAbstractButton>
#include <QLabel>
#include <QTest>

#include <gtest/gtest.h>

TEST(WorkStatus, ArgumentsAreNotInterpretedAndUnknownCodesAreEmpty)
{
    EXPECT_EQ(workStatusNotice(5, 40, {}).text, "数据保存中...\n     已完成40%");
    EXPECT_EQ(workStatusNotice(31, 0, "%1%n").text, "确定应用(%1%n)\n模板?\n");
    for (const int code : { -2, 1, 18, 19, 26, 27, 30, 32, 1000 }) {
        const WorkStatusNotice notice = workStatusNotice(code, 7, "x");
        EXPECT_TRUE(notice.title.isEmpty() && notice.text.isEmpty()) << code;
        EXPECT_EQ(WorkStatusButtons::kYes, notice.buttons) << code;
    }
}

TEST(StatusMessageDialog, NoTextIsCutAndTheBoxShrinksAgain)
{
    statusMessageDialog box;
    const auto expectWhole = [&box](int code, const QString& name) {
        SCOPED_TRACE(code);
        box.SetStatusInfo(code, 100, name);
        box.show();
        const auto* label = box.findChild<QLabel*>("qt_msgbox_label");
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
        expectWhole(code, "A4");
    }
    expectWhole(17, QString("二〇二六年度 合同扫描 双面 灰度 三百点").repeated(4));
    box.SetStatusInfo(25, 0, "合同");
    EXPECT_TRUE(box.buttons().isEmpty());
    box.SetStatusInfo(21, 0, {});
    EXPECT_EQ(1, box.buttons().size());
    EXPECT_EQ(QSize(200, 105), box.size());
}

TEST(StatusMessageDialog, OnlyTheYesButtonMeansYes)
{
    struct Case
    {
        const char* name;
        int code;
        std::function<void(QDialog&)> answer;
        bool isYes;
    };
    const auto key = [](Qt::Key pressed) {
        return [pressed](QDialog& dialog) { QTest::keyClick(&dialog, pressed); };
    };
    const auto yes = [](QDialog& dialog) {
        static_cast<QMessageBox&>(dialog).button(QMessageBox::Yes)->click();
    };
    const Case cases[] = {
        { "button", 17, yes, true },
        { "Escape", 17, key(Qt::Key_Escape), false },
        { "title bar", 17, [](QDialog& dialog) { dialog.close(); }, false },
        { "Return, what is deleted does not come back", 17, key(Qt::Key_Return), false },
        { "Return, adding", 24, key(Qt::Key_Return), true },
    };
    statusMessageDialog box;
    for (const Case& c : cases) {
        box.SetStatusInfo(c.code, 0, "合同");
        const AnswerModal answer(c.answer);
        EXPECT_EQ(box.exec() == QMessageBox::Yes, c.isYes) << c.name;
    }
}

// The toolkit's own dialogs speak Chinese: each is opened with a translator that records what the
// built file does not know.
#include <QApplication>
#include <QCalendarWidget>
#include <QFileDialog>
#include <QLineEdit>
#include <QMenu>
#include <QMessageBox>
#include <QTemporaryDir>
#include <QTest>
#include <QTextEdit>
#include <QTimer>
#include <QTranslator>

#include <gmock/gmock.h>

#include <memory>
#include <set>

namespace {

/// Keys, and key combinations of the file dialog, that stay as keyboards print them.
bool isKeyLegend(const QString& context, const QString& source)
{
    return context == QLatin1String("QShortcut") || source.startsWith(QLatin1String("Alt+"));
}

class RecordingTranslator : public QTranslator
{
public:
    QString translate(
        const char* context, const char* source, const char* comment, int n) const override
    {
        const QString text = QTranslator::translate(context, source, comment, n);
        if (text.isEmpty() && !isKeyLegend(QLatin1String(context), QString::fromUtf8(source))) {
            unknown.insert(std::string(context) + ": " + source);
        }
        ++asked;
        return text;
    }

    mutable std::set<std::string> unknown;
    mutable int asked = 0;
};

class TranslationTest : public testing::Test
{
protected:
    TranslationTest()
    {
        EXPECT_TRUE(translator.load(QStringLiteral(TRANSLATION_FILE)));
        QCoreApplication::installTranslator(&translator);
    }
    ~TranslationTest() override
    {
        EXPECT_GT(translator.asked, 0);
        EXPECT_THAT(translator.unknown, testing::IsEmpty());
    }

    RecordingTranslator translator;
};

} // namespace

TEST_F(TranslationTest, FileDialogInAllItsForms)
{
    QTemporaryDir folder;
    QFile file(folder.filePath("page.pdf"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    for (const auto mode :
        { QFileDialog::Directory, QFileDialog::ExistingFile, QFileDialog::AnyFile }) {
        for (const auto accept : { QFileDialog::AcceptOpen, QFileDialog::AcceptSave }) {
            QFileDialog dialog(nullptr, "选择保存路径", folder.path());
            dialog.setOption(QFileDialog::DontUseNativeDialog);
            dialog.setFileMode(mode);
            dialog.setAcceptMode(accept);
            dialog.setViewMode(QFileDialog::Detail);
            dialog.show();
            QCoreApplication::processEvents();
        }
    }
}

TEST_F(TranslationTest, MenusButtonsAndCalendar)
{
    QMessageBox box;
    box.setStandardButtons(QMessageBox::Yes | QMessageBox::No | QMessageBox::Ok
        | QMessageBox::Cancel | QMessageBox::Close | QMessageBox::Save | QMessageBox::Retry
        | QMessageBox::RestoreDefaults);
    box.show();
    EXPECT_EQ(box.buttonText(QMessageBox::Cancel), "取消");
    QLineEdit line;
    const std::unique_ptr<QMenu> lineMenu(line.createStandardContextMenu());
    QTextEdit text;
    const std::unique_ptr<QMenu> textMenu(text.createStandardContextMenu());
    for (const QMenu* menu : { lineMenu.get(), textMenu.get() }) {
        for (const QAction* action : menu->actions()) {
            const QString caption = action->text().section(QLatin1Char('\t'), 0, 0);
            EXPECT_TRUE(action->isSeparator() || caption.at(0).unicode() > 0x2fff)
                << caption.toStdString();
        }
    }
    QCalendarWidget calendar;
    calendar.show();
    QCoreApplication::processEvents();
}

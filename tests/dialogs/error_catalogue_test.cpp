// The catalogue is edited by hand at the customer's: whatever stands in the file, the operator gets
// the messages that are sound.
#include "dialogs/error_catalogue.h"
#include "tests/support/sandbox.h"

#include <QFile>
#include <QRegularExpression>

#include <gmock/gmock.h>

#include <atomic>
#include <filesystem>
#include <thread>

using testing::HasSubstr;

namespace {

class ErrorCatalogueTest : public testing::Test
{
protected:
    QString write(const std::string& xml, const std::string& name = "ErrorCode.xml")
    {
        const std::string path = Sandbox::path(name);
        writeBytes(path, xml);
        return QString::fromStdString(path);
    }

    Sandbox sandbox;
    ErrorCatalogue catalogue;
};

} // namespace

TEST_F(ErrorCatalogueTest, ReadsEveryChildOfTheRootAndTheLaterOfTwoWins)
{
    catalogue.getErrorCode(
        write("<?xml version=\"1.0\" encoding=\"UTF-8\"?><any>"
              "<e id=\"-40\" ishow=\"1\" ierror=\"0\">旧</e>"
              "<other id=\"7\" ishow=\"yes\" ierror=\"2\">卡纸</other>"
              "<e id=\"-40\" ishow=\"0\" ierror=\"1\">扫描仪无纸</e>"
              "<e id=\"8\" ierror=\"0\"/>"
              "<e id=\"9\" ierror=\"0\"><!-- ! --><b>打开</b>上盖 &lt;1&gt;</e></any>"));
    ASSERT_EQ(catalogue.size(), 4U);
    EXPECT_EQ(catalogue.find(9)->contents, QStringLiteral("打开上盖 <1>"));
    const ErrorEntry* noPaper = catalogue.find(-40);
    ASSERT_NE(noPaper, nullptr);
    EXPECT_EQ(noPaper->contents, QStringLiteral("扫描仪无纸"));
    EXPECT_EQ(noPaper->isShow, QStringLiteral("0"));
    EXPECT_TRUE(noPaper->isError);

    const ErrorEntry* jam = catalogue.find(7);
    ASSERT_NE(jam, nullptr);
    EXPECT_TRUE(jam->isError) << "any value but 0 is an error";
    EXPECT_EQ(jam->isShow, QStringLiteral("yes"));
    EXPECT_EQ(catalogue.find(8)->contents, QString());
    EXPECT_EQ(catalogue.find(0), nullptr);
}

TEST_F(ErrorCatalogueTest, LeavesOutEntriesWithoutUsableNumbers)
{
    catalogue.getErrorCode(write("<r><e ishow=\"1\" ierror=\"1\">no id</e>\n"
                                 "<e id=\"1\" ishow=\"1\">no ierror</e>\n"
                                 "<e id=\"one\" ishow=\"1\" ierror=\"1\">no number</e>\n"
                                 "<e id=\"99999999999999999999\" ishow=\"1\" ierror=\"1\">big</e>\n"
                                 "<e id=\"5\" ishow=\"1\" ierror=\"1\">sound</e></r>"));
    EXPECT_EQ(catalogue.size(), 1U);
    EXPECT_NE(catalogue.find(5), nullptr);
    for (const char* line : { "line 1 ", "line 2 ", "line 3 ", "line 4 " }) {
        EXPECT_THAT(Sandbox::runLog(), HasSubstr(std::string("entry in ") + line));
    }
}

TEST_F(ErrorCatalogueTest, MissingFileLeavesTheLastCatalogueInForce)
{
    const QString path = write("<r><e id=\"5\" ishow=\"1\" ierror=\"1\">text</e></r>");
    catalogue.getErrorCode(path);
    ASSERT_TRUE(QFile::remove(path));
    catalogue.getErrorCode(path);
    EXPECT_NE(catalogue.find(5), nullptr);
    EXPECT_THAT(Sandbox::runLog(),
        HasSubstr("[func:getErrorCode]ErrorCode - filePath() = " + path.toStdString()
            + "  is not exist!"));
}

TEST_F(ErrorCatalogueTest, BrokenFilesEmptyTheCatalogue)
{
    struct Case
    {
        const char* name;
        std::string xml;
        const char* logged;
    };
    const Case cases[] = {
        { "unclosed", "<r><e id=\"1\" ishow=\"1\" ierror=\"1\">text</r>", "] ErrorDesc() = " },
        { "empty", "", "] ErrorDesc() = " },
        { "no root", "<?xml version=\"1.0\"?><!-- nothing -->",
            "[func:getErrorCode] Failed to load file: No root element." },
        { "three hundred thousand levels",
            [] {
                std::string open;
                for (int level = 0; level < 300000; ++level) {
                    open += "<a>";
                }
                return open;
            }(),
            "ErrorCode.xml is nested too deeply" },
    };
    for (const Case& broken : cases) {
        SCOPED_TRACE(broken.name);
        catalogue.getErrorCode(write("<r><e id=\"5\" ishow=\"1\" ierror=\"1\">text</e></r>"));
        ASSERT_EQ(catalogue.size(), 1U);
        catalogue.getErrorCode(write(broken.xml));
        EXPECT_EQ(catalogue.size(), 0U);
        EXPECT_THAT(Sandbox::runLog(), HasSubstr(broken.logged));
    }
}

TEST_F(ErrorCatalogueTest, TenThousandEntriesBehindALongPath)
{
    std::string xml = "<r>";
    for (int code = 0; code < 10000; ++code) {
        xml += "<e id=\"" + std::to_string(-code) + "\" ishow=\"1\" ierror=\"1\">第"
            + std::to_string(code) + "条</e>";
    }
    const std::string folder = std::string(180, 'a') + "/" + std::string(120, 'b') + "/错误 代码";
    const QString path = write(xml + "</r>", folder + "/ErrorCode.xml");
    ASSERT_GT(path.toUtf8().size(), 255);
    catalogue.getErrorCode(path);
    EXPECT_EQ(catalogue.size(), 10000U);
    ASSERT_NE(catalogue.find(-9999), nullptr);
    EXPECT_EQ(catalogue.find(-9999)->contents, QStringLiteral("第9999条"));
}

TEST_F(ErrorCatalogueTest, ReplacedWhileItIsReadItIsOneOrTheOther)
{
    const auto text = [](const char* contents) {
        std::string xml = "<r>";
        for (int code = 1; code <= 500; ++code) {
            xml += "<e id='" + std::to_string(code) + "' ishow='1' ierror='1'>" + contents + "</e>";
        }
        return xml + "</r>";
    };
    const QString path = write(text("旧"));
    std::atomic<bool> stop { false };
    std::thread editor([&] {
        for (int i = 0; !stop; ++i) { // as an editor saves: beside it, then in its place
            writeBytes(Sandbox::path("new.xml"), text(i % 2 == 0 ? "新" : "旧"));
            std::filesystem::rename(Sandbox::path("new.xml"), path.toStdString());
        }
    });
    for (int i = 0; i < 100; ++i) {
        catalogue.getErrorCode(path);
        ASSERT_EQ(catalogue.size(), 500U);
        ASSERT_EQ(catalogue.find(1)->contents, catalogue.find(500)->contents);
    }
    stop = true;
    editor.join();
}

TEST_F(ErrorCatalogueTest, TheInstalledOneTellsWhatToDoForEveryCodeOfTheLibrary)
{
    catalogue.getErrorCode(QStringLiteral(TARVEX_SOURCE_DIR "/packaging/ErrorCode.xml"));
    const QString header =
        QString::fromStdString(readBytes(TARVEX_SOURCE_DIR "/sdk/result_codes.h"));
    const QRegularExpression line(QStringLiteral("\n +k[A-Za-z]+ = (-[0-9]+),"));
    std::size_t codes = 0;
    for (auto found = line.globalMatch(header); found.hasNext();) {
        const QRegularExpressionMatch match = found.next();
        ++codes;
        const ErrorEntry* entry = catalogue.find(match.captured(1).toInt());
        ASSERT_NE(entry, nullptr) << match.captured().toStdString();
        EXPECT_TRUE(entry->contents.contains(QStringLiteral("。")))
            << match.captured().toStdString();
    }
    EXPECT_GE(codes, 30U);
    EXPECT_EQ(catalogue.size(), codes) << "a text for a code that the library does not give";
}

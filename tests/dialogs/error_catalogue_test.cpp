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
    void read(const std::string& xml)
    {
        writeBytes(path.toStdString(), xml);
        catalogue.getErrorCode(path);
    }
    QString told(int code) const
    {
        const ErrorEntry* entry = catalogue.find(code);
        return entry == nullptr
            ? "none"
            : entry->isShow + (entry->isError ? " error " : " notice ") + entry->contents;
    }

    Sandbox sandbox;
    QString path = QString::fromStdString(Sandbox::path(
        std::string(180, 'a') + "/" + std::string(120, 'b') + "/错误 代码/ErrorCode.xml"));
    ErrorCatalogue catalogue;
    const std::string kSound = "<r><e id=\"5\" ishow=\"1\" ierror=\"1\">text</e></r>";
};

} // namespace

TEST_F(ErrorCatalogueTest, ReadsEveryUsableChildOfTheRootAndTheLaterOfTwoWins)
{
    read("<?xml version=\"1.0\" encoding=\"UTF-8\"?><any>"
         "<e id=\"-40\" ishow=\"1\" ierror=\"0\">旧</e>"
         "<other id=\"7\" ishow=\"yes\" ierror=\"2\">卡纸</other>"
         "<e id=\"-40\" ishow=\"0\" ierror=\"1\">扫描仪无纸</e>"
         "<e id=\"8\" ierror=\"0\"/>"
         "<e id=\"9\" ierror=\"0\"><!-- ! --><b>打开</b>上盖 &lt;1&gt;</e>\n"
         "<e ishow=\"1\" ierror=\"1\">no id</e>\n"
         "<e id=\"1\" ishow=\"1\">no ierror</e>\n"
         "<e id=\"one\" ishow=\"1\" ierror=\"1\">no number</e>\n"
         "<e id=\"99999999999999999999\" ishow=\"1\" ierror=\"1\">big</e></any>");
    EXPECT_EQ(catalogue.size(), 4U);
    EXPECT_EQ(told(-40), "0 error 扫描仪无纸");
    EXPECT_EQ(told(7), "yes error 卡纸") << "any value but 0 is an error";
    EXPECT_EQ(told(8), " notice ");
    EXPECT_EQ(told(9), " notice 打开上盖 <1>");
    EXPECT_EQ(told(0), "none");
    for (const char* line : { "line 2 ", "line 3 ", "line 4 ", "line 5 " }) {
        EXPECT_THAT(Sandbox::runLog(), HasSubstr(std::string("entry in ") + line));
    }
}

TEST_F(ErrorCatalogueTest, MissingFileLeavesTheLastCatalogueInForceABrokenOneEmptiesIt)
{
    read(kSound);
    ASSERT_TRUE(QFile::remove(path));
    catalogue.getErrorCode(path);
    EXPECT_EQ(told(5), "1 error text");
    EXPECT_THAT(Sandbox::runLog(), HasSubstr(path.toStdString() + "  is not exist!"));

    std::string deep;
    for (int level = 0; level < 300000; ++level) {
        deep += "<a>";
    }
    const std::pair<std::string, const char*> broken[] = {
        { "<r><e id=\"1\" ishow=\"1\" ierror=\"1\">text</r>", "] ErrorDesc() = " },
        { "<?xml version=\"1.0\"?><!-- nothing -->",
            "[func:getErrorCode] Failed to load file: No root element." },
        { deep, "ErrorCode.xml is nested too deeply" },
    };
    for (const auto& [xml, logged] : broken) {
        read(kSound);
        ASSERT_EQ(catalogue.size(), 1U);
        read(xml);
        EXPECT_EQ(catalogue.size(), 0U) << logged;
        EXPECT_THAT(Sandbox::runLog(), HasSubstr(logged));
    }
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
    read(text("旧"));
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
        ASSERT_EQ(told(1), told(500));
    }
    stop = true;
    editor.join();
}

TEST_F(ErrorCatalogueTest, TheInstalledOneTellsWhatToDoForEveryCodeOfTheLibrary)
{
    catalogue.getErrorCode(TARVEX_SOURCE_DIR "/packaging/ErrorCode.xml");
    const QString header =
        QString::fromStdString(readBytes(TARVEX_SOURCE_DIR "/sdk/result_codes.h"));
    const QRegularExpression line("\n +k[A-Za-z]+ = (-[0-9]+),");
    std::size_t codes = 0;
    for (auto found = line.globalMatch(header); found.hasNext(); ++codes) {
        const QString code = found.next().captured(1);
        EXPECT_TRUE(told(code.toInt()).contains("。")) << code.toStdString();
    }
    EXPECT_GE(codes, 30U);
    EXPECT_EQ(catalogue.size(), codes) << "a text for a code that the library does not give";
}

// Every setting that an operator can make is made by keys in the running application, which is then
// closed and started again: every control and every key of the file must be as they were left, but
// for the asymmetries that are meant.
#include "tests/journeys/journey.h"
#include "tests/support/wait.h"

#include <QSettings>

#include <gmock/gmock.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <filesystem>
#include <iostream>
#include <sstream>

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::Pair;

namespace {

using Texts = std::map<std::string, std::string>;

struct Setting
{
    const char* control;
    const char* value;
};

/// Both lists: none of these is what the device's first use shows.
constexpr Setting kPages[] = {
    { "fileTypeCombo", "双层pdf" },
    { "imageCompressCombo", "大小优先(30%)" },
    { "comboBox_doc", "图片" },
    { "multipage_radio", "1" },
    { "sameNameAddNoRadio", "1" },
    { "fileNamePreEdit", "Card9" },
    { "seperateCombo", "_" },
    { "timeNametypeCombo", "月日年" },
    { "serialNameRadio", "1" },
    { "nameNoLenSpinBox", "6" },
    { "nameNoSerialEdit", "000417" },
    { "scanSourceComBo", "ADF双面" },
    { "paperTypeComBo", "B5" },
    { "DPIComBo", "300" },
    { "MergeComBo", "左右合并" },
    { "rotAngleComBox", "右旋90度" },
    { "checkBox_blank", "1" },
    { "BlankSlider", "21" },
    { "autoCropChkBox", "0" },
    { "autoBColorChkBox", "1" },
    { "MultiFeedChkBox", "1" },
    { "comboSetLogLevel", "开启日志" },
};
constexpr Setting kGray[] = {
    { "colorModeComBo", "灰度" },
    { "autopLevelchkBox", "0" },
    { "lightSpinBox", "-41" },
    { "constraSpinBox", "63" },
    { "gammaSpinBox", "2.7" },
    { "DenoiseComBo", "强化" },
    { "ColorDropoutComBox", "绿色" },
    { "ColorDropoutchkBox", "1" },
};
constexpr Setting kBlackWhite[] = {
    { "colorModeComBo", "黑白" },
    { "threholdSpinBox", "201" },
    { "ColorDropoutComBox", "红色" },
};

class SettingsJourney : public Journey
{
protected:
    SettingsJourney()
        : m_socket(letOperatorIn())
    {
    }

    std::string ask(const std::string& request) const
    {
        sockaddr_un address {};
        address.sun_family = AF_UNIX;
        m_socket.copy(address.sun_path, sizeof address.sun_path - 1);
        const int socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        std::string reply;
        if (::connect(socket, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0
            && ::send(socket, request.data(), request.size(), MSG_NOSIGNAL) > 0) {
            char part[4096];
            for (ssize_t got = 0; (got = ::read(socket, part, sizeof part)) > 0;) {
                reply.append(part, static_cast<std::size_t>(got));
            }
        }
        ::close(socket);
        return reply;
    }
    template <std::size_t size>
    void set(const Setting (&settings)[size])
    {
        for (const Setting& setting : settings) {
            ASSERT_NE(shown().at(setting.control).substr(0, std::string(setting.value).size() + 1),
                std::string(setting.value) + '|')
                << setting.control << " has this value at first";
            ASSERT_EQ(ask("set " + std::string(setting.control) + '|' + setting.value), "ok")
                << setting.control;
        }
        m_set += static_cast<int>(size);
    }
    /// Value and state of every control.
    Texts shown() const
    {
        Texts controls;
        std::istringstream lines(ask("show"));
        for (std::string line; std::getline(lines, line);) {
            controls[line.substr(0, line.find('|'))] = line.substr(line.find('|') + 1);
        }
        return controls;
    }
    /// Every key of the settings file.
    static Texts stored()
    {
        QSettings store(QString::fromStdString(settingsFile()), QSettings::IniFormat);
        store.setIniCodec("UTF-8");
        Texts keys;
        for (const QString& key : store.allKeys()) {
            const QVariant value = store.value(key);
            keys[key.toStdString()] = value.userType() == QMetaType::QByteArray
                ? value.toByteArray().toHex().toStdString()
                : value.toString().toStdString();
        }
        return keys;
    }
    /// What is not the same, with both values.
    static Texts differences(const Texts& before, const Texts& after)
    {
        Texts changed;
        for (const auto& [name, value] : before) {
            const auto found = after.find(name);
            if (found == after.end() || found->second != value) {
                changed[name] = value + " -> " + (found == after.end() ? "nothing" : found->second);
            }
        }
        EXPECT_EQ(before.size(), after.size());
        return changed;
    }
    static std::vector<std::string> unchanged(const Texts& before, const Texts& after)
    {
        const auto valueOf = [](const std::string& state) {
            return state.substr(0, state.rfind('|'));
        };
        std::vector<std::string> names;
        for (const auto& [name, value] : before) {
            if (valueOf(after.at(name)) == valueOf(value)) {
                names.push_back(name);
            }
        }
        return names;
    }
    void openWindow()
    {
        fs::remove(m_socket);
        openMainWindow();
        ASSERT_TRUE(waitUntil([this] { return shown().size() > 40; }, 10s));
    }
    /// Through the folder dialog.
    void chooseFolder(const std::string& button, const std::string& path)
    {
        fs::create_directories(path);
        // a dialog before it may still be closing
        ASSERT_TRUE(waitUntil([&] { return ask("press " + button) == "ok"; }, 5s));
        const WindowId dialog = display().wait("选择保存路径");
        ASSERT_NE(dialog, 0U);
        ASSERT_EQ(ask("set fileNameEdit|" + path), "ok");
        display().key(dialog, "Return");
        ASSERT_TRUE(display().waitGone("选择保存路径"));
    }

    int m_set = 0;

private:
    std::string m_socket;
};

} // namespace

TEST_F(SettingsJourney, everyControlAndEveryKeyComesBack)
{
    openWindow();
    const Texts factory = shown();
    set(kPages);
    set(kGray);
    chooseFolder("selPathBtn", Sandbox::home() + "/我的 扫描");
    chooseFolder("SetLogSavePathBth", Sandbox::home() + "/日志");
    dismiss("日志配置设置");
    const Texts left = shown();
    EXPECT_THAT(unchanged(factory, left),
        ElementsAre("RemoveHoleChkBox", "autoRotatChkBox", "autoRotateModComBox", "threholdSlider",
            "threholdSpinBox"))
        << "hidden by rule, or of another colour mode";
    closeByKey();
    const Texts first = stored();

    openWindow();
    const Texts back = shown();
    EXPECT_THAT(differences(left, back),
        ElementsAre(Pair("ColorDropoutComBox", "绿色|1 -> 无操作|1"),
            Pair("ColorDropoutchkBox", "1|1 -> 0|0"),
            Pair("timeNametypeCombo", "月日年|0 -> 年月日|0")));
    closeByKey();
    EXPECT_THAT(differences(first, stored()),
        ElementsAre(Pair("appValue/ColorDropoutComBox", "2 -> 0"),
            Pair("appValue/ColorDropoutchkBox", "true -> false"),
            Pair("appValue/FileTimeformat", "2 -> 0")));

    openWindow();
    set(kBlackWhite);
    const Texts blackWhite = shown();
    closeByKey();
    openWindow();
    EXPECT_THAT(differences(blackWhite, shown()),
        ElementsAre(Pair("ColorDropoutComBox", "红色|1 -> 无操作|1"),
            Pair("ColorDropoutchkBox", "0|1 -> 0|0")));
    closeByKey();
    std::cout << m_set << " settings made by keys, " << back.size() << " controls and "
              << first.size() << " keys compared\n";
}

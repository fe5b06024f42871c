// A template file that this user may replace but not read: what is in it must not be lost.
#include "templates/template_store.h"
#include "tests/support/sandbox.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

TEST(UnreadableTemplateFile, IsRefusedAndKeepsItsTemplates)
{
    const Sandbox sandbox;
    TemplateStore store(QStringLiteral("Model"));
    ASSERT_TRUE(store.checkAccessAuthority());
    store.setCurrentName(QStringLiteral("kept"));
    ASSERT_EQ(store.templateSave({}), 0);
    const std::string file = store.templatePath().toStdString();
    const std::string before = readBytes(file);
    ASSERT_EQ(::chmod(file.c_str(), 0), 0);
    ASSERT_EQ(::chmod(file.substr(0, file.rfind('/')).c_str(), 0777), 0);

    const pid_t other = ::fork();
    if (other == 0) {
        // root may read everything
        bool refused = ::geteuid() != 0 || ::setresuid(54321, 54321, 54321) == 0;
        ScanTemplateParam param;
        refused = refused
            && store.ReadTemplatesInfo(&param, QStringLiteral("kept"))
                == TemplateStore::kNotAccessible;
        refused = refused
            && store.deleteTemplateItem(QStringLiteral("kept")) == TemplateStore::kNotAccessible;
        store.setCurrentName(QStringLiteral("new"));
        refused = refused && store.templateSave({}) == TemplateStore::kNotAccessible;
        ::_exit(refused ? 0 : 1);
    }
    int status = -1;
    ASSERT_EQ(::waitpid(other, &status, 0), other);
    EXPECT_EQ(status, 0);
    ::chmod(file.c_str(), 0600);
    EXPECT_EQ(readBytes(file), before);
}

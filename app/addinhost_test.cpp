#include "app/addinhost.h"

#include "host/testing/faketask.h"
#include "platform/jsonregistrystore.h"

#include <QDir>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include "tests/programrun.h"

namespace {

const QString ClassId = QStringLiteral("{D22F1795-5A92-4B1E-9FD9-3A9D93D11FEB}");

class AddInHostTest : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(m_home.isValid());
        qputenv("MCTASK_HOME", m_home.path().toLocal8Bit());
    }
    void TearDown() override { qunsetenv("MCTASK_HOME"); }

    QString registryFile() const { return m_home.filePath("registry.json"); }

    int runMctask(const QStringList &args, QString *err = nullptr)
    {
        const ProgramRun run = runProgram(QStringLiteral(MCTASK_PROGRAM), args, ProgramSetting(m_home.path()).timeout(30000));
        if (err)
            *err = run.err;
        return run.status;
    }

    QTemporaryDir m_home;
};

TEST_F(AddInHostTest, AnUnregisteredClassCannotBeCreated)
{
    JsonRegistryStore registry(registryFile());
    QString error;
    EXPECT_EQ(AddInHost::create(registry, ClassId, error), nullptr);
    EXPECT_TRUE(error.contains("not registered")) << error.toStdString();
}

TEST_F(AddInHostTest, ARegisteredModuleIsLoadedThroughTheRegistryAndGetsOnlyHookedCommands)
{
    QString error;
    ASSERT_EQ(callModuleRegistration(QStringLiteral(MCTASK_ADDIN_MODULE), false, error), S_OK) << error.toStdString();
    JsonRegistryStore registry(registryFile());
    auto host = AddInHost::create(registry, ClassId, error);
    ASSERT_NE(host, nullptr) << error.toStdString();
    ASSERT_EQ(host->initialise(nullptr), S_OK);
    EXPECT_EQ(host->info().addInName, "Mecadra Task Add-in");
    EXPECT_EQ(host->commands().hooksInOrder(), (std::vector<std::int32_t>{40, 41, 42, 44, 45, 43}));

    DoxCmdDataArray data;
    DoxCmd unhooked;
    unhooked.commandType = 39;
    EXPECT_EQ(host->send(unhooked, data), S_FALSE);

    // A set-up command without a window reaches the add-in, which refuses it.
    DoxCmd setup;
    setup.commandType = DoxCmd_TaskSetup;
    setup.extra = std::make_shared<FakeTaskProperties>();
    EXPECT_EQ(host->send(setup, data), E_INVALIDARG);
}

TEST_F(AddInHostTest, ProgramRegistersAndUnregistersTheModule)
{
    ASSERT_EQ(runMctask({"addin", "register", QStringLiteral(MCTASK_ADDIN_MODULE)}), 0);
    ASSERT_EQ(runMctask({"addin", "register", QStringLiteral(MCTASK_ADDIN_MODULE)}), 0);
    {
        JsonRegistryStore registry(registryFile());
        EXPECT_TRUE(registry.keyExists(RegistryRoot::ClassesRoot, RegistryView::Native, "CLSID\\" + ClassId));
    }
    ASSERT_EQ(runMctask({"addin", "unregister"}), 0);
    JsonRegistryStore registry(registryFile());
    EXPECT_FALSE(registry.keyExists(RegistryRoot::ClassesRoot, RegistryView::Native, "CLSID\\" + ClassId));
    EXPECT_TRUE(registry.keyExists(RegistryRoot::ClassesRoot, RegistryView::Native, "CLSID"));

    QString err;
    EXPECT_EQ(runMctask({"addin", "register", m_home.filePath("missing.so")}, &err), 2);
    EXPECT_TRUE(err.startsWith("mctask: no such module")) << err.toStdString();
    EXPECT_EQ(err.count('\n'), 1);
}

// Help only prints: no add-in is registered and nothing is written under
// the home, for every command and both spellings.
TEST_F(AddInHostTest, HelpChangesNothing)
{
    const QList<QStringList> commands{
        {"addin", "register"}, {"addin", "unregister"}, {"task", "create"},  {"task", "set"},
        {"task", "get"},       {"task", "setup"},       {"task", "launch"},  {"task", "run"},
        {"task", "details"},   {"task", "instances"},   {"vault", "ls"},     {"vault", "add"},
        {"macro", "preview"},  {"macro", "run"},        {"registry", "set"},
    };
    for (const QStringList &command : commands) {
        for (const char *help : {"--help", "-h"}) {
            const QString line = command.join(' ') + ' ' + help;
            const ProgramRun run =
                runProgram(QStringLiteral(MCTASK_PROGRAM), command + QStringList{help}, ProgramSetting(m_home.path()));
            EXPECT_EQ(run.status, 0) << line.toStdString() << ": " << run.err.toStdString();
            EXPECT_TRUE(run.out.startsWith("Usage: mctask " + command.join(' '))) << line.toStdString();
            EXPECT_EQ(run.err, QString()) << line.toStdString();
        }
    }
    EXPECT_EQ(QDir(m_home.path()).entryList(QDir::NoDotAndDotDot | QDir::AllEntries | QDir::Hidden), QStringList());
}

} // namespace

#include "platform/qtestprint.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonObject>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include "tests/programrun.h"

namespace {

// The language of a home of its own, through the built programs and the
// language folders this build made (Lang/GB, Lang/DE beside lib/).
class LanguageCommandTest : public ::testing::Test
{
protected:
    ProgramRun run(const QStringList &args)
    {
        return runProgram(MCTASK_PROGRAM, args, ProgramSetting(m_home.path()).in(m_work.path()).timeout(60000));
    }

    QString buildFolder() const { return QFileInfo(QStringLiteral(MCTASK_ADDIN_MODULE)).absoluteDir().absoluteFilePath(".."); }

    QTemporaryDir m_home;
    QTemporaryDir m_work;
};

TEST_F(LanguageCommandTest, RegisteringFindsTheLanguageFolderAndTheCommandSetsTheLanguage)
{
    // Nothing registered: English, and no folder to find.
    const ProgramRun fresh = run({"language"});
    ASSERT_EQ(fresh.status, 0) << fresh.err.toStdString();
    EXPECT_TRUE(fresh.out.startsWith("GB\nlanguage folder: none")) << fresh.out.toStdString();

    ASSERT_EQ(run({"addin", "register", MCTASK_ADDIN_MODULE}).status, 0);
    const QString lang = QDir::cleanPath(buildFolder() + "/Lang");
    const ProgramRun english = run({"language"});
    EXPECT_EQ(english.out, "GB\nlanguage folder: " + lang + "/GB/\n");

    const ProgramRun german = run({"language", "de"});
    ASSERT_EQ(german.status, 0) << german.err.toStdString();
    EXPECT_EQ(german.out, "DE\nlanguage folder: " + lang + "/DE/\n");
    EXPECT_TRUE(run({"registry", "get", "--view", "32",
                     "HKLM\\Software\\Mecadra\\Applications\\Vaultek Enterprise\\Vaults\\_-Global\\Settings", "0"})
                    .out.contains("DE"));

    // A language without a folder is kept but said to be English.
    EXPECT_TRUE(run({"language", "FR"}).out.contains("/Lang/FR/ (missing; texts are English)"));
    // A "LangDir" value wins over the installation folder.
    ASSERT_EQ(run({"registry", "set", "--view", "32", "HKLM\\Software\\Mecadra\\Applications\\Vaultek Enterprise",
                   "LangDir", lang + "/DE"})
                  .status,
              0);
    EXPECT_EQ(run({"language"}).out, "FR\nlanguage folder: " + lang + "/DE/\n");

    const ProgramRun bad = run({"language", "d1"});
    EXPECT_EQ(bad.status, 2);
    EXPECT_EQ(bad.err.count('\n'), 1) << bad.err.toStdString();
    EXPECT_EQ(run({"language", "GB", "DE"}).status, 2);
}

TEST_F(LanguageCommandTest, ARunAndItsDetailsSpeakGermanWithDE)
{
    const QString vault = m_work.filePath("vault");
    ASSERT_EQ(run({"vault", "init", vault, "--name", "Demo"}).status, 0);
    QFile part(m_work.filePath("gear.mcdprt"));
    ASSERT_TRUE(part.open(QIODevice::WriteOnly));
    part.write("part\n");
    part.close();
    ASSERT_EQ(run({"vault", "add", "--vault", vault, part.fileName(), "--to", "Parts"}).status, 0);
    ASSERT_EQ(run({"addin", "register", MCTASK_ADDIN_MODULE}).status, 0);
    ASSERT_EQ(run({"language", "DE"}).status, 0);

    ASSERT_EQ(run({"task", "create", "--vault", vault, "Script", "--kind", "script"}).status, 0);
    const ProgramRun launched = run({"task", "launch", "--vault", vault, "Script", "V:\\Parts\\gear.mcdprt"});
    ASSERT_EQ(launched.status, 0) << launched.err.toStdString();
    const QString id = launched.lastLine();

    const QJsonObject selected = run({"task", "details", "--vault", vault, id, "--json"}).json().object();
    EXPECT_EQ(selected["caption"], QJsonValue("Ausgewählte Dateien"));
    EXPECT_EQ(selected["columns"], (QJsonArray{"Dateiname", "Version", "Gefunden in"}));

    // Mecadra is not installed in this home: the connection's message, in German.
    const ProgramRun ran = run({"task", "run", "--vault", vault, id, "--json"});
    EXPECT_EQ(ran.status, 1) << ran.err.toStdString();
    EXPECT_EQ(ran.json().object()["message"], QJsonValue("Mecadra ist nicht installiert.")) << ran.out.toStdString();
    const QJsonObject ended = run({"task", "details", "--vault", vault, id, "--json"}).json().object();
    EXPECT_EQ(ended["columns"], (QJsonArray{"Dateiname", "Konfiguration", "Version", "Gefunden in"}));
}

} // namespace

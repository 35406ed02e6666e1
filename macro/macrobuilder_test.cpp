#include "macro/macrobuilder.h"

#include "host/hosterror.h"
#include "host/testing/faketask.h"
#include "host/testing/fakevault.h"
#include "platform/clock.h"
#include "platform/drivemap.h"
#include "common/settingslight.h"
#include "platform/memoryfilesystem.h"
#include "macro/templateloader.h"
#include "platform/memoryregistrystore.h"

#include <QRandomGenerator>
#include <QRegularExpression>
#include <gtest/gtest.h>

namespace {

const QString kGuid = QStringLiteral("{6B1F6A39-2C4E-4B8A-9D57-0E3A1F2B4C5D}");

class MacroBuilderTest : public ::testing::Test
{
protected:
    MacroBuilderTest()
        : m_clock(QDateTime(QDate(2012, 3, 5), QTime(12, 15, 0))), m_useClock(m_clock), m_useDrives(m_drives),
          m_useFiles(m_files)
    {
        m_files.mkpath("/vault");
        m_drives.mount('V', "/vault");
        m_instance->guid = kGuid;
    }

    // Prepares with the vault's date style 103 unless told otherwise.
    MacroBuilder prepared(const QString &script, std::int32_t dateStyle = 103)
    {
        MacroBuilder builder([this, dateStyle](const QString &vaultName) {
            m_dateStyleAskedFor = vaultName;
            return dateStyle;
        });
        builder.Prepare(m_vault, m_instance, script);
        return builder;
    }

    static HRESULT codeOf(const std::function<void()> &call)
    {
        try {
            call();
        } catch (const HostError &e) {
            return e.code();
        }
        return S_OK;
    }

    QByteArray logBytes() const { return m_files.read("/vault/" + kGuid + ".log").value_or("<missing>"); }

    FakeClock m_clock;
    ScopedClock m_useClock;
    DriveMap m_drives;
    ScopedDriveMap m_useDrives;
    MemoryFileSystem m_files;
    ScopedFileSystem m_useFiles;
    std::shared_ptr<FakeVault> m_vault = std::make_shared<FakeVault>("Design", "V:\\");
    std::shared_ptr<FakeTaskInstance> m_instance = std::make_shared<FakeTaskInstance>();
    QString m_dateStyleAskedFor;
};

TEST_F(MacroBuilderTest, OptionPlaceholdersAreFilledOncePerRun)
{
    m_instance->set("PdfInColor", Variant::fromBool(true));
    m_instance->set("StlQuality", Variant::fromI4(3));
    m_instance->set("Scale", Variant::fromR8(0.5));
    m_instance->set("Header", Variant::fromBStr("a\r\nb"));
    m_instance->set("#12", Variant::fromBStr("twelve"));
    m_instance->set("#0", Variant::fromBStr("zero"));
    m_instance->set("Folder", Variant::fromBStr("[Sub]\\x"));
    m_instance->set("Sub", Variant::fromBStr("out"));
    const MacroBuilder b = prepared("c = [PdfInColor]\r\n"
                                    "q = [StlQuality]: s = [Scale]\r\n"
                                    "h = \"[Header]\"\r\n"
                                    "n = \"{#12}{##12}{# 12}{#x}\"\r\n"
                                    "f = \"{Folder}\" : m = \"[Missing]\"\r\n"
                                    "If a <> b Then x = \"<Filepath>\"\r\n");
    EXPECT_EQ(b.macroText(), "c = True\r\n"
                             "q = 3: s = 0.500000\r\n"
                             "h = \"a\"+vbLf+\"b\"\r\n"
                             "n = \"twelvetwelvetwelvezero\"\r\n"
                             "f = \"out\\x\" : m = \"\"\r\n"
                             "If a <> b Then x = \"<Filepath>\"\r\n");
}

TEST_F(MacroBuilderTest, DateStyleComesFromTheVaultsMachineSettings)
{
    MemoryRegistryStore registry;
    ScopedRegistryStore useRegistry(registry);
    ASSERT_TRUE(SettingsLight(registry).setVaultDateStyle("Design", 111));
    MacroBuilder b;
    b.Prepare(m_vault, m_instance, "<Today>");
    EXPECT_EQ(b.today(), "2012_03_05");
    // Another vault without a setting gets style 0.
    MacroBuilder other;
    other.Prepare(std::make_shared<FakeVault>("Other", "V:\\"), m_instance, "");
    EXPECT_EQ(other.today(), "Mar 05 2012");
}

TEST_F(MacroBuilderTest, FilePlaceholdersEncodedOrPlain)
{
    // The vault root's trailing backslash is not part of <VaultPath>.
    m_vault = std::make_shared<FakeVault>("Design", "V:\\Design\\");
    m_instance->set("OutputPath", Variant::fromBStr("<Path>\\<Filename>_<Revision>"));
    auto file = m_vault->addFile(41, QStringLiteral("V:\\Design\\\u0416\\a.mcdprt"), 7);
    file->setVersion(3, QStringLiteral("B\u0416"), "Approved");
    MacroBuilder b = prepared("f=\"<Filepath>\" p=\"<Path>\" v=\"<VaultPath>\" g=<TaskInstanceGuid> "
                              "c=\"<SelCfgOrSheet>\" r=\"<Revision>\" n=<Version> w=\"<WorkflowState>\" "
                              "t=<Today> o=\"[OutputPath]\" keep=<Filename><Extension><Configuration>");
    b.SetFile(QStringLiteral("V:\\Design\\\u0416\\a.mcdprt"), QStringLiteral("Cfg\u0416"), 41, 7, 3);
    const QString prepared = b.macroText();
    EXPECT_EQ(b.BuildFileMacro(),
              "f=\"V:\\Design\\\" & ChrW(1046) & \"\\a.mcdprt\" p=\"V:\\Design\\\" & ChrW(1046) & \"\" "
              "v=\"V:\\Design\" g=" + kGuid + " c=\"Cfg\" & ChrW(1046) & \"\" r=\"B\" & ChrW(1046) & \"\" n=3 "
              "w=\"Approved\" t=05_03_2012 o=\"V:\\Design\\\" & ChrW(1046) & \"\\<Filename>_B\" & ChrW(1046) & \"\" "
              "keep=<Filename><Extension><Configuration>");
    // The prepared text is the same for the next file.
    EXPECT_EQ(b.macroText(), prepared);
}

TEST_F(MacroBuilderTest, PlaceholdersAreReplacedOneAfterTheOther)
{
    m_instance->set("T", Variant::fromBStr("<To<SelCfgOrSheet>day>|<SelCfgOrSheet>|x<SelCfgOrSheet>"));
    MacroBuilder b = prepared("[T]");
    // An empty value joins "<To" and "day>" into <Today>, which comes later.
    b.SetFile("V:\\a.mcdprt", "", 1, 1, 1);
    EXPECT_EQ(b.BuildFileMacro(), "05_03_2012||x");
    // A value that is a later placeholder is replaced by it; an earlier one stays.
    b.SetFile("V:\\a.mcdprt", "<Today>", 1, 1, 1);
    EXPECT_EQ(b.BuildFileMacro(), "<To05_03_2012day>|05_03_2012|x05_03_2012");
    b.SetFile("V:\\a.mcdprt", "<Path>", 1, 1, 1);
    EXPECT_EQ(b.BuildFileMacro(), "<To<Path>day>|<Path>|x<Path>");
}

// Replacing the file placeholders one after the other over the whole text.
QString replaceInOrder(QString text, const QStringList &values)
{
    const QStringList names = {"<Filepath>", "<Path>", "<VaultPath>", "<TaskInstanceGuid>", "<SelCfgOrSheet>",
                               "<Revision>", "<Version>", "<WorkflowState>", "<Today>"};
    for (qsizetype i = 0; i < names.size(); ++i)
        text.replace(names[i], values[i]);
    return text;
}

TEST_F(MacroBuilderTest, BuildingMatchesReplacingInOrder)
{
    m_instance->set("OutputPath", Variant::fromBStr("<Revision>"));
    m_vault->addFile(1, "V:\\D\\a.mcdprt", 2)->setVersion(3, "", "State");
    QRandomGenerator rng(43);
    const QStringList pieces = {"<Filepath>", "<Path>", "<VaultPath>", "<TaskInstanceGuid>", "<SelCfgOrSheet>",
                                "<Revision>", "<Version>", "<WorkflowState>", "<Today>", "<", ">", "<>", "To",
                                "day", "a", "\"\"", " ", "<Filename>", "Pa", "th>"};
    const QStringList configurations = {"", "Default", "<Today>", "Ro", "th", "<"};
    for (int round = 0; round < 400; ++round) {
        QString script;
        for (int i = rng.bounded(1, 12); i > 0; --i)
            script += pieces[rng.bounded(static_cast<int>(pieces.size()))];
        const QString cfg = configurations[rng.bounded(static_cast<int>(configurations.size()))];
        MacroBuilder b = prepared(script);
        b.SetFile("V:\\D\\a.mcdprt", cfg, 1, 2, 3);
        const QStringList values = {"V:\\D\\a.mcdprt", "V:\\D", "V:", kGuid, cfg, "", "3", "State", "05_03_2012"};
        ASSERT_EQ(b.BuildFileMacro(), replaceInOrder(script, values))
            << "script: " << script.toStdString() << " cfg: " << cfg.toStdString();
    }
}

TEST_F(MacroBuilderTest, TheConversionTemplateLeavesOnlyTheMacrosOwnPlaceholders)
{
    const QString script = loadScriptTemplate(ConversionTemplate, [](const QString &) {});
    ASSERT_FALSE(script.isEmpty());
    m_instance->set("OutputPath", Variant::fromBStr("<VaultPath>\\Out\\<Filename>-<Configuration>"));
    MacroBuilder b = prepared(script);
    EXPECT_FALSE(b.macroText().contains(QRegularExpression("\\[[A-Za-z_0-9]+\\]")));
    b.SetFile("V:\\Parts\\a.mcdprt", "", 1, 1, 1);
    const QString macro = b.BuildFileMacro();
    EXPECT_TRUE(macro.contains("\"V:\\Parts\\a.mcdprt\""));
    EXPECT_TRUE(macro.contains("\"V:\\Out\\<Filename>-<Configuration>\""));
    EXPECT_TRUE(macro.contains(kGuid + ".log"));
    for (const char *placeholder : {"<Filepath>", "<VaultPath>", "<TaskInstanceGuid>"})
        EXPECT_FALSE(macro.contains(placeholder)) << placeholder;
}

TEST_F(MacroBuilderTest, VersionInfoOnlyWhenAnOutputPathUsesIt)
{
    auto file = m_vault->addFile(41, "V:\\Parts\\a.mcdprt", 7);
    file->setVersion(3, "C", "Released");

    // A user script may use <Revision>, but without it in an output path the
    // vault is not asked and the revision stays empty.
    MacroBuilder plain = prepared("r=\"<Revision>\" w=\"<WorkflowState>\"");
    plain.SetFile("V:\\Parts\\a.mcdprt", "", 41, 7, 3);
    EXPECT_EQ(plain.BuildFileMacro(), "r=\"\" w=\"\"");
    EXPECT_TRUE(file->versionQueries().empty());

    m_instance->set("OutputPath2", Variant::fromBStr("V:\\Out\\<WorkflowState>\\<Filename>"));
    MacroBuilder versioned = prepared("r=\"<Revision>\" w=\"<WorkflowState>\"");
    EXPECT_TRUE(versioned.needsVersionInfo());
    versioned.SetFile("v:\\parts\\A.MCDPRT", "", 41, 7, 3);
    EXPECT_EQ(versioned.BuildFileMacro(), "r=\"C\" w=\"Released\"");
    ASSERT_EQ(file->versionQueries().size(), 1u);
    EXPECT_EQ(file->versionQueries()[0].first, 3);
    EXPECT_EQ(file->versionQueries()[0].second, 7);
}

TEST_F(MacroBuilderTest, HostFailuresAreRaised)
{
    m_instance->failRead("Secret", E_DOX_DATABASE_ACCESS);
    EXPECT_EQ(codeOf([&] { prepared("[Secret]"); }), E_DOX_DATABASE_ACCESS);

    m_instance->failRead("#5", E_ACCESSDENIED);
    EXPECT_EQ(codeOf([&] { prepared("{#5}"); }), E_ACCESSDENIED);

    m_vault->fail("GetName", E_DOX_CANT_OPEN_DATABASE);
    EXPECT_EQ(codeOf([&] { prepared("x"); }), E_DOX_CANT_OPEN_DATABASE);
}

TEST_F(MacroBuilderTest, VersionLookupFailuresAreRaised)
{
    m_instance->set("OutputPath", Variant::fromBStr("<Revision>"));
    MacroBuilder b = prepared("x");
    EXPECT_EQ(codeOf([&] { b.SetFile("V:\\unknown.mcdprt", "", 1, 1, 1); }), E_DOX_FILE_NOT_FOUND);
    auto file = m_vault->addFile(2, "V:\\a.mcdprt");
    file->failVersionInfo(E_DOX_INVALID_ID);
    EXPECT_EQ(codeOf([&] { b.SetFile("V:\\a.mcdprt", "", 2, 1, 9); }), E_DOX_INVALID_ID);
}

TEST_F(MacroBuilderTest, ErrorLogPath)
{
    m_vault = std::make_shared<FakeVault>("Design", "V:\\Design");
    EXPECT_EQ(prepared("").GetErrorLogFile(), "V:\\Design\\" + kGuid + ".log");
    m_instance->set("ErrorLogPath", Variant::fromBStr("Logs"));
    EXPECT_EQ(prepared("").GetErrorLogFile(), "V:\\Design\\Logs\\" + kGuid + ".log");
    m_instance->set("ErrorLogPath", Variant::fromBStr("\\Logs\\Run\\"));
    EXPECT_EQ(prepared("").GetErrorLogFile(), "V:\\Design\\Logs\\Run\\" + kGuid + ".log");
    m_instance->set("ErrorLogPath", Variant::fromBStr("D:\\Logs"));
    EXPECT_EQ(prepared("").GetErrorLogFile(), "D:\\Logs\\" + kGuid + ".log");
}

TEST_F(MacroBuilderTest, AppendErrorLogWritesTextModeAnsi)
{
    const MacroBuilder b = prepared("");
    b.AppendErrorLog(QStringLiteral("Caf\u00e9 \u20ac\u0416\n"));
    b.AppendErrorLog("second");
    EXPECT_EQ(logBytes(), QByteArray("Caf\xe9 \x80?\r\nsecond"));
}

TEST_F(MacroBuilderTest, AppendErrorLogCreatesMissingFolders)
{
    m_instance->set("ErrorLogPath", Variant::fromBStr("Logs\\Deep"));
    const MacroBuilder b = prepared("");
    b.AppendErrorLog("one");
    EXPECT_EQ(m_files.read("/vault/Logs/Deep/" + kGuid + ".log").value_or("<missing>"), "one");
    // Folders found in another letter case are used as they are.
    m_instance->set("ErrorLogPath", Variant::fromBStr("LOGS\\deep"));
    prepared("").AppendErrorLog("two");
    EXPECT_EQ(m_files.read("/vault/Logs/Deep/" + kGuid + ".log").value_or("<missing>"), "onetwo");
}

TEST_F(MacroBuilderTest, AppendErrorLogGivesUpSilently)
{
    // The file's folder exists but the file is read-only: no new folder, so
    // no second try and nothing written.
    m_files.addFile("/vault/" + kGuid + ".log", "old");
    m_files.setWritable("/vault/" + kGuid + ".log", false);
    const MacroBuilder b = prepared("");
    b.AppendErrorLog("new");
    EXPECT_EQ(logBytes(), "old");

    // A drive that is not mapped.
    m_instance->set("ErrorLogPath", Variant::fromBStr("Q:\\Logs"));
    EXPECT_NO_THROW(prepared("").AppendErrorLog("lost"));
    EXPECT_FALSE(m_files.exists("/vault/Logs"));
}

TEST_F(MacroBuilderTest, ReportHostErrorAddsNameAndDescription)
{
    m_vault->setErrorInfo(E_DOX_FILE_NOT_FOUND, "E_DOX_FILE_NOT_FOUND", "The file could not be found.");
    const MacroBuilder b = prepared("");
    b.ReportHostError(E_DOX_FILE_NOT_FOUND, "Adding V:\\Out\\a.pdf");
    EXPECT_EQ(logBytes(), "An error occured: Adding V:\\Out\\a.pdf\r\n\tE_DOX_FILE_NOT_FOUND\r\n\tThe file could "
                          "not be found.");
    // A code the vault cannot describe writes nothing.
    b.ReportHostError(E_DOX_IO_ERROR, "ignored");
    m_vault->fail("GetErrorInfo", E_FAIL);
    b.ReportHostError(E_DOX_FILE_NOT_FOUND, "ignored too");
    EXPECT_EQ(logBytes().count("An error occured"), 1);
}

} // namespace

#include "common/errortexts.h"
#include "common/languagestringservice.h"
#include "common/testing/testlanguage.h"
#include "common/translator.h"
#include "platform/drivemap.h"
#include "platform/memoryfilesystem.h"
#include "platform/qtestprint.h"

#include <gtest/gtest.h>

namespace {

class TranslatorTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        addTestLanguage(m_fs, "/lang/DE");
        m_fs.addFile("/lang/DE/Broken.qm", "not a translation file");
        ASSERT_TRUE(m_drives.mount('C', "/lang"));
    }

    MemoryFileSystem m_fs;
    ScopedFileSystem m_fsGuard{m_fs};
    DriveMap m_drives;
    ScopedDriveMap m_drivesGuard{m_drives};
};

} // namespace

TEST_F(TranslatorTest, TextsByNumberSectionAndModuleWithEnglishFallBack)
{
    const Translator translator("/lang/DE");
    EXPECT_EQ(translator.text(1023, "Convert Files"), "Dateien konvertieren");
    EXPECT_EQ(translator.text(1023, "Convert Files", "TS", "mctaskaddin"), "Dateien konvertieren");
    EXPECT_EQ(translator.text(1024, "Empty stays English"), "Empty stays English");
    EXPECT_EQ(translator.text(9999, "Missing"), "Missing");
    EXPECT_EQ(translator.text(1023, "Other section", "Other"), "Other section");
    EXPECT_EQ(translator.text(1023, "Other module", "TS", "NoSuchModule"), "Other module");
    EXPECT_EQ(translator.text(1, "Damaged", "TS", "Broken"), "Damaged");
    EXPECT_TRUE(translator.hasModule("DoxInterface"));
    EXPECT_FALSE(translator.hasModule("Broken"));
    EXPECT_EQ(translator.find("DoxInterface", "ErrorCodes", 21), "Die Datei wurde nicht gefunden.");
}

TEST_F(TranslatorTest, DialogTextsByDialogNameAndControlId)
{
    const Translator translator("C:\\DE"); // a Windows path through the drive map
    EXPECT_EQ(translator.languageFolder(), "/lang/DE");
    EXPECT_EQ(translator.dialogText("MenuCommandDlg", "IDOK", "OK"), "&OK");
    EXPECT_EQ(translator.dialogText("MenuCommandDlg", "IDC_CAPTION", "Menu Command"), "Menübefehl");
    // Dialog texts and numbered texts of one key stay apart.
    EXPECT_EQ(translator.dialogText("TS", "IDOK", "OK"), "OK");
    EXPECT_EQ(translator.text(123, "Example", "RefDlg"), "Referenzierte Version");
    EXPECT_EQ(translator.dialogText("MenuCommandDlg", "IDCANCEL", "Cancel"), "Cancel");
    EXPECT_EQ(translator.dialogText("PrintUIDlg", "IDOK", "OK"), "OK");
}

TEST_F(TranslatorTest, WithoutALanguageFolderEverythingIsEnglish)
{
    const Translator none("");
    EXPECT_EQ(none.text(1023, "Convert Files"), "Convert Files");
    const Translator unmapped("Q:\\Lang\\DE");
    EXPECT_EQ(unmapped.languageFolder(), "");
    EXPECT_EQ(unmapped.text(1023, "Convert Files"), "Convert Files");
    const Translator missing("/lang/FR");
    EXPECT_EQ(missing.text(1023, "Convert Files"), "Convert Files");
}

TEST_F(TranslatorTest, ProcessWideTranslatorServesTrTsAndTheHostStringService)
{
    Translator translator("/lang/DE");
    ScopedTranslator guard(translator);
    EXPECT_EQ(tr_ts(1023, "Convert Files"), "Dateien konvertieren");
    EXPECT_EQ(tr_ts(4, "Four"), "Four");

    LanguageStringService service;
    EXPECT_EQ(service.GetText(21, "ErrorCodes"), ""); // nothing open yet
    EXPECT_EQ(service.OpenModule("Mecadra Vaultora", "NoSuchModule"), S_FALSE);
    ASSERT_EQ(service.OpenModule("Mecadra Vaultora", "DoxInterface"), S_OK);
    EXPECT_EQ(service.GetText(21, "ErrorCodes"), "Die Datei wurde nicht gefunden.");
    EXPECT_EQ(service.GetText(22, "ErrorCodes"), "");

    // The default host string service reads the same folder.
    const HostStringServiceFactory previous = setHostStringServiceFactory(
        [] { return std::shared_ptr<IHostStringService>(std::make_shared<LanguageStringService>()); });
    EXPECT_EQ(errorText(E_DOX_FILE_NOT_FOUND), "Die Datei wurde nicht gefunden.");
    EXPECT_EQ(errorText(E_DOX_FOLDER_NOT_FOUND), "The folder could not be found.");
    EXPECT_EQ(databaseErrorText(static_cast<HRESULT>(0x80040220)), "The server was not found.");
    setHostStringServiceFactory(previous);
}

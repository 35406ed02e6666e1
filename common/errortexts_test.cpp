#include "common/errornames.h"
#include "common/errortexts.h"
#include "platform/qtestprint.h"

#include <QSet>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

using ::testing::_;
using ::testing::Return;
using ::testing::StrictMock;

namespace {

constexpr HRESULT code(std::uint32_t value)
{
    return static_cast<HRESULT>(value);
}

class MockStringService : public IHostStringService
{
public:
    MOCK_METHOD(HRESULT, OpenModule, (const QString &product, const QString &module), (override));
    MOCK_METHOD(QString, GetText, (std::int32_t number, const QString &section), (override));
};

// Installs a factory for the test and restores the previous one after.
class ErrorTextsTest : public ::testing::Test
{
protected:
    void SetUp() override { m_previous = setHostStringServiceFactory({}); }
    void TearDown() override { setHostStringServiceFactory(m_previous); }

    std::shared_ptr<StrictMock<MockStringService>> installService()
    {
        auto service = std::make_shared<StrictMock<MockStringService>>();
        setHostStringServiceFactory([service] { return service; });
        return service;
    }

    HostStringServiceFactory m_previous;
};

} // namespace

TEST(ErrorNameTableTest, CodesAreUniqueAndOnlyOneNameIsDuplicated)
{
    const auto table = errorNameTable();
    QSet<QString> names;
    QSet<HRESULT> codes;
    QStringList duplicated;
    for (const ErrorNameRow &row : table) {
        const QString name = QString::fromUtf16(row.name);
        EXPECT_LE(name.size(), 49) << name.toStdString();
        EXPECT_FALSE(codes.contains(row.code)) << name.toStdString();
        codes.insert(row.code);
        if (names.contains(name))
            duplicated.append(name);
        names.insert(name);
    }
    EXPECT_EQ(duplicated, QStringList{"E_DOX_CANT_OPEN_DATABASE"});
}

TEST_F(ErrorTextsTest, NamesComeFromTheTableThenTheArchiveRangeThenHex)
{
    EXPECT_EQ(errorName(code(0x80040206)), "E_DOX_CANT_OPEN_DATABASE");
    EXPECT_EQ(errorName(code(0x80040221)), "E_DOX_CANT_OPEN_DATABASE");
    EXPECT_EQ(errorName(code(0x80040440)), "E_FVC_RCE_ERR_14");
    EXPECT_EQ(errorName(code(0x80040432)), "E_FVC_RCE_ERR_0");
    EXPECT_EQ(errorName(code(0x800404C4)), "E_FVC_RCE_ERR_146");
    // Just past the range the table has a name again.
    EXPECT_EQ(errorName(code(0x800404C5)), "E_FVC_NOT_DOMAIN_MEMBER");
    EXPECT_EQ(errorName(code(0x80040431)), "E_FVC_CANT_CREATE_ROOT_FOLDER");
    EXPECT_EQ(errorName(code(0x80072EFD)), "0x80072EFD");
    EXPECT_EQ(errorName(-1), "0xFFFFFFFF");
}

TEST_F(ErrorTextsTest, MessagesWithoutTheHostService)
{
    EXPECT_EQ(errorText(E_DOX_FILE_NOT_FOUND), "The file could not be found.");
    EXPECT_EQ(errorText(code(0x4023E)), "Retrieved information successfully from the 64-bit add-in");
    // Host codes without a known English message show their name.
    EXPECT_EQ(errorText(code(0x80040229)), "E_DOX_INVALID_FILE");
    EXPECT_EQ(errorText(code(0x800404D5)), "E_FVC_CS_FILE_NOT_FOUND");
    // System codes.
    EXPECT_EQ(errorText(E_ACCESSDENIED), "Access is denied.");
}

TEST_F(ErrorTextsTest, NetworkArchiveDispatchAndUnknownRanges)
{
    EXPECT_EQ(errorText(code(0x80072EE7)), "The server name could not be resolved.");
    // Either end of the network range without its own text, and just past it.
    EXPECT_EQ(errorText(code(0x80072EE0)), "A WinINet error occured (code=12000).");
    EXPECT_EQ(errorText(code(0x80072F8F)), "A WinINet error occured (code=12175).");
    EXPECT_EQ(errorText(code(0x80072F90)), "Unknown error 0x80072F90");

    EXPECT_EQ(errorText(code(0x80040432)), "Archive server revision control error 0 (0x080040432)");

    // Host-range codes that no table knows.
    EXPECT_EQ(errorText(code(0x8004021C)), "IDispatch error #28");
    EXPECT_EQ(errorText(code(0x8004FFFF)), "IDispatch error #65023");
    EXPECT_EQ(errorText(code(0x80050000)), "Unknown error 0x80050000");
    EXPECT_EQ(errorText(code(0x12345678)), "Unknown error 0x12345678");
    // Below the host range the system table answers.
    EXPECT_EQ(errorText(code(0x80040154)), "Class not registered");
}

TEST_F(ErrorTextsTest, TheHostServiceTranslatesByTextNumber)
{
    auto service = installService();
    EXPECT_CALL(*service, OpenModule(QString("Mecadra Vaultora"), QString("DoxInterface"))).WillRepeatedly(Return(S_OK));
    EXPECT_CALL(*service, GetText(21, QString("ErrorCodes"))).WillOnce(Return(QString("Datei nicht gefunden.")));
    EXPECT_CALL(*service, GetText(2, QString("ErrorCodes"))).WillOnce(Return(QString()));
    // Numbers run with the codes in the first block.
    EXPECT_CALL(*service, GetText(8, QString("ErrorCodes"))).WillOnce(Return(QString("DB zu")));
    EXPECT_CALL(*service, GetText(267, QString("ErrorCodes"))).WillOnce(Return(QString("32 Bit")));

    EXPECT_EQ(errorText(E_DOX_FILE_NOT_FOUND), "Datei nicht gefunden.");
    // An empty text keeps the English one.
    EXPECT_EQ(errorText(code(0x80040200)), "Login failed because of an invalid user name or password.");
    EXPECT_EQ(errorText(E_DOX_CANT_OPEN_DATABASE), "DB zu");
    EXPECT_EQ(errorText(code(0x4023D)), "32 Bit");
    // Codes the host has no number for never reach the service (StrictMock).
    EXPECT_EQ(errorText(code(0x80040229)), "E_DOX_INVALID_FILE");
    EXPECT_EQ(errorText(code(0x80072EFD)), "The attempt to connect to the server failed.");
}

TEST_F(ErrorTextsTest, ServiceThatCannotOpenTheModuleGivesTheDefault)
{
    auto service = installService();
    // S_FALSE is a success code but still not an opened module.
    EXPECT_CALL(*service, OpenModule(_, _)).WillOnce(Return(S_FALSE)).WillOnce(Return(E_FAIL));
    EXPECT_EQ(errorText(E_DOX_FOLDER_NOT_FOUND), "The folder could not be found.");
    EXPECT_EQ(hostText(5, "Fallback", "Module", "Section"), "Fallback");

    setHostStringServiceFactory([] { return std::shared_ptr<IHostStringService>(); });
    EXPECT_EQ(hostText(5, "Fallback", "Module", "Section"), "Fallback");
}

TEST_F(ErrorTextsTest, DatabaseTexts)
{
    // Both codes named E_DOX_CANT_OPEN_DATABASE have the text.
    EXPECT_EQ(databaseErrorText(code(0x80040206)), "The database could not be opened.");
    EXPECT_EQ(databaseErrorText(code(0x80040221)), "The database could not be opened.");
    EXPECT_EQ(databaseErrorText(code(0x80040220)), "The server was not found.");
    EXPECT_EQ(databaseErrorText(code(0x80040205)), "Could not access the item in the database.");

    auto service = installService();
    EXPECT_CALL(*service, OpenModule(QString("Mecadra Vaultora"), QString("Database"))).WillOnce(Return(S_OK));
    EXPECT_CALL(*service, GetText(207, QString("Error Messages"))).WillOnce(Return(QString("Kein Server.")));
    EXPECT_EQ(databaseErrorText(code(0x80040220)), "Kein Server.");
}

TEST_F(ErrorTextsTest, ErrorInformationFillsWhatIsAskedFor)
{
    QString text = "unchanged";
    QString name;
    errorInformation(E_DOX_FILE_NOT_FOUND, nullptr, &name);
    EXPECT_EQ(name, "E_DOX_FILE_NOT_FOUND");
    errorInformation(code(0x80040440), &text, nullptr);
    EXPECT_EQ(text, "Archive server revision control error 14 (0x080040440)");
    errorInformation(code(0x80040440), &text, &name);
    EXPECT_EQ(name, "E_FVC_RCE_ERR_14");
    errorInformation(S_OK, nullptr, nullptr); // nothing to fill, nothing to crash
}

#include "vault/embeddedvault.h"

#include "vault/batchservices.h"
#include "vault/vaulttesting.h"

namespace {

class EmbeddedVaultTest : public VaultBackendTest
{
protected:
    void SetUp() override
    {
        VaultBackendTest::SetUp();
        if (IsSkipped() || HasFatalFailure())
            return;
        vault = std::make_shared<EmbeddedVault>(temp.store);
        VaultStore::AddOptions options;
        options.revision = QStringLiteral("A");
        options.state = QStringLiteral("Approved");
        partId = temp.store->addFile(temp.outsideFile("p", "part"), "Parts", "Bolt.mcdprt", options).id;
    }

    TempVault temp{QStringLiteral("alice"), server()};
    std::shared_ptr<EmbeddedVault> vault;
    int partId = 0;
};
INSTANTIATE_TEST_SUITE_P(Backends, EmbeddedVaultTest, VaultBackends);

TEST_P(EmbeddedVaultTest, FindsFilesAndFoldersByWindowsOrNativePath)
{
    QString root;
    EXPECT_EQ(vault->GetRootFolderPath(root), S_OK);
    EXPECT_EQ(root, QStringLiteral("V:"));
    QString name;
    EXPECT_EQ(vault->GetName(name), S_OK);
    EXPECT_EQ(name, QStringLiteral("Demo"));

    std::shared_ptr<IDoxFile> file;
    std::shared_ptr<IDoxFolder> folder;
    ASSERT_EQ(vault->GetFileFromPath(QStringLiteral("v:\\PARTS\\bolt.MCDPRT"), file, folder), S_OK);
    EXPECT_EQ(file->GetID(), partId);
    EXPECT_EQ(file->GetName(), QStringLiteral("Bolt.mcdprt"));
    EXPECT_EQ(folder->GetLocalPath(), QStringLiteral("V:\\Parts"));
    QString path;
    EXPECT_EQ(file->GetLocalPath(folder->GetID(), path), S_OK);
    EXPECT_EQ(path, QStringLiteral("V:\\Parts\\Bolt.mcdprt"));

    std::shared_ptr<IDoxFile> byNative;
    EXPECT_EQ(vault->GetFileFromPath(temp.root() + "/Parts/Bolt.mcdprt", byNative, folder), S_OK);
    EXPECT_EQ(vault->GetFileFromPath(QStringLiteral("V:\\Parts\\Nut.mcdprt"), file, folder), S_FALSE);
    EXPECT_EQ(vault->GetFileFromPath(QStringLiteral("C:\\Parts\\Bolt.mcdprt"), file, folder), S_FALSE);

    std::shared_ptr<IDoxFolder> rootFolder;
    EXPECT_EQ(vault->GetFolderFromPath(QStringLiteral("V:\\"), rootFolder), S_OK);
    EXPECT_EQ(rootFolder->GetLocalPath(), QStringLiteral("V:"));
    EXPECT_EQ(vault->GetFolderFromPath(QStringLiteral("V:\\parts\\"), folder), S_OK);
    EXPECT_EQ(vault->GetFolderFromPath(QStringLiteral("V:\\Nothing"), folder), S_FALSE);
    EXPECT_EQ(vault->GetFile(9999, file), E_DOX_FILE_NOT_FOUND);
    EXPECT_EQ(vault->GetFolder(9999, folder), E_DOX_FOLDER_NOT_FOUND);
}

TEST_P(EmbeddedVaultTest, FilesAnswerVersionsLocksAndCards)
{
    std::shared_ptr<IDoxFile> file;
    ASSERT_EQ(vault->GetFile(partId, file), S_OK);
    EXPECT_FALSE(file->IsLocked());
    EXPECT_EQ(file->LockFile(0), S_OK);
    EXPECT_TRUE(file->IsLocked());
    temp.localFile("Parts/Bolt.mcdprt", "part v2");
    EXPECT_EQ(temp.store->checkIn(partId, QString()), 2);
    EXPECT_EQ(file->GetCurrentVersion(), 2); // the object reads the vault, not a snapshot

    DoxVersionInfo info;
    EXPECT_EQ(file->GetVersionInfo(1, 0, info), S_OK);
    EXPECT_EQ(info.versionNumber, 1);
    EXPECT_EQ(info.revision, QStringLiteral("A"));
    EXPECT_EQ(info.stateName, QStringLiteral("Approved"));
    EXPECT_EQ(file->GetVersionInfo(-1, 0, info), S_OK);
    EXPECT_EQ(info.versionNumber, 2);
    EXPECT_EQ(file->GetVersionInfo(7, 0, info), E_INVALIDARG);

    temp.store->defineCardVariable(QStringLiteral("Number"));
    temp.store->defineCardVariable(QStringLiteral("Title"));
    temp.store->setCardValue(partId, 1, "Number", QString(), Variant::fromI4(42));
    Variant value;
    EXPECT_EQ(file->GetCardValue(QStringLiteral("number"), QString(), 1, value), S_OK);
    EXPECT_EQ(value, Variant::fromI4(42));
    EXPECT_EQ(file->GetCardValue(QStringLiteral("Title"), QString(), 1, value), S_FALSE);
    QStringList names;
    EXPECT_EQ(file->GetCardValueNames(1, names), S_OK);
    EXPECT_EQ(names, QStringList{QStringLiteral("Number")});
    EXPECT_EQ(vault->GetCardVariableNames(names), S_OK);
    EXPECT_EQ(names, (QStringList{"Number", "Title"}));

    EXPECT_EQ(file->UndoLockFile(0), E_DOX_FILE_NOT_LOCKED_BY_YOU);
    EXPECT_EQ(file->DeleteFromVault(0), S_OK);
    EXPECT_EQ(file->GetCurrentVersion(), 0);
    std::shared_ptr<IDoxFile> gone;
    EXPECT_EQ(vault->GetFile(partId, gone), E_DOX_FILE_NOT_FOUND);
}

TEST_P(EmbeddedVaultTest, FoldersWalkTheTree)
{
    temp.store->addFile(temp.outsideFile("n", "nut"), "Parts\\Small", "Nut.mcdprt", {});
    std::shared_ptr<IDoxFolder> root;
    ASSERT_EQ(vault->GetFolder(VaultStore::RootFolderId, root), S_OK);
    std::vector<std::shared_ptr<IDoxFolder>> level1;
    ASSERT_EQ(root->GetSubFolders(level1), S_OK);
    ASSERT_EQ(level1.size(), 1u);
    std::vector<std::shared_ptr<IDoxFile>> files;
    ASSERT_EQ(level1[0]->GetFiles(files), S_OK);
    ASSERT_EQ(files.size(), 1u);
    EXPECT_EQ(files[0]->GetName(), QStringLiteral("Bolt.mcdprt"));
    std::vector<std::shared_ptr<IDoxFolder>> level2;
    ASSERT_EQ(level1[0]->GetSubFolders(level2), S_OK);
    ASSERT_EQ(level2.size(), 1u);
    EXPECT_EQ(level2[0]->GetLocalPath(), QStringLiteral("V:\\Parts\\Small"));
    std::int32_t parent = 0;
    ASSERT_EQ(level2[0]->GetFiles(files), S_OK);
    ASSERT_EQ(files.size(), 1u);
    EXPECT_EQ(files[0]->GetParentFolderId(parent), S_OK);
    EXPECT_EQ(parent, level2[0]->GetID());
}

TEST_P(EmbeddedVaultTest, ReferenceSettingsPickSelectedOrLatestVersions)
{
    temp.store->checkOut(partId, 0);
    temp.store->checkIn(partId, QString());
    temp.store->checkOut(partId, 0);
    temp.store->checkIn(partId, QString()); // now at version 3

    const std::vector<DoxReferenceQuery> queries = {
        {partId, 0, 1, QString()},
        {partId, 0, 0, QString()},
        {partId, 0, -1, QString()},
        {0, 0, 2, QStringLiteral("V:\\parts\\bolt.mcdprt")},
        {partId, 0, 9, QString()},
    };
    std::vector<std::int32_t> versions;
    ASSERT_EQ(vault->ResolveReferenceVersions(queries, 0, versions), S_OK);
    EXPECT_EQ(versions, (std::vector<std::int32_t>{1, 3, 3, 2, 3}));
    ASSERT_EQ(vault->ResolveReferenceVersions(queries, 1 | 4, versions), S_OK);
    EXPECT_EQ(versions, (std::vector<std::int32_t>{1, 3, 3, 2, 3}));
    ASSERT_EQ(vault->ResolveReferenceVersions(queries, 2, versions), S_OK);
    EXPECT_EQ(versions, (std::vector<std::int32_t>{3, 3, 3, 3, 3}));
    EXPECT_EQ(vault->ResolveReferenceVersions({{4711, 0, 1, QString()}}, 0, versions), E_DOX_FILE_NOT_FOUND);
    EXPECT_EQ(versions.size(), 5u); // untouched on failure
}

TEST_P(EmbeddedVaultTest, DescribesHostErrorCodes)
{
    QString name;
    QString description;
    EXPECT_EQ(vault->GetErrorInfo(E_DOX_NAME_ALREADY_EXISTS, name, description), S_OK);
    EXPECT_EQ(name, QStringLiteral("E_DOX_NAME_ALREADY_EXISTS"));
    EXPECT_FALSE(description.isEmpty());
    EXPECT_EQ(vault->GetErrorInfo(E_DOX_FILE_NOT_FOUND, name, description), S_OK);
    EXPECT_EQ(name, QStringLiteral("E_DOX_FILE_NOT_FOUND"));
    EXPECT_EQ(vault->GetErrorInfo(makeHresult(0x80041234u), name, description), S_FALSE);
}

TEST_P(EmbeddedVaultTest, PickersAreCancelledUnlessSomeoneAnswers)
{
    std::vector<std::shared_ptr<IDoxFile>> files;
    std::vector<std::shared_ptr<IDoxFolder>> folders;
    std::shared_ptr<IDoxFolder> folder;
    EXPECT_EQ(vault->BrowseForFiles(nullptr, "Pick", "*.*", files, folders), S_FALSE);
    EXPECT_EQ(vault->BrowseForFolder(nullptr, "Pick", folder), S_FALSE);

    QString seenTitle;
    vault->setFilePicker([&](HostWindow, const QString &title, const QString &, QStringList &paths) {
        seenTitle = title;
        paths = {QStringLiteral("V:\\Parts\\Bolt.mcdprt")};
        return S_OK;
    });
    vault->setFolderPicker([](HostWindow, const QString &, QString &path) {
        path = QStringLiteral("V:\\Parts");
        return S_OK;
    });
    ASSERT_EQ(vault->BrowseForFiles(nullptr, "Pick files", "*.*", files, folders), S_OK);
    EXPECT_EQ(seenTitle, QStringLiteral("Pick files"));
    ASSERT_EQ(files.size(), 1u);
    ASSERT_EQ(folders.size(), 1u);
    EXPECT_EQ(files[0]->GetID(), partId);
    EXPECT_EQ(folders[0]->GetLocalPath(), QStringLiteral("V:\\Parts"));
    ASSERT_EQ(vault->BrowseForFolder(nullptr, "Pick", folder), S_OK);
    EXPECT_EQ(folder->GetLocalPath(), QStringLiteral("V:\\Parts"));

    vault->setFilePicker([](HostWindow, const QString &, const QString &, QStringList &paths) {
        paths = {QStringLiteral("V:\\Parts\\Missing.mcdprt")};
        return S_OK;
    });
    EXPECT_EQ(vault->BrowseForFiles(nullptr, "Pick", "*.*", files, folders), E_DOX_FILE_NOT_FOUND);
}

TEST(EmbeddedVaultInMemory, WorksWithoutADatabaseFile)
{
    QTemporaryDir dir;
    auto store = VaultStore::createInMemory(dir.path(), QStringLiteral("Mem"));
    TempVault::writeFile(dir.path() + "/a.txt", "mem");
    const int id = store->addFile(dir.path() + "/a.txt", QString(), "a.txt", {}).id;
    EmbeddedVault vault(store);
    std::shared_ptr<IDoxFile> file;
    std::shared_ptr<IDoxFolder> folder;
    EXPECT_EQ(vault.GetFileFromPath(QStringLiteral("V:\\A.TXT"), file, folder), S_OK);
    EXPECT_EQ(file->GetID(), id);
    EXPECT_FALSE(QFileInfo::exists(dir.path() + "/.mctask/vault.db"));
}

} // namespace

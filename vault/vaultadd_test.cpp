#include "vault/vaultadd.h"

#include "vault/vaulttesting.h"

namespace {

QString cardText(VaultStore &store, int id, int version, const QString &name)
{
    const std::optional<Variant> value = store.cardValue(id, version, name, QString());
    return value ? value->toText() : QStringLiteral("<none>");
}

TEST(VaultAddTest, LabelsAndCardsGoToNewVersionsOnlyAndABadNameChangesNothing)
{
    TempVault vault;
    VaultStore &store = *vault.store;
    const QString a = vault.outsideFile(QStringLiteral("a.mcdprt"), "one");
    const QString b = vault.outsideFile(QStringLiteral("b.mcdprt"), "bee");

    VaultAdd first(store);
    first.addSource(a, QStringLiteral("Parts"));
    first.addSource(b, QStringLiteral("Parts"));
    const auto added = first.commit({QStringLiteral("B"), QStringLiteral("Released"), {{"Title", "Shaft"}}});
    ASSERT_EQ(added.size(), 2u);
    EXPECT_EQ(added[0].action, VaultAdd::Action::Added);
    EXPECT_EQ(added[0].path, QStringLiteral("V:\\Parts\\a.mcdprt"));
    EXPECT_EQ(added[0].version, 1);
    EXPECT_EQ(store.version(added[0].id, 1)->revision, QStringLiteral("B"));
    EXPECT_EQ(store.version(added[0].id, 1)->state, QStringLiteral("Released"));
    EXPECT_EQ(cardText(store, added[1].id, 1, QStringLiteral("Title")), QStringLiteral("Shaft"));

    // A changed file gets a new version with the new revision and keeps its
    // state; the unchanged one is left as it was.
    TempVault::writeFile(a, "two");
    VaultAdd second(store);
    second.addSource(a, QStringLiteral("Parts"));
    second.addSource(b, QStringLiteral("Parts"));
    const auto again = second.commit({QStringLiteral("C"), std::nullopt, {{"Title", "Shaft 2"}}});
    ASSERT_EQ(again.size(), 2u);
    EXPECT_EQ(again[0].action, VaultAdd::Action::NewVersion);
    EXPECT_EQ(again[0].version, 2);
    EXPECT_EQ(store.version(again[0].id, 2)->revision, QStringLiteral("C"));
    EXPECT_EQ(store.version(again[0].id, 2)->state, QStringLiteral("Released"));
    EXPECT_EQ(cardText(store, again[0].id, 2, QStringLiteral("Title")), QStringLiteral("Shaft 2"));
    EXPECT_EQ(again[1].action, VaultAdd::Action::Unchanged);
    EXPECT_EQ(again[1].version, 1);
    EXPECT_EQ(store.version(again[1].id, 1)->revision, QStringLiteral("B"));
    EXPECT_EQ(cardText(store, again[1].id, 1, QStringLiteral("Title")), QStringLiteral("Shaft"));

    // One name the vault cannot hold: nothing of the batch is added.
    VaultAdd bad(store);
    bad.addSource(vault.outsideFile(QStringLiteral("c.mcdprt"), "c"), QStringLiteral("Parts"));
    bad.addSource(vault.outsideFile(QStringLiteral("d*.mcdprt"), "d"), QStringLiteral("Parts"));
    try {
        bad.commit({});
        ADD_FAILURE() << "a bad name was taken";
    } catch (const VaultAddError &e) {
        EXPECT_EQ(e.message(), QStringLiteral("'d*.mcdprt' is not a valid vault name"));
    }
    EXPECT_FALSE(store.fileByPath(QStringLiteral("Parts\\c.mcdprt")));
}

TEST(VaultAddTest, SourcesKeepTheirPlaceInTheVaultOrTheirFolderStructure)
{
    TempVault vault;
    vault.localFile(QStringLiteral("Docs/Sub/x.txt"), "x");
    vault.localFile(QStringLiteral("Docs/y.txt"), "y");

    VaultAdd inPlace(*vault.store);
    inPlace.addSource(vault.root() + QStringLiteral("/Docs"), std::nullopt);
    inPlace.addSource(QStringLiteral("V:\\Docs\\Sub\\x.txt"), std::nullopt);
    ASSERT_EQ(inPlace.items().size(), 3u);
    EXPECT_EQ(inPlace.items()[0].folder, QStringLiteral("Docs\\Sub"));
    EXPECT_EQ(inPlace.items()[1].folder, QStringLiteral("Docs"));
    EXPECT_EQ(inPlace.items()[2].folder, QStringLiteral("Docs\\Sub"));

    VaultAdd moved(*vault.store);
    moved.addSource(vault.root() + QStringLiteral("/Docs"), QStringLiteral("Inbox"));
    ASSERT_EQ(moved.items().size(), 2u);
    EXPECT_EQ(moved.items()[0].folder, QStringLiteral("Inbox\\Docs\\Sub"));
    EXPECT_EQ(moved.items()[1].folder, QStringLiteral("Inbox\\Docs"));

    // What the vault never takes, each with its reason.
    const std::vector<std::pair<QString, QString>> refused = {
        {vault.root() + QStringLiteral("/missing.txt"), QStringLiteral("no such file or folder: ")},
        {vault.root() + QStringLiteral("/.mctask"), QStringLiteral(" is the vault's own data, not a document")},
        {QStringLiteral("/dev/null"), QStringLiteral(" is not a regular file")},
    };
    for (const auto &[source, reason] : refused) {
        VaultAdd add(*vault.store);
        try {
            add.addSource(source, std::nullopt);
            ADD_FAILURE() << source.toStdString();
        } catch (const VaultAddError &e) {
            EXPECT_TRUE(e.message().contains(reason) && e.message().contains(source)) << e.message().toStdString();
        }
        EXPECT_TRUE(add.items().empty());
    }
}

} // namespace

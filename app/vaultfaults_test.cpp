#include "vault/vaultstore.h"

#include <QCryptographicHash>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <map>

#include "tests/programrun.h"

namespace {

// Every file of a folder tree with the hash of its bytes. The shared-memory
// index of the database and an empty write-ahead log are left out: a reader
// may make them without changing the vault.
std::map<QString, QByteArray> snapshot(const QString &root)
{
    std::map<QString, QByteArray> files;
    QDirIterator it(root, QDir::Files | QDir::Hidden | QDir::System, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString path = it.next();
        if (path.endsWith(QLatin1String("-shm")) || (path.endsWith(QLatin1String("-wal")) && QFileInfo(path).size() == 0))
            continue;
        QFile file(path);
        files[path] = file.open(QIODevice::ReadOnly)
                          ? QCryptographicHash::hash(file.readAll(), QCryptographicHash::Sha256)
                          : QByteArray("unreadable");
    }
    return files;
}

void setWritable(const QString &root, bool writable)
{
    const auto mode = [&](QFileDevice::Permissions p) {
        const QFileDevice::Permissions write = QFileDevice::WriteOwner | QFileDevice::WriteUser
                                               | QFileDevice::WriteGroup | QFileDevice::WriteOther;
        return writable ? p | QFileDevice::WriteOwner | QFileDevice::WriteUser : p & ~write;
    };
    QDirIterator it(root, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                    QDirIterator::Subdirectories);
    QStringList paths{root};
    while (it.hasNext())
        paths.append(it.next());
    for (const QString &path : paths)
        QFile::setPermissions(path, mode(QFile::permissions(path)));
}

// A vault with one file and one task, made by the program as a person
// would; then each test damages, locks or write-protects it and checks that
// every command that would change it fails cleanly and changes nothing.
class VaultFaultsTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(m_dir.isValid());
        // Reachable for the unprivileged user of the read-only case.
        QFile::setPermissions(m_dir.path(), QFile::permissions(m_dir.path()) | QFileDevice::ExeOther
                                                | QFileDevice::ReadOther);
        QDir().mkpath(home());
        QFile::setPermissions(home(), QFileDevice::Permissions(0x7777));
        ASSERT_EQ(run({"vault", "init", vault(), "--name", "Demo"}).status, 0);
        QFile source(m_dir.filePath("gear.mcdprt"));
        ASSERT_TRUE(source.open(QIODevice::WriteOnly));
        source.write("part\n");
        source.close();
        const ProgramRun added = run({"vault", "add", "--vault", vault(), source.fileName(), "--to", "Parts"});
        ASSERT_EQ(added.status, 0) << added.err.toStdString();
        const ProgramRun created = run({"task", "create", "--vault", vault(), "Convert", "--kind", "convert"});
        ASSERT_EQ(created.status, 0) << created.err.toStdString();
        QFile other(m_dir.filePath("new.mcdprt"));
        ASSERT_TRUE(other.open(QIODevice::WriteOnly));
        other.write("new part\n");
        QFile::setPermissions(other.fileName(), QFile::permissions(other.fileName()) | QFileDevice::ReadOther);
        const ProgramRun launched = run({"task", "launch", "--vault", vault(), "Convert", "V:\\Parts\\gear.mcdprt"});
        ASSERT_EQ(launched.status, 0) << launched.err.toStdString();
        m_instance = launched.lastLine();
    }

    QString vault() const { return m_dir.filePath("vault"); }
    QString home() const { return m_dir.filePath("home"); }

    ProgramRun run(const QStringList &args, ProgramSetting setting)
    {
        return runProgram(MCTASK_PROGRAM, args, setting.in(m_dir.path()).timeout(60000));
    }
    ProgramRun run(const QStringList &args) { return run(args, ProgramSetting(home())); }

    // The commands that write to the vault, each of which must fail with a
    // message holding expected and leave every byte as it was.
    void expectEveryChangeRefused(const QString &expected, const ProgramSetting &setting)
    {
        const auto before = snapshot(vault());
        const QList<QStringList> commands{
            {"vault", "add", "--vault", vault(), m_dir.filePath("new.mcdprt"), "--to", "Parts"},
            {"vault", "card", "--vault", vault(), "V:\\Parts\\gear.mcdprt", "Title=x"},
            {"task", "create", "--vault", vault(), "Print", "--kind", "print"},
            {"task", "set", "--vault", vault(), "Convert", "OutputPath=C:\\out"},
            {"task", "launch", "--vault", vault(), "Convert", "V:\\Parts\\gear.mcdprt"},
        };
        for (const QStringList &command : commands) {
            const ProgramRun result = run(command, setting);
            const std::string name = command.mid(0, 2).join(' ').toStdString();
            EXPECT_NE(result.status, -1) << name << " did not finish";
            EXPECT_NE(result.status, 0) << name << ": " << result.out.toStdString();
            EXPECT_LT(result.status, 128) << name << " crashed: " << result.err.toStdString();
            EXPECT_TRUE(result.err.contains(expected)) << name << ": " << result.err.toStdString();
            EXPECT_FALSE(result.err.contains(QLatin1String("terminate called"))) << name;
        }
        EXPECT_EQ(snapshot(vault()), before);
    }

    // The commands that only read, each of which must answer and leave
    // every byte as it was.
    void expectEveryReadAnswered(const ProgramSetting &setting)
    {
        const auto before = snapshot(vault());
        const QString gear = QStringLiteral("V:\\Parts\\gear.mcdprt");
        const QList<QStringList> commands{
            {"vault", "ls", "--vault", vault()},
            {"vault", "show", "--vault", vault(), gear},
            {"vault", "card", "--vault", vault(), gear},
            {"task", "get", "--vault", vault(), "Convert", "__type"},
            {"task", "instances", "--vault", vault()},
            {"task", "details", "--vault", vault(), m_instance},
            {"macro", "preview", "--vault", vault(), m_instance, gear},
            {"macro", "check", "--vault", vault(), "Convert", gear},
        };
        for (const QStringList &command : commands) {
            const ProgramRun result = run(command, setting);
            const std::string name = command.mid(0, 2).join(' ').toStdString();
            EXPECT_EQ(result.status, 0) << name << ": " << result.err.toStdString();
            EXPECT_FALSE(result.out.isEmpty()) << name;
        }
        EXPECT_EQ(snapshot(vault()), before);
    }

    QTemporaryDir m_dir;
    QString m_instance;
};

// Before, task create, set and launch ended in an uncaught HostError
// (abort, status 134) on a database they could not write in a folder they
// could; a wholly read-only vault was "cannot open" with SQLite's words.
TEST_F(VaultFaultsTest, AReadOnlyVaultRefusesEveryChangeAndAnswersEveryRead)
{
    const QString database = VaultStore::databasePath(vault());
    QFile::setPermissions(QFileInfo(database).absolutePath(), QFileDevice::Permissions(0x7777));
    QFile::setPermissions(database, QFileDevice::ReadOwner | QFileDevice::ReadUser | QFileDevice::ReadGroup
                                        | QFileDevice::ReadOther);
    expectEveryChangeRefused(QStringLiteral("the vault is read-only"), ProgramSetting(home()).asNormalUser());
    expectEveryReadAnswered(ProgramSetting(home()).asNormalUser());

    setWritable(vault(), false);
    expectEveryChangeRefused(QStringLiteral("the vault is read-only"), ProgramSetting(home()).asNormalUser());
    expectEveryReadAnswered(ProgramSetting(home()).asNormalUser());
    setWritable(vault(), true);
}

TEST_F(VaultFaultsTest, AVaultLockedByAnotherProcessRefusesEveryChange)
{
    // Another process takes the write lock and holds it past the commands'
    // wait (a lock of this process would not do: closing any of its handles
    // on the file drops POSIX locks).
    QProcess holder;
    holder.start(QStringLiteral("sqlite3"), {VaultStore::databasePath(vault())});
    ASSERT_TRUE(holder.waitForStarted());
    holder.write("BEGIN IMMEDIATE;\nSELECT 'held';\n");
    ASSERT_TRUE(holder.waitForReadyRead(10000));
    ASSERT_EQ(holder.readAllStandardOutput().trimmed(), QByteArray("held"));
    expectEveryChangeRefused(QStringLiteral("the vault is locked by another process"),
                             ProgramSetting(home()).set(QStringLiteral("MCTASK_LOCK_WAIT"), QStringLiteral("100")));
    holder.write("ROLLBACK;\n");
    holder.closeWriteChannel();
    EXPECT_TRUE(holder.waitForFinished(10000));
}

// An empty database used to open as a new, empty vault: files, tasks and
// name gone without a word. Damaged bytes are refused the same way, and
// reading commands say so too.
TEST_F(VaultFaultsTest, AnEmptyOrDamagedDatabaseIsNeverANewVault)
{
    for (const QByteArray &content : {QByteArray(), QByteArray("this is not a database at all").repeated(200)}) {
        QFile database(VaultStore::databasePath(vault()));
        ASSERT_TRUE(database.open(QIODevice::WriteOnly | QIODevice::Truncate));
        database.write(content);
        database.close();
        expectEveryChangeRefused(QStringLiteral("is empty or damaged"), ProgramSetting(home()));
        const ProgramRun listed = run({"vault", "ls", "--vault", vault()});
        EXPECT_NE(listed.status, 0);
        EXPECT_TRUE(listed.err.contains(QLatin1String("is empty or damaged"))) << listed.err.toStdString();
        EXPECT_EQ(QFileInfo(database.fileName()).size(), content.size());
    }
}

// It used to say "no vault" about a vault it only could not look into.
TEST_F(VaultFaultsTest, AVaultFolderThatCannotBeReadSaysSo)
{
    const auto permissions = QFile::permissions(vault());
    QFile::setPermissions(vault(), QFileDevice::Permissions());
    const ProgramRun listed = run({"vault", "ls", "--vault", vault()}, ProgramSetting(home()).asNormalUser());
    QFile::setPermissions(vault(), permissions);
    EXPECT_EQ(listed.status, 2);
    EXPECT_TRUE(listed.err.contains(QStringLiteral("cannot read the vault folder %1").arg(vault())))
        << listed.err.toStdString();
}

} // namespace

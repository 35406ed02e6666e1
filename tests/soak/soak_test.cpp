// The task host under faults: 2,000 files in 20 instances, two hosts of two
// workers each, a stand-in that crashes, hangs past the macro time-out,
// shows stray message boxes, grows and fails run calls at random (seeded:
// SOAK_SEED, printed), and one host killed with SIGKILL in the middle and
// started again. Then every file is either converted, checked in once and
// referenced to its source, or named in its instance's error log; no
// instance is left running, no stand-in process is left, and the database
// is sound.

#include "platform/automation/objecttable.h"
#include "platform/testing/coreapp.h"
#include "platform/testing/processgone.h"
#include "tests/programrun.h"
#include "vault/taskstore.h"
#include "vault/vaultstore.h"

#include <QDir>
#include <QDirIterator>
#include <QElapsedTimer>
#include <QFile>
#include <QJsonArray>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <csignal>
#include <iostream>
#include <map>
#include <memory>

namespace {

constexpr int kInstances = 20;
constexpr int kFilesPerInstance = 100;
constexpr int kFaultPercent = 2;
constexpr int kLeaseSeconds = 8;

// Processes of this machine whose command line contains text.
std::vector<qint64> processesWith(const QByteArray &text)
{
    std::vector<qint64> found;
    for (const QString &entry : QDir(QStringLiteral("/proc")).entryList(QDir::Dirs)) {
        bool ok = false;
        const qint64 pid = entry.toLongLong(&ok);
        if (!ok || processGone(pid))
            continue;
        QFile cmdline(QStringLiteral("/proc/%1/cmdline").arg(pid));
        if (cmdline.open(QIODevice::ReadOnly) && cmdline.readAll().contains(text))
            found.push_back(pid);
    }
    return found;
}

// The children of pid.
std::vector<qint64> childrenOf(qint64 pid)
{
    std::vector<qint64> children;
    for (const QString &entry : QDir(QStringLiteral("/proc")).entryList(QDir::Dirs)) {
        QFile stat(QStringLiteral("/proc/%1/stat").arg(entry));
        if (!stat.open(QIODevice::ReadOnly))
            continue;
        const QByteArray line = stat.readAll();
        const QList<QByteArray> fields = line.mid(line.lastIndexOf(')') + 2).split(' ');
        if (fields.size() > 1 && fields.at(1).toLongLong() == pid)
            children.push_back(entry.toLongLong());
    }
    return children;
}

class SoakTest : public testing::Test
{
protected:
    void SetUp() override
    {
        coreApp();
        m_seed = qEnvironmentVariableIsSet("SOAK_SEED") ? qEnvironmentVariable("SOAK_SEED") : QStringLiteral("1");
        std::cout << "soak: seed " << m_seed.toStdString() << ", work folder " << m_work.path().toStdString() << std::endl;
        m_vault = m_work.filePath(QStringLiteral("vault"));
        ok({"addin", "register"});
        const ProgramRun installed = runProgram(QStringLiteral(MCSIM_PROGRAM), {"/regserver"}, setting());
        ASSERT_EQ(installed.status, 0) << installed.err.toStdString();
        ok({"vault", "init", m_vault, "--name", "Soak"});
        // A hung macro is given up after two seconds.
        ok({"registry", "set", "HKCU\\Software\\Mecadra\\Applications\\Vaultek Enterprise\\McTaskAddIn", "MacroTimeout",
            "2", "--dword"});
        QStringList folders;
        for (int f = 1; f <= kInstances; ++f) {
            const QString folder = m_work.filePath(QStringLiteral("parts/F%1").arg(f, 2, 10, QLatin1Char('0')));
            QDir().mkpath(folder);
            for (int i = 1; i <= kFilesPerInstance; ++i)
                ASSERT_TRUE(QFile::copy(QStringLiteral(MCTASK_SAMPLES) + "/shaft.mcdprt",
                                        QStringLiteral("%1/part%2.mcdprt").arg(folder).arg((f - 1) * kFilesPerInstance + i)));
            folders << folder;
        }
        ok(QStringList{"vault", "add"} + folders + QStringList{"--to", "Parts"});
        ok({"vault", "card", "V:\\Parts\\F01\\part1.mcdprt", "Description=Part"});
        ok({"task", "create", "To STEP", "--kind", "convert"});
        ok({"task", "set", "To STEP", "FileFormat=STEP (*.step)", "OutputPath=<Path>\\STEP\\<Filename>", "OutputPath2=",
            "ErrorLogPath=Logs", "ReplaceOutput:bool=true", "RefToSource:bool=true", "PromptOutput:bool=false",
            "SourceRefs:int=2", "OutputConfs:int=1", "FileConfs:int=4", "OutputSheets:int=1", "FileSheets:int=4",
            "StepGeometry:int=0", "StepVersion:int=203", "FileCardData=Description;8;made by the soak\n"});
        for (int f = 1; f <= kInstances; ++f)
            ok({"task", "launch", "To STEP", QStringLiteral("V:\\Parts\\F%1").arg(f, 2, 10, QLatin1Char('0'))});
    }

    void TearDown() override
    {
        // A failed soak keeps its vault, logs and host output to look at.
        if (HasFailure()) {
            m_work.setAutoRemove(false);
            std::cout << "soak: failed; kept " << m_work.path().toStdString() << std::endl;
        }
        for (auto &[name, host] : m_hosts) {
            if (host->state() != QProcess::NotRunning) {
                host->kill();
                host->waitForFinished();
            }
        }
    }

    ProgramSetting setting() const
    {
        return ProgramSetting(m_work.filePath(QStringLiteral("home")))
            .offscreen()
            .withVault(m_vault)
            .withTemp(m_work.filePath(QStringLiteral("tmp")))
            .timeout(600000);
    }
    void ok(const QStringList &args)
    {
        const ProgramRun r = runProgram(QStringLiteral(MCTASK_PROGRAM), args, setting());
        ASSERT_EQ(r.status, 0) << args.join(' ').toStdString() << "\n" << r.err.toStdString();
    }

    void startHost(const QString &name)
    {
        auto host = std::make_unique<QProcess>();
        QProcessEnvironment env = programEnvironment(setting());
        env.insert(QStringLiteral("MCSIM_RANDOM_FAULTS"), QString::number(kFaultPercent));
        env.insert(QStringLiteral("MCSIM_FAULT_SEED"), m_seed);
        host->setProcessEnvironment(env);
        // Appended: the restarted host writes after the killed one.
        host->setStandardOutputFile(m_work.filePath(name + QStringLiteral(".log")), QIODevice::Append);
        host->setStandardErrorFile(m_work.filePath(name + QStringLiteral(".err")), QIODevice::Append);
        host->start(QStringLiteral(MCTASK_PROGRAM),
                    {"host", "serve", "--name", name, "--workers", "2", "--lease", QString::number(kLeaseSeconds),
                     "--poll", "500"});
        ASSERT_TRUE(host->waitForStarted());
        m_hosts[name] = std::move(host);
    }

    std::vector<InstanceRow> instances()
    {
        TaskStore tasks(VaultStore::open(m_vault));
        return tasks.listInstances();
    }
    static bool ended(const InstanceRow &row) { return row.status == 7 || row.status == 8 || row.status == 9; }
    int endedCount()
    {
        int count = 0;
        for (const InstanceRow &row : instances())
            count += ended(row) ? 1 : 0;
        return count;
    }
    template <typename Condition>
    bool waitFor(Condition holds, int limitSeconds)
    {
        for (int i = 0; i < limitSeconds * 4; ++i) {
            if (holds())
                return true;
            QThread::msleep(250);
        }
        return holds();
    }

    QTemporaryDir m_work;
    QString m_vault;
    QString m_seed;
    std::map<QString, std::unique_ptr<QProcess>> m_hosts;
};

TEST_F(SoakTest, TwoThousandFilesUnderFaultsAndAKilledHost)
{
    QElapsedTimer clock;
    clock.start();
    startHost(QStringLiteral("soakA"));
    startHost(QStringLiteral("soakB"));

    // In the middle: host A runs something and a third of the instances ended.
    ASSERT_TRUE(waitFor(
        [&] {
            if (endedCount() < kInstances / 3)
                return false;
            for (const InstanceRow &row : instances())
                if (row.status == 3 && row.holderHost == QLatin1String("soakA"))
                    return true;
            return false;
        },
        900))
        << "the hosts made no progress";
    const qint64 killedPid = m_hosts["soakA"]->processId();
    const std::vector<qint64> mecadras = childrenOf(killedPid);
    EXPECT_FALSE(mecadras.empty()) << "host A runs no Mecadra";
    ::kill(static_cast<pid_t>(killedPid), SIGKILL);
    m_hosts["soakA"]->waitForFinished();
    for (const qint64 pid : mecadras)
        EXPECT_TRUE(waitUntilGone(pid, 10000)) << "Mecadra " << pid << " outlived its killed host";
    std::cout << "soak: host A killed after " << clock.elapsed() / 1000 << " s with " << endedCount()
              << " instances ended" << std::endl;
    startHost(QStringLiteral("soakA"));

    ASSERT_TRUE(waitFor([&] { return endedCount() == kInstances; }, 1500)) << "instances were left unfinished";
    const qint64 runSeconds = clock.elapsed() / 1000;
    // A stop request: nothing is left to run, so both end at once with 0.
    for (auto &[name, host] : m_hosts) {
        ::kill(static_cast<pid_t>(host->processId()), SIGTERM);
        ASSERT_TRUE(host->waitForFinished(60000)) << name.toStdString();
        EXPECT_EQ(host->exitStatus(), QProcess::NormalExit) << name.toStdString();
        EXPECT_EQ(host->exitCode(), 0) << name.toStdString();
    }

    // No stand-in is left, and its table holds no entry.
    const QByteArray home = QFile::encodeName(m_work.filePath(QStringLiteral("home")));
    EXPECT_TRUE(waitFor([&] { return processesWith(home + "/Mecadra").empty(); }, 10));
    EXPECT_TRUE(ObjectTable(m_work.filePath(QStringLiteral("home/rot"))).list().isEmpty());

    // Every file: converted, checked in once and referenced to its source,
    // or named in its instance's error log.
    const auto store = VaultStore::open(m_vault);
    TaskStore tasks(store);
    int converted = 0;
    int logged = 0;
    int statusCounts[10] = {};
    int reruns = 0;
    for (const InstanceRow &row : tasks.listInstances()) {
        ASSERT_TRUE(row.status == 7 || row.status == 9) << "instance " << row.id << " status " << row.status;
        ++statusCounts[row.status];
        reruns += row.attempt > 1 ? 1 : 0;
        QFile logFile(m_vault + QStringLiteral("/Logs/") + row.guid + QStringLiteral(".log"));
        const QByteArray log = logFile.open(QIODevice::ReadOnly) ? logFile.readAll() : QByteArray();
        const int first = (row.id - 1) * kFilesPerInstance + 1;
        const QString folder = QStringLiteral("Parts\\F%1").arg(row.id, 2, 10, QLatin1Char('0'));
        for (int i = first; i < first + kFilesPerInstance; ++i) {
            const QString sourcePath = QStringLiteral("%1\\part%2.mcdprt").arg(folder).arg(i);
            const auto source = store->fileByPath(sourcePath);
            ASSERT_TRUE(source) << sourcePath.toStdString();
            const auto output = store->fileByPath(QStringLiteral("%1\\STEP\\part%2.step").arg(folder).arg(i));
            if (output) {
                SCOPED_TRACE(output->path.toStdString());
                EXPECT_EQ(output->latestVersion, 1) << "an output was checked in twice";
                EXPECT_EQ(output->lock, VaultLock::None) << "not checked in";
                bool referenced = false;
                for (const VaultReferenceRow &reference : store->references(output->id, output->latestVersion))
                    referenced = referenced || reference.childId == source->id;
                EXPECT_TRUE(referenced) << "no reference to its source";
                ++converted;
            } else {
                EXPECT_TRUE(log.contains(QStringLiteral("V:\\%1").arg(sourcePath).toLocal8Bit()))
                    << sourcePath.toStdString() << " is neither converted nor in the log of instance " << row.id;
                ++logged;
            }
        }
    }
    EXPECT_EQ(converted + logged, kInstances * kFilesPerInstance);

    sqlite3 *db = nullptr;
    ASSERT_EQ(sqlite3_open_v2(QFile::encodeName(m_vault + QStringLiteral("/.mctask/vault.db")).constData(), &db,
                              SQLITE_OPEN_READONLY, nullptr),
              SQLITE_OK);
    sqlite3_stmt *check = nullptr;
    ASSERT_EQ(sqlite3_prepare_v2(db, "PRAGMA integrity_check", -1, &check, nullptr), SQLITE_OK);
    ASSERT_EQ(sqlite3_step(check), SQLITE_ROW);
    EXPECT_STREQ(reinterpret_cast<const char *>(sqlite3_column_text(check, 0)), "ok");
    sqlite3_finalize(check);
    sqlite3_close(db);

    std::cout << "soak: " << runSeconds << " s to end all instances (" << clock.elapsed() / 1000
              << " s with the checks); files converted " << converted << ", in error logs " << logged
              << "; instances finished " << statusCounts[7] << ", with errors " << statusCounts[9] << ", run again "
              << reruns << std::endl;
}

} // namespace

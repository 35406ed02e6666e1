#pragma once

// The fixture of the end-to-end runs: a home and a vault of the test's own,
// the stand-in registered, and the mctask program driven as a person would.
// Each test runs on an SQLite vault and on one on the tests' PostgreSQL
// server (INSTANTIATE_TEST_SUITE_P with VaultBackends); there other machines
// are homes of their own with local views of the same vault.

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>
#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "tests/e2e/conversiondefaults.h"
#include "tests/programrun.h"
#include "vault/vaulttesting.h"

class ProgramTaskTest : public VaultBackendTest
{
protected:
    // One machine of the vault: its home (registry store, drive map, object
    // table) and its local view of the vault.
    struct Machine {
        QString home;
        QString vault;
    };

    void SetUp() override
    {
        VaultBackendTest::SetUp();
        if (IsSkipped() || HasFatalFailure())
            return;
        ASSERT_TRUE(m_home.isValid() && m_work.isValid());
        m_vault = m_work.filePath("vault");
        QStringList init{"vault", "init", m_vault, "--name", "E2E"};
        if (onPostgres())
            init << "--server" << server();
        ok(init);
        registerMecadra(client());
    }

    Machine client() const { return {m_home.path(), m_vault}; }
    // Another machine of the vault, with the stand-in registered. On a server
    // a home of its own whose local view starts empty; an SQLite vault is a
    // folder of one machine, so there it is the client's.
    Machine machine(const QString &name)
    {
        if (!onPostgres())
            return client();
        const Machine other{m_work.filePath(name + "/home"), m_work.filePath(name + "/vault")};
        EXPECT_TRUE(QDir().mkpath(other.home));
        ok(other, {"vault", "attach", server(), other.vault});
        registerMecadra(other);
        m_machines.push_back(other);
        return other;
    }
    // The client and every machine made since.
    std::vector<Machine> machines() const
    {
        std::vector<Machine> all{client()};
        all.insert(all.end(), m_machines.begin(), m_machines.end());
        return all;
    }

    ProgramSetting setting(const Machine &at) const
    {
        ProgramSetting s = ProgramSetting(at.home).offscreen().withVault(at.vault).withTemp(tempFolder());
        for (const QString &name : m_env.keys())
            s.set(name, m_env.value(name));
        return s;
    }
    ProgramSetting setting() const { return setting(client()); }
    // Where the programs of every machine put their temporary files.
    QString tempFolder() const { return m_work.filePath("tmp"); }
    ProgramRun run(const Machine &at, const QStringList &args)
    {
        return runProgram(QStringLiteral(MCTASK_PROGRAM), args, setting(at));
    }
    ProgramRun run(const QStringList &args) { return run(client(), args); }
    ProgramRun ok(const Machine &at, const QStringList &args)
    {
        const ProgramRun r = run(at, args);
        EXPECT_EQ(r.status, 0) << args.join(' ').toStdString() << "\n" << r.err.toStdString();
        return r;
    }
    ProgramRun ok(const QStringList &args) { return ok(client(), args); }
    void registerMecadra(const Machine &at)
    {
        const ProgramRun registered = runProgram(QStringLiteral(MCSIM_PROGRAM), {"/regserver"}, setting(at));
        ASSERT_EQ(registered.status, 0) << registered.err.toStdString();
    }

    void addSamples(const QStringList &names, const QString &folder, const QStringList &extra = {})
    {
        QStringList args{"vault", "add"};
        for (const QString &name : names)
            args << QStringLiteral(MCTASK_SAMPLES) + '/' + name;
        ok(args + QStringList{"--to", folder} + extra);
    }

    // A PDF conversion task: one file per sheet and per configuration, all
    // fixed by the set-up.
    void createPdfTask(const QString &name, const QStringList &settings = {})
    {
        ok({"task", "create", name, "--kind", "convert"});
        ok(QStringList{"task", "set", name} + ConversionDefaults
           + QStringList{"OutputPath=<Path>\\PDF\\<Filename>_<Configuration>", "OutputConfs:int=2",
                         "FileConfs:int=4", "OutputSheets:int=2", "FileSheets:int=4", "PromptOutput:bool=false",
                         "SourceRefs:int=2"}
           + settings);
    }

    int launch(const QStringList &args)
    {
        const ProgramRun launched = run(QStringList{"task", "launch"} + args);
        EXPECT_EQ(launched.status, 0) << launched.err.toStdString();
        return launched.lastLine().toInt();
    }

    QJsonObject runInstance(const Machine &at, int id, int expectedStatus = 0)
    {
        const ProgramRun ran = run(at, {"task", "run", QString::number(id), "--json"});
        EXPECT_EQ(ran.status, expectedStatus) << ran.out.toStdString() << ran.err.toStdString();
        return ran.json().object();
    }
    QJsonObject runInstance(int id, int expectedStatus = 0) { return runInstance(client(), id, expectedStatus); }

    QJsonObject show(const QString &file)
    {
        const ProgramRun shown = run({"vault", "show", file, "--json"});
        EXPECT_EQ(shown.status, 0) << file.toStdString() << shown.err.toStdString();
        return shown.json().object();
    }

    QStringList filesUnder(const QString &folder)
    {
        const ProgramRun listed = run({"vault", "ls", "V:\\" + QString(folder).replace('/', '\\'), "--json"});
        QStringList paths;
        for (const QJsonValue &row : listed.json().array())
            paths << row.toObject()["path"].toString();
        paths.sort();
        return paths;
    }

    // Starts mctask with args and lets it go on while the test acts from outside.
    std::unique_ptr<QProcess> startProgram(const Machine &at, const QStringList &args)
    {
        auto process = std::make_unique<QProcess>();
        process->setProcessEnvironment(programEnvironment(setting(at)));
        process->start(QStringLiteral(MCTASK_PROGRAM), args);
        EXPECT_TRUE(process->waitForStarted());
        return process;
    }
    std::unique_ptr<QProcess> startProgram(const QStringList &args) { return startProgram(client(), args); }

    // n copies of one part, "part1.mcdprt" ..., in the vault folder Parts.
    void addPartCopies(int n)
    {
        QStringList names;
        for (int i = 1; i <= n; ++i) {
            const QString copy = m_work.filePath(QStringLiteral("part%1.mcdprt").arg(i));
            ASSERT_TRUE(QFile::copy(QStringLiteral(MCTASK_SAMPLES) + "/shaft.mcdprt", copy));
            names << copy;
        }
        ok(QStringList{"vault", "add"} + names + QStringList{"--to", "Parts"});
    }

    QJsonObject instanceRow(int id)
    {
        for (const QJsonValue &row : run({"task", "instances", "--json"}).json().array())
            if (row.toObject()["id"].toInt() == id)
                return row.toObject();
        return {};
    }
    int statusOf(int id) { return instanceRow(id)["status"].toInt(-1); }
    int progressOf(int id) { return instanceRow(id)["progress"].toInt(-1); }

    // Polls until the condition holds (at most 60 s).
    template <typename Condition>
    bool waitFor(Condition holds)
    {
        for (int i = 0; i < 600; ++i) {
            if (holds())
                return true;
            QThread::msleep(100);
        }
        return false;
    }
    bool waitForStatus(int id, int status)
    {
        return waitFor([&] { return statusOf(id) == status; });
    }

    QTemporaryDir m_home;
    QTemporaryDir m_work;
    QString m_vault;
    // Variables every program of the test gets besides the home and vault.
    QProcessEnvironment m_env;

private:
    std::vector<Machine> m_machines;
};

// Sets an environment variable of the stand-in for one test.
class ScopedEnv
{
public:
    ScopedEnv(const char *name, const QByteArray &value) : m_name(name) { qputenv(name, value); }
    ~ScopedEnv() { qunsetenv(m_name); }

private:
    const char *m_name;
};

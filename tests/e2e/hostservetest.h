#pragma once

// The fixture of the task host's end-to-end runs: "mctask host serve"
// processes on the test's machines, their lines, and the stand-in Mecadras
// they start, none of which may outlive the test.

#include "tests/e2e/programtasktest.h"

#include <QRegularExpression>

#include <csignal>

class HostServeTest : public ProgramTaskTest
{
protected:
    void TearDown() override
    {
        // None may outlive the test, whatever failed in it.
        for (const qint64 pid : liveMecadras())
            ::kill(static_cast<pid_t>(pid), SIGKILL);
    }

    std::unique_ptr<QProcess> startHost(const Machine &at, const QString &name, const QStringList &options = {})
    {
        return startProgram(at, QStringList{"host", "serve", "--name", name, "--poll", "100", "--json"} + options);
    }
    std::unique_ptr<QProcess> startHost(const QString &name, const QStringList &options = {})
    {
        return startHost(client(), name, options);
    }

    static void expectCleanExit(QProcess &host)
    {
        ASSERT_TRUE(host.waitForFinished(600000));
        EXPECT_EQ(host.exitStatus(), QProcess::NormalExit);
        EXPECT_EQ(host.exitCode(), 0) << host.readAllStandardError().toStdString();
    }

    // The stand-in processes registered in the object tables of the test's
    // machines that still run.
    std::vector<qint64> liveMecadras() const
    {
        std::vector<qint64> pids;
        for (const Machine &at : machines())
            for (const qint64 pid : liveMecadras(at))
                pids.push_back(pid);
        return pids;
    }
    static std::vector<qint64> liveMecadras(const Machine &at)
    {
        std::vector<qint64> pids;
        static const QRegularExpression moniker(QStringLiteral("^Mecadra_PID_([0-9]+)$"));
        for (const QString &entry : QDir(at.home + "/rot").entryList(QDir::AllEntries | QDir::System)) {
            const auto match = moniker.match(entry);
            if (!match.hasMatch())
                continue;
            QFile cmdline(QStringLiteral("/proc/%1/cmdline").arg(match.captured(1)));
            // Started as the installed CADRIX.EXE, a link to mcsim.
            const QByteArray command = cmdline.open(QIODevice::ReadOnly) ? cmdline.readAll() : QByteArray();
            if (command.contains("mcsim") || command.contains("CADRIX.EXE"))
                pids.push_back(match.captured(1).toLongLong());
        }
        return pids;
    }

    std::vector<QJsonObject> events(QProcess &host)
    {
        std::vector<QJsonObject> lines;
        for (const QByteArray &line : host.readAllStandardOutput().split('\n'))
            if (!line.trimmed().isEmpty())
                lines.push_back(QJsonDocument::fromJson(line).object());
        return lines;
    }

    bool held(int id) { return instanceRow(id)["held"].toBool(); }

    // Each output of the conversion is in the vault once, with one version,
    // and referenced to its source ("part7_Default.pdf" to "part7.mcdprt").
    void expectEachOutputOnce(int expected)
    {
        const QStringList outputs = filesUnder("Parts/PDF");
        EXPECT_EQ(outputs.size(), expected);
        for (const QString &output : outputs) {
            SCOPED_TRACE(output.toStdString());
            const QJsonObject file = show(output);
            EXPECT_EQ(file["versions"].toArray().size(), 1);
            const QJsonArray refs = file["references"].toArray();
            ASSERT_EQ(refs.size(), 1);
            const QString source = output.section('\\', -1).section('_', 0, -2) + ".mcdprt";
            EXPECT_EQ(refs[0].toObject()["path"].toString(), "V:\\Parts\\" + source);
        }
    }
};

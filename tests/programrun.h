#pragma once

#include <QProcess>
#include <QProcessEnvironment>
#include <QStringList>

// Runs a built program of the project the way a person would, for tests
// that drive it from outside.

#include <QJsonDocument>

struct ProgramRun {
    int status = -1; // -1 when it did not finish in time
    QString out;
    QString err;

    QString lastLine() const { return out.trimmed().section(QLatin1Char('\n'), -1); }
    QJsonDocument json() const { return QJsonDocument::fromJson(out.toUtf8()); }
};

// How to run it: always with a home of the test's own (MCTASK_HOME), never
// with the caller's MCTASK_VAULT.
struct ProgramSetting {
    explicit ProgramSetting(QString homeFolder) : home(std::move(homeFolder)) {}
    ProgramSetting &in(const QString &folder) { workingDirectory = folder; return *this; }
    ProgramSetting &withVault(const QString &folder) { vault = folder; return *this; }
    ProgramSetting &offscreen() { offscreenPlatform = true; return *this; }
    ProgramSetting &timeout(int ms) { timeoutMs = ms; return *this; }

    QString home;
    QString workingDirectory; // empty: the test's own
    QString vault;            // MCTASK_VAULT; empty: unset
    bool offscreenPlatform = false;
    int timeoutMs = 120000;
};

inline ProgramRun runProgram(const QString &program, const QStringList &args, const ProgramSetting &setting)
{
    QProcess process;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("MCTASK_HOME"), setting.home);
    env.remove(QStringLiteral("MCTASK_VAULT"));
    if (!setting.vault.isEmpty())
        env.insert(QStringLiteral("MCTASK_VAULT"), setting.vault);
    if (setting.offscreenPlatform)
        env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    process.setProcessEnvironment(env);
    if (!setting.workingDirectory.isEmpty())
        process.setWorkingDirectory(setting.workingDirectory);
    process.start(program, args);
    if (!process.waitForFinished(setting.timeoutMs))
        return {};
    return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError())};
}

#pragma once

#include <QDir>
#include <QProcess>
#include <QProcessEnvironment>
#include <QStringList>

// Runs a built program of the project the way a person would, for tests
// that drive it from outside.

#include <QJsonDocument>

#include <unistd.h>

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
    // As a user without special rights: when the test runs as root, the
    // program runs as "nobody", for whom permissions hold.
    ProgramSetting &asNormalUser() { normalUser = true; return *this; }
    ProgramSetting &set(const QString &name, const QString &value) { extra.insert(name, value); return *this; }
    // Temporary files (the macro files of runs) in a folder of the test's, so
    // that runs the test kills leave nothing in the machine's /tmp.
    ProgramSetting &withTemp(const QString &folder) { tempFolder = folder; return *this; }

    QString home;
    QString workingDirectory; // empty: the test's own
    QString vault;            // MCTASK_VAULT; empty: unset
    QString tempFolder;       // TMPDIR; empty: the caller's
    bool offscreenPlatform = false;
    bool normalUser = false;
    int timeoutMs = 120000;
    QProcessEnvironment extra;
};

// The environment a program gets from the setting: the test's own with the
// setting's home, vault and extras.
inline QProcessEnvironment programEnvironment(const ProgramSetting &setting)
{
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("MCTASK_HOME"), setting.home);
    env.remove(QStringLiteral("MCTASK_VAULT"));
    if (!setting.vault.isEmpty())
        env.insert(QStringLiteral("MCTASK_VAULT"), setting.vault);
    if (setting.offscreenPlatform)
        env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    if (!setting.tempFolder.isEmpty()) {
        QDir().mkpath(setting.tempFolder);
        env.insert(QStringLiteral("TMPDIR"), setting.tempFolder);
    }
    for (const QString &name : setting.extra.keys())
        env.insert(name, setting.extra.value(name));
    return env;
}

inline ProgramRun runProgram(const QString &program, const QStringList &args, const ProgramSetting &setting)
{
    QProcess process;
    process.setProcessEnvironment(programEnvironment(setting));
    if (!setting.workingDirectory.isEmpty())
        process.setWorkingDirectory(setting.workingDirectory);
    if (setting.normalUser && ::geteuid() == 0)
        process.start(QStringLiteral("setpriv"),
                      QStringList{QStringLiteral("--reuid=65534"), QStringLiteral("--regid=65534"),
                                  QStringLiteral("--clear-groups"), program} + args);
    else
        process.start(program, args);
    if (!process.waitForFinished(setting.timeoutMs))
        return {};
    return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError())};
}

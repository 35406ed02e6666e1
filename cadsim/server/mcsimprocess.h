#pragma once

#include "platform/automation/automationclient.h"
#include "platform/automation/objecttable.h"

#include <QProcess>
#include <QProcessEnvironment>
#include <QTemporaryDir>

#include <memory>

// A real mcsim process in a private MCTASK_HOME, for tests and benchmarks.
class McsimProcess final
{
public:
    explicit McsimProcess(const QString &program);
    ~McsimProcess();

    void setEnv(const QString &name, const QString &value) { m_env.insert(name, value); }
    bool start(const QStringList &arguments = {});
    qint64 pid() const { return m_process.processId(); }
    QProcess &process() { return m_process; }
    ObjectTable &table() { return *m_table; }
    QString home() const { return m_home.path(); }

    // Waits until the application is registered; connects client to it.
    bool connectApplication(AutomationClient &client, int timeoutMs = 5000);
    // Connects to the window service (registered at start).
    bool connectWindows(AutomationClient &client, int timeoutMs = 5000);
    // Waits until stdout holds a line (e.g. "not registering").
    bool waitForLine(const QByteArray &line, int timeoutMs = 5000);
    bool waitForExit(int timeoutMs = 5000);

private:
    bool connectMoniker(AutomationClient &client, const QString &moniker, int timeoutMs);

    QString m_program;
    QTemporaryDir m_home;
    QProcessEnvironment m_env;
    QProcess m_process;
    std::unique_ptr<ObjectTable> m_table;
    QByteArray m_output;
};

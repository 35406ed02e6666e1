#include "cadsim/server/mcsimprocess.h"

#include "platform/automation/serverlauncher.h"

#include <QDeadlineTimer>

namespace {

constexpr int kPollIntervalMs = 2;

} // namespace

McsimProcess::McsimProcess(const QString &program)
    : m_program(program), m_env(QProcessEnvironment::systemEnvironment())
{
    m_env.insert(QStringLiteral("MCTASK_HOME"), m_home.path());
    m_table = std::make_unique<ObjectTable>(m_home.path() + QStringLiteral("/rot"));
}

McsimProcess::~McsimProcess()
{
    if (m_process.state() != QProcess::NotRunning) {
        m_process.kill();
        m_process.waitForFinished(5000);
    }
}

bool McsimProcess::start(const QStringList &arguments)
{
    m_process.setProcessEnvironment(m_env);
    m_process.setProcessChannelMode(QProcess::SeparateChannels);
    m_process.start(m_program, arguments);
    return m_process.waitForStarted(5000);
}

bool McsimProcess::connectMoniker(AutomationClient &client, const QString &moniker, int timeoutMs)
{
    // The process is QProcess's child: its end shows in its state, which the
    // launcher's process table cannot see; pid 0 leaves that check to us.
    const ServerLauncher launcher(*m_table);
    const QDeadlineTimer deadline(timeoutMs);
    while (!deadline.hasExpired() && m_process.state() != QProcess::NotRunning) {
        if (launcher.connect(client, moniker, 0, 1, kPollIntervalMs) == S_OK)
            return true;
    }
    return false;
}

bool McsimProcess::connectApplication(AutomationClient &client, int timeoutMs)
{
    return connectMoniker(client, Monikers::application(pid()), timeoutMs);
}

bool McsimProcess::connectWindows(AutomationClient &client, int timeoutMs)
{
    return connectMoniker(client, Monikers::windows(pid()), timeoutMs);
}

bool McsimProcess::waitForLine(const QByteArray &line, int timeoutMs)
{
    const QDeadlineTimer deadline(timeoutMs);
    for (;;) {
        m_output += m_process.readAllStandardOutput();
        if (m_output.split('\n').contains(line))
            return true;
        if (deadline.hasExpired() || m_process.state() == QProcess::NotRunning)
            return false;
        m_process.waitForReadyRead(static_cast<int>(qMax<qint64>(1, deadline.remainingTime())));
    }
}

bool McsimProcess::waitForExit(int timeoutMs)
{
    return m_process.state() == QProcess::NotRunning || m_process.waitForFinished(timeoutMs);
}

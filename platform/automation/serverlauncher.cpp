#include "platform/automation/serverlauncher.h"

#include "platform/automation/automationclient.h"
#include "platform/automation/automationerrors.h"
#include "platform/clock.h"
#include "platform/drivemap.h"

#include <QFileInfo>
#include <QProcess>

namespace {

QString nativeProgram(const QString &path)
{
    if (path.startsWith(QLatin1Char('/')))
        return QString(path).replace(QLatin1Char('\\'), QLatin1Char('/'));
    const QString native = DriveMap::instance().toNative(path);
    return native.isEmpty() ? path : native;
}

bool isProgram(const QString &nativePath)
{
    const QFileInfo info(nativePath);
    return info.isFile() && info.isExecutable();
}

} // namespace

CommandLine CommandLine::parse(const QString &commandLine)
{
    const QString text = commandLine.trimmed();
    CommandLine result;
    if (text.startsWith(QLatin1Char('"'))) {
        const qsizetype close = text.indexOf(QLatin1Char('"'), 1);
        const qsizetype end = close < 0 ? text.size() : close;
        result.program = nativeProgram(text.mid(1, end - 1));
        result.arguments = QProcess::splitCommand(text.mid(end + 1));
        return result;
    }
    const QStringList words = text.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    for (qsizetype taken = 1; taken <= words.size(); ++taken) {
        const QString candidate = nativeProgram(words.mid(0, taken).join(QLatin1Char(' ')));
        if (isProgram(candidate) || taken == words.size()) {
            // No prefix names a program: the first word is the program, and
            // starting it fails with the system's own reason.
            result.program = isProgram(candidate) ? candidate : nativeProgram(words.value(0));
            result.arguments = isProgram(candidate) ? words.mid(taken) : words.mid(1);
            return result;
        }
    }
    return result;
}

ServerLauncher::ServerLauncher(ObjectTable table, Processes &processes)
    : m_table(std::move(table)), m_processes(processes)
{
}

std::optional<qint64> ServerLauncher::start(const QString &commandLine, ShowCommand show)
{
    const CommandLine parsed = CommandLine::parse(commandLine);
    if (parsed.program.isEmpty())
        return std::nullopt;
    Processes::StartRequest request;
    request.program = parsed.program;
    request.arguments = parsed.arguments;
    request.show = show;
    return start(std::move(request));
}

std::optional<qint64> ServerLauncher::start(Processes::StartRequest request)
{
    return m_processes.start(request);
}

QString ServerLauncher::waitForObject(const QString &moniker, qint64 pid, int polls, qint64 intervalMs) const
{
    Clock &clock = Clock::instance();
    for (int poll = 0; poll < polls; ++poll) {
        clock.sleep(intervalMs);
        const QString endpoint = m_table.lookup(moniker);
        if (!endpoint.isEmpty())
            return endpoint;
        if (pid != 0 && !m_processes.isRunning(pid))
            return {};
    }
    return {};
}

HRESULT ServerLauncher::connect(AutomationClient &client, const QString &moniker, qint64 pid, int polls,
                                qint64 intervalMs) const
{
    const QString endpoint = waitForObject(moniker, pid, polls, intervalMs);
    if (endpoint.isEmpty())
        return RPC_S_SERVER_UNAVAILABLE;
    return client.connectTo(endpoint);
}

bool ServerLauncher::waitForExit(qint64 pid, int polls, qint64 intervalMs) const
{
    Clock &clock = Clock::instance();
    for (int poll = 0; poll < polls; ++poll) {
        clock.sleep(intervalMs);
        if (!m_processes.isRunning(pid))
            return true;
    }
    return false;
}

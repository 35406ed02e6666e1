#include "cadsim/server/macrotimelog.h"

#include "platform/clock.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QElapsedTimer>
#include <QFile>

namespace {

class TimedMacroRunner final : public MacroRunner
{
public:
    TimedMacroRunner(std::unique_ptr<MacroRunner> runner, QString logPath)
        : m_runner(std::move(runner)), m_logPath(std::move(logPath))
    {
    }

    MacroOutcome run(const QString &nativePath, const QString &module, const QString &procedure) override
    {
        QElapsedTimer timer;
        timer.start();
        const MacroOutcome outcome = m_runner->run(nativePath, module, procedure);
        const qint64 micros = timer.nsecsElapsed() / 1000;
        const qint64 endedMs = Clock::instance().now().toMSecsSinceEpoch();
        // One short append per call: lines of concurrent processes do not mix.
        QFile log(m_logPath);
        if (log.open(QIODevice::WriteOnly | QIODevice::Append))
            log.write(QByteArray::number(micros) + ' ' + QByteArray::number(endedMs) + ' '
                      + QByteArray::number(QCoreApplication::applicationPid()) + '\n');
        return outcome;
    }

private:
    std::unique_ptr<MacroRunner> m_runner;
    QString m_logPath;
};

} // namespace

std::unique_ptr<MacroRunner> makeTimedMacroRunner(std::unique_ptr<MacroRunner> runner, const QString &logPath)
{
    return std::make_unique<TimedMacroRunner>(std::move(runner), logPath);
}

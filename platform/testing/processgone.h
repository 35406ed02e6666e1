#pragma once

#include <QFile>
#include <QString>
#include <QThread>

#include <cerrno>
#include <csignal>

// Whether a process has ended: no such process, or one that is dead and
// waits only to be collected by whoever adopted it.
inline bool processGone(qint64 pid)
{
    if (::kill(static_cast<pid_t>(pid), 0) != 0 && errno == ESRCH)
        return true;
    QFile stat(QStringLiteral("/proc/%1/stat").arg(pid));
    if (!stat.open(QIODevice::ReadOnly))
        return true;
    const QByteArray line = stat.readAll();
    const qsizetype close = line.lastIndexOf(')'); // the name may hold blanks
    return close < 0 || line.mid(close + 2, 1) == "Z";
}

// Waits up to limitMs for the process to end; whether it did.
inline bool waitUntilGone(qint64 pid, int limitMs)
{
    for (int waited = 0; waited < limitMs; waited += 20) {
        if (processGone(pid))
            return true;
        QThread::msleep(20);
    }
    return processGone(pid);
}

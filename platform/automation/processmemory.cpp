#include "platform/automation/processmemory.h"

#include <QFile>

std::optional<quint64> workingSetBytes(qint64 pid)
{
    QFile status(QStringLiteral("/proc/%1/status").arg(pid));
    if (!status.open(QIODevice::ReadOnly))
        return std::nullopt;
    // "VmRSS:    12345 kB"; a zombie has no VmRSS line and holds no memory.
    for (const QByteArray &line : status.readAll().split('\n')) {
        if (!line.startsWith("VmRSS:"))
            continue;
        const QList<QByteArray> fields = line.mid(6).simplified().split(' ');
        bool ok = false;
        const quint64 kib = fields.value(0).toULongLong(&ok);
        return ok ? std::optional<quint64>(kib * 1024) : std::nullopt;
    }
    return quint64(0);
}

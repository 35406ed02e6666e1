#include "cadsim/model/modelfiles.h"

#include <QFile>

std::optional<QByteArray> DiskModelFiles::read(const QString &nativePath)
{
    QFile file(nativePath);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    return file.readAll();
}

bool DiskModelFiles::write(const QString &nativePath, const QByteArray &bytes)
{
    QFile file(nativePath);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return false;
    return file.write(bytes) == bytes.size();
}

bool DiskModelFiles::append(const QString &nativePath, const QByteArray &bytes)
{
    QFile file(nativePath);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Append))
        return false;
    return file.write(bytes) == bytes.size();
}

#include "cadsim/model/exportrecords.h"

#include "platform/home.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QSaveFile>

namespace ExportRecords {

namespace {

QString recordPath(const QString &folder, const QString &nativeTarget)
{
    const QByteArray key = QDir::cleanPath(QFileInfo(nativeTarget).absoluteFilePath()).toUtf8();
    return QDir(folder).filePath(
        QString::fromLatin1(QCryptographicHash::hash(key, QCryptographicHash::Sha1).toHex()) + QStringLiteral(".json"));
}

} // namespace

QString defaultFolder()
{
    return QDir(mctaskHome()).filePath(QStringLiteral("mcsim/exports"));
}

bool write(const QString &folder, const QString &nativeTarget, const QJsonObject &description)
{
    if (folder.isEmpty() || !QDir().mkpath(folder))
        return false;
    QSaveFile file(recordPath(folder, nativeTarget));
    if (!file.open(QIODevice::WriteOnly))
        return false;
    file.write(QJsonDocument(description).toJson(QJsonDocument::Indented));
    return file.commit();
}

QJsonObject read(const QString &folder, const QString &nativeTarget)
{
    QFile file(recordPath(folder, nativeTarget));
    if (folder.isEmpty() || !file.open(QIODevice::ReadOnly))
        return {};
    return QJsonDocument::fromJson(file.readAll()).object();
}

} // namespace ExportRecords

#include "cadsim/model/exportrecords.h"

#include "platform/filesystem.h"
#include "platform/home.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QTemporaryFile>

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
    // Written beside and renamed over the old record, so a reader never sees
    // half of one; not synced to disk, which would cost a flush per export.
    QTemporaryFile file(QDir(folder).filePath(QStringLiteral("record-XXXXXX.tmp")));
    if (!file.open())
        return false;
    const QByteArray text = QJsonDocument(description).toJson(QJsonDocument::Indented);
    if (file.write(text) != text.size() || !file.flush())
        return false;
    if (!FileSystem::instance().replace(file.fileName(), recordPath(folder, nativeTarget)))
        return false;
    file.setAutoRemove(false);
    return true;
}

QJsonObject read(const QString &folder, const QString &nativeTarget)
{
    QFile file(recordPath(folder, nativeTarget));
    if (folder.isEmpty() || !file.open(QIODevice::ReadOnly))
        return {};
    return QJsonDocument::fromJson(file.readAll()).object();
}

} // namespace ExportRecords

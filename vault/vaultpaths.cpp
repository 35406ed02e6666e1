#include "vault/vaultpaths.h"

#include "base/windowspath.h"
#include "platform/filesystem.h"

#include <QDir>

namespace {

// Splits, drops "." and empty parts, resolves "..". False when ".." climbs
// above the start.
bool normalise(const QString &path, QString &out)
{
    QStringList parts;
    for (const QString &part : QString(path).replace('/', '\\').split('\\', Qt::SkipEmptyParts)) {
        if (part == QLatin1String("."))
            continue;
        if (part == QLatin1String("..")) {
            if (parts.isEmpty())
                return false;
            parts.removeLast();
            continue;
        }
        parts.append(part);
    }
    out = parts.join('\\');
    return true;
}

} // namespace

VaultPaths::VaultPaths(QChar driveLetter, const QString &nativeRoot)
    : m_letter(driveLetter.toUpper()), m_root(QDir::cleanPath(QDir(nativeRoot).absolutePath()))
{
}

QString VaultPaths::windowsRoot() const
{
    return QString(m_letter) + ':';
}

QString VaultPaths::toWindows(const QString &relative) const
{
    return relative.isEmpty() ? windowsRoot() : windowsRoot() + '\\' + relative;
}

QString VaultPaths::toNative(const QString &relative) const
{
    if (relative.isEmpty())
        return m_root;
    return m_root + '/' + QString(relative).replace('\\', '/');
}

QString VaultPaths::findNative(const QString &relative) const
{
    QString path = m_root;
    for (const QString &part : relative.split('\\', Qt::SkipEmptyParts)) {
        QString next = path + '/' + part;
        if (!FileSystem::instance().exists(next)) {
            const QStringList entries = FileSystem::instance().entries(path);
            for (const QString &entry : entries) {
                if (entry.compare(part, Qt::CaseInsensitive) == 0) {
                    next = path + '/' + entry;
                    break;
                }
            }
        }
        path = next;
    }
    return path;
}

bool VaultPaths::toRelative(const QString &path, QString &relative) const
{
    if (const QChar drive = WindowsPath::driveLetter(path); !drive.isNull()) {
        if (drive != m_letter)
            return false;
        return normalise(path.mid(2), relative);
    }
    if (!path.startsWith('/'))
        return false;
    const QString clean = QDir::cleanPath(path);
    if (clean == m_root) {
        relative.clear();
        return true;
    }
    if (!clean.startsWith(m_root + '/'))
        return false;
    return normalise(clean.mid(m_root.size() + 1), relative);
}

QString VaultPaths::join(const QString &folder, const QString &name)
{
    return folder.isEmpty() ? name : folder + '\\' + name;
}

QString VaultPaths::fileName(const QString &relative)
{
    return relative.mid(relative.lastIndexOf('\\') + 1);
}

QString VaultPaths::parentOf(const QString &relative)
{
    const qsizetype at = relative.lastIndexOf('\\');
    return at < 0 ? QString() : relative.left(at);
}

bool VaultPaths::isValidName(const QString &name)
{
    if (name.isEmpty() || name == QLatin1String(".") || name == QLatin1String(".."))
        return false;
    for (const QChar c : name) {
        if (c.unicode() < 32 || QStringLiteral("\\/:*?\"<>|").contains(c))
            return false;
    }
    return true;
}

bool VaultPaths::isReserved(const QString &relative)
{
    return key(relative.section('\\', 0, 0)) == QLatin1String(".mctask");
}

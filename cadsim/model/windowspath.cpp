#include "cadsim/model/windowspath.h"

namespace {

bool isSeparator(QChar c)
{
    return c == QLatin1Char('\\') || c == QLatin1Char('/');
}

qsizetype lastSeparator(const QString &path)
{
    for (qsizetype i = path.size() - 1; i >= 0; --i) {
        if (isSeparator(path.at(i)))
            return i;
    }
    return -1;
}

bool hasDrive(const QString &path)
{
    return path.size() >= 2 && path.at(0).isLetter() && path.at(1) == QLatin1Char(':');
}

QString normalized(const QString &path)
{
    QString p = path;
    p.replace(QLatin1Char('/'), QLatin1Char('\\'));
    return p.toLower();
}

} // namespace

namespace winpath {

QString fileName(const QString &path)
{
    const qsizetype sep = lastSeparator(path);
    const QString name = path.mid(sep + 1);
    return (sep < 0 && hasDrive(name)) ? name.mid(2) : name;
}

QString folder(const QString &path)
{
    const qsizetype sep = lastSeparator(path);
    if (sep >= 0)
        return path.left(sep + 1);
    return hasDrive(path) ? path.left(2) : QString();
}

QString extension(const QString &path)
{
    const QString name = fileName(path);
    const qsizetype dot = name.lastIndexOf(QLatin1Char('.'));
    return dot < 0 ? QString() : name.mid(dot + 1).toLower();
}

QString baseName(const QString &path)
{
    const QString name = fileName(path);
    const qsizetype dot = name.lastIndexOf(QLatin1Char('.'));
    return dot < 0 ? name : name.left(dot);
}

bool isAbsolute(const QString &path)
{
    return (hasDrive(path) && path.size() >= 3 && isSeparator(path.at(2)))
        || path.startsWith(QLatin1String("\\\\")) || path.startsWith(QLatin1Char('/'));
}

QString join(const QString &folder, const QString &relative)
{
    if (folder.isEmpty() || isAbsolute(relative))
        return relative;
    QString rel = relative;
    while (!rel.isEmpty() && isSeparator(rel.at(0)))
        rel.remove(0, 1);
    if (isSeparator(folder.back()))
        return folder + rel;
    const QChar sep = folder.contains(QLatin1Char('\\')) || hasDrive(folder) ? QLatin1Char('\\') : QLatin1Char('/');
    return folder + sep + rel;
}

bool samePath(const QString &a, const QString &b)
{
    return normalized(a) == normalized(b);
}

} // namespace winpath

PathResolver makeDriveResolver(const QHash<QChar, QString> &drives)
{
    QHash<QChar, QString> table;
    for (auto it = drives.cbegin(); it != drives.cend(); ++it)
        table.insert(it.key().toUpper(), it.value());
    return [table](const QString &path) -> QString {
        if (path.startsWith(QLatin1Char('/')))
            return path;
        if (!winpath::isAbsolute(path) || path.startsWith(QLatin1String("\\\\")))
            return QString();
        const auto it = table.constFind(path.at(0).toUpper());
        if (it == table.constEnd())
            return QString();
        QString rest = path.mid(3);
        rest.replace(QLatin1Char('\\'), QLatin1Char('/'));
        QString root = it.value();
        if (!root.endsWith(QLatin1Char('/')))
            root += QLatin1Char('/');
        return root + rest;
    };
}

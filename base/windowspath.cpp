#include "base/windowspath.h"

#include <QStringList>

namespace WindowsPath {

namespace {

bool hasDrive(const QString &path)
{
    return path.size() >= 2 && path[1] == QLatin1Char(':') && path[0].isLetter() && path[0].unicode() < 128;
}

// "\\server..." with a server name.
bool isUnc(const QString &path)
{
    return path.size() >= 3 && isSeparator(path[0]) && isSeparator(path[1]) && !isSeparator(path[2]);
}

// Splits a path into its root ("C:\", "\\server\share\", "\" or "") and the rest.
std::pair<QString, QString> splitRoot(const QString &path)
{
    QString p = path;
    p.replace(QLatin1Char('/'), QLatin1Char('\\'));
    if (hasDrive(p)) {
        QString rest = p.mid(2);
        // "C:" alone or "C:x" count as rooted at the drive.
        while (rest.startsWith(QLatin1Char('\\')))
            rest.remove(0, 1);
        return {p.left(2).toUpper() + QLatin1Char('\\'), rest};
    }
    if (isUnc(p)) {
        const QStringList parts = p.mid(2).split(QLatin1Char('\\'), Qt::SkipEmptyParts);
        QString root = QStringLiteral("\\\\");
        root += parts.value(0);
        if (parts.size() > 1)
            root += QLatin1Char('\\') + parts[1];
        root += QLatin1Char('\\');
        return {root, parts.mid(2).join(QLatin1Char('\\'))};
    }
    if (p.startsWith(QLatin1Char('\\'))) {
        QString rest = p;
        while (rest.startsWith(QLatin1Char('\\')))
            rest.remove(0, 1);
        return {QStringLiteral("\\"), rest};
    }
    return {QString(), p};
}

QString normalisedKey(const QString &path)
{
    return removeBackslash(canonicalize(path)).toCaseFolded();
}

} // namespace

bool isSeparator(QChar c)
{
    return c == QLatin1Char('\\') || c == QLatin1Char('/');
}

bool isAbsolute(const QString &path)
{
    return hasDrive(path) || isUnc(path);
}

bool isRooted(const QString &path)
{
    return isAbsolute(path) || (!path.isEmpty() && isSeparator(path.front()));
}

QChar driveLetter(const QString &path)
{
    return hasDrive(path) ? path[0].toUpper() : QChar();
}

QString canonicalize(const QString &path)
{
    if (path.isEmpty())
        return path;
    const auto [root, rest] = splitRoot(path);
    const bool trailing = !rest.isEmpty() && isSeparator(path.back());
    QStringList kept;
    for (const QString &part : rest.split(QLatin1Char('\\'), Qt::SkipEmptyParts)) {
        if (part == QLatin1String("."))
            continue;
        if (part == QLatin1String("..")) {
            if (!kept.isEmpty() && kept.back() != QLatin1String(".."))
                kept.removeLast();
            else if (root.isEmpty())
                kept.append(part); // a relative path keeps its leading ".."
            continue;
        }
        kept.append(part);
    }
    QString result = root + kept.join(QLatin1Char('\\'));
    if (trailing && !kept.isEmpty())
        result += QLatin1Char('\\');
    return result;
}

QString append(const QString &base, const QString &more)
{
    if (isAbsolute(more))
        return canonicalize(more);
    QString relative = more;
    while (!relative.isEmpty() && isSeparator(relative.front()))
        relative.remove(0, 1);
    if (base.isEmpty())
        return canonicalize(relative);
    if (relative.isEmpty())
        return canonicalize(base);
    return canonicalize(addBackslash(base) + relative);
}

bool equals(const QString &a, const QString &b)
{
    return normalisedKey(a) == normalisedKey(b);
}

int compare(const QString &a, const QString &b)
{
    return normalisedKey(a).compare(normalisedKey(b));
}

QString fileName(const QString &path)
{
    for (qsizetype i = path.size() - 1; i >= 0; --i) {
        if (isSeparator(path[i]))
            return path.mid(i + 1);
    }
    // "C:name" has no separator but a drive.
    return hasDrive(path) ? path.mid(2) : path;
}

QString extension(const QString &path)
{
    const QString name = fileName(path);
    const qsizetype dot = name.lastIndexOf(QLatin1Char('.'));
    return dot < 0 ? QString() : name.mid(dot + 1);
}

QString removeExtension(const QString &path)
{
    const QString name = fileName(path);
    const qsizetype dot = name.lastIndexOf(QLatin1Char('.'));
    if (dot < 0)
        return path;
    return path.left(path.size() - (name.size() - dot));
}

QString baseName(const QString &path)
{
    return removeExtension(fileName(path));
}

QString parent(const QString &path)
{
    const QString p = removeBackslash(path);
    qsizetype last = -1;
    for (qsizetype i = p.size() - 1; i >= 0; --i) {
        if (isSeparator(p[i])) {
            last = i;
            break;
        }
    }
    if (last < 0)
        return hasDrive(p) ? p.left(2) + QLatin1Char('\\') : QString();
    if (last == 2 && hasDrive(p))
        return p.left(3);
    if (last == 0)
        return p.left(1);
    return p.left(last);
}

QString addBackslash(const QString &path)
{
    if (path.isEmpty() || isSeparator(path.back()))
        return path;
    return path + QLatin1Char('\\');
}

QString removeBackslash(const QString &path)
{
    QString p = path;
    while (p.size() > 1 && isSeparator(p.back())) {
        if (p.size() == 3 && hasDrive(p))
            break;
        p.chop(1);
    }
    return p;
}

} // namespace WindowsPath

PathResolver makeDriveResolver(const QHash<QChar, QString> &drives)
{
    QHash<QChar, QString> table;
    for (auto it = drives.cbegin(); it != drives.cend(); ++it) {
        QString root = it.value();
        if (!root.endsWith(QLatin1Char('/')))
            root += QLatin1Char('/');
        table.insert(it.key().toUpper(), root);
    }
    return [table](const QString &path) -> QString {
        if (path.startsWith(QLatin1Char('/')))
            return path;
        const auto it = table.constFind(WindowsPath::driveLetter(path));
        if (it == table.constEnd())
            return QString();
        QString rest = WindowsPath::canonicalize(path).mid(3);
        rest.replace(QLatin1Char('\\'), QLatin1Char('/'));
        return it.value() + rest;
    };
}

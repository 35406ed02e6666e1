#include "cadsim/engine/fso.h"

#include "base/codepage.h"
#include "cadsim/engine/likematcher.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>

#include <cmath>

namespace cadsim {

namespace {

bool isSeparator(QChar c)
{
    return c == QLatin1Char('\\') || c == QLatin1Char('/');
}

const ScriptValue &arg(ScriptArgs &args, std::size_t i)
{
    static const ScriptValue missing = ScriptValue::missing();
    return i < args.size() && args[i] ? *args[i] : missing;
}

QString requiredString(ScriptArgs &args, std::size_t i)
{
    const ScriptValue &v = arg(args, i);
    if (v.isMissing())
        throw ScriptError(ErrNo::ArgumentNotOptional);
    return v.toString();
}

bool optionalBool(ScriptArgs &args, std::size_t i, bool fallback)
{
    const ScriptValue &v = arg(args, i);
    return v.isMissing() ? fallback : v.toBool();
}

double oleDate(const QDateTime &t)
{
    return oleDateFromParts(t.date().year(), t.date().month(), t.date().day(), t.time().hour(), t.time().minute(),
                            t.time().second());
}

class TextStream final : public ScriptObject {
public:
    TextStream(const QString &nativePath, QIODevice::OpenMode mode) : m_file(nativePath), m_reading(mode & QIODevice::ReadOnly)
    {
        if (!m_file.open(mode))
            throw ScriptError(ErrNo::PermissionDenied);
        if (m_reading) {
            m_content = m_file.readAll();
            m_file.close();
        }
    }
    QString typeName() const override { return QStringLiteral("TextStream"); }
    ScriptValue invoke(const QString &member, CallKind, ScriptArgs &args) override
    {
        const QString m = member.toLower();
        if (m == QLatin1String("atendofstream")) {
            requireRead();
            return ScriptValue::fromBool(m_pos >= m_content.size());
        }
        if (m == QLatin1String("readline")) {
            requireRead();
            if (m_pos >= m_content.size())
                throw ScriptError(ErrNo::InputPastEnd);
            qsizetype end = m_pos;
            while (end < m_content.size() && m_content.at(end) != '\r' && m_content.at(end) != '\n')
                ++end;
            const QString line = decodeWindows1252(m_content.mid(m_pos, end - m_pos));
            if (end < m_content.size() && m_content.at(end) == '\r')
                ++end;
            if (end < m_content.size() && m_content.at(end) == '\n')
                ++end;
            m_pos = end;
            ++m_line;
            return ScriptValue::fromString(line);
        }
        if (m == QLatin1String("readall")) {
            requireRead();
            const QString rest = decodeWindows1252(m_content.mid(m_pos));
            m_pos = m_content.size();
            return ScriptValue::fromString(rest);
        }
        if (m == QLatin1String("line"))
            return ScriptValue::fromLong(m_line);
        if (m == QLatin1String("write") || m == QLatin1String("writeline") || m == QLatin1String("writeblanklines")) {
            if (m_reading || !m_file.isOpen())
                throw ScriptError(ErrNo::BadFileMode);
            QString text;
            if (m == QLatin1String("writeblanklines")) {
                for (int i = 0; i < arg(args, 0).toLong(); ++i)
                    text += QStringLiteral("\r\n");
            } else {
                text = arg(args, 0).isMissing() ? QString() : arg(args, 0).toString();
                if (m == QLatin1String("writeline"))
                    text += QStringLiteral("\r\n");
            }
            m_file.write(encodeWindows1252(text));
            m_file.flush();
            return {};
        }
        if (m == QLatin1String("close")) {
            m_file.close();
            return {};
        }
        throw ScriptError(ErrNo::NoSuchMember);
    }

private:
    void requireRead() const
    {
        if (!m_reading)
            throw ScriptError(ErrNo::BadFileMode);
    }
    QFile m_file;
    bool m_reading;
    QByteArray m_content;
    qsizetype m_pos = 0;
    int m_line = 1;
};

class FileItem final : public ScriptObject {
public:
    FileItem(QString winPath, PathResolver resolve) : m_path(std::move(winPath)), m_resolve(std::move(resolve)) {}
    QString typeName() const override { return QStringLiteral("File"); }
    ScriptValue defaultValue(ScriptArgs &) override { return ScriptValue::fromString(m_path); }
    ScriptValue invoke(const QString &member, CallKind, ScriptArgs &) override
    {
        const QString m = member.toLower();
        const QFileInfo info(m_resolve(m_path));
        if (m == QLatin1String("name"))
            return ScriptValue::fromString(FileSystemObject::fileName(m_path));
        if (m == QLatin1String("path"))
            return ScriptValue::fromString(m_path);
        if (m == QLatin1String("size"))
            return ScriptValue::fromNumber(static_cast<double>(info.size()));
        if (m == QLatin1String("datelastmodified"))
            return ScriptValue::fromDate(oleDate(info.lastModified()));
        if (m == QLatin1String("parentfolder"))
            return ScriptValue::fromString(FileSystemObject::parentFolder(m_path));
        if (m == QLatin1String("delete")) {
            if (!QFile::remove(info.filePath()))
                throw ScriptError(ErrNo::PermissionDenied);
            return {};
        }
        throw ScriptError(ErrNo::NoSuchMember);
    }

private:
    QString m_path;
    PathResolver m_resolve;
};

class ItemCollection final : public ScriptObject {
public:
    ItemCollection(std::vector<std::pair<QString, ScriptValue>> items) : m_items(std::move(items)) {}
    QString typeName() const override { return QStringLiteral("Files"); }
    std::vector<ScriptValue> enumerate() override
    {
        std::vector<ScriptValue> out;
        for (const auto &[name, v] : m_items)
            out.push_back(v);
        return out;
    }
    ScriptValue defaultValue(ScriptArgs &args) override { return item(arg(args, 0)); }
    ScriptValue invoke(const QString &member, CallKind, ScriptArgs &args) override
    {
        const QString m = member.toLower();
        if (m == QLatin1String("count"))
            return ScriptValue::fromLong(static_cast<std::int32_t>(m_items.size()));
        if (m == QLatin1String("item"))
            return item(arg(args, 0));
        throw ScriptError(ErrNo::NoSuchMember);
    }

private:
    ScriptValue item(const ScriptValue &key) const
    {
        const QString k = key.toString();
        for (const auto &[name, v] : m_items) {
            if (name.compare(k, Qt::CaseInsensitive) == 0)
                return v;
        }
        throw ScriptError(ErrNo::FileNotFound);
    }
    std::vector<std::pair<QString, ScriptValue>> m_items;
};

class FolderItem final : public ScriptObject {
public:
    FolderItem(QString winPath, PathResolver resolve) : m_path(std::move(winPath)), m_resolve(std::move(resolve)) {}
    QString typeName() const override { return QStringLiteral("Folder"); }
    ScriptValue defaultValue(ScriptArgs &) override { return ScriptValue::fromString(m_path); }
    ScriptValue invoke(const QString &member, CallKind, ScriptArgs &) override
    {
        const QString m = member.toLower();
        const QString native = m_resolve(m_path);
        if (m == QLatin1String("name"))
            return ScriptValue::fromString(FileSystemObject::fileName(m_path));
        if (m == QLatin1String("path"))
            return ScriptValue::fromString(m_path);
        if (m == QLatin1String("files") || m == QLatin1String("subfolders")) {
            const bool files = m == QLatin1String("files");
            const QStringList names = QDir(native).entryList((files ? QDir::Files : QDir::Dirs) | QDir::NoDotAndDotDot | QDir::Hidden,
                                                             QDir::Name | QDir::IgnoreCase);
            std::vector<std::pair<QString, ScriptValue>> items;
            for (const QString &name : names) {
                const QString child = FileSystemObject::buildPath(m_path, name);
                std::shared_ptr<ScriptObject> obj;
                if (files)
                    obj = std::make_shared<FileItem>(child, m_resolve);
                else
                    obj = std::make_shared<FolderItem>(child, m_resolve);
                items.emplace_back(name, ScriptValue::fromObject(obj));
            }
            return ScriptValue::fromObject(std::make_shared<ItemCollection>(std::move(items)));
        }
        if (m == QLatin1String("parentfolder"))
            return ScriptValue::fromString(FileSystemObject::parentFolder(m_path));
        if (m == QLatin1String("delete")) {
            if (!QDir(native).removeRecursively())
                throw ScriptError(ErrNo::PermissionDenied);
            return {};
        }
        throw ScriptError(ErrNo::NoSuchMember);
    }

private:
    QString m_path;
    PathResolver m_resolve;
};

} // namespace

FileSystemObject::FileSystemObject(PathResolver resolver) : m_resolve(std::move(resolver))
{
    if (!m_resolve)
        m_resolve = [](const QString &p) { return p; };
}

QString FileSystemObject::fileName(const QString &path)
{
    QString p = path;
    while (p.size() > 1 && isSeparator(p.back()))
        p.chop(1);
    int i = p.size() - 1;
    while (i >= 0 && !isSeparator(p.at(i)))
        --i;
    const QString name = p.mid(i + 1);
    return name.size() == 2 && name.at(1) == QLatin1Char(':') ? QString() : name;
}

QString FileSystemObject::parentFolder(const QString &path)
{
    QString p = path;
    while (p.size() > 1 && isSeparator(p.back()))
        p.chop(1);
    int i = p.size() - 1;
    while (i >= 0 && !isSeparator(p.at(i)))
        --i;
    if (i < 0)
        return QString();
    QString parent = p.left(i);
    if (parent.size() == 2 && parent.at(1) == QLatin1Char(':'))
        parent += QLatin1Char('\\');
    return parent;
}

QString FileSystemObject::extension(const QString &path)
{
    const QString name = fileName(path);
    const int dot = name.lastIndexOf(QLatin1Char('.'));
    return dot < 0 ? QString() : name.mid(dot + 1);
}

QString FileSystemObject::baseName(const QString &path)
{
    const QString name = fileName(path);
    const int dot = name.lastIndexOf(QLatin1Char('.'));
    return dot < 0 ? name : name.left(dot);
}

QString FileSystemObject::buildPath(const QString &path, const QString &name)
{
    if (path.isEmpty())
        return name;
    if (isSeparator(path.back()) || (!name.isEmpty() && isSeparator(name.front())))
        return path + name;
    return path + QLatin1Char('\\') + name;
}

ScriptValue FileSystemObject::invoke(const QString &member, CallKind, ScriptArgs &args)
{
    const QString m = member.toLower();
    if (m == QLatin1String("fileexists")) {
        const QFileInfo info(m_resolve(requiredString(args, 0)));
        return ScriptValue::fromBool(info.exists() && info.isFile());
    }
    if (m == QLatin1String("folderexists"))
        return ScriptValue::fromBool(QFileInfo(m_resolve(requiredString(args, 0))).isDir());
    if (m == QLatin1String("getfilename"))
        return ScriptValue::fromString(fileName(requiredString(args, 0)));
    if (m == QLatin1String("getbasename"))
        return ScriptValue::fromString(baseName(requiredString(args, 0)));
    if (m == QLatin1String("getextensionname"))
        return ScriptValue::fromString(extension(requiredString(args, 0)));
    if (m == QLatin1String("getparentfoldername"))
        return ScriptValue::fromString(parentFolder(requiredString(args, 0)));
    if (m == QLatin1String("buildpath"))
        return ScriptValue::fromString(buildPath(requiredString(args, 0), requiredString(args, 1)));
    if (m == QLatin1String("getabsolutepathname"))
        return ScriptValue::fromString(requiredString(args, 0));
    if (m == QLatin1String("gettempname"))
        return ScriptValue::fromString(QStringLiteral("rad%1.tmp").arg(QRandomGenerator::global()->bounded(0x100000), 5, 16, QLatin1Char('0')).toUpper());
    if (m == QLatin1String("createfolder")) {
        const QString win = requiredString(args, 0);
        const QString native = m_resolve(win);
        if (QFileInfo::exists(native))
            throw ScriptError(ErrNo::FileAlreadyExists);
        if (!QFileInfo(native).dir().exists())
            throw ScriptError(ErrNo::PathNotFound);
        if (!QDir().mkdir(native))
            throw ScriptError(ErrNo::PermissionDenied);
        return ScriptValue::fromObject(std::make_shared<FolderItem>(win, m_resolve));
    }
    if (m == QLatin1String("deletefile")) {
        const QString win = requiredString(args, 0);
        const QString pattern = fileName(win);
        const QDir dir(m_resolve(parentFolder(win).isEmpty() ? QStringLiteral(".") : parentFolder(win)));
        int removed = 0;
        if (pattern.contains(QLatin1Char('*')) || pattern.contains(QLatin1Char('?'))) {
            for (const QString &name : dir.entryList(QDir::Files | QDir::Hidden)) {
                if (likeMatch(name, pattern, true)) {
                    if (!QFile::remove(dir.filePath(name)))
                        throw ScriptError(ErrNo::PermissionDenied);
                    ++removed;
                }
            }
        } else {
            const QString native = m_resolve(win);
            if (QFileInfo(native).isFile()) {
                if (!QFile::remove(native))
                    throw ScriptError(ErrNo::PermissionDenied);
                ++removed;
            }
        }
        if (removed == 0)
            throw ScriptError(ErrNo::FileNotFound);
        return {};
    }
    if (m == QLatin1String("deletefolder")) {
        const QString native = m_resolve(requiredString(args, 0));
        if (!QFileInfo(native).isDir())
            throw ScriptError(ErrNo::PathNotFound);
        if (!QDir(native).removeRecursively())
            throw ScriptError(ErrNo::PermissionDenied);
        return {};
    }
    if (m == QLatin1String("copyfile") || m == QLatin1String("movefile")) {
        const QString src = m_resolve(requiredString(args, 0));
        QString dstWin = requiredString(args, 1);
        if (!dstWin.isEmpty() && isSeparator(dstWin.back()))
            dstWin += fileName(requiredString(args, 0));
        const QString dst = m_resolve(dstWin);
        const bool overwrite = m == QLatin1String("copyfile") ? optionalBool(args, 2, true) : false;
        if (!QFileInfo(src).isFile())
            throw ScriptError(ErrNo::FileNotFound);
        if (QFileInfo::exists(dst)) {
            if (!overwrite)
                throw ScriptError(ErrNo::FileAlreadyExists);
            if (!QFile::remove(dst))
                throw ScriptError(ErrNo::PermissionDenied);
        }
        if (!QFileInfo(dst).dir().exists())
            throw ScriptError(ErrNo::PathNotFound);
        const bool ok = m == QLatin1String("copyfile") ? QFile::copy(src, dst) : QFile::rename(src, dst);
        if (!ok)
            throw ScriptError(ErrNo::PermissionDenied);
        return {};
    }
    if (m == QLatin1String("getfile")) {
        const QString win = requiredString(args, 0);
        if (!QFileInfo(m_resolve(win)).isFile())
            throw ScriptError(ErrNo::FileNotFound);
        return ScriptValue::fromObject(std::make_shared<FileItem>(win, m_resolve));
    }
    if (m == QLatin1String("getfolder")) {
        const QString win = requiredString(args, 0);
        if (!QFileInfo(m_resolve(win)).isDir())
            throw ScriptError(ErrNo::PathNotFound);
        return ScriptValue::fromObject(std::make_shared<FolderItem>(win, m_resolve));
    }
    if (m == QLatin1String("opentextfile") || m == QLatin1String("createtextfile")) {
        const QString native = m_resolve(requiredString(args, 0));
        const bool create = m == QLatin1String("createtextfile");
        const int ioMode = create ? 2 : (arg(args, 1).isMissing() ? 1 : arg(args, 1).toLong());
        const bool mayCreate = create || optionalBool(args, 2, false);
        const bool exists = QFileInfo(native).isFile();
        if (create && exists && !optionalBool(args, 1, true))
            throw ScriptError(ErrNo::FileAlreadyExists);
        if (!exists && !mayCreate)
            throw ScriptError(ErrNo::FileNotFound);
        if (!QFileInfo(native).dir().exists())
            throw ScriptError(ErrNo::PathNotFound);
        QIODevice::OpenMode mode;
        if (ioMode == 1) {
            if (!exists)
                QFile(native).open(QIODevice::WriteOnly);
            mode = QIODevice::ReadOnly;
        } else if (ioMode == 8) {
            mode = QIODevice::WriteOnly | QIODevice::Append;
        } else if (ioMode == 2) {
            mode = QIODevice::WriteOnly | QIODevice::Truncate;
        } else {
            throw ScriptError(ErrNo::InvalidCall);
        }
        return ScriptValue::fromObject(std::make_shared<TextStream>(native, mode));
    }
    throw ScriptError(ErrNo::NoSuchMember);
}

} // namespace cadsim

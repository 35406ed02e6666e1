#include "cadsim/engine/fso.h"

#include "base/codepage.h"
#include "base/windowspath.h"
#include "cadsim/engine/likematcher.h"

#include <algorithm>

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>

#include <cmath>

namespace cadsim {

namespace {

// FileSystemObject's path functions ignore trailing separators: "C:\\a\\b\\" names "b".
QString withoutTrailingSeparators(const QString &path)
{
    QString p = path;
    while (p.size() > 1 && WindowsPath::isSeparator(p.back()))
        p.chop(1);
    return p;
}

QString requiredString(ScriptArgs &args, std::size_t i)
{
    return requiredArg(args, i).toString();
}

bool optionalBool(ScriptArgs &args, std::size_t i, bool fallback)
{
    const ScriptValue &v = optionalArg(args, i);
    return v.isMissing() ? fallback : v.toBool();
}

double oleDate(const QDateTime &t)
{
    return oleDateFromParts(t.date().year(), t.date().month(), t.date().day(), t.time().hour(), t.time().minute(),
                            t.time().second());
}

// A handler that ignores the call kind.
template <class F>
MemberTable::Handler plain(F f)
{
    return [f = std::move(f)](CallKind, ScriptArgs &args) { return f(args); };
}

class TextStream final : public TableObject {
public:
    TextStream(const QString &nativePath, QIODevice::OpenMode mode) : m_file(nativePath), m_reading(mode & QIODevice::ReadOnly)
    {
        if (!m_file.open(mode))
            throw ScriptError(ErrNo::PermissionDenied);
        if (m_reading) {
            m_content = m_file.readAll();
            m_file.close();
        }
        method("AtEndOfStream", plain([this](ScriptArgs &) {
            requireRead();
            return ScriptValue::fromBool(m_pos >= m_content.size());
        }));
        method("ReadLine", plain([this](ScriptArgs &) { return ScriptValue::fromString(readLine()); }));
        method("ReadAll", plain([this](ScriptArgs &) {
            requireRead();
            const QString rest = decodeWindows1252(m_content.mid(m_pos));
            m_pos = m_content.size();
            return ScriptValue::fromString(rest);
        }));
        method("Line", plain([this](ScriptArgs &) { return ScriptValue::fromLong(m_line); }));
        method("Write", plain([this](ScriptArgs &args) { return write(text(args)); }));
        method("WriteLine", plain([this](ScriptArgs &args) { return write(text(args) + QStringLiteral("\r\n")); }));
        method("WriteBlankLines", plain([this](ScriptArgs &args) {
            return write(QStringLiteral("\r\n").repeated(std::max(0, optionalArg(args, 0).toLong())));
        }));
        method("Close", plain([this](ScriptArgs &) {
            m_file.close();
            return ScriptValue();
        }));
    }
    QString typeName() const override { return QStringLiteral("TextStream"); }

private:
    void requireRead() const
    {
        if (!m_reading)
            throw ScriptError(ErrNo::BadFileMode);
    }
    static QString text(ScriptArgs &args)
    {
        const ScriptValue &v = optionalArg(args, 0);
        return v.isMissing() ? QString() : v.toString();
    }
    QString readLine()
    {
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
        return line;
    }
    ScriptValue write(const QString &text)
    {
        if (m_reading || !m_file.isOpen())
            throw ScriptError(ErrNo::BadFileMode);
        m_file.write(encodeWindows1252(text));
        m_file.flush();
        return {};
    }

    QFile m_file;
    bool m_reading;
    QByteArray m_content;
    qsizetype m_pos = 0;
    int m_line = 1;
};

// What files and folders have alike: the Windows path and the members that read it.
class PathItem : public TableObject {
public:
    PathItem(QString winPath, PathResolver resolve) : m_path(std::move(winPath)), m_resolve(std::move(resolve))
    {
        method("Name", plain([this](ScriptArgs &) { return ScriptValue::fromString(FileSystemObject::fileName(m_path)); }));
        method("Path", plain([this](ScriptArgs &) { return ScriptValue::fromString(m_path); }));
        method("ParentFolder", plain([this](ScriptArgs &) {
            return ScriptValue::fromString(FileSystemObject::parentFolder(m_path));
        }));
    }
    ScriptValue defaultValue(ScriptArgs &) override { return ScriptValue::fromString(m_path); }

protected:
    QString native() const { return m_resolve(m_path); }

    QString m_path;
    PathResolver m_resolve;
};

class FileItem final : public PathItem {
public:
    FileItem(QString winPath, PathResolver resolve) : PathItem(std::move(winPath), std::move(resolve))
    {
        method("Size", plain([this](ScriptArgs &) {
            return ScriptValue::fromNumber(static_cast<double>(QFileInfo(native()).size()));
        }));
        method("DateLastModified", plain([this](ScriptArgs &) {
            return ScriptValue::fromDate(oleDate(QFileInfo(native()).lastModified()));
        }));
        method("Delete", plain([this](ScriptArgs &) {
            if (!QFile::remove(native()))
                throw ScriptError(ErrNo::PermissionDenied);
            return ScriptValue();
        }));
    }
    QString typeName() const override { return QStringLiteral("File"); }
};

class ItemCollection final : public TableObject {
public:
    ItemCollection(std::vector<std::pair<QString, ScriptValue>> items) : m_items(std::move(items))
    {
        method("Count", plain([this](ScriptArgs &) { return ScriptValue::fromLong(static_cast<std::int32_t>(m_items.size())); }));
        method("Item", plain([this](ScriptArgs &args) { return item(optionalArg(args, 0)); }));
    }
    QString typeName() const override { return QStringLiteral("Files"); }
    std::vector<ScriptValue> enumerate() override
    {
        std::vector<ScriptValue> out;
        for (const auto &[name, v] : m_items)
            out.push_back(v);
        return out;
    }
    ScriptValue defaultValue(ScriptArgs &args) override { return item(optionalArg(args, 0)); }

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

class FolderItem final : public PathItem {
public:
    FolderItem(QString winPath, PathResolver resolve) : PathItem(std::move(winPath), std::move(resolve))
    {
        method("Files", plain([this](ScriptArgs &) { return children(true); }));
        method("SubFolders", plain([this](ScriptArgs &) { return children(false); }));
        method("Delete", plain([this](ScriptArgs &) {
            if (!QDir(native()).removeRecursively())
                throw ScriptError(ErrNo::PermissionDenied);
            return ScriptValue();
        }));
    }
    QString typeName() const override { return QStringLiteral("Folder"); }

private:
    ScriptValue children(bool files) const
    {
        const QStringList names = QDir(native()).entryList((files ? QDir::Files : QDir::Dirs) | QDir::NoDotAndDotDot | QDir::Hidden,
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
};

} // namespace

FileSystemObject::FileSystemObject(PathResolver resolver) : m_resolve(std::move(resolver))
{
    if (!m_resolve)
        m_resolve = [](const QString &p) { return p; };
    addMembers();
}

QString FileSystemObject::fileName(const QString &path)
{
    return WindowsPath::fileName(withoutTrailingSeparators(path));
}

QString FileSystemObject::parentFolder(const QString &path)
{
    const QString p = withoutTrailingSeparators(path);
    const QString parent = WindowsPath::parent(p);
    // A drive or a name without a folder has no parent; "C:\\a" has "C:\\".
    return WindowsPath::fileName(p).isEmpty() || parent == p ? QString() : parent;
}

QString FileSystemObject::extension(const QString &path)
{
    return WindowsPath::extension(fileName(path));
}

QString FileSystemObject::baseName(const QString &path)
{
    return WindowsPath::baseName(fileName(path));
}

QString FileSystemObject::buildPath(const QString &path, const QString &name)
{
    if (path.isEmpty())
        return name;
    if (WindowsPath::isSeparator(path.back()) || (!name.isEmpty() && WindowsPath::isSeparator(name.front())))
        return path + name;
    return path + QLatin1Char('\\') + name;
}

void FileSystemObject::addMembers()
{
    const auto path = [this](ScriptArgs &args, std::size_t i) { return m_resolve(requiredString(args, i)); };
    method("FileExists", plain([path](ScriptArgs &args) {
        const QFileInfo info(path(args, 0));
        return ScriptValue::fromBool(info.exists() && info.isFile());
    }));
    method("FolderExists", plain([path](ScriptArgs &args) { return ScriptValue::fromBool(QFileInfo(path(args, 0)).isDir()); }));
    const auto text = [this](const char *name, QString (*f)(const QString &)) {
        method(name, plain([f](ScriptArgs &args) { return ScriptValue::fromString(f(requiredString(args, 0))); }));
    };
    text("GetFileName", fileName);
    text("GetBaseName", baseName);
    text("GetExtensionName", extension);
    text("GetParentFolderName", parentFolder);
    text("GetAbsolutePathName", [](const QString &p) { return p; });
    method("BuildPath", plain([](ScriptArgs &args) {
        return ScriptValue::fromString(buildPath(requiredString(args, 0), requiredString(args, 1)));
    }));
    method("GetTempName", plain([](ScriptArgs &) {
        return ScriptValue::fromString(QStringLiteral("rad%1.tmp").arg(QRandomGenerator::global()->bounded(0x100000), 5, 16, QLatin1Char('0')).toUpper());
    }));
    method("CreateFolder", plain([this](ScriptArgs &args) {
        const QString win = requiredString(args, 0);
        const QString native = m_resolve(win);
        if (QFileInfo::exists(native))
            throw ScriptError(ErrNo::FileAlreadyExists);
        if (!QFileInfo(native).dir().exists())
            throw ScriptError(ErrNo::PathNotFound);
        if (!QDir().mkdir(native))
            throw ScriptError(ErrNo::PermissionDenied);
        return ScriptValue::fromObject(std::make_shared<FolderItem>(win, m_resolve));
    }));
    method("DeleteFile", plain([this](ScriptArgs &args) { return deleteFile(requiredString(args, 0)); }));
    method("DeleteFolder", plain([path](ScriptArgs &args) {
        const QString native = path(args, 0);
        if (!QFileInfo(native).isDir())
            throw ScriptError(ErrNo::PathNotFound);
        if (!QDir(native).removeRecursively())
            throw ScriptError(ErrNo::PermissionDenied);
        return ScriptValue();
    }));
    method("CopyFile", plain([this](ScriptArgs &args) { return copyOrMove(args, true); }));
    method("MoveFile", plain([this](ScriptArgs &args) { return copyOrMove(args, false); }));
    method("GetFile", plain([this](ScriptArgs &args) {
        const QString win = requiredString(args, 0);
        if (!QFileInfo(m_resolve(win)).isFile())
            throw ScriptError(ErrNo::FileNotFound);
        return ScriptValue::fromObject(std::make_shared<FileItem>(win, m_resolve));
    }));
    method("GetFolder", plain([this](ScriptArgs &args) {
        const QString win = requiredString(args, 0);
        if (!QFileInfo(m_resolve(win)).isDir())
            throw ScriptError(ErrNo::PathNotFound);
        return ScriptValue::fromObject(std::make_shared<FolderItem>(win, m_resolve));
    }));
    method("OpenTextFile", plain([this](ScriptArgs &args) { return openText(args, false); }));
    method("CreateTextFile", plain([this](ScriptArgs &args) { return openText(args, true); }));
}

ScriptValue FileSystemObject::deleteFile(const QString &win) const
{
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

ScriptValue FileSystemObject::copyOrMove(ScriptArgs &args, bool copy) const
{
    const QString src = m_resolve(requiredString(args, 0));
    QString dstWin = requiredString(args, 1);
    if (!dstWin.isEmpty() && WindowsPath::isSeparator(dstWin.back()))
        dstWin += fileName(requiredString(args, 0));
    const QString dst = m_resolve(dstWin);
    const bool overwrite = copy ? optionalBool(args, 2, true) : false;
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
    const bool ok = copy ? QFile::copy(src, dst) : QFile::rename(src, dst);
    if (!ok)
        throw ScriptError(ErrNo::PermissionDenied);
    return {};
}

ScriptValue FileSystemObject::openText(ScriptArgs &args, bool create) const
{
    const QString native = m_resolve(requiredString(args, 0));
    const int ioMode = create ? 2 : (optionalArg(args, 1).isMissing() ? 1 : optionalArg(args, 1).toLong());
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

} // namespace cadsim

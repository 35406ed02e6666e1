#include "cadsim/engine/filetable.h"

#include "base/codepage.h"
#include "cadsim/engine/scripterror.h"

#include <QDir>
#include <QFileInfo>

namespace cadsim {

void FileTable::open(int number, const QString &nativePath, OpenMode mode)
{
    if (number < 1 || number > kMaxFiles)
        throw ScriptError(ErrNo::BadFileNameOrNumber);
    if (m_files.count(number))
        throw ScriptError(ErrNo::FileAlreadyOpen);
    if (mode == OpenMode::Binary || mode == OpenMode::Random)
        throw ScriptError(ErrNo::BadFileMode);
    if (nativePath.isEmpty())
        throw ScriptError(ErrNo::BadFileNameOrNumber);
    const QFileInfo info(nativePath);
    if (info.isDir())
        throw ScriptError(ErrNo::PathFileAccess);
    if (mode != OpenMode::Input && isPathOpen(nativePath))
        throw ScriptError(ErrNo::FileAlreadyOpen);
    OpenFile f;
    f.mode = mode;
    f.path = info.absoluteFilePath();
    f.file = std::make_unique<QFile>(nativePath);
    if (mode == OpenMode::Input) {
        if (!info.exists())
            throw ScriptError(ErrNo::FileNotFound);
        if (!f.file->open(QIODevice::ReadOnly))
            throw ScriptError(ErrNo::PermissionDenied);
        f.content = f.file->readAll();
        f.file->close();
    } else {
        if (!info.dir().exists())
            throw ScriptError(ErrNo::PathNotFound);
        const QIODevice::OpenMode qmode = mode == OpenMode::Append ? (QIODevice::WriteOnly | QIODevice::Append)
                                                                   : (QIODevice::WriteOnly | QIODevice::Truncate);
        if (!f.file->open(qmode))
            throw ScriptError(ErrNo::PermissionDenied);
    }
    m_files.emplace(number, std::move(f));
}

FileTable::OpenFile &FileTable::get(int number)
{
    const auto it = m_files.find(number);
    if (it == m_files.end())
        throw ScriptError(ErrNo::BadFileNameOrNumber);
    return it->second;
}

void FileTable::close(int number)
{
    const auto it = m_files.find(number);
    if (it == m_files.end())
        return; // closing a file that is not open is no error
    m_files.erase(it);
}

void FileTable::closeAll()
{
    m_files.clear();
}

bool FileTable::isPathOpen(const QString &nativePath) const
{
    const QString abs = QFileInfo(nativePath).absoluteFilePath();
    for (const auto &[n, f] : m_files) {
        if (f.path == abs)
            return true;
    }
    return false;
}

void FileTable::write(int number, const QString &text)
{
    OpenFile &f = get(number);
    if (f.mode == OpenMode::Input)
        throw ScriptError(ErrNo::BadFileMode);
    const QByteArray bytes = encodeWindows1252(text);
    if (f.file->write(bytes) != bytes.size())
        throw ScriptError(61, QStringLiteral("Disk full"));
    f.file->flush();
}

QString FileTable::readLine(int number)
{
    OpenFile &f = get(number);
    if (f.mode != OpenMode::Input)
        throw ScriptError(ErrNo::BadFileMode);
    if (f.position >= f.content.size())
        throw ScriptError(ErrNo::InputPastEnd);
    qsizetype end = f.position;
    while (end < f.content.size() && f.content.at(end) != '\r' && f.content.at(end) != '\n')
        ++end;
    const QString line = decodeWindows1252(f.content.mid(f.position, end - f.position));
    if (end < f.content.size() && f.content.at(end) == '\r')
        ++end;
    if (end < f.content.size() && f.content.at(end) == '\n')
        ++end;
    f.position = end;
    return line;
}

QString FileTable::readItem(int number)
{
    OpenFile &f = get(number);
    if (f.mode != OpenMode::Input)
        throw ScriptError(ErrNo::BadFileMode);
    const QByteArray &c = f.content;
    qsizetype p = f.position;
    while (p < c.size() && (c.at(p) == ' ' || c.at(p) == '\t'))
        ++p;
    if (p >= c.size())
        throw ScriptError(ErrNo::InputPastEnd);
    QByteArray item;
    if (c.at(p) == '"') {
        const qsizetype close = c.indexOf('"', p + 1);
        const qsizetype end = close < 0 ? c.size() : close + 1;
        item = c.mid(p, end - p);
        if (close < 0)
            item += '"';
        p = end;
        while (p < c.size() && c.at(p) != ',' && c.at(p) != '\r' && c.at(p) != '\n')
            ++p;
    } else {
        const qsizetype start = p;
        while (p < c.size() && c.at(p) != ',' && c.at(p) != '\r' && c.at(p) != '\n')
            ++p;
        item = c.mid(start, p - start).trimmed();
    }
    if (p < c.size() && c.at(p) == ',') {
        ++p;
    } else {
        if (p < c.size() && c.at(p) == '\r')
            ++p;
        if (p < c.size() && c.at(p) == '\n')
            ++p;
    }
    f.position = p;
    return decodeWindows1252(item);
}

qint64 FileTable::length(int number)
{
    OpenFile &f = get(number);
    if (f.mode == OpenMode::Input)
        return f.content.size();
    f.file->flush();
    return f.file->size();
}

bool FileTable::atEnd(int number)
{
    OpenFile &f = get(number);
    if (f.mode == OpenMode::Input)
        return f.position >= f.content.size();
    return true;
}

int FileTable::freeFile() const
{
    for (int n = 1; n <= kMaxFiles; ++n) {
        if (!m_files.count(n))
            return n;
    }
    throw ScriptError(ErrNo::TooManyFiles);
}

} // namespace cadsim

#include "platform/filesystem.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include <atomic>
#include <cstdio>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

namespace {

std::atomic<FileSystem *> g_override{nullptr};

// Writable means the owner's write bit is set, like the read-only attribute
// on Windows. access() would say yes to root for every file.
bool ownerWritable(const QFileInfo &info)
{
    return info.exists() && (info.permissions() & QFileDevice::WriteOwner);
}

constexpr QFileDevice::Permissions kWriteBits =
    QFileDevice::WriteOwner | QFileDevice::WriteUser | QFileDevice::WriteGroup | QFileDevice::WriteOther;

} // namespace

FileSystem &FileSystem::instance()
{
    if (FileSystem *fs = g_override.load())
        return *fs;
    static RealFileSystem real;
    return real;
}

FileSystem *FileSystem::setInstance(FileSystem *fileSystem)
{
    return g_override.exchange(fileSystem);
}

bool RealFileSystem::exists(const QString &path) const
{
    return QFileInfo::exists(path);
}

bool RealFileSystem::isDirectory(const QString &path) const
{
    return QFileInfo(path).isDir();
}

std::optional<QByteArray> RealFileSystem::read(const QString &path) const
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    return file.readAll();
}

bool RealFileSystem::write(const QString &path, const QByteArray &data)
{
    // A read-only file stays untouched, as on Windows; QSaveFile would
    // otherwise replace it by renaming over it.
    const QFileInfo info(path);
    if (info.exists() && (!info.isFile() || !ownerWritable(info)))
        return false;
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    if (file.write(data) != data.size()) {
        file.cancelWriting();
        return false;
    }
    return file.commit();
}

bool RealFileSystem::replace(const QString &from, const QString &to)
{
    return ::rename(QFile::encodeName(from).constData(), QFile::encodeName(to).constData()) == 0;
}

bool RealFileSystem::append(const QString &path, const QByteArray &data)
{
    const QFileInfo info(path);
    if (info.exists() && (!info.isFile() || !ownerWritable(info)))
        return false;
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Append))
        return false;
    return file.write(data) == data.size();
}

bool RealFileSystem::create(const QString &path, const QByteArray &data)
{
    const int fd = ::open(QFile::encodeName(path).constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (fd < 0)
        return false;
    QFile file;
    if (!file.open(fd, QIODevice::WriteOnly, QFileDevice::AutoCloseHandle)) {
        ::close(fd);
        return false;
    }
    return file.write(data) == data.size();
}

bool RealFileSystem::setOwnerOnly(const QString &path)
{
    return QFile::setPermissions(path, QFileDevice::ReadOwner | QFileDevice::WriteOwner);
}

bool FileSystem::rename(const QString &from, const QString &to)
{
    const std::optional<QByteArray> data = read(from);
    return data && write(to, *data) && remove(from);
}

bool RealFileSystem::rename(const QString &from, const QString &to)
{
    const QFileInfo target(to);
    if (target.exists() && (!target.isFile() || !ownerWritable(target)))
        return false;
    return ::rename(QFile::encodeName(from).constData(), QFile::encodeName(to).constData()) == 0;
}

bool RealFileSystem::remove(const QString &path)
{
    const QFileInfo info(path);
    if (!info.isFile() || !ownerWritable(info))
        return false;
    return QFile::remove(path);
}

bool RealFileSystem::isWritable(const QString &path) const
{
    return ownerWritable(QFileInfo(path));
}

bool RealFileSystem::setWritable(const QString &path, bool writable)
{
    if (!QFileInfo::exists(path))
        return false;
    const QFileDevice::Permissions current = QFile::permissions(path);
    const QFileDevice::Permissions wanted =
        writable ? current | QFileDevice::WriteOwner | QFileDevice::WriteUser : current & ~kWriteBits;
    return QFile::setPermissions(path, wanted);
}

bool RealFileSystem::mkpath(const QString &path)
{
    return QDir().mkpath(path);
}

QStringList RealFileSystem::entries(const QString &directory) const
{
    // readdir gives names without a stat per entry, which matters on large
    // folders (case-insensitive lookups list whole folders).
    QStringList names;
    DIR *dir = ::opendir(QFile::encodeName(directory).constData());
    if (!dir)
        return names;
    while (const dirent *entry = ::readdir(dir)) {
        const char *name = entry->d_name;
        if (std::strcmp(name, ".") != 0 && std::strcmp(name, "..") != 0)
            names.append(QFile::decodeName(name));
    }
    ::closedir(dir);
    names.sort();
    return names;
}

qint64 RealFileSystem::size(const QString &path) const
{
    const QFileInfo info(path);
    return info.exists() ? info.size() : -1;
}

QDateTime RealFileSystem::lastModified(const QString &path) const
{
    return QFileInfo(path).lastModified();
}

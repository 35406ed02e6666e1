#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <QStringList>

#include <optional>

// The add-in's file-system operations on native paths, behind an interface
// so tests can run on memory. Windows paths are turned into native ones by
// the DriveMap first.
class FileSystem
{
public:
    virtual ~FileSystem() = default;

    virtual bool exists(const QString &path) const = 0;
    virtual bool isDirectory(const QString &path) const = 0;
    virtual std::optional<QByteArray> read(const QString &path) const = 0;
    // Replaces the file's content (atomically for the real file system);
    // the folder must exist. False when not possible (e.g. read-only file).
    virtual bool write(const QString &path, const QByteArray &data) = 0;
    virtual bool append(const QString &path, const QByteArray &data) = 0;
    // Makes a new file holding data; false when something lies at path
    // already. Deciding and creating are one step (O_EXCL on disk), so of
    // several callers, threads or processes, exactly one gets the name.
    virtual bool create(const QString &path, const QByteArray &data) = 0;
    // Removes a file (not a folder); false when it is missing or read-only.
    virtual bool remove(const QString &path) = 0;
    // Moves the file from onto to in one step, replacing a file there; both
    // lie on the same file system. False when from is missing.
    virtual bool replace(const QString &from, const QString &to) = 0;
    // Writable = not marked read-only (the owner's write bit on disk).
    virtual bool isWritable(const QString &path) const = 0;
    virtual bool setWritable(const QString &path, bool writable) = 0;
    // Creates the folder and its parents.
    virtual bool mkpath(const QString &path) = 0;
    // Names of the entries of a folder, sorted.
    virtual QStringList entries(const QString &directory) const = 0;
    virtual qint64 size(const QString &path) const = 0; // -1 when missing
    virtual QDateTime lastModified(const QString &path) const = 0;
    // Moves a file to a new name in the same file system, replacing a
    // writable file there. By default a copy and a removal.
    virtual bool rename(const QString &from, const QString &to);
    // Only the owner may read or write the file (it holds a secret). Files
    // kept in memory have no other readers.
    virtual bool setOwnerOnly(const QString &) { return true; }

    // The process-wide file system: the real one unless a test installed another.
    static FileSystem &instance();
    static FileSystem *setInstance(FileSystem *fileSystem);
};

class RealFileSystem final : public FileSystem
{
public:
    bool exists(const QString &path) const override;
    bool isDirectory(const QString &path) const override;
    std::optional<QByteArray> read(const QString &path) const override;
    bool write(const QString &path, const QByteArray &data) override;
    bool append(const QString &path, const QByteArray &data) override;
    bool create(const QString &path, const QByteArray &data) override;
    bool remove(const QString &path) override;
    bool replace(const QString &from, const QString &to) override;
    bool isWritable(const QString &path) const override;
    bool setWritable(const QString &path, bool writable) override;
    bool setOwnerOnly(const QString &path) override;
    bool mkpath(const QString &path) override;
    QStringList entries(const QString &directory) const override;
    qint64 size(const QString &path) const override;
    QDateTime lastModified(const QString &path) const override;
    bool rename(const QString &from, const QString &to) override;
};

// Installs a file system for the lifetime of the guard (tests).
class ScopedFileSystem final
{
public:
    explicit ScopedFileSystem(FileSystem &fileSystem) : m_previous(FileSystem::setInstance(&fileSystem)) {}
    ~ScopedFileSystem() { FileSystem::setInstance(m_previous); }
    ScopedFileSystem(const ScopedFileSystem &) = delete;
    ScopedFileSystem &operator=(const ScopedFileSystem &) = delete;

private:
    FileSystem *m_previous;
};

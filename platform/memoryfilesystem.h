#pragma once

#include "platform/filesystem.h"

#include <map>
#include <mutex>

// A file system in memory for tests. Paths are native ("/a/b.txt"). As on
// disk, writing a file needs its folder (mkpath or addFile make folders).
class MemoryFileSystem final : public FileSystem
{
public:
    MemoryFileSystem();

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
    bool mkpath(const QString &path) override;
    QStringList entries(const QString &directory) const override;
    qint64 size(const QString &path) const override;
    QDateTime lastModified(const QString &path) const override;

    // Makes the folder of path and writes the file (test set-up).
    void addFile(const QString &path, const QByteArray &data);

private:
    struct Node {
        bool directory = false;
        bool writable = true;
        QByteArray data;
        QDateTime modified;
    };
    static QString clean(const QString &path);
    static QString parentOf(const QString &path);
    bool writeLocked(const QString &path, const QByteArray &data, bool append);

    mutable std::mutex m_mutex;
    std::map<QString, Node> m_nodes;
};

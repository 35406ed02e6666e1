#pragma once

#include <QString>
#include <cstdint>

// Identifies one state of a file: inode, modification time in nanoseconds
// and size. A file replaced by an atomic rename gets a new inode, so a
// rewrite is seen even within the same clock tick.
struct FileStamp {
    bool exists = false;
    std::uint64_t inode = 0;
    std::int64_t modifiedNs = 0;
    std::int64_t size = 0;

    static FileStamp of(const QString &path);
    bool operator==(const FileStamp &other) const = default;
};

#pragma once

#include "platform/filestamp.h"

#include <QChar>
#include <QHash>
#include <QString>
#include <QStringList>

#include <map>
#include <mutex>
#include <optional>
#include <vector>

// Maps Windows drive letters to local folders, so that the add-in and the
// macros keep working with Windows paths ("V:\Folder\a.txt") while the files
// live under a native folder. A map is either in memory (tests) or backed
// by a JSON file that every process of the user shares ("drives.json" under
// MCTASK_HOME); a file-backed map re-reads the file when another process
// changed it, and writes it on every mount and unmount.
//
// Use DriveMap::instance().toNative(path) / .toWindows(path).
class DriveMap final
{
public:
    struct Mount {
        QChar letter;       // upper case
        QString nativeRoot; // absolute, clean, no trailing "/"
    };

    // An empty map in memory.
    DriveMap();
    // A map kept in the JSON file (loaded now if it exists).
    explicit DriveMap(const QString &file);

    // Maps letter (a-z or A-Z) to nativeRoot (made absolute). Replaces an
    // earlier mount of the letter. False for a bad letter or an empty root, or
    // when the file cannot be written.
    bool mount(QChar letter, const QString &nativeRoot);
    bool unmount(QChar letter);
    std::vector<Mount> list() const;
    // The native root of a letter, empty when not mounted.
    QString root(QChar letter) const;

    // "V:\Folder\a.txt" -> "<root of V>/Folder/a.txt". The letter is
    // case-insensitive, "\" and "/" both separate, "." and ".." are resolved,
    // and each component that does not exist in the written case is matched
    // case-insensitively against what exists on disk (as FileSystem::instance()
    // sees it, so a test's memory file system counts). Components that do not
    // exist at all are kept as written. Empty when the path has no drive
    // letter or the drive is not mounted.
    // On the real disk a folder's listing is kept while the folder's stamp
    // (inode, modification time in nanoseconds) stays the same: adding,
    // removing or renaming an entry changes it. A listing is kept only when
    // the folder was last changed well before the listing was read, so a
    // change within the same clock tick cannot hide behind an equal time.
    QString toNative(const QString &windowsPath) const;

    // The inverse: a native path under a mounted root -> "V:\Folder\a.txt"
    // (the root itself -> "V:\"). Empty when not under any mounted root.
    // When roots are nested the longest one wins.
    QString toWindows(const QString &nativePath) const;

    // For values that may be either: a path that starts with "/" is taken as
    // native (cleaned, with the backslashes that Windows path rules appended
    // to a native root made "/"); anything else goes through toNative.
    QString toNativeOrSelf(const QString &path) const;

    // The file this map lives in; empty for an in-memory map.
    QString file() const { return m_file; }

    // The process-wide map, loaded from mctaskHomePath("drives.json") at first
    // use, unless a test installed its own.
    static DriveMap &instance();
    // Installs map as the process-wide one (nullptr restores the default) and
    // returns the previous override. The caller keeps ownership.
    static DriveMap *setInstance(DriveMap *map);

private:
    struct Listing {
        FileStamp stamp;
        QHash<QString, QStringList> byFoldedName; // case-folded name -> entries, sorted
    };

    void reloadIfChanged() const;
    QString resolveOnDisk(const QString &base, const QStringList &parts) const;
    // The entry of directory matching name in any case (name itself when
    // listed), from a listing kept under directoryStamp; nullopt when none is
    // kept. An empty string when the listing has no such entry.
    std::optional<QString> keptMatch(const QString &directory, const FileStamp &directoryStamp,
                                     const QString &name) const;
    // Lists directory (keeping the listing when the folder has settled) and
    // answers as keptMatch.
    QString listedMatch(const QString &directory, const FileStamp &directoryStamp, const QString &name) const;
    void load() const;
    bool save() const;

    QString m_file;
    mutable std::recursive_mutex m_mutex;
    mutable std::map<QChar, QString> m_mounts;
    mutable FileStamp m_loaded;
    mutable std::mutex m_listingMutex;
    mutable QHash<QString, Listing> m_listings; // by native folder path
};

// Installs a drive map for the lifetime of the guard (tests).
class ScopedDriveMap final
{
public:
    explicit ScopedDriveMap(DriveMap &map) : m_previous(DriveMap::setInstance(&map)) {}
    ~ScopedDriveMap() { DriveMap::setInstance(m_previous); }
    ScopedDriveMap(const ScopedDriveMap &) = delete;
    ScopedDriveMap &operator=(const ScopedDriveMap &) = delete;

private:
    DriveMap *m_previous;
};

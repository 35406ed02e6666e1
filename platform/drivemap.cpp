#include "platform/drivemap.h"

#include "platform/clock.h"
#include "platform/filesystem.h"
#include "platform/home.h"
#include "base/windowspath.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLockFile>
#include <QSaveFile>
#include <atomic>
#include <sys/stat.h>
#include <unistd.h>

namespace {

std::atomic<DriveMap *> g_override{nullptr};

bool validLetter(QChar letter)
{
    const char16_t c = letter.toUpper().unicode();
    return c >= u'A' && c <= u'Z';
}

// The entry of directory whose name matches name ignoring case, else name.
QString matchOnDisk(const FileSystem &fs, const QString &directory, const QString &name)
{
    if (fs.exists(directory + QLatin1Char('/') + name) || !fs.isDirectory(directory))
        return name;
    const QString folded = name.toCaseFolded();
    for (const QString &entry : fs.entries(directory)) {
        if (entry.toCaseFolded() == folded)
            return entry;
    }
    return name;
}

// What one stat of a native path tells.
struct DiskEntry {
    bool exists = false;
    bool isDirectory = false;
    FileStamp stamp;
};

DiskEntry statPath(const QString &path)
{
    struct stat info {};
    if (::stat(QFile::encodeName(path).constData(), &info) != 0)
        return {};
    DiskEntry entry;
    entry.exists = true;
    entry.isDirectory = S_ISDIR(info.st_mode);
    entry.stamp.exists = true;
    entry.stamp.inode = info.st_ino;
    entry.stamp.modifiedNs = static_cast<std::int64_t>(info.st_mtim.tv_sec) * 1000000000 + info.st_mtim.tv_nsec;
    entry.stamp.size = info.st_size;
    return entry;
}

// A folder changed within this long before its listing was read might change
// again without its time moving (times advance in clock ticks, and some file
// systems keep whole seconds only), so such a listing is not kept.
constexpr std::int64_t SettleNs = 100 * 1000000LL;
constexpr std::int64_t WholeSecondSettleNs = 3 * 1000000000LL;
// Folders whose listings are kept at most; then the cache starts afresh.
constexpr qsizetype MaxListings = 512;

bool settled(const FileStamp &stamp, std::int64_t nowNs)
{
    const bool wholeSeconds = stamp.modifiedNs % 1000000000 == 0;
    return nowNs - stamp.modifiedNs > (wholeSeconds ? WholeSecondSettleNs : SettleNs);
}

// The exact name when listed, else the first entry equal to it ignoring case.
QString pickMatch(const QStringList &candidates, const QString &name)
{
    if (candidates.isEmpty() || candidates.contains(name))
        return name;
    return candidates.first();
}

} // namespace

DriveMap::DriveMap() = default;

DriveMap::DriveMap(const QString &file) : m_file(file)
{
    load();
}

void DriveMap::load() const
{
    m_loaded = FileStamp::of(m_file);
    m_mounts.clear();
    QFile in(m_file);
    if (!m_loaded.exists || !in.open(QIODevice::ReadOnly))
        return;
    const QJsonObject drives = QJsonDocument::fromJson(in.readAll()).object().value(QStringLiteral("drives")).toObject();
    for (auto it = drives.begin(); it != drives.end(); ++it) {
        const QString root = it.value().toString();
        if (it.key().size() == 1 && validLetter(it.key()[0]) && QDir::isAbsolutePath(root))
            m_mounts[it.key()[0].toUpper()] = QDir::cleanPath(root);
    }
}

void DriveMap::reloadIfChanged() const
{
    if (!m_file.isEmpty() && !(FileStamp::of(m_file) == m_loaded))
        load();
}

bool DriveMap::save() const
{
    QJsonObject drives;
    for (const auto &[letter, root] : m_mounts)
        drives.insert(QString(letter), root);
    QJsonObject json;
    json.insert(QStringLiteral("drives"), drives);
    QSaveFile out(m_file);
    if (!out.open(QIODevice::WriteOnly))
        return false;
    out.write(QJsonDocument(json).toJson(QJsonDocument::Indented));
    if (!out.commit())
        return false;
    m_loaded = FileStamp::of(m_file);
    return true;
}

bool DriveMap::mount(QChar letter, const QString &nativeRoot)
{
    if (!validLetter(letter) || nativeRoot.isEmpty())
        return false;
    const QString root = QDir::cleanPath(QDir(nativeRoot).absolutePath());
    std::lock_guard guard(m_mutex);
    if (m_file.isEmpty()) {
        m_mounts[letter.toUpper()] = root;
        return true;
    }
    QDir().mkpath(QFileInfo(m_file).absolutePath());
    QLockFile lock(m_file + QStringLiteral(".lock"));
    if (!lock.lock())
        return false;
    load(); // keep the mounts other processes made meanwhile
    m_mounts[letter.toUpper()] = root;
    if (!save()) {
        load();
        return false;
    }
    return true;
}

bool DriveMap::unmount(QChar letter)
{
    if (!validLetter(letter))
        return false;
    std::lock_guard guard(m_mutex);
    if (m_file.isEmpty())
        return m_mounts.erase(letter.toUpper()) > 0;
    QLockFile lock(m_file + QStringLiteral(".lock"));
    if (!lock.lock())
        return false;
    load();
    if (m_mounts.erase(letter.toUpper()) == 0)
        return false;
    if (!save()) {
        load();
        return false;
    }
    return true;
}

std::vector<DriveMap::Mount> DriveMap::list() const
{
    std::lock_guard guard(m_mutex);
    reloadIfChanged();
    std::vector<Mount> result;
    for (const auto &[letter, root] : m_mounts)
        result.push_back({letter, root});
    return result;
}

QString DriveMap::root(QChar letter) const
{
    std::lock_guard guard(m_mutex);
    reloadIfChanged();
    const auto it = m_mounts.find(letter.toUpper());
    return it == m_mounts.end() ? QString() : it->second;
}

QString DriveMap::toNative(const QString &windowsPath) const
{
    const QChar letter = WindowsPath::driveLetter(windowsPath);
    if (letter.isNull())
        return {};
    const QString base = root(letter);
    if (base.isEmpty())
        return {};
    // canonicalize drops "." and ".." without climbing above the drive root.
    const QString canonical = WindowsPath::canonicalize(windowsPath);
    const QStringList parts = canonical.mid(3).split(QLatin1Char('\\'), Qt::SkipEmptyParts);
    const FileSystem &fs = FileSystem::instance();
    if (dynamic_cast<const RealFileSystem *>(&fs))
        return resolveOnDisk(base, parts);
    QString native = base;
    for (const QString &part : parts) {
        const QString directory = native;
        if (!native.endsWith(QLatin1Char('/')))
            native += QLatin1Char('/');
        native += matchOnDisk(fs, directory, part);
    }
    return native;
}

QString DriveMap::resolveOnDisk(const QString &base, const QStringList &parts) const
{
    auto append = [](QString &path, const QString &name) {
        if (!path.endsWith(QLatin1Char('/')))
            path += QLatin1Char('/');
        path += name;
    };
    // Mostly the folders exist as written; one stat of the whole folder path
    // then settles them all and stamps the folder of the last name.
    QString native = base;
    for (qsizetype i = 0; i + 1 < parts.size(); ++i)
        append(native, parts.at(i));
    DiskEntry current = statPath(native);
    qsizetype first = parts.size() - 1;
    if (!current.isDirectory) {
        // Otherwise component by component, one stat each: the stat that
        // finds a name in its written case also stamps the next folder.
        native = base;
        current = statPath(base);
        first = 0;
    }
    for (qsizetype i = qMax<qsizetype>(first, 0); i < parts.size(); ++i) {
        const QString &part = parts.at(i);
        const QString directory = native;
        if (!native.endsWith(QLatin1Char('/')))
            native += QLatin1Char('/');
        if (!current.isDirectory) {
            native += part; // below a missing folder or a file: kept as written
            continue;
        }
        // The next folder's stat, unless the match has to be stat'ed afresh.
        std::optional<DiskEntry> child;
        QString actual;
        if (const std::optional<QString> kept = keptMatch(directory, current.stamp, part)) {
            actual = *kept;
            if (actual.isEmpty())
                child = DiskEntry{};
        } else {
            child = statPath(native + part);
            if (!child->exists) {
                actual = listedMatch(directory, current.stamp, part);
                if (!actual.isEmpty() && actual != part)
                    child.reset();
            }
        }
        native += actual.isEmpty() ? part : actual;
        if (i + 1 < parts.size())
            current = child ? *child : statPath(native);
    }
    return native;
}

std::optional<QString> DriveMap::keptMatch(const QString &directory, const FileStamp &directoryStamp,
                                           const QString &name) const
{
    std::lock_guard guard(m_listingMutex);
    const auto it = m_listings.constFind(directory);
    if (it == m_listings.cend() || !(it->stamp == directoryStamp))
        return std::nullopt;
    const auto names = it->byFoldedName.constFind(name.toCaseFolded());
    return names == it->byFoldedName.cend() ? QString() : pickMatch(*names, name);
}

QString DriveMap::listedMatch(const QString &directory, const FileStamp &directoryStamp, const QString &name) const
{
    const QStringList entries = FileSystem::instance().entries(directory);
    const QString folded = name.toCaseFolded();
    const std::int64_t nowNs = Clock::instance().now().toMSecsSinceEpoch() * 1000000;
    // An unreadable folder lists empty; its permissions may change without
    // its time changing, so such a listing is not kept.
    const bool keep = settled(directoryStamp, nowNs) &&
                      (!entries.isEmpty() || ::access(QFile::encodeName(directory).constData(), R_OK) == 0);
    if (!keep) {
        QStringList candidates;
        for (const QString &entry : entries) {
            if (entry.toCaseFolded() == folded)
                candidates.append(entry);
        }
        return candidates.isEmpty() ? QString() : pickMatch(candidates, name);
    }
    Listing listing;
    listing.stamp = directoryStamp;
    listing.byFoldedName.reserve(entries.size());
    for (const QString &entry : entries)
        listing.byFoldedName[entry.toCaseFolded()].append(entry); // sorted, so the first is first
    const auto names = listing.byFoldedName.constFind(folded);
    const QString match = names == listing.byFoldedName.cend() ? QString() : pickMatch(*names, name);
    std::lock_guard guard(m_listingMutex);
    if (m_listings.size() >= MaxListings)
        m_listings.clear();
    m_listings.insert(directory, std::move(listing));
    return match;
}

QString DriveMap::toWindows(const QString &nativePath) const
{
    if (!QDir::isAbsolutePath(nativePath))
        return {};
    const QString path = QDir::cleanPath(nativePath);
    std::lock_guard guard(m_mutex);
    reloadIfChanged();
    QChar bestLetter;
    QString bestRoot;
    for (const auto &[letter, root] : m_mounts) {
        const bool under = path == root || root == QLatin1String("/") ||
                           path.startsWith(root + QLatin1Char('/'));
        if (under && root.size() > bestRoot.size()) {
            bestLetter = letter;
            bestRoot = root;
        }
    }
    if (bestRoot.isEmpty())
        return {};
    QString relative = path.mid(bestRoot.size());
    while (relative.startsWith(QLatin1Char('/')))
        relative.remove(0, 1);
    relative.replace(QLatin1Char('/'), QLatin1Char('\\'));
    return QString(bestLetter) + QStringLiteral(":\\") + relative;
}

QString DriveMap::toNativeOrSelf(const QString &path) const
{
    if (path.startsWith(QLatin1Char('/')))
        return QDir::cleanPath(QString(path).replace(QLatin1Char('\\'), QLatin1Char('/')));
    return toNative(path);
}

DriveMap &DriveMap::instance()
{
    if (DriveMap *map = g_override.load())
        return *map;
    static DriveMap map(mctaskHomePath(QStringLiteral("drives.json")));
    return map;
}

DriveMap *DriveMap::setInstance(DriveMap *map)
{
    return g_override.exchange(map);
}

#include "platform/drivemap.h"

#include "platform/filesystem.h"
#include "platform/home.h"
#include "platform/windowspath.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLockFile>
#include <QSaveFile>
#include <atomic>

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
    QString native = base;
    for (const QString &part : parts) {
        const QString directory = native;
        if (!native.endsWith(QLatin1Char('/')))
            native += QLatin1Char('/');
        native += matchOnDisk(fs, directory, part);
    }
    return native;
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
        return QDir::cleanPath(path);
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

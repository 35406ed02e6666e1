#include "platform/memoryfilesystem.h"

#include <QDir>

MemoryFileSystem::MemoryFileSystem()
{
    m_nodes[QStringLiteral("/")].directory = true;
}

QString MemoryFileSystem::clean(const QString &path)
{
    return QDir::cleanPath(path);
}

QString MemoryFileSystem::parentOf(const QString &path)
{
    const qsizetype slash = path.lastIndexOf(QLatin1Char('/'));
    return slash <= 0 ? QStringLiteral("/") : path.left(slash);
}

bool MemoryFileSystem::exists(const QString &path) const
{
    std::lock_guard lock(m_mutex);
    return m_nodes.count(clean(path)) > 0;
}

bool MemoryFileSystem::isDirectory(const QString &path) const
{
    std::lock_guard lock(m_mutex);
    const auto it = m_nodes.find(clean(path));
    return it != m_nodes.end() && it->second.directory;
}

std::optional<QByteArray> MemoryFileSystem::read(const QString &path) const
{
    std::lock_guard lock(m_mutex);
    const auto it = m_nodes.find(clean(path));
    if (it == m_nodes.end() || it->second.directory)
        return std::nullopt;
    return it->second.data;
}

bool MemoryFileSystem::writeLocked(const QString &path, const QByteArray &data, bool append)
{
    const QString p = clean(path);
    const auto parent = m_nodes.find(parentOf(p));
    if (parent == m_nodes.end() || !parent->second.directory)
        return false;
    const auto it = m_nodes.find(p);
    if (it != m_nodes.end() && (it->second.directory || !it->second.writable))
        return false;
    Node &node = m_nodes[p];
    node.data = append ? node.data + data : data;
    node.modified = QDateTime::currentDateTime();
    return true;
}

bool MemoryFileSystem::write(const QString &path, const QByteArray &data)
{
    std::lock_guard lock(m_mutex);
    return writeLocked(path, data, false);
}

bool MemoryFileSystem::append(const QString &path, const QByteArray &data)
{
    std::lock_guard lock(m_mutex);
    return writeLocked(path, data, true);
}

bool MemoryFileSystem::create(const QString &path, const QByteArray &data)
{
    std::lock_guard lock(m_mutex);
    if (m_nodes.count(clean(path)) != 0)
        return false;
    return writeLocked(path, data, false);
}

bool MemoryFileSystem::remove(const QString &path)
{
    std::lock_guard lock(m_mutex);
    const auto it = m_nodes.find(clean(path));
    if (it == m_nodes.end() || it->second.directory || !it->second.writable)
        return false;
    m_nodes.erase(it);
    return true;
}

bool MemoryFileSystem::replace(const QString &from, const QString &to)
{
    std::lock_guard lock(m_mutex);
    const auto source = m_nodes.find(clean(from));
    const QString target = clean(to);
    const auto parent = m_nodes.find(parentOf(target));
    if (source == m_nodes.end() || source->second.directory || parent == m_nodes.end() || !parent->second.directory)
        return false;
    const auto existing = m_nodes.find(target);
    if (existing != m_nodes.end() && existing->second.directory)
        return false;
    Node moved = source->second;
    m_nodes.erase(source);
    m_nodes[target] = moved;
    return true;
}

bool MemoryFileSystem::isWritable(const QString &path) const
{
    std::lock_guard lock(m_mutex);
    const auto it = m_nodes.find(clean(path));
    return it != m_nodes.end() && it->second.writable;
}

bool MemoryFileSystem::setWritable(const QString &path, bool writable)
{
    std::lock_guard lock(m_mutex);
    const auto it = m_nodes.find(clean(path));
    if (it == m_nodes.end())
        return false;
    it->second.writable = writable;
    return true;
}

bool MemoryFileSystem::mkpath(const QString &path)
{
    std::lock_guard lock(m_mutex);
    QString p = clean(path);
    if (!p.startsWith(QLatin1Char('/')))
        return false;
    QStringList missing;
    while (p != QLatin1String("/")) {
        const auto it = m_nodes.find(p);
        if (it != m_nodes.end()) {
            if (!it->second.directory)
                return false;
            break;
        }
        missing.prepend(p);
        p = parentOf(p);
    }
    for (const QString &dir : missing)
        m_nodes[dir].directory = true;
    return true;
}

QStringList MemoryFileSystem::entries(const QString &directory) const
{
    std::lock_guard lock(m_mutex);
    const QString dir = clean(directory);
    const QString prefix = dir == QLatin1String("/") ? dir : dir + QLatin1Char('/');
    QStringList result;
    for (auto it = m_nodes.lower_bound(prefix); it != m_nodes.end() && it->first.startsWith(prefix); ++it) {
        const QString rest = it->first.mid(prefix.size());
        if (!rest.isEmpty() && !rest.contains(QLatin1Char('/')))
            result.append(rest);
    }
    return result;
}

qint64 MemoryFileSystem::size(const QString &path) const
{
    std::lock_guard lock(m_mutex);
    const auto it = m_nodes.find(clean(path));
    return it == m_nodes.end() ? -1 : it->second.data.size();
}

QDateTime MemoryFileSystem::lastModified(const QString &path) const
{
    std::lock_guard lock(m_mutex);
    const auto it = m_nodes.find(clean(path));
    return it == m_nodes.end() ? QDateTime() : it->second.modified;
}

void MemoryFileSystem::addFile(const QString &path, const QByteArray &data)
{
    mkpath(parentOf(clean(path)));
    write(path, data);
}

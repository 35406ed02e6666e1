#include "platform/registry.h"

namespace {

QString joinPath(const QString &base, const QString &sub)
{
    if (base.isEmpty())
        return sub;
    if (sub.isEmpty())
        return base;
    return base + QLatin1Char('\\') + sub;
}

} // namespace

Registry::Registry(RegistryStore &store) : m_store(&store) {}

Registry::~Registry()
{
    close();
}

Registry::Registry(Registry &&other) noexcept
    : m_store(other.m_store), m_open(other.m_open), m_access(other.m_access), m_root(other.m_root),
      m_view(other.m_view), m_path(std::move(other.m_path))
{
    other.close();
}

Registry &Registry::operator=(Registry &&other) noexcept
{
    if (this != &other) {
        m_store = other.m_store;
        m_open = other.m_open;
        m_access = other.m_access;
        m_root = other.m_root;
        m_view = other.m_view;
        m_path = std::move(other.m_path);
        other.close();
    }
    return *this;
}

bool Registry::open(RegistryRoot root, const QString &path, unsigned access, RegistryView view)
{
    close();
    if (!m_store->keyExists(root, view, path))
        return false;
    m_open = true;
    m_access = access;
    m_root = root;
    m_view = view;
    m_path = path;
    return true;
}

bool Registry::create(RegistryRoot root, const QString &path, unsigned access, RegistryView view)
{
    close();
    if (!(access & RegistryWrite))
        return open(root, path, access, view);
    if (!m_store->createKey(root, view, path))
        return false;
    m_open = true;
    m_access = access;
    m_root = root;
    m_view = view;
    m_path = path;
    return true;
}

Registry Registry::openSubKey(const QString &subPath, unsigned access) const
{
    Registry sub(*m_store);
    if (m_open)
        sub.open(m_root, joinPath(m_path, subPath), access, m_view);
    return sub;
}

Registry Registry::createSubKey(const QString &subPath, unsigned access) const
{
    Registry sub(*m_store);
    if (canWrite())
        sub.create(m_root, joinPath(m_path, subPath), access, m_view);
    return sub;
}

void Registry::close()
{
    m_open = false;
    m_access = 0;
    m_path.clear();
}

std::optional<RegistryValue> Registry::value(const QString &name) const
{
    if (!canRead())
        return std::nullopt;
    return m_store->readValue(m_root, m_view, m_path, name);
}

std::optional<std::uint32_t> Registry::readDword(const QString &name) const
{
    const auto v = value(name);
    if (!v || v->type != RegistryValueType::Dword)
        return std::nullopt;
    return v->dword;
}

std::optional<QString> Registry::readString(const QString &name) const
{
    const auto v = value(name);
    if (!v || v->type == RegistryValueType::Dword)
        return std::nullopt;
    return v->text;
}

std::optional<QString> Registry::readExpandedString(const QString &name) const
{
    const auto v = value(name);
    if (!v || v->type == RegistryValueType::Dword)
        return std::nullopt;
    return v->type == RegistryValueType::ExpandString ? expandEnvironmentStrings(v->text) : v->text;
}

bool Registry::writeDword(const QString &name, std::uint32_t value)
{
    return canWrite() && m_store->writeValue(m_root, m_view, m_path, name, RegistryValue::fromDword(value));
}

bool Registry::writeString(const QString &name, const QString &value)
{
    return canWrite() && m_store->writeValue(m_root, m_view, m_path, name, RegistryValue::fromString(value));
}

bool Registry::writeExpandString(const QString &name, const QString &value)
{
    return canWrite() &&
           m_store->writeValue(m_root, m_view, m_path, name, RegistryValue::fromExpandString(value));
}

bool Registry::deleteValue(const QString &name)
{
    return canWrite() && m_store->deleteValue(m_root, m_view, m_path, name);
}

bool Registry::deleteSubKeyTree(const QString &subPath)
{
    return canWrite() && !subPath.split(QLatin1Char('\\'), Qt::SkipEmptyParts).isEmpty() &&
           m_store->deleteKeyTree(m_root, m_view, joinPath(m_path, subPath));
}

QStringList Registry::subKeys() const
{
    return canRead() ? m_store->subKeys(m_root, m_view, m_path) : QStringList();
}

QStringList Registry::valueNames() const
{
    return canRead() ? m_store->valueNames(m_root, m_view, m_path) : QStringList();
}

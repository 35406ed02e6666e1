#include "platform/memoryregistrystore.h"

#include <QJsonDocument>

bool MemoryRegistryStore::keyExists(RegistryRoot root, RegistryView view, const QString &path) const
{
    std::lock_guard lock(m_mutex);
    return m_tree.find(root, view, path) != nullptr;
}

bool MemoryRegistryStore::createKey(RegistryRoot root, RegistryView view, const QString &path)
{
    std::lock_guard lock(m_mutex);
    return m_tree.create(root, view, path) != nullptr;
}

bool MemoryRegistryStore::deleteKeyTree(RegistryRoot root, RegistryView view, const QString &path)
{
    std::lock_guard lock(m_mutex);
    return m_tree.remove(root, view, path);
}

std::optional<RegistryValue> MemoryRegistryStore::readValue(RegistryRoot root, RegistryView view,
                                                            const QString &path, const QString &name) const
{
    std::lock_guard lock(m_mutex);
    return m_tree.readValue(root, view, path, name);
}

bool MemoryRegistryStore::writeValue(RegistryRoot root, RegistryView view, const QString &path,
                                     const QString &name, const RegistryValue &value)
{
    std::lock_guard lock(m_mutex);
    return m_tree.writeValue(root, view, path, name, value);
}

bool MemoryRegistryStore::deleteValue(RegistryRoot root, RegistryView view, const QString &path,
                                      const QString &name)
{
    std::lock_guard lock(m_mutex);
    return m_tree.deleteValue(root, view, path, name);
}

QStringList MemoryRegistryStore::subKeys(RegistryRoot root, RegistryView view, const QString &path) const
{
    std::lock_guard lock(m_mutex);
    return m_tree.subKeys(root, view, path);
}

QStringList MemoryRegistryStore::valueNames(RegistryRoot root, RegistryView view, const QString &path) const
{
    std::lock_guard lock(m_mutex);
    return m_tree.valueNames(root, view, path);
}

QByteArray MemoryRegistryStore::toJson() const
{
    std::lock_guard lock(m_mutex);
    return QJsonDocument(m_tree.toJson()).toJson(QJsonDocument::Indented);
}

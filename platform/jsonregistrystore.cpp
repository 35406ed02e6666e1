#include "platform/jsonregistrystore.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QLockFile>
#include <QSaveFile>

JsonRegistryStore::JsonRegistryStore(const QString &file) : m_file(file) {}

void JsonRegistryStore::load() const
{
    m_loaded = FileStamp::of(m_file);
    QFile in(m_file);
    if (!m_loaded.exists || !in.open(QIODevice::ReadOnly)) {
        m_tree.clear();
        return;
    }
    const QJsonDocument doc = QJsonDocument::fromJson(in.readAll());
    // A damaged file reads as an empty store rather than failing every call;
    // the next write replaces it.
    if (!doc.isObject() || !m_tree.fromJson(doc.object()))
        m_tree.clear();
}

void JsonRegistryStore::reloadIfChanged() const
{
    if (!(FileStamp::of(m_file) == m_loaded))
        load();
}

bool JsonRegistryStore::save() const
{
    QDir().mkpath(QFileInfo(m_file).absolutePath());
    QSaveFile out(m_file);
    if (!out.open(QIODevice::WriteOnly))
        return false;
    out.write(QJsonDocument(m_tree.toJson()).toJson(QJsonDocument::Indented));
    if (!out.commit())
        return false;
    m_loaded = FileStamp::of(m_file);
    return true;
}

template <class Change>
bool JsonRegistryStore::modify(Change change)
{
    std::lock_guard guard(m_mutex);
    QDir().mkpath(QFileInfo(m_file).absolutePath());
    QLockFile lock(m_file + QStringLiteral(".lock"));
    if (!lock.lock())
        return false;
    // Work on what is on disk now, not on what this process read last.
    load();
    if (!change())
        return false;
    if (!save()) {
        load();
        return false;
    }
    return true;
}

bool JsonRegistryStore::keyExists(RegistryRoot root, RegistryView view, const QString &path) const
{
    std::lock_guard guard(m_mutex);
    reloadIfChanged();
    return m_tree.find(root, view, path) != nullptr;
}

bool JsonRegistryStore::createKey(RegistryRoot root, RegistryView view, const QString &path)
{
    {
        std::lock_guard guard(m_mutex);
        reloadIfChanged();
        if (m_tree.find(root, view, path))
            return true;
    }
    return modify([&] { return m_tree.create(root, view, path) != nullptr; });
}

bool JsonRegistryStore::deleteKeyTree(RegistryRoot root, RegistryView view, const QString &path)
{
    return modify([&] { return m_tree.remove(root, view, path); });
}

std::optional<RegistryValue> JsonRegistryStore::readValue(RegistryRoot root, RegistryView view,
                                                          const QString &path, const QString &name) const
{
    std::lock_guard guard(m_mutex);
    reloadIfChanged();
    return m_tree.readValue(root, view, path, name);
}

bool JsonRegistryStore::writeValue(RegistryRoot root, RegistryView view, const QString &path,
                                   const QString &name, const RegistryValue &value)
{
    return modify([&] { return m_tree.writeValue(root, view, path, name, value); });
}

bool JsonRegistryStore::deleteValue(RegistryRoot root, RegistryView view, const QString &path,
                                    const QString &name)
{
    return modify([&] { return m_tree.deleteValue(root, view, path, name); });
}

QStringList JsonRegistryStore::subKeys(RegistryRoot root, RegistryView view, const QString &path) const
{
    std::lock_guard guard(m_mutex);
    reloadIfChanged();
    return m_tree.subKeys(root, view, path);
}

QStringList JsonRegistryStore::valueNames(RegistryRoot root, RegistryView view, const QString &path) const
{
    std::lock_guard guard(m_mutex);
    reloadIfChanged();
    return m_tree.valueNames(root, view, path);
}

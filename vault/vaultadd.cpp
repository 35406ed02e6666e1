#include "vault/vaultadd.h"

#include "host/variant.h"
#include "vault/vaultdb.h"
#include "vault/vaultstore.h"

#include <QDir>
#include <QDirIterator>
#include <QFileInfo>

#include <algorithm>

namespace {

// True for the vault's own data folder and what lies in it: never a document.
bool insideVaultData(const VaultStore &store, const QString &native)
{
    const QString data = QDir(store.paths().nativeRoot()).absoluteFilePath(QStringLiteral(".mctask"));
    return native == data || native.startsWith(data + '/');
}

} // namespace

VaultAdd::VaultAdd(VaultStore &store) : m_store(store) {}

void VaultAdd::addSource(const QString &source, const std::optional<QString> &folder)
{
    const VaultPaths &paths = m_store.paths();
    QString native;
    QString relative;
    if (paths.toRelative(source, relative))
        native = paths.findNative(relative);
    else
        native = QDir::cleanPath(QDir::current().absoluteFilePath(source));
    const QFileInfo info(native);
    if (!info.exists())
        throw VaultAddError(QStringLiteral("no such file or folder: %1").arg(source));
    if (insideVaultData(m_store, info.absoluteFilePath()))
        throw VaultAddError(QStringLiteral("%1 is the vault's own data, not a document").arg(source));
    if (!info.isFile() && !info.isDir())
        throw VaultAddError(QStringLiteral("%1 is not a regular file").arg(source));
    QString insideRelative;
    const bool inside = paths.toRelative(info.absoluteFilePath(), insideRelative);
    if (info.isFile()) {
        const QString target = folder ? *folder : (inside ? VaultPaths::parentOf(insideRelative) : QString());
        m_items.push_back({info.absoluteFilePath(), target, info.fileName()});
        return;
    }
    const QString base = folder ? VaultPaths::join(*folder, info.fileName()) : (inside ? insideRelative : info.fileName());
    // System: FIFOs, devices and broken links are listed too, to be named.
    QDirIterator it(info.absoluteFilePath(), QDir::Files | QDir::Hidden | QDir::System, QDirIterator::Subdirectories);
    std::vector<Item> found;
    while (it.hasNext()) {
        const QString file = it.next();
        if (insideVaultData(m_store, file))
            continue;
        if (!it.fileInfo().isFile()) {
            m_skipped.append(file);
            continue;
        }
        const QString sub = QDir(info.absoluteFilePath()).relativeFilePath(QFileInfo(file).absolutePath());
        const QString subFolder = sub == QLatin1String(".") ? QString() : QString(sub).replace('/', '\\');
        if (subFolder.split('\\').contains(QStringLiteral(".mctask")))
            continue;
        found.push_back({file, subFolder.isEmpty() ? base : VaultPaths::join(base, subFolder), QFileInfo(file).fileName()});
    }
    std::sort(found.begin(), found.end(), [](const Item &a, const Item &b) { return a.source < b.source; });
    m_items.insert(m_items.end(), found.begin(), found.end());
}

std::vector<VaultAdd::Result> VaultAdd::commit(const Labels &labels)
{
    for (const Item &item : m_items) {
        for (const QString &part : VaultPaths::join(item.folder, item.name).split('\\'))
            if (!VaultPaths::isValidName(part))
                throw VaultAddError(QStringLiteral("'%1' is not a valid vault name").arg(part));
    }
    std::vector<Result> results;
    Transaction transaction(m_store.db());
    for (const auto &[name, value] : labels.cards)
        m_store.defineCardVariable(name);
    for (const Item &item : m_items) {
        const QString relative = VaultPaths::join(item.folder, item.name);
        Result result;
        if (const auto existing = m_store.fileByPath(relative)) {
            result.id = existing->id;
            const VaultStore::Update update = m_store.updateFrom(result.id, item.source);
            result.version = update.version;
            result.action = update.changed ? Action::NewVersion : Action::Unchanged;
        } else {
            VaultStore::AddOptions options;
            options.revision = labels.revision.value_or(QString());
            options.state = labels.state.value_or(QString());
            const VaultFileRow row = m_store.addFile(item.source, item.folder, item.name, options);
            result.id = row.id;
            result.version = row.latestVersion;
            result.action = Action::Added;
        }
        if (result.action != Action::Unchanged) {
            if (labels.revision || labels.state) {
                const auto current = m_store.version(result.id, result.version);
                m_store.setVersionLabels(result.id, result.version, labels.revision.value_or(current->revision),
                                         labels.state.value_or(current->state));
            }
            for (const auto &[name, value] : labels.cards)
                m_store.setCardValue(result.id, result.version, name, QString(), Variant::fromBStr(value));
        }
        result.path = m_store.paths().toWindows(relative);
        results.push_back(result);
    }
    m_store.commit(transaction);
    return results;
}

QString VaultAdd::actionText(Action action)
{
    switch (action) {
    case Action::Added: return QStringLiteral("added");
    case Action::NewVersion: return QStringLiteral("new version");
    case Action::Unchanged: return QStringLiteral("unchanged");
    }
    return {};
}

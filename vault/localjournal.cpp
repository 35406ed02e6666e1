#include "vault/localjournal.h"

#include "host/hosterror.h"
#include "platform/filesystem.h"
#include "platform/ipc/namedmutex.h"
#include "vault/vaultdb.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QRandomGenerator>

namespace {

const QString LockSuffix = QStringLiteral(".lock");

// Why a file could not be written, as far as the file system lets us know.
QString writeProblem(const QString &target)
{
    const FileSystem &fs = FileSystem::instance();
    if (fs.exists(target) && fs.isDirectory(target))
        return QStringLiteral("a folder of that name is in the way");
    if (fs.exists(target) && !fs.isWritable(target))
        return QStringLiteral("the file is read-only");
    const QString folder = QFileInfo(target).absolutePath();
    if (!fs.isDirectory(folder))
        return QStringLiteral("its folder cannot be created");
    if (!fs.isWritable(folder))
        return QStringLiteral("its folder is read-only");
    return QStringLiteral("the file system refused it (disk full or no permission?)");
}

[[noreturn]] void cannotWrite(const QString &target)
{
    throw HostError(E_DOX_IO_ERROR, QStringLiteral("cannot write %1: %2").arg(target, writeProblem(target)));
}

} // namespace

LocalJournal::LocalJournal(VaultDb &db, const QString &root, bool inMemory)
    : m_db(db), m_root(QDir(root).absolutePath()), m_staging(stagingFolder(root)), m_inMemory(inMemory)
{
}

LocalJournal::~LocalJournal()
{
    // Committed copies that could not be moved keep their lock file, so the
    // next opening of the vault finds and finishes them.
    if (m_lock && !m_leftovers)
        FileSystem::instance().remove(m_lock->lockPath());
}

QString LocalJournal::stagingFolder(const QString &root)
{
    return QDir(root).absoluteFilePath(QStringLiteral(".mctask/staging"));
}

QString LocalJournal::relativeToRoot(const QString &native) const
{
    return QDir(m_root).relativeFilePath(native);
}

void LocalJournal::ensureOwner()
{
    if (!m_owner.isEmpty())
        return;
    m_owner = QStringLiteral("%1-%2")
                  .arg(QCoreApplication::applicationPid())
                  .arg(QRandomGenerator::global()->generate64(), 16, 16, QLatin1Char('0'));
    FileSystem &fs = FileSystem::instance();
    if (!fs.mkpath(m_staging))
        throw HostError(E_DOX_IO_ERROR, QStringLiteral("cannot write %1: %2").arg(m_staging, writeProblem(m_staging)));
    if (m_inMemory)
        return;
    // The lock exists before the first staged file: an owner without a
    // held lock is one whose process is gone.
    m_lock = std::make_unique<NamedMutex>(m_owner + LockSuffix, m_staging);
    if (!m_lock->tryLock())
        throw HostError(E_DOX_IO_ERROR, QStringLiteral("cannot write %1: %2")
                                            .arg(m_lock->lockPath(), writeProblem(m_lock->lockPath())));
}

void LocalJournal::write(const QString &target, const QByteArray &bytes)
{
    FileSystem &fs = FileSystem::instance();
    if (fs.exists(target) && (fs.isDirectory(target) || !fs.isWritable(target)))
        cannotWrite(target);
    const auto lock = m_db.guard();
    if (!m_db.inTransaction()) {
        fs.mkpath(QFileInfo(target).absolutePath());
        if (!fs.write(target, bytes))
            cannotWrite(target);
        return;
    }
    ensureOwner();
    const QString name = QStringLiteral("%1-%2").arg(m_owner).arg(++m_counter);
    const QString staged = m_staging + QLatin1Char('/') + name;
    if (!fs.write(staged, bytes))
        cannotWrite(staged);
    if (!m_inMemory) {
        try {
            m_db.prepare("INSERT INTO local_journal (name, target) VALUES (?, ?)")
                .bind(1, name)
                .bind(2, relativeToRoot(target))
                .exec();
        } catch (...) {
            fs.remove(staged);
            throw;
        }
    }
    m_pending[target] = name;
    m_db.onTransactionEnd([this, name, target](bool committed) { finish(name, target, committed); });
}

std::optional<QByteArray> LocalJournal::staged(const QString &target) const
{
    const auto it = m_pending.find(target);
    if (it == m_pending.end())
        return std::nullopt;
    return FileSystem::instance().read(m_staging + QLatin1Char('/') + it->second);
}

void LocalJournal::makeFolder(const QString &target)
{
    m_db.onTransactionEnd([target](bool committed) {
        if (committed)
            FileSystem::instance().mkpath(target);
    });
}

void LocalJournal::finish(const QString &name, const QString &target, bool committed)
{
    FileSystem &fs = FileSystem::instance();
    const QString staged = m_staging + QLatin1Char('/') + name;
    if (committed) {
        fs.mkpath(QFileInfo(target).absolutePath());
        if (fs.replace(staged, target))
            m_moved.push_back(name);
        else
            m_leftovers = true;
    } else {
        fs.remove(staged);
    }
    const auto it = m_pending.find(target);
    if (it != m_pending.end() && it->second == name)
        m_pending.erase(it);
    if (committed && m_pending.empty())
        dropMovedRows();
}

void LocalJournal::dropMovedRows()
{
    if (m_inMemory || m_moved.empty()) {
        m_moved.clear();
        return;
    }
    // One more short transaction; when it cannot be had, the rows stay and
    // only name files that are gone, which recovery drops.
    try {
        Transaction transaction(m_db);
        for (const QString &name : m_moved)
            m_db.prepare("DELETE FROM local_journal WHERE name = ?").bind(1, name).exec();
        transaction.commit();
    } catch (const HostError &) {
    }
    m_moved.clear();
}

void LocalJournal::recover(const std::function<bool(const QString &, const QByteArray &)> &isCurrent)
{
    if (m_inMemory)
        return;
    FileSystem &fs = FileSystem::instance();
    if (!fs.isDirectory(m_staging))
        return;
    const QStringList entries = fs.entries(m_staging);
    for (const QString &entry : entries) {
        if (!entry.endsWith(LockSuffix))
            continue;
        const QString owner = entry.chopped(LockSuffix.size());
        if (owner == m_owner)
            continue;
        NamedMutex probe(entry, m_staging);
        if (!probe.tryLock())
            continue; // its process still runs
        const QString prefix = owner + QLatin1Char('-');
        try {
            Transaction transaction(m_db);
            std::vector<std::pair<QString, QString>> committed;
            {
                Statement rows = m_db.prepare("SELECT name, target FROM local_journal WHERE name >= ? AND name < ?");
                rows.bind(1, prefix).bind(2, owner + QLatin1Char('.'));
                while (rows.step())
                    committed.emplace_back(rows.text(0), rows.text(1));
            }
            for (const auto &[name, target] : committed) {
                const QString staged = m_staging + QLatin1Char('/') + name;
                const QString native = QDir(m_root).absoluteFilePath(target);
                // Only what the vault holds now goes into place: a later
                // version written since by a live process stays.
                const auto bytes = fs.read(staged);
                if (bytes && isCurrent(native, *bytes)) {
                    fs.mkpath(QFileInfo(native).absolutePath());
                    fs.replace(staged, native);
                }
                m_db.prepare("DELETE FROM local_journal WHERE name = ?").bind(1, name).exec();
            }
            transaction.commit();
        } catch (const HostError &) {
            continue; // read-only or busy: a later opening finishes it
        }
        for (const QString &file : entries)
            if (file.startsWith(prefix))
                fs.remove(m_staging + QLatin1Char('/') + file);
        fs.remove(probe.lockPath());
    }
}

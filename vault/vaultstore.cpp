#include "vault/vaultstore.h"

#include "host/hosterror.h"
#include "platform/clock.h"
#include "platform/filesystem.h"
#include "vault/variantcolumns.h"
#include "vault/vaultschema.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFileInfo>

#include <sqlite3.h>

#include <unordered_map>
#include <unordered_set>

namespace {

constexpr const char *fileColumns =
    "SELECT f.id, f.folder_id, f.name, f.path_key, f.kind, f.latest_version, f.locked_by, f.lock_kind, "
    "v.revision, v.state, d.path, v.hash FROM files f JOIN versions v ON v.file_id = f.id AND v.version = f.latest_version "
    "JOIN folders d ON d.id = f.folder_id ";

// Queries about many rows take their ids or keys in "IN (...)" lists of at
// most 128 values, so a batch of thousands costs a few round trips. A list is
// padded with its last value to 1, 16 or 128 values (a value twice in an IN
// list changes nothing), so each such query has three texts to prepare at most.
template<typename T>
std::vector<std::vector<T>> inLists(const std::vector<T> &values)
{
    std::vector<std::vector<T>> lists;
    for (std::size_t at = 0; at < values.size();) {
        const std::size_t left = values.size() - at;
        const std::size_t length = left <= 1 ? 1 : left <= 16 ? 16 : 128;
        const std::size_t taken = std::min(left, length);
        std::vector<T> &list = lists.emplace_back(values.begin() + at, values.begin() + at + taken);
        list.resize(length, list.back());
        at += taken;
    }
    return lists;
}

// sql prepared with its "?*" spelled as "?, ?, ..." for the values of list
// (one of inLists), which are bound from the parameter first on.
template<typename T>
Statement prepareWithList(VaultDb &db, const char *sql, const std::vector<T> &list, int first = 1)
{
    QByteArray marks("?");
    for (std::size_t i = 1; i < list.size(); ++i)
        marks += ", ?";
    Statement s = db.prepare(QByteArray(sql).replace("?*", marks).constData());
    for (std::size_t i = 0; i < list.size(); ++i)
        s.bind(first + static_cast<int>(i), list[i]);
    return s;
}

QString defaultUser()
{
    const QString user = qEnvironmentVariable("USER");
    return user.isEmpty() ? QStringLiteral("user") : user;
}

void writeServerFile(const QString &dir, const QString &url)
{
    FileSystem &fs = FileSystem::instance();
    const QString path = VaultStore::serverFilePath(dir);
    // Restricted before the URL is written; rewriting keeps the permissions.
    if (!fs.mkpath(QFileInfo(path).absolutePath()) || !fs.write(path, QByteArray()) || !fs.setOwnerOnly(path)
        || !fs.write(path, url.toUtf8() + '\n'))
        throw HostError(E_DOX_IO_ERROR, QStringLiteral("cannot write %1").arg(path));
}

} // namespace

QString VaultStore::databasePath(const QString &dir)
{
    return QDir(dir).absoluteFilePath(QStringLiteral(".mctask/vault.db"));
}

QString VaultStore::serverFilePath(const QString &dir)
{
    return QDir(dir).absoluteFilePath(QStringLiteral(".mctask/server"));
}

bool VaultStore::isVault(const QString &dir)
{
    return FileSystem::instance().exists(databasePath(dir)) || FileSystem::instance().exists(serverFilePath(dir));
}

bool VaultStore::isOnServer(const QString &dir)
{
    return FileSystem::instance().exists(serverFilePath(dir));
}

std::shared_ptr<VaultStore> VaultStore::create(const QString &dir, const QString &name, const VaultOpenOptions &options)
{
    if (isVault(dir))
        throw HostError(E_DOX_NAME_ALREADY_EXISTS, QStringLiteral("%1 already holds a vault").arg(dir));
    if (!FileSystem::instance().mkpath(QDir(dir).absoluteFilePath(QStringLiteral(".mctask"))))
        throw HostError(E_DOX_IO_ERROR, QStringLiteral("cannot create %1").arg(dir));
    auto store = std::make_shared<VaultStore>(databasePath(dir), dir, options);
    store->setSetting(QStringLiteral("name"), name);
    return store;
}

std::shared_ptr<VaultStore> VaultStore::open(const QString &dir, const VaultOpenOptions &options)
{
    if (!isVault(dir))
        throw HostError(E_DOX_CANT_OPEN_DATABASE, QStringLiteral("%1 holds no vault").arg(dir));
    if (const auto url = FileSystem::instance().read(serverFilePath(dir)))
        return std::make_shared<VaultStore>(std::make_unique<PgDb>(QString::fromUtf8(url->trimmed())), dir, options, false);
    const QString damaged = QStringLiteral("the vault database in %1 is empty or damaged").arg(dir);
    // SQLite would take an empty file for a new database.
    if (FileSystem::instance().size(databasePath(dir)) == 0)
        throw HostError(E_DOX_CANT_OPEN_DATABASE, damaged);
    // Even reading needs the database's folder writable (its write-ahead log
    // and shared memory live there); say so plainly instead of SQLite's
    // "unable to open".
    const QFileInfo database(databasePath(dir));
    const bool writable = database.isWritable() && QFileInfo(database.absolutePath()).isWritable();
    if (!writable && !options.reading)
        throw HostError(E_DOX_DATABASE_ACCESS,
                        QStringLiteral("the vault is read-only (%1 cannot be written)").arg(database.absolutePath()));
    try {
        return std::make_shared<VaultStore>(databasePath(dir), dir, options,
                                            writable ? Opening::Existing : Opening::ReadOnly);
    } catch (const HostError &e) {
        if (e.code() == E_DOX_CANT_OPEN_DATABASE && e.context().contains(QLatin1String("holds no vault")))
            throw HostError(E_DOX_CANT_OPEN_DATABASE, damaged);
        if (e.context().startsWith(sqliteFailureText(SQLITE_CORRUPT)))
            throw HostError(E_DOX_CANT_OPEN_DATABASE, damaged + QStringLiteral(" (") + e.context() + ')');
        throw;
    }
}

std::shared_ptr<VaultStore> VaultStore::createInMemory(const QString &dir, const QString &name,
                                                       const VaultOpenOptions &options)
{
    auto store = std::make_shared<VaultStore>(QStringLiteral(":memory:"), dir, options);
    store->setSetting(QStringLiteral("name"), name);
    return store;
}

std::shared_ptr<VaultStore> VaultStore::createOnServer(const QString &url, const QString &dir, const QString &name,
                                                       const VaultOpenOptions &options)
{
    if (isVault(dir))
        throw HostError(E_DOX_NAME_ALREADY_EXISTS, QStringLiteral("%1 already holds a vault").arg(dir));
    auto db = std::make_unique<PgDb>(url);
    if (VaultDb probe(std::make_unique<PgDb>(url)); probe.userVersion() > 0)
        throw HostError(E_DOX_NAME_ALREADY_EXISTS,
                        QStringLiteral("vault server %1 already holds a vault").arg(db->serverName()));
    auto store = std::make_shared<VaultStore>(std::move(db), dir, options, true);
    store->setSetting(QStringLiteral("name"), name);
    writeServerFile(dir, url);
    return store;
}

std::shared_ptr<VaultStore> VaultStore::attachToServer(const QString &url, const QString &dir,
                                                       const VaultOpenOptions &options, std::optional<QChar> drive)
{
    if (isVault(dir))
        throw HostError(E_DOX_NAME_ALREADY_EXISTS, QStringLiteral("%1 already holds a vault").arg(dir));
    FileSystem &fs = FileSystem::instance();
    const QString driveFile = QDir(dir).absoluteFilePath(QStringLiteral(".mctask/drive"));
    if (drive && !(fs.mkpath(QFileInfo(driveFile).absolutePath()) && fs.write(driveFile, QString(*drive).toUtf8())))
        throw HostError(E_DOX_IO_ERROR, QStringLiteral("cannot write %1").arg(driveFile));
    try {
        auto store = std::make_shared<VaultStore>(std::make_unique<PgDb>(url), dir, options, false);
        writeServerFile(dir, url);
        return store;
    } catch (...) {
        fs.remove(driveFile);
        throw;
    }
}

namespace {

std::unique_ptr<SqliteDb> openSqlite(const QString &path, int busyTimeoutMs, VaultStore::Opening opening)
{
    return std::make_unique<SqliteDb>(path, busyTimeoutMs,
                                      opening == VaultStore::Opening::Create     ? SqliteDb::OpenMode::Create
                                      : opening == VaultStore::Opening::ReadOnly ? SqliteDb::OpenMode::ReadOnly
                                                                                 : SqliteDb::OpenMode::Existing);
}

} // namespace

VaultStore::VaultStore(const QString &databasePath, const QString &dir, const VaultOpenOptions &options,
                       Opening opening)
    : m_db(openSqlite(databasePath, options.busyTimeoutMs, opening)),
      m_paths(options.drive, dir),
      m_journal(m_db, dir, databasePath == QLatin1String(":memory:")),
      m_user(options.user.isEmpty() ? defaultUser() : options.user),
      m_now(options.now)
{
    finishOpening(opening == Opening::Create);
}

VaultStore::VaultStore(std::unique_ptr<PgDb> db, const QString &dir, const VaultOpenOptions &options, bool create)
    : m_db(std::move(db)),
      m_paths(options.drive, dir),
      m_journal(m_db, dir, false),
      m_user(options.user.isEmpty() ? defaultUser() : options.user),
      m_now(options.now)
{
    FileSystem::instance().mkpath(QDir(dir).absoluteFilePath(QStringLiteral(".mctask")));
    finishOpening(create);
}

void VaultStore::finishOpening(bool create)
{
    VaultSchema::ensure(m_db, create);
    // A reader leaves an unfinished hand-over of local copies to the next writer.
    if (!m_db.isReadOnly())
        m_journal.recover([this](const QString &native, const QByteArray &bytes) { return holdsLatest(native, bytes); });
    QString drive = setting(QStringLiteral("drive"));
    // A local view of a shared vault may have a letter of its own.
    if (isShared()) {
        if (const auto own = FileSystem::instance().read(m_paths.nativeRoot() + QStringLiteral("/.mctask/drive")))
            drive = QString::fromUtf8(own->trimmed());
    }
    if (!drive.isEmpty())
        m_paths = VaultPaths(drive.at(0), m_paths.nativeRoot());
    else if (!m_db.isReadOnly())
        setSetting(QStringLiteral("drive"), QString(m_paths.driveLetter()));
}

QByteArray VaultStore::readLocal(const QString &native) const
{
    if (auto staged = m_journal.staged(native))
        return *staged;
    FileSystem &fs = FileSystem::instance();
    // Reading first: the common case needs no look before.
    if (!fs.isDirectory(native)) {
        if (auto bytes = fs.read(native))
            return *bytes;
    }
    if (!fs.exists(native) || fs.isDirectory(native))
        throw HostError(E_DOX_FILE_NOT_FOUND, native);
    throw HostError(E_DOX_IO_ERROR, QStringLiteral("cannot read %1: no permission, or not a regular file").arg(native));
}

void VaultStore::writeLocal(const QString &native, const QByteArray &bytes)
{
    m_journal.write(native, bytes);
}

bool VaultStore::holdsLatest(const QString &native, const QByteArray &bytes)
{
    QString relative;
    if (!m_paths.toRelative(native, relative))
        return false;
    const auto file = fileByPath(relative);
    const auto latest = file ? version(file->id, file->latestVersion) : std::nullopt;
    return latest && latest->hash == contentHash(bytes);
}

QString VaultStore::setting(const QString &key, const QString &fallback)
{
    const auto guard = m_db.guard();
    Statement s = m_db.prepare("SELECT value FROM settings WHERE key = ?");
    s.bind(1, key);
    const QString value = s.step() ? s.text(0) : fallback;
    return value;
}

void VaultStore::setSetting(const QString &key, const QString &value)
{
    const auto guard = m_db.guard();
    Transaction t(m_db);
    m_db.prepare("INSERT INTO settings (key, value) VALUES (?, ?) ON CONFLICT (key) DO UPDATE SET value = excluded.value").bind(1, key).bind(2, value).exec();
    commit(t);
}

std::optional<VaultFolderRow> VaultStore::folderById(int id)
{
    const auto guard = m_db.guard();
    Statement s = m_db.prepare("SELECT id, COALESCE(parent_id, 0), path FROM folders WHERE id = ?");
    s.bind(1, id);
    std::optional<VaultFolderRow> row;
    if (s.step())
        row = VaultFolderRow{s.integer(0), s.integer(1), s.text(2)};
    return row;
}

std::optional<VaultFolderRow> VaultStore::folderByPath(const QString &relative)
{
    const auto guard = m_db.guard();
    Statement s = m_db.prepare("SELECT id, COALESCE(parent_id, 0), path FROM folders WHERE path_key = ?");
    s.bind(1, VaultPaths::key(relative));
    std::optional<VaultFolderRow> row;
    if (s.step())
        row = VaultFolderRow{s.integer(0), s.integer(1), s.text(2)};
    return row;
}

int VaultStore::ensureFolder(const QString &relative)
{
    const auto guard = m_db.guard();
    if (const auto existing = folderByPath(relative))
        return existing->id;
    const QString name = VaultPaths::fileName(relative);
    if (!VaultPaths::isValidName(name) || VaultPaths::isReserved(relative))
        throw HostError(E_DOX_INVALID_NAME, relative);
    Transaction t(m_db);
    const int parent = ensureFolder(VaultPaths::parentOf(relative));
    // Another writer on the server may make the same folder meanwhile: then
    // its folder serves.
    Statement insert = m_db.prepare("INSERT INTO folders (parent_id, name, path, path_key) VALUES (?, ?, ?, ?) "
                                    "ON CONFLICT (path_key) DO NOTHING RETURNING id");
    insert.bind(1, parent).bind(2, name).bind(3, relative).bind(4, VaultPaths::key(relative));
    std::optional<std::int64_t> id = insert.insertedIdIfNew();
    if (!id) {
        const auto made = folderByPath(relative);
        if (!made)
            throw HostError(E_DOX_DATABASE_ACCESS, QStringLiteral("folder %1 vanished while it was made").arg(relative));
        id = made->id;
    }
    m_journal.makeFolder(m_paths.toNative(relative));
    commit(t);
    return static_cast<int>(*id);
}

std::vector<VaultFolderRow> VaultStore::subFolders(int folderId)
{
    const auto guard = m_db.guard();
    Statement s = m_db.prepare("SELECT id, parent_id, path FROM folders WHERE parent_id = ? ORDER BY path_key");
    s.bind(1, folderId);
    std::vector<VaultFolderRow> rows;
    while (s.step())
        rows.push_back({s.integer(0), s.integer(1), s.text(2)});
    return rows;
}

VaultFileRow VaultStore::readFileRow(const Statement &s)
{
    VaultFileRow row;
    row.id = s.integer(0);
    row.folderId = s.integer(1);
    row.name = s.text(2);
    row.path = VaultPaths::join(s.text(10), row.name);
    row.kind = s.integer(4);
    row.latestVersion = s.integer(5);
    row.lockedBy = s.text(6);
    row.lock = static_cast<VaultLock>(s.integer(7));
    row.revision = s.text(8);
    row.state = s.text(9);
    row.hash = s.text(11);
    return row;
}

std::optional<VaultFileRow> VaultStore::fileById(int id)
{
    const auto guard = m_db.guard();
    static const QByteArray sql = QByteArray(fileColumns) + "WHERE f.id = ?";
    Statement s = m_db.prepare(sql.constData());
    s.bind(1, id);
    std::optional<VaultFileRow> row;
    if (s.step())
        row = readFileRow(s);
    return row;
}

std::vector<std::optional<VaultFileRow>> VaultStore::filesById(const std::vector<int> &ids)
{
    const auto guard = m_db.guard();
    std::unordered_map<int, VaultFileRow> found;
    static const QByteArray sql = QByteArray(fileColumns) + "WHERE f.id IN (?*)";
    for (const std::vector<int> &list : inLists(ids)) {
        Statement s = prepareWithList(m_db, sql.constData(), list);
        while (s.step()) {
            VaultFileRow row = readFileRow(s);
            found.emplace(row.id, std::move(row));
        }
    }
    std::vector<std::optional<VaultFileRow>> rows;
    rows.reserve(ids.size());
    for (const int id : ids) {
        const auto row = found.find(id);
        rows.push_back(row == found.end() ? std::nullopt : std::optional<VaultFileRow>(row->second));
    }
    return rows;
}

std::optional<VaultFileRow> VaultStore::fileByPath(const QString &relative)
{
    const auto guard = m_db.guard();
    static const QByteArray sql = QByteArray(fileColumns) + "WHERE f.path_key = ?";
    Statement s = m_db.prepare(sql.constData());
    s.bind(1, VaultPaths::key(relative));
    std::optional<VaultFileRow> row;
    if (s.step())
        row = readFileRow(s);
    return row;
}

std::optional<VaultFileRow> VaultStore::fileByIdOrPath(int id, const QString &path)
{
    if (id > 0)
        return fileById(id);
    QString relative;
    if (!m_paths.toRelative(path, relative))
        return std::nullopt;
    return fileByPath(relative);
}

std::vector<VaultFileRow> VaultStore::filesIn(int folderId)
{
    const auto guard = m_db.guard();
    static const QByteArray sql = QByteArray(fileColumns) + "WHERE f.folder_id = ? ORDER BY f.path_key";
    Statement s = m_db.prepare(sql.constData());
    s.bind(1, folderId);
    std::vector<VaultFileRow> rows;
    while (s.step())
        rows.push_back(readFileRow(s));
    return rows;
}

std::vector<VaultFileRow> VaultStore::filesUnder(int folderId)
{
    const auto guard = m_db.guard();
    std::vector<VaultFileRow> rows;
    walk(folderId, nullptr, [&rows](const VaultFileRow &file) { rows.push_back(file); });
    std::sort(rows.begin(), rows.end(), [](const VaultFileRow &a, const VaultFileRow &b) {
        return VaultPaths::key(a.path) < VaultPaths::key(b.path);
    });
    return rows;
}

void VaultStore::walk(int folderId, const std::function<void(const VaultFolderRow &)> &folder,
                      const std::function<void(const VaultFileRow &)> &file)
{
    const auto guard = m_db.guard();
    const auto start = folderById(folderId);
    if (!start)
        throw HostError(E_DOX_FOLDER_NOT_FOUND, QString::number(folderId));
    // Keys sort a folder's whole subtree between "key\" and "key]" ("]"
    // follows "\"), so one range scan per table covers the tree.
    const QString key = VaultPaths::key(start->path);
    const QString low = key.isEmpty() ? QString() : key + '\\';
    static const char32_t beyondAll = 0x10FFFF;
    const QString high = key.isEmpty() ? QString::fromUcs4(&beyondAll, 1) : key + ']';
    if (folder) {
        folder(*start);
        Statement s = m_db.prepare(
            "SELECT id, COALESCE(parent_id, 0), path FROM folders WHERE path_key > ? AND path_key < ? ORDER BY path_key");
        s.bind(1, low).bind(2, high);
        while (s.step())
            folder(VaultFolderRow{s.integer(0), s.integer(1), s.text(2)});
    }
    if (file) {
        static const QByteArray sql =
            QByteArray(fileColumns) + "WHERE f.folder_id IN (SELECT id FROM folders WHERE id = ?1 OR "
                                      "(path_key > ?2 AND path_key < ?3))";
        Statement s = m_db.prepare(sql.constData());
        s.bind(1, folderId).bind(2, low).bind(3, high);
        while (s.step())
            file(readFileRow(s));
    }
}

std::vector<VaultVersionRow> VaultStore::versions(int fileId)
{
    const auto guard = m_db.guard();
    Statement s = m_db.prepare("SELECT v.version, v.revision, v.state, v.hash, b.size, v.comment, v.\"user\", v.created "
                                "FROM versions v JOIN blobs b ON b.hash = v.hash WHERE v.file_id = ? ORDER BY v.version");
    s.bind(1, fileId);
    std::vector<VaultVersionRow> rows;
    while (s.step())
        rows.push_back({s.integer(0), s.text(1), s.text(2), s.text(3), s.int64(4), s.text(5), s.text(6), s.text(7)});
    return rows;
}

std::optional<VaultVersionRow> VaultStore::version(int fileId, int version)
{
    const auto guard = m_db.guard();
    const auto file = fileById(fileId);
    if (!file)
        return std::nullopt;
    const int wanted = version <= 0 ? file->latestVersion : version;
    Statement s = m_db.prepare("SELECT v.version, v.revision, v.state, v.hash, b.size, v.comment, v.\"user\", v.created "
                                "FROM versions v JOIN blobs b ON b.hash = v.hash WHERE v.file_id = ? AND v.version = ?");
    s.bind(1, fileId).bind(2, wanted);
    std::optional<VaultVersionRow> row;
    if (s.step())
        row = VaultVersionRow{s.integer(0), s.text(1), s.text(2), s.text(3), s.int64(4), s.text(5), s.text(6), s.text(7)};
    return row;
}

VaultFileRow VaultStore::requireFile(int fileId)
{
    const auto guard = m_db.guard();
    auto file = fileById(fileId);
    if (!file)
        throw HostError(E_DOX_FILE_NOT_FOUND, QStringLiteral("file id %1").arg(fileId));
    return *file;
}

int VaultStore::resolveVersion(const VaultFileRow &file, int version)
{
    const auto guard = m_db.guard();
    if (version <= 0)
        return file.latestVersion;
    if (version > file.latestVersion)
        throw HostError(E_INVALIDARG, QStringLiteral("%1 has no version %2").arg(file.path).arg(version));
    return version;
}

QByteArray VaultStore::readVersion(int fileId, int version)
{
    const auto guard = m_db.guard();
    const VaultFileRow file = requireFile(fileId);
    std::optional<QByteArray> bytes;
    {
        Statement s = m_db.prepare("SELECT hash FROM versions WHERE file_id = ? AND version = ?");
        if (s.bind(1, fileId).bind(2, resolveVersion(file, version)).step())
            bytes = m_db.readContent(s.text(0));
    }
    if (!bytes)
        throw HostError(E_INVALIDARG, QStringLiteral("%1 has no version %2").arg(file.path).arg(version));
    return std::move(*bytes);
}

QString VaultStore::contentHash(const QByteArray &bytes)
{
    return QString::fromLatin1(QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex());
}

QString VaultStore::storeBlob(const QByteArray &bytes)
{
    const auto guard = m_db.guard();
    const QString hash = contentHash(bytes);
    m_db.storeContent(hash, bytes);
    return hash;
}

VaultStore::CommitCheck::CommitCheck(VaultStore &store, std::function<void()> check) : m_store(store)
{
    m_store.m_commitCheck = std::move(check);
}

VaultStore::CommitCheck::~CommitCheck()
{
    m_store.m_commitCheck = nullptr;
}

void VaultStore::commit(Transaction &transaction)
{
    // A savepoint is checked by the transaction it ends in.
    if (m_commitCheck && !transaction.isNested())
        m_commitCheck();
    transaction.commit();
}

QString VaultStore::timestamp() const
{
    const QDateTime time = m_now ? m_now() : Clock::instance().now();
    return time.toUTC().toString(Qt::ISODateWithMs);
}

VaultFileRow VaultStore::addFile(const QString &source, const QString &folderRelative, const QString &name,
                                 const AddOptions &options)
{
    const auto guard = m_db.guard();
    const NewFileResult result = addFiles({{source, folderRelative, name}}, options).front();
    if (failed(result.result))
        throw HostError(result.result, result.problem);
    return requireFile(result.id);
}

std::vector<VaultStore::NewFileResult> VaultStore::addFiles(const std::vector<NewFile> &files, const AddOptions &options)
{
    const auto guard = m_db.guard();
    Transaction t(m_db);
    std::vector<NewFileResult> results;
    results.reserve(files.size());
    std::unordered_map<QString, int> folderIds; // by key
    const QString now = timestamp();
    const QString lockedBy = options.keepCheckedOut ? m_user : QString();
    const int lock = static_cast<int>(options.keepCheckedOut ? VaultLock::Added : VaultLock::None);
    // The paths taken already, asked for all files at once; each file added
    // below takes its own.
    std::unordered_set<QString> taken;
    {
        std::vector<QString> keys;
        keys.reserve(files.size());
        for (const NewFile &file : files)
            keys.push_back(VaultPaths::key(VaultPaths::join(file.folder, file.name)));
        for (const std::vector<QString> &list : inLists(keys)) {
            Statement s = prepareWithList(m_db, "SELECT path_key FROM files WHERE path_key IN (?*)", list);
            while (s.step())
                taken.insert(s.text(0));
        }
    }
    for (const NewFile &file : files) {
        NewFileResult &result = results.emplace_back();
        const QString relative = VaultPaths::join(file.folder, file.name);
        const QString key = VaultPaths::key(relative);
        // A file that cannot be added is reported in its result before
        // anything of it stays written, so no savepoint is needed per file.
        QByteArray bytes;
        try {
            if (!VaultPaths::isValidName(file.name))
                throw HostError(E_DOX_INVALID_NAME, file.name);
            if (VaultPaths::isReserved(relative))
                throw HostError(E_DOX_INVALID_NAME, QStringLiteral("%1 is the vault's own data folder").arg(relative));
            if (taken.count(key))
                throw HostError(E_DOX_NAME_ALREADY_EXISTS, m_paths.toWindows(relative));
            bytes = readLocal(file.source);
            const QString folderKey = VaultPaths::key(file.folder);
            auto folder = folderIds.find(folderKey);
            if (folder == folderIds.end())
                folder = folderIds.emplace(folderKey, ensureFolder(file.folder)).first;
            result.folderId = folder->second;
            // On a server another writer may add the same path after the look
            // above: the insert waits for it and then adds nothing.
            Statement insert = m_db.prepare(
                "INSERT INTO files (folder_id, name, path_key, kind, latest_version, locked_by, lock_kind, lock_folder) "
                "VALUES (?, ?, ?, 1, 1, ?, ?, ?) ON CONFLICT (path_key) DO NOTHING RETURNING id");
            insert.bind(1, result.folderId)
                .bind(2, file.name)
                .bind(3, key)
                .bind(4, lockedBy)
                .bind(5, lock)
                .bind(6, options.keepCheckedOut ? result.folderId : 0);
            const std::optional<std::int64_t> id = insert.insertedIdIfNew();
            if (!id)
                throw HostError(E_DOX_NAME_ALREADY_EXISTS, m_paths.toWindows(relative));
            result.id = static_cast<int>(*id);
            taken.insert(key);
            const QString target = m_paths.toNative(relative);
            try {
                if (QFileInfo(file.source).absoluteFilePath() != QFileInfo(target).absoluteFilePath())
                    writeLocal(target, bytes);
            } catch (const HostError &) {
                m_db.prepare("DELETE FROM files WHERE id = ?").bind(1, result.id).exec();
                result.id = 0;
                throw;
            }
        } catch (const HostError &e) {
            if (e.code() == E_DOX_DATABASE_ACCESS)
                throw;
            result.result = e.code();
            result.problem = e.context();
            continue;
        }
        const QString hash = storeBlob(bytes);
        m_db.prepare("INSERT INTO versions (file_id, version, revision, state, hash, comment, \"user\", created) "
                     "VALUES (?, 1, ?, ?, ?, ?, ?, ?)")
            .bind(1, result.id)
            .bind(2, options.revision)
            .bind(3, options.state)
            .bind(4, hash)
            .bind(5, options.comment)
            .bind(6, m_user)
            .bind(7, now)
            .exec();
    }
    commit(t);
    return results;
}

VaultStore::Update VaultStore::updateFrom(int fileId, const QString &source)
{
    const auto guard = m_db.guard();
    Transaction t(m_db);
    const VaultFileRow file = requireFile(fileId);
    const auto bytes = FileSystem::instance().read(source);
    if (!bytes)
        throw HostError(E_DOX_IO_ERROR, QStringLiteral("cannot read %1: no permission, or not a regular file").arg(source));
    if (contentHash(*bytes) == version(fileId, 0)->hash)
        return {file.latestVersion, false};
    checkOut(fileId, file.folderId);
    const QString local = m_paths.toNative(file.path);
    // Staged with the transaction: a failed update leaves the old bytes
    // beside the old version.
    if (QFileInfo(source).absoluteFilePath() != QFileInfo(local).absoluteFilePath())
        writeLocal(local, *bytes);
    const Update update{checkIn(fileId, QString()), true};
    commit(t);
    return update;
}

int VaultStore::checkIn(int fileId, const QString &comment)
{
    return checkInFiles({fileId}, comment).front();
}

std::vector<int> VaultStore::checkInFiles(const std::vector<int> &fileIds, const QString &comment)
{
    const auto guard = m_db.guard();
    Transaction t(m_db);
    const std::vector<std::optional<VaultFileRow>> files = filesById(fileIds);
    std::vector<int> results;
    results.reserve(fileIds.size());
    // New files whose bytes stayed as added: they keep their one version and
    // only give up the lock, all in a few statements below.
    std::vector<int> asAdded;
    std::unordered_map<int, std::size_t> seen; // a file named again gets its first result
    for (std::size_t i = 0; i < files.size(); ++i) {
        if (const auto [first, isNew] = seen.emplace(fileIds[i], i); !isNew) {
            results.push_back(results[first->second]);
            continue;
        }
        if (!files[i])
            throw HostError(E_DOX_FILE_NOT_FOUND, QStringLiteral("file id %1").arg(fileIds[i]));
        const VaultFileRow &file = *files[i];
        if (file.lock == VaultLock::None || file.lockedBy != m_user)
            throw HostError(E_DOX_FILE_NOT_LOCKED_BY_YOU, m_paths.toWindows(file.path));
        const QByteArray bytes = readLocal(m_paths.toNative(file.path));
        const QString hash = contentHash(bytes);
        if (file.lock == VaultLock::Added && file.hash == hash) {
            asAdded.push_back(file.id);
            results.push_back(file.latestVersion);
            continue;
        }
        const int result = file.latestVersion + 1;
        storeBlob(bytes);
        // The new version carries on the labels, card and references of the
        // one it replaces; a workflow may change them afterwards.
        m_db.prepare("INSERT INTO versions (file_id, version, revision, state, hash, comment, \"user\", created) "
                     "SELECT file_id, CAST(? AS INTEGER), revision, state, CAST(? AS TEXT), CAST(? AS TEXT), "
                     "CAST(? AS TEXT), CAST(? AS TEXT) FROM versions WHERE file_id = ? AND version = ?")
            .bind(1, result)
            .bind(2, hash)
            .bind(3, comment)
            .bind(4, m_user)
            .bind(5, timestamp())
            .bind(6, file.id)
            .bind(7, file.latestVersion)
            .exec();
        m_db.prepare("INSERT INTO card_values (file_id, version, variable_id, configuration, type, ivalue, rvalue, tvalue) "
                     "SELECT file_id, CAST(? AS INTEGER), variable_id, configuration, type, ivalue, rvalue, tvalue "
                     "FROM card_values "
                     "WHERE file_id = ? AND version = ?")
            .bind(1, result)
            .bind(2, file.id)
            .bind(3, file.latestVersion)
            .exec();
        m_db.prepare("INSERT INTO refs (parent_id, parent_version, child_id, child_version, configuration) "
                     "SELECT parent_id, CAST(? AS INTEGER), child_id, child_version, configuration FROM refs "
                     "WHERE parent_id = ? AND parent_version = ?")
            .bind(1, result)
            .bind(2, file.id)
            .bind(3, file.latestVersion)
            .exec();
        m_db.prepare("UPDATE files SET latest_version = ?, locked_by = NULL, lock_kind = 0, lock_folder = 0 WHERE id = ?")
            .bind(1, result)
            .bind(2, file.id)
            .exec();
        results.push_back(result);
    }
    for (const std::vector<int> &list : inLists(asAdded)) {
        // A new file's first check-in: its one version takes the comment.
        if (!comment.isEmpty())
            prepareWithList(m_db,
                            "UPDATE versions SET comment = ? WHERE file_id IN (?*) AND version = "
                            "(SELECT latest_version FROM files WHERE files.id = versions.file_id)",
                            list, 2)
                .bind(1, comment)
                .exec();
        prepareWithList(m_db, "UPDATE files SET locked_by = NULL, lock_kind = 0, lock_folder = 0 WHERE id IN (?*)", list)
            .exec();
    }
    commit(t);
    return results;
}

void VaultStore::checkOut(int fileId, int folderId)
{
    const auto guard = m_db.guard();
    Transaction t(m_db);
    const VaultFileRow file = requireFile(fileId);
    if (file.lock != VaultLock::None) {
        if (file.lockedBy != m_user)
            throw HostError(E_DOX_FILE_IS_LOCKED, QStringLiteral("%1 is checked out by %2")
                                                      .arg(m_paths.toWindows(file.path), file.lockedBy));
        commit(t);
        return;
    }
    m_db.prepare("UPDATE files SET locked_by = ?, lock_kind = ?, lock_folder = ? WHERE id = ?")
        .bind(1, m_user)
        .bind(2, static_cast<int>(VaultLock::CheckedOut))
        .bind(3, folderId > 0 ? folderId : file.folderId)
        .bind(4, fileId)
        .exec();
    // The local copy is brought up to the latest version before editing.
    if (!FileSystem::instance().exists(m_paths.toNative(file.path)))
        restoreLocalCopy(fileId);
    commit(t);
}

void VaultStore::undoCheckOut(int fileId)
{
    const auto guard = m_db.guard();
    Transaction t(m_db);
    const VaultFileRow file = requireFile(fileId);
    if (file.lock == VaultLock::None || file.lockedBy != m_user)
        throw HostError(E_DOX_FILE_NOT_LOCKED_BY_YOU, m_paths.toWindows(file.path));
    m_db.prepare("UPDATE files SET locked_by = NULL, lock_kind = 0, lock_folder = 0 WHERE id = ?").bind(1, fileId).exec();
    restoreLocalCopy(fileId);
    commit(t);
}

void VaultStore::restoreLocalCopy(int fileId)
{
    const auto guard = m_db.guard();
    const VaultFileRow file = requireFile(fileId);
    writeLocal(m_paths.toNative(file.path), readVersion(fileId, file.latestVersion));
}

bool VaultStore::fetch(int fileId)
{
    const auto guard = m_db.guard();
    const VaultFileRow file = requireFile(fileId);
    const QString local = m_paths.toNative(file.path);
    FileSystem &fs = FileSystem::instance();
    if (fs.exists(local)) {
        if (file.lock != VaultLock::None && file.lockedBy == m_user)
            return false;
        const auto bytes = fs.read(local);
        if (bytes && contentHash(*bytes) == version(fileId, 0)->hash)
            return false;
    }
    restoreLocalCopy(fileId);
    return true;
}

int VaultStore::fetchWithReferences(const std::vector<int> &fileIds)
{
    const auto guard = m_db.guard();
    int fetched = 0;
    std::unordered_set<int> seen;
    std::vector<int> pending(fileIds.rbegin(), fileIds.rend());
    while (!pending.empty()) {
        const int id = pending.back();
        pending.pop_back();
        if (!seen.insert(id).second)
            continue;
        fetched += fetch(id) ? 1 : 0;
        for (const VaultReferenceRow &reference : references(id, 0))
            pending.push_back(reference.childId);
    }
    return fetched;
}

void VaultStore::deleteFile(int fileId)
{
    const auto guard = m_db.guard();
    Transaction t(m_db);
    const VaultFileRow file = requireFile(fileId);
    if (file.lock != VaultLock::None && file.lockedBy != m_user)
        throw HostError(E_DOX_FILE_IS_LOCKED, m_paths.toWindows(file.path));
    m_db.prepare("DELETE FROM refs WHERE child_id = ?1 OR parent_id = ?1").bind(1, fileId).exec();
    m_db.prepare("DELETE FROM card_values WHERE file_id = ?").bind(1, fileId).exec();
    std::vector<QString> hashes;
    for (const VaultVersionRow &v : versions(fileId))
        hashes.push_back(v.hash);
    m_db.prepare("DELETE FROM versions WHERE file_id = ?").bind(1, fileId).exec();
    m_db.prepare("DELETE FROM files WHERE id = ?").bind(1, fileId).exec();
    // Contents no other version shares go with the file.
    for (const QString &hash : hashes)
        m_db.dropContentIfUnused(hash);
    // Only once the outermost transaction commits: a rollback must find the
    // local copy still there.
    const QString local = m_paths.toNative(file.path);
    m_db.onTransactionEnd([local](bool committed) {
        if (committed)
            FileSystem::instance().remove(local);
    });
    commit(t);
}

void VaultStore::setVersionLabels(int fileId, int version, const QString &revision, const QString &state)
{
    const auto guard = m_db.guard();
    Transaction t(m_db);
    const VaultFileRow file = requireFile(fileId);
    m_db.prepare("UPDATE versions SET revision = ?, state = ? WHERE file_id = ? AND version = ?")
        .bind(1, revision)
        .bind(2, state)
        .bind(3, fileId)
        .bind(4, resolveVersion(file, version))
        .exec();
    commit(t);
}

int VaultStore::defineCardVariable(const QString &name)
{
    const auto guard = m_db.guard();
    if (const auto id = cardVariableId(name))
        return *id;
    if (name.trimmed().isEmpty())
        throw HostError(E_DOX_INVALID_NAME, QStringLiteral("empty card variable name"));
    Transaction t(m_db);
    Statement insert = m_db.prepare(
        "INSERT INTO card_variables (name, name_key) VALUES (?, ?) ON CONFLICT (name_key) DO NOTHING RETURNING id");
    insert.bind(1, name).bind(2, name.toLower());
    std::optional<std::int64_t> id = insert.insertedIdIfNew();
    if (!id)
        id = cardVariableId(name); // defined by another writer meanwhile
    if (!id)
        throw HostError(E_DOX_DATABASE_ACCESS, QStringLiteral("card variable %1 vanished while it was made").arg(name));
    commit(t);
    return static_cast<int>(*id);
}

std::optional<int> VaultStore::cardVariableId(const QString &name)
{
    const auto guard = m_db.guard();
    Statement s = m_db.prepare("SELECT id FROM card_variables WHERE name_key = ?");
    s.bind(1, name.toLower());
    std::optional<int> id;
    if (s.step())
        id = s.integer(0);
    return id;
}

QStringList VaultStore::cardVariableNames()
{
    const auto guard = m_db.guard();
    Statement s = m_db.prepare("SELECT name FROM card_variables ORDER BY name_key");
    QStringList names;
    while (s.step())
        names.append(s.text(0));
    return names;
}

void VaultStore::setCardValue(int fileId, int version, const QString &variable, const QString &configuration,
                              const Variant &value)
{
    const auto guard = m_db.guard();
    Transaction t(m_db);
    const VaultFileRow file = requireFile(fileId);
    const auto variableId = cardVariableId(variable);
    if (!variableId)
        throw HostError(E_DOX_VARIABLE_NOT_FOUND, variable);
    Statement s = m_db.prepare("INSERT INTO card_values "
                                "(file_id, version, variable_id, configuration, type, ivalue, rvalue, tvalue) "
                                "VALUES (?, ?, ?, ?, ?, ?, ?, ?) "
                                "ON CONFLICT (file_id, version, variable_id, configuration) DO UPDATE SET "
                                "type = excluded.type, ivalue = excluded.ivalue, rvalue = excluded.rvalue, "
                                "tvalue = excluded.tvalue");
    s.bind(1, fileId).bind(2, resolveVersion(file, version)).bind(3, *variableId).bind(4, configuration);
    bindVariant(s, 5, value);
    s.exec();
    commit(t);
}

std::optional<Variant> VaultStore::cardValue(int fileId, int version, const QString &variable,
                                             const QString &configuration)
{
    const auto guard = m_db.guard();
    const VaultFileRow file = requireFile(fileId);
    Statement s = m_db.prepare("SELECT c.type, c.ivalue, c.rvalue, c.tvalue FROM card_values c "
                                "JOIN card_variables n ON n.id = c.variable_id "
                                "WHERE c.file_id = ? AND c.version = ? AND n.name_key = ? AND c.configuration = ?");
    s.bind(1, fileId).bind(2, resolveVersion(file, version)).bind(3, variable.toLower()).bind(4, configuration);
    std::optional<Variant> value;
    if (s.step())
        value = readVariant(s, 0);
    return value;
}

std::vector<VaultCardValue> VaultStore::cardValues(int fileId, int version)
{
    const auto guard = m_db.guard();
    const VaultFileRow file = requireFile(fileId);
    Statement s = m_db.prepare("SELECT n.name, c.configuration, c.type, c.ivalue, c.rvalue, c.tvalue FROM card_values c "
                                "JOIN card_variables n ON n.id = c.variable_id "
                                "WHERE c.file_id = ? AND c.version = ? ORDER BY n.name_key, c.configuration");
    s.bind(1, fileId).bind(2, resolveVersion(file, version));
    std::vector<VaultCardValue> values;
    while (s.step())
        values.push_back({s.text(0), s.text(1), readVariant(s, 2)});
    return values;
}

void VaultStore::addReference(int parentId, int childId, const QString &configuration)
{
    const auto guard = m_db.guard();
    Transaction t(m_db);
    const VaultFileRow parent = requireFile(parentId);
    const VaultFileRow child = requireFile(childId);
    if (parentId == childId)
        throw HostError(E_INVALIDARG, QStringLiteral("%1 cannot reference itself").arg(m_paths.toWindows(parent.path)));
    m_db.prepare("INSERT INTO refs (parent_id, parent_version, child_id, child_version, configuration) "
                 "VALUES (?, ?, ?, ?, ?) ON CONFLICT (parent_id, parent_version, child_id, configuration) "
                 "DO UPDATE SET child_version = excluded.child_version")
        .bind(1, parentId)
        .bind(2, parent.latestVersion)
        .bind(3, childId)
        .bind(4, child.latestVersion)
        .bind(5, configuration)
        .exec();
    commit(t);
}

std::vector<VaultReferenceRow> VaultStore::referencedBy(int childId)
{
    const auto guard = m_db.guard();
    Statement s = m_db.prepare("SELECT parent_id, parent_version, child_id, child_version, configuration FROM refs "
                                "WHERE child_id = ? ORDER BY parent_id, parent_version, configuration");
    s.bind(1, childId);
    std::vector<VaultReferenceRow> rows;
    while (s.step())
        rows.push_back({s.integer(0), s.integer(1), s.integer(2), s.integer(3), s.text(4)});
    return rows;
}

std::vector<VaultReferenceRow> VaultStore::references(int parentId, int parentVersion)
{
    const auto guard = m_db.guard();
    const VaultFileRow parent = requireFile(parentId);
    Statement s = m_db.prepare("SELECT parent_id, parent_version, child_id, child_version, configuration FROM refs "
                                "WHERE parent_id = ? AND parent_version = ? ORDER BY child_id, configuration");
    s.bind(1, parentId).bind(2, resolveVersion(parent, parentVersion));
    std::vector<VaultReferenceRow> rows;
    while (s.step())
        rows.push_back({s.integer(0), s.integer(1), s.integer(2), s.integer(3), s.text(4)});
    return rows;
}

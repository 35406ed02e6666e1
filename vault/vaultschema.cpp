#include "vault/vaultschema.h"

#include "host/hosterror.h"
#include "vault/vaultdb.h"

#include <QRegularExpression>

namespace {

// Version bytes are BLOBs in the database, one row per distinct content
// (keyed by its SHA-256). Keeping them in SQLite rather than as files beside
// it means a version row and its bytes commit or roll back together: a
// crash can leave neither a dangling row nor an orphan file, and the same
// code serves ":memory:" vaults. Identical contents are stored once.
const char *const schemaV1 = R"sql(
CREATE TABLE settings (
  key   TEXT PRIMARY KEY,
  value TEXT NOT NULL
);
CREATE TABLE folders (
  id        INTEGER PRIMARY KEY,
  parent_id INTEGER REFERENCES folders(id),
  name      TEXT NOT NULL,
  path      TEXT NOT NULL,
  path_key  TEXT NOT NULL UNIQUE
);
CREATE INDEX folders_parent ON folders(parent_id);
CREATE TABLE files (
  id             INTEGER PRIMARY KEY,
  folder_id      INTEGER NOT NULL REFERENCES folders(id),
  name           TEXT NOT NULL,
  path_key       TEXT NOT NULL UNIQUE,
  kind           INTEGER NOT NULL DEFAULT 1,
  latest_version INTEGER NOT NULL,
  locked_by      TEXT,
  lock_kind      INTEGER NOT NULL DEFAULT 0,
  lock_folder    INTEGER NOT NULL DEFAULT 0
);
CREATE INDEX files_folder ON files(folder_id);
CREATE TABLE blobs (
  hash TEXT PRIMARY KEY,
  size INTEGER NOT NULL,
  data BLOB NOT NULL
);
CREATE TABLE versions (
  file_id  INTEGER NOT NULL REFERENCES files(id) ON DELETE CASCADE,
  version  INTEGER NOT NULL,
  revision TEXT NOT NULL DEFAULT '',
  state    TEXT NOT NULL DEFAULT '',
  hash     TEXT NOT NULL REFERENCES blobs(hash),
  comment  TEXT NOT NULL DEFAULT '',
  "user"   TEXT NOT NULL DEFAULT '',
  created  TEXT NOT NULL,
  PRIMARY KEY (file_id, version)
) WITHOUT ROWID;
CREATE INDEX versions_hash ON versions(hash);
CREATE TABLE card_variables (
  id       INTEGER PRIMARY KEY,
  name     TEXT NOT NULL,
  name_key TEXT NOT NULL UNIQUE
);
CREATE TABLE card_values (
  file_id       INTEGER NOT NULL,
  version       INTEGER NOT NULL,
  variable_id   INTEGER NOT NULL REFERENCES card_variables(id),
  configuration TEXT NOT NULL DEFAULT '',
  type          INTEGER NOT NULL,
  ivalue        INTEGER,
  rvalue        REAL,
  tvalue        TEXT,
  PRIMARY KEY (file_id, version, variable_id, configuration),
  FOREIGN KEY (file_id, version) REFERENCES versions(file_id, version) ON DELETE CASCADE
) WITHOUT ROWID;
CREATE TABLE refs (
  parent_id      INTEGER NOT NULL,
  parent_version INTEGER NOT NULL,
  child_id       INTEGER NOT NULL REFERENCES files(id) ON DELETE CASCADE,
  child_version  INTEGER NOT NULL,
  configuration  TEXT NOT NULL DEFAULT '',
  PRIMARY KEY (parent_id, parent_version, child_id, configuration),
  FOREIGN KEY (parent_id, parent_version) REFERENCES versions(file_id, version) ON DELETE CASCADE
) WITHOUT ROWID;
CREATE INDEX refs_child ON refs(child_id);

CREATE TABLE tasks (
  id       INTEGER PRIMARY KEY,
  name     TEXT NOT NULL,
  name_key TEXT NOT NULL UNIQUE,
  class_id TEXT NOT NULL,
  flags    INTEGER NOT NULL DEFAULT 0
);
CREATE TABLE task_variables (
  task_id  INTEGER NOT NULL REFERENCES tasks(id) ON DELETE CASCADE,
  name     TEXT NOT NULL,
  name_key TEXT NOT NULL,
  type     INTEGER NOT NULL,
  ivalue   INTEGER,
  rvalue   REAL,
  tvalue   TEXT,
  PRIMARY KEY (task_id, name_key)
) WITHOUT ROWID;
CREATE TABLE task_declared (
  task_id  INTEGER NOT NULL REFERENCES tasks(id) ON DELETE CASCADE,
  position INTEGER NOT NULL,
  name     TEXT NOT NULL,
  PRIMARY KEY (task_id, name)
) WITHOUT ROWID;
CREATE TABLE task_menu (
  task_id    INTEGER NOT NULL REFERENCES tasks(id) ON DELETE CASCADE,
  position   INTEGER NOT NULL,
  command_id INTEGER NOT NULL,
  menu_text  TEXT NOT NULL,
  flags      INTEGER NOT NULL,
  help       TEXT NOT NULL,
  PRIMARY KEY (task_id, position)
) WITHOUT ROWID;
CREATE TABLE instances (
  id            INTEGER PRIMARY KEY,
  task_id       INTEGER NOT NULL REFERENCES tasks(id) ON DELETE CASCADE,
  guid          TEXT NOT NULL UNIQUE,
  status        INTEGER NOT NULL,
  result        INTEGER NOT NULL DEFAULT 0,
  message       TEXT,
  extra         TEXT,
  progress_max  INTEGER NOT NULL DEFAULT 0,
  progress_pos  INTEGER NOT NULL DEFAULT 0,
  progress_text TEXT NOT NULL DEFAULT '',
  created       TEXT NOT NULL
);
CREATE INDEX instances_task ON instances(task_id);
CREATE TABLE instance_variables (
  instance_id INTEGER NOT NULL REFERENCES instances(id) ON DELETE CASCADE,
  name        TEXT NOT NULL,
  name_key    TEXT NOT NULL,
  type        INTEGER NOT NULL,
  ivalue      INTEGER,
  rvalue      REAL,
  tvalue      TEXT,
  PRIMARY KEY (instance_id, name_key)
) WITHOUT ROWID;
CREATE TABLE instance_affected (
  instance_id INTEGER NOT NULL REFERENCES instances(id) ON DELETE CASCADE,
  position    INTEGER NOT NULL,
  object_id   INTEGER NOT NULL,
  kind        INTEGER NOT NULL,
  folder_id   INTEGER NOT NULL,
  version     INTEGER NOT NULL,
  PRIMARY KEY (instance_id, position)
) WITHOUT ROWID;
CREATE TABLE instance_data (
  instance_id INTEGER NOT NULL REFERENCES instances(id) ON DELETE CASCADE,
  position    INTEGER NOT NULL,
  object_id1  INTEGER NOT NULL,
  object_id2  INTEGER NOT NULL,
  string1     TEXT NOT NULL,
  string2     TEXT NOT NULL,
  long1       INTEGER NOT NULL,
  long2       INTEGER NOT NULL,
  PRIMARY KEY (instance_id, position)
) WITHOUT ROWID;

INSERT INTO folders (id, parent_id, name, path, path_key) VALUES (1, NULL, '', '', '');
)sql";

// Local copies staged by a transaction until they are moved into place;
// see LocalJournal.
const char *const schemaV2 = R"sql(
CREATE TABLE local_journal (
  name   TEXT PRIMARY KEY,
  target TEXT NOT NULL
) WITHOUT ROWID;
)sql";

// The queue of the task host: who holds an instance (host name, process,
// worker), the attempt, when the lease of the claim runs out (milliseconds
// since the epoch, UTC), when the run started, reached the hand-over of its
// outputs to the vault, and finished. The holder stays after the end, so the
// table says who ran each instance. hosts: the task hosts and their last
// heartbeat; what their workers run is read from instances.
const char *const schemaV3 = R"sql(
ALTER TABLE instances ADD COLUMN holder_host TEXT;
ALTER TABLE instances ADD COLUMN holder_pid INTEGER NOT NULL DEFAULT 0;
ALTER TABLE instances ADD COLUMN holder_worker INTEGER NOT NULL DEFAULT 0;
ALTER TABLE instances ADD COLUMN claimed TEXT;
ALTER TABLE instances ADD COLUMN attempt INTEGER NOT NULL DEFAULT 0;
ALTER TABLE instances ADD COLUMN lease_expiry INTEGER;
ALTER TABLE instances ADD COLUMN started TEXT;
ALTER TABLE instances ADD COLUMN finished TEXT;
ALTER TABLE instances ADD COLUMN handover TEXT;
CREATE INDEX instances_lease ON instances(lease_expiry) WHERE lease_expiry IS NOT NULL;
CREATE TABLE hosts (
  name      TEXT NOT NULL,
  pid       INTEGER NOT NULL,
  workers   INTEGER NOT NULL,
  started   TEXT NOT NULL,
  heartbeat TEXT NOT NULL,
  stopped   TEXT,
  PRIMARY KEY (name, pid)
) WITHOUT ROWID;
)sql";

// The same tables with their key columns first. SQLite's integrity check
// (3.40) reports a NOT NULL column that stands before a key column of a
// WITHOUT ROWID table as NULL although it is not, so a sound vault failed
// "PRAGMA integrity_check". The rows are copied over unchanged.
const char *const schemaV4 = R"sql(
CREATE TABLE refs_v4 (
  parent_id      INTEGER NOT NULL,
  parent_version INTEGER NOT NULL,
  child_id       INTEGER NOT NULL REFERENCES files(id) ON DELETE CASCADE,
  configuration  TEXT NOT NULL DEFAULT '',
  child_version  INTEGER NOT NULL,
  PRIMARY KEY (parent_id, parent_version, child_id, configuration),
  FOREIGN KEY (parent_id, parent_version) REFERENCES versions(file_id, version) ON DELETE CASCADE
) WITHOUT ROWID;
INSERT INTO refs_v4 (parent_id, parent_version, child_id, configuration, child_version)
  SELECT parent_id, parent_version, child_id, configuration, child_version FROM refs;
DROP TABLE refs;
ALTER TABLE refs_v4 RENAME TO refs;
CREATE INDEX refs_child ON refs(child_id);

CREATE TABLE task_variables_v4 (
  task_id  INTEGER NOT NULL REFERENCES tasks(id) ON DELETE CASCADE,
  name_key TEXT NOT NULL,
  name     TEXT NOT NULL,
  type     INTEGER NOT NULL,
  ivalue   INTEGER,
  rvalue   REAL,
  tvalue   TEXT,
  PRIMARY KEY (task_id, name_key)
) WITHOUT ROWID;
INSERT INTO task_variables_v4 (task_id, name_key, name, type, ivalue, rvalue, tvalue)
  SELECT task_id, name_key, name, type, ivalue, rvalue, tvalue FROM task_variables;
DROP TABLE task_variables;
ALTER TABLE task_variables_v4 RENAME TO task_variables;

CREATE TABLE task_declared_v4 (
  task_id  INTEGER NOT NULL REFERENCES tasks(id) ON DELETE CASCADE,
  name     TEXT NOT NULL,
  position INTEGER NOT NULL,
  PRIMARY KEY (task_id, name)
) WITHOUT ROWID;
INSERT INTO task_declared_v4 (task_id, name, position) SELECT task_id, name, position FROM task_declared;
DROP TABLE task_declared;
ALTER TABLE task_declared_v4 RENAME TO task_declared;

CREATE TABLE instance_variables_v4 (
  instance_id INTEGER NOT NULL REFERENCES instances(id) ON DELETE CASCADE,
  name_key    TEXT NOT NULL,
  name        TEXT NOT NULL,
  type        INTEGER NOT NULL,
  ivalue      INTEGER,
  rvalue      REAL,
  tvalue      TEXT,
  PRIMARY KEY (instance_id, name_key)
) WITHOUT ROWID;
INSERT INTO instance_variables_v4 (instance_id, name_key, name, type, ivalue, rvalue, tvalue)
  SELECT instance_id, name_key, name, type, ivalue, rvalue, tvalue FROM instance_variables;
DROP TABLE instance_variables;
ALTER TABLE instance_variables_v4 RENAME TO instance_variables;
)sql";

// The queue's next instance is found through the waiting instances alone,
// not by reading past every instance that ever ran. The condition is the one
// the claim asks with.
const char *const schemaV5 = R"sql(
CREATE INDEX instances_waiting ON instances(id) WHERE lease_expiry IS NULL AND status IN (0, 6, 11);
)sql";

// The schema text as PostgreSQL takes it: its own names for the types, ids
// from an identity column, and byte-wise comparison of texts (SQLite's), on
// which the range scans over path keys rely.
QByteArray forPostgres(const char *sql)
{
    QString text = QString::fromUtf8(sql);
    text.replace(QLatin1String("INTEGER PRIMARY KEY"), QLatin1String("BIGINT GENERATED BY DEFAULT AS IDENTITY PRIMARY KEY"));
    text.replace(QRegularExpression(QStringLiteral("\\bINTEGER\\b")), QStringLiteral("BIGINT"));
    // Contents are large objects there, the row keeps the object's id.
    text.replace(QLatin1String("  data BLOB NOT NULL"), QLatin1String("  data OID NOT NULL"));
    text.replace(QLatin1String(" BLOB"), QLatin1String(" BYTEA"));
    text.replace(QLatin1String(" REAL"), QLatin1String(" DOUBLE PRECISION"));
    text.replace(QLatin1String(" TEXT"), QLatin1String(" TEXT COLLATE \"C\""));
    text.replace(QLatin1String(") WITHOUT ROWID"), QLatin1String(")"));
    return text.toUtf8();
}

void execSchema(VaultDb &db, const char *sql)
{
    db.exec(db.kind() == VaultDb::Kind::Postgres ? forPostgres(sql).constData() : sql);
}

} // namespace

void VaultSchema::ensure(VaultDb &db, bool create, int upTo)
{
    // The common case needs no write lock, so opening a vault never waits
    // for another process's batch.
    if (db.userVersion() == upTo)
        return;
    if (db.isReadOnly())
        throw HostError(E_DOX_DATABASE_ACCESS,
                        QStringLiteral("the vault is read-only and its database (schema %1) needs an update to "
                                       "schema %2 first")
                            .arg(db.userVersion())
                            .arg(CurrentVersion));
    Transaction transaction(db);
    // Two processes that open a new PostgreSQL vault at once: the second
    // waits here and then finds the schema made.
    if (db.kind() == VaultDb::Kind::Postgres)
        db.exec("SELECT pg_advisory_xact_lock(7470081)");
    const int version = db.userVersion();
    if (version > CurrentVersion)
        throw HostError(E_DOX_CANT_OPEN_DATABASE,
                        QStringLiteral("the vault database has schema %1; this program knows up to %2")
                            .arg(version)
                            .arg(CurrentVersion));
    if (version >= upTo) {
        transaction.commit();
        return;
    }
    if (version < 1 && !create)
        throw HostError(E_DOX_CANT_OPEN_DATABASE, QStringLiteral("the database holds no vault"));
    if (version < 1) {
        execSchema(db, schemaV1);
        // The root folder took id 1 by hand; the identity goes on after it.
        if (db.kind() == VaultDb::Kind::Postgres)
            db.exec("SELECT setval(pg_get_serial_sequence('folders', 'id'), 1)");
    }
    if (version < 2 && upTo >= 2)
        execSchema(db, schemaV2);
    if (version < 3 && upTo >= 3)
        execSchema(db, schemaV3);
    // Only SQLite's integrity check needs the key columns first.
    if (version < 4 && upTo >= 4 && db.kind() == VaultDb::Kind::Sqlite)
        db.exec(schemaV4);
    if (version < 5 && upTo >= 5)
        execSchema(db, schemaV5);
    db.setUserVersion(upTo);
    transaction.commit();
}

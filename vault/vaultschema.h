#pragma once

class SqliteDb;

// The schema of a vault database, versioned by PRAGMA user_version.
namespace VaultSchema {

inline constexpr int CurrentVersion = 4;

// Creates the tables of a new database (only when create is set) or
// upgrades an older one, in one transaction. Throws HostError when the
// database is newer than this code, or E_DOX_CANT_OPEN_DATABASE when it has
// no schema and create is not set.
// upTo stops at an older version: tests make the databases of earlier
// programs with it.
void ensure(SqliteDb &db, bool create, int upTo = CurrentVersion);

} // namespace VaultSchema

#pragma once

class SqliteDb;

// The schema of a vault database, versioned by PRAGMA user_version.
namespace VaultSchema {

inline constexpr int CurrentVersion = 1;

// Creates the tables of a new database or upgrades an older one, in one
// transaction. Throws HostError when the database is newer than this code.
void ensure(SqliteDb &db);

} // namespace VaultSchema

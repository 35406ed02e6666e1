#pragma once

class VaultDb;

// The schema of a vault database, versioned by VaultDb::userVersion. One text
// serves both back ends: PostgreSQL gets it with its own types.
namespace VaultSchema {

inline constexpr int CurrentVersion = 5;

// Creates the tables of a new database (only when create is set) or
// upgrades an older one, in one transaction. Throws HostError when the
// database is newer than this code, or E_DOX_CANT_OPEN_DATABASE when it has
// no schema and create is not set.
// upTo stops at an older version: tests make the databases of earlier
// programs with it.
void ensure(VaultDb &db, bool create, int upTo = CurrentVersion);

} // namespace VaultSchema

#pragma once

#include <QString>

#include <memory>

class VaultStore;

// Which vault a command works on: the folder named by --vault, else
// $MCTASK_VAULT, else the nearest folder from the current one upwards that
// holds a vault. Throws CliError (exit status 2) when there is none.
QString locateVault(const QString &explicitDir);

// What a command does with the vault: a command that only reads works on
// a vault the user may not write; one that writes is refused there.
enum class VaultUse { Write, Read };

// Opens the located vault and makes sure its drive letter is mounted in the
// drive map (a letter already mounted elsewhere is left alone). A write
// waits MCTASK_LOCK_WAIT milliseconds (default 10 s) for another process's
// lock. A vault that cannot be opened throws HostError.
std::shared_ptr<VaultStore> openLocatedVault(const QString &explicitDir, VaultUse use = VaultUse::Write);

// A path given on the command line, as a path relative to the vault root:
// a vault path ("V:\Folder\a.mcdprt", any case), a Windows path on another
// mounted drive that leads into the vault, or a native path (relative ones
// start at the current folder). Throws CliError when it lies outside.
QString vaultPathArgument(const VaultStore &store, const QString &argument);

// Mounts the vault's letter on its folder in the drive map; false when the
// map could not be written.
bool mountVaultDrive(const VaultStore &store, bool replace);

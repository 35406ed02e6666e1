#pragma once

#include "platform/ipc/namedmutex.h"

#include <QString>
#include <cstdint>

// Tells the vault client that a local file was replaced or removed. One
// request per call, serialised across processes by the vault client's
// mutex; every failure (no server, busy pipe, write or read) is silent.
class VaultClientChannel final
{
public:
    // folder holds the pipe's socket and the mutex's lock file.
    explicit VaultClientChannel(QString folder);
    // The machine's own folder (MCTASK_HOME).
    VaultClientChannel();

    void notify(std::int32_t code, const QString &path) const;
    const QString &folder() const { return m_folder; }

private:
    QString m_folder;
};

// Through the machine's own channel.
void NotifyVaultClient(std::int32_t code, const QString &path);

// Holds the vault client's mutex for its lifetime, excluding every sender.
class VaultClientLock final
{
public:
    VaultClientLock();
    explicit VaultClientLock(const QString &folder);
    VaultClientLock(const VaultClientLock &) = delete;
    VaultClientLock &operator=(const VaultClientLock &) = delete;

    // False when the mutex could not be had; the holder goes on without it.
    bool isLocked() const { return m_mutex.isLocked(); }

private:
    NamedMutex m_mutex;
};

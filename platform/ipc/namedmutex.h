#pragma once

#include <QString>

// A machine-wide mutex: an exclusive flock on a lock file. Each object opens
// its own file description, so two objects exclude each other even inside
// one process.
class NamedMutex final
{
public:
    // Creates the lock file (and its folder) when missing. isValid() is false
    // when that failed; lock() then does nothing.
    NamedMutex(const QString &name, const QString &folder);
    ~NamedMutex();
    NamedMutex(const NamedMutex &) = delete;
    NamedMutex &operator=(const NamedMutex &) = delete;

    bool isValid() const { return m_fd >= 0; }
    const QString &lockPath() const { return m_path; }

    // Waits without limit. False when there is no lock file or flock failed.
    bool lock();
    // Takes the mutex only when it is free now.
    bool tryLock();
    void unlock();
    bool isLocked() const { return m_locked; }

private:
    QString m_path;
    int m_fd = -1;
    bool m_locked = false;
};

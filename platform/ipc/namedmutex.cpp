#include "platform/ipc/namedmutex.h"

#include "platform/ipc/ipcnames.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

NamedMutex::NamedMutex(const QString &name, const QString &folder)
    : m_path(IpcNames::mutexLockPath(name, folder))
{
    QDir().mkpath(QFileInfo(m_path).absolutePath());
    const QByteArray native = QFile::encodeName(m_path);
    m_fd = ::open(native.constData(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
    // A lock file made by another user may not be writable for us; flock
    // works on a read-only descriptor just as well.
    if (m_fd < 0 && errno == EACCES)
        m_fd = ::open(native.constData(), O_RDONLY | O_CLOEXEC);
}

NamedMutex::~NamedMutex()
{
    unlock();
    if (m_fd >= 0)
        ::close(m_fd);
}

bool NamedMutex::lock()
{
    if (m_fd < 0)
        return false;
    if (m_locked)
        return true;
    int rc;
    do {
        rc = ::flock(m_fd, LOCK_EX);
    } while (rc != 0 && errno == EINTR);
    m_locked = rc == 0;
    return m_locked;
}

bool NamedMutex::tryLock()
{
    if (m_fd < 0)
        return false;
    if (m_locked)
        return true;
    m_locked = ::flock(m_fd, LOCK_EX | LOCK_NB) == 0;
    return m_locked;
}

void NamedMutex::unlock()
{
    if (m_fd >= 0 && m_locked)
        ::flock(m_fd, LOCK_UN);
    m_locked = false;
}

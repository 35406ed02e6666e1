#include "platform/ipc/pipeclient.h"

#include "platform/ipc/ipcnames.h"
#include "platform/ipc/socketutil.h"

#include <QFile>

#include <cerrno>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

PipeClient::PipeClient(const QString &pipeName, const QString &folder, int timeoutMs)
    : m_path(IpcNames::pipeSocketPath(pipeName, folder)), m_timeoutMs(timeoutMs)
{
}

PipeClient::~PipeClient()
{
    close();
}

bool PipeClient::open()
{
    close();
    sockaddr_un address{};
    if (!SocketUtil::fillAddress(m_path, address))
        return false;
    const int fd = ::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (fd < 0)
        return false;
    // Non-blocking connect: a full backlog counts as a busy pipe, not a wait.
    if (::connect(fd, reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0) {
        ::close(fd);
        return false;
    }
    SocketUtil::setBlocking(fd, m_timeoutMs);
    m_fd = fd;
    return true;
}

bool PipeClient::write(const QByteArray &message)
{
    if (m_fd < 0)
        return false;
    ssize_t sent;
    do {
        sent = ::send(m_fd, message.constData(), static_cast<size_t>(message.size()), MSG_NOSIGNAL);
    } while (sent < 0 && errno == EINTR);
    return sent == message.size();
}

bool PipeClient::read(qsizetype maxBytes, QByteArray &reply)
{
    reply.clear();
    if (m_fd < 0 || maxBytes <= 0)
        return false;
    QByteArray buffer(maxBytes, '\0');
    ssize_t got;
    do {
        got = ::recv(m_fd, buffer.data(), static_cast<size_t>(buffer.size()), 0);
    } while (got < 0 && errno == EINTR);
    if (got <= 0)
        return false;
    buffer.truncate(got);
    reply = buffer;
    return true;
}

void PipeClient::close()
{
    if (m_fd >= 0)
        ::close(m_fd);
    m_fd = -1;
}

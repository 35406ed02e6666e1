#include "platform/ipc/pipelistener.h"

#include "platform/ipc/ipcnames.h"
#include "platform/ipc/socketutil.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {
// Larger than any request; a longer one is cut and still answered.
constexpr size_t MaxRequestBytes = 64 * 1024;
constexpr int ConnectionTimeoutMs = 2000;
} // namespace

PipeListener::PipeListener(const QString &pipeName, const QString &folder)
    : m_path(IpcNames::pipeSocketPath(pipeName, folder))
{
}

PipeListener::~PipeListener()
{
    stop();
}

bool PipeListener::start(Handler handler)
{
    if (isListening())
        return false;
    sockaddr_un address{};
    if (!SocketUtil::fillAddress(m_path, address))
        return false;
    QDir().mkpath(QFileInfo(m_path).absolutePath());

    // A socket file nobody answers on is left over from a dead server.
    if (const int probe = ::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0); probe >= 0) {
        const bool served = ::connect(probe, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0;
        ::close(probe);
        if (served)
            return false;
    }
    ::unlink(address.sun_path);

    const int fd = ::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0);
    if (fd < 0)
        return false;
    if (::bind(fd, reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0 || ::listen(fd, 16) != 0) {
        ::close(fd);
        return false;
    }
    int wake[2];
    if (::pipe2(wake, O_CLOEXEC) != 0) {
        ::close(fd);
        ::unlink(address.sun_path);
        return false;
    }
    m_listenFd = fd;
    m_wakeRead = wake[0];
    m_wakeWrite = wake[1];
    m_handler = std::move(handler);
    m_stopping = false;
    m_thread = std::thread([this] { serve(); });
    return true;
}

void PipeListener::stop()
{
    if (!isListening())
        return;
    m_stopping = true;
    const char byte = 0;
    [[maybe_unused]] const ssize_t w = ::write(m_wakeWrite, &byte, 1);
    if (m_thread.joinable())
        m_thread.join();
    ::close(m_listenFd);
    ::close(m_wakeRead);
    ::close(m_wakeWrite);
    m_listenFd = m_wakeRead = m_wakeWrite = -1;
    ::unlink(QFile::encodeName(m_path).constData());
}

void PipeListener::serve()
{
    while (!m_stopping) {
        pollfd fds[2] = {{m_listenFd, POLLIN, 0}, {m_wakeRead, POLLIN, 0}};
        const int ready = ::poll(fds, 2, -1);
        if (ready < 0) {
            if (errno == EINTR)
                continue;
            return;
        }
        if (fds[1].revents != 0)
            return;
        if (fds[0].revents & POLLIN) {
            const int client = ::accept4(m_listenFd, nullptr, nullptr, SOCK_CLOEXEC);
            if (client >= 0) {
                handleConnection(client);
                ::close(client);
            }
        }
    }
}

void PipeListener::handleConnection(int fd)
{
    SocketUtil::setBlocking(fd, ConnectionTimeoutMs);
    QByteArray request(MaxRequestBytes, '\0');
    ssize_t got;
    do {
        got = ::recv(fd, request.data(), MaxRequestBytes, 0);
    } while (got < 0 && errno == EINTR);
    if (got <= 0)
        return; // the client went away without a request
    request.truncate(got);
    const QByteArray reply = m_handler ? m_handler(request) : QByteArray();
    if (!reply.isEmpty())
        ::send(fd, reply.constData(), static_cast<size_t>(reply.size()), MSG_NOSIGNAL);
}

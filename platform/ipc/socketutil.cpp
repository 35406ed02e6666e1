#include "platform/ipc/socketutil.h"

#include <QFile>

#include <cstring>
#include <fcntl.h>
#include <sys/socket.h>
#include <sys/time.h>

namespace SocketUtil {

bool fillAddress(const QString &path, sockaddr_un &address)
{
    const QByteArray native = QFile::encodeName(path);
    if (native.isEmpty() || static_cast<size_t>(native.size()) >= sizeof address.sun_path)
        return false;
    std::memset(&address, 0, sizeof address);
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, native.constData(), static_cast<size_t>(native.size()));
    return true;
}

void setBlocking(int fd, int timeoutMs)
{
    const int flags = ::fcntl(fd, F_GETFL);
    if (flags >= 0)
        ::fcntl(fd, F_SETFL, flags & ~O_NONBLOCK);
    timeval limit{};
    limit.tv_sec = timeoutMs / 1000;
    limit.tv_usec = (timeoutMs % 1000) * 1000;
    ::setsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
    ::setsockopt(fd, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit);
}

} // namespace SocketUtil

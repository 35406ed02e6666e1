#pragma once

#include <QString>

#include <sys/un.h>

// Small helpers shared by the pipe client and the listener.
namespace SocketUtil {

// False when the path does not fit a Unix socket address.
bool fillAddress(const QString &path, sockaddr_un &address);

// Back to blocking mode with send and receive time limits (0 = none).
void setBlocking(int fd, int timeoutMs);

} // namespace SocketUtil

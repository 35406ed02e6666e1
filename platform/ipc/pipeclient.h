#pragma once

#include <QByteArray>
#include <QString>

// The client end of a named pipe in message mode: a Unix SOCK_SEQPACKET
// socket, so that one write is one message and one read gets one reply.
// Every failure is reported by a false or empty result, never thrown.
class PipeClient final
{
public:
    // timeoutMs bounds a write or a read on the open pipe, so that a server
    // that never answers cannot hold the caller forever.
    PipeClient(const QString &pipeName, const QString &folder, int timeoutMs = 5000);
    ~PipeClient();
    PipeClient(const PipeClient &) = delete;
    PipeClient &operator=(const PipeClient &) = delete;

    // False when nobody serves the pipe or its backlog is full.
    bool open();
    bool isOpen() const { return m_fd >= 0; }
    bool write(const QByteArray &message);
    // One reply of up to maxBytes; false when none came.
    bool read(qsizetype maxBytes, QByteArray &reply);
    void close();

    const QString &socketPath() const { return m_path; }

private:
    QString m_path;
    int m_timeoutMs;
    int m_fd = -1;
};

#pragma once

#include <QByteArray>
#include <QString>

#include <atomic>
#include <functional>
#include <thread>

// The server end of a named pipe (see PipeClient), served by a thread of its
// own: the process that listens may be the very one whose calling thread
// sends and then waits for the answer, so no event loop may be needed.
// Each connection carries one request and gets one reply.
class PipeListener final
{
public:
    // Called on the listener thread with each request; returns the reply.
    using Handler = std::function<QByteArray(const QByteArray &request)>;

    PipeListener(const QString &pipeName, const QString &folder);
    ~PipeListener();
    PipeListener(const PipeListener &) = delete;
    PipeListener &operator=(const PipeListener &) = delete;

    // False when the socket cannot be made or another process serves it.
    bool start(Handler handler);
    void stop();
    bool isListening() const { return m_listenFd >= 0; }
    const QString &socketPath() const { return m_path; }

private:
    void serve();
    void handleConnection(int fd);

    QString m_path;
    Handler m_handler;
    int m_listenFd = -1;
    int m_wakeRead = -1;
    int m_wakeWrite = -1;
    std::atomic<bool> m_stopping{false};
    std::thread m_thread;
};

#pragma once

#include "host/hresult.h"
#include "platform/automation/automationvalue.h"

#include <QObject>
#include <QString>

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <set>

class AutomationServer;
class QLocalServer;
class QLocalSocket;
class PendingReply;

// One incoming call as the called object sees it. The arguments are in/out:
// whatever the object leaves in them goes back to the caller (ByRef results).
class AutomationCall final
{
public:
    AutomationCall(AutomationServer &server, int connection, qint64 id, AutomationArgs args)
        : m_server(server), m_connection(connection), m_id(id), m_args(std::move(args)) {}

    AutomationArgs &args() { return m_args; }
    const AutomationValue &arg(std::size_t index) const;
    std::size_t argCount() const { return m_args.size(); }
    void setResult(AutomationValue value) { m_result = std::move(value); }
    const AutomationValue &result() const { return m_result; }

    // Answer later, from any thread, through the returned handle; the
    // object's own return value is then ignored. The server keeps serving
    // other calls meanwhile.
    std::shared_ptr<PendingReply> defer();
    bool deferred() const { return m_pending != nullptr; }

    AutomationServer &server() { return m_server; }
    int connection() const { return m_connection; }

private:
    AutomationServer &m_server;
    int m_connection;
    qint64 m_id;
    AutomationArgs m_args;
    AutomationValue m_result;
    std::shared_ptr<PendingReply> m_pending;
};

// An object served over the channel. invoke runs on the server's thread.
// Members are matched by name; whether a call reads or writes a property is
// told by its argument count. Unknown members give DISP_E_MEMBERNOTFOUND.
class AutomationObject
{
public:
    virtual ~AutomationObject() = default;
    virtual HRESULT invoke(const QString &member, AutomationCall &call) = 0;
    // Objects that fire events accept Advise/Unadvise from their callers.
    virtual bool sourcesEvents() const { return false; }
};

// The answer to a deferred call; complete() may run on any thread, once.
class PendingReply final
{
public:
    PendingReply(AutomationServer *server, int connection, qint64 id, AutomationArgs args)
        : m_server(server), m_connection(connection), m_id(id), m_args(std::move(args)) {}
    AutomationArgs &args() { return m_args; }
    // then, when given, runs on the server's thread right after the answer
    // went out. The server must outlive this call; nothing of it is touched
    // afterwards.
    void complete(HRESULT hr, AutomationValue result = {}, std::function<void()> then = {});

private:
    AutomationServer *m_server; // outlives every pending reply (the server waits for none)
    int m_connection;
    qint64 m_id;
    AutomationArgs m_args;
    std::once_flag m_done;
};

// The serving end: accepts connections on a local socket, dispatches calls to
// root objects (by name) and to objects handed out earlier (by handle), and
// sends events to connections that advised the firing object.
class AutomationServer final : public QObject
{
    Q_OBJECT
public:
    explicit AutomationServer(QObject *parent = nullptr);
    ~AutomationServer() override;

    void addRoot(const QString &name, std::shared_ptr<AutomationObject> object);
    // Listens on a socket path, replacing a stale socket file left there.
    bool listen(const QString &endpoint);
    // Moves the listening socket's name to path in one step (replacing
    // whatever is there), so callers never see a name that does not answer.
    bool publishAs(const QString &path);
    // Stops listening and removes the socket's name.
    void close();
    QString endpoint() const;
    bool isListening() const;

    // The handle under which object is known to callers (handed out on first use).
    ObjectHandle handleFor(const std::shared_ptr<AutomationObject> &object);

    // Fires event dispId of source at every connection that advised it.
    // From another thread this waits until every receiver has handled it (or
    // went away, or eventTimeoutMs passed) and returns the first failure.
    // On the server's own thread it sends and returns at once.
    HRESULT fireEvent(const std::shared_ptr<AutomationObject> &source, int dispId,
                      AutomationArgs args = {});
    void setEventTimeout(int ms) { m_eventTimeoutMs = ms; }
    int connectionCount() const;
    int advisedCount(const std::shared_ptr<AutomationObject> &source) const;

signals:
    void clientDisconnected();

private:
    struct Connection;
    struct EventWait;
    friend class PendingReply;

    void acceptConnections();
    void readConnection(int connection);
    void dropConnection(int connection);
    void handleCall(int connection, const QJsonObject &message);
    void handleEventReply(int connection, const QJsonObject &message);
    void sendReply(int connection, qint64 id, HRESULT hr, const AutomationValue &result,
                   const AutomationArgs &out);
    void sendEvent(ObjectHandle source, int dispId, const AutomationArgs &args,
                   const std::shared_ptr<EventWait> &wait);
    std::shared_ptr<AutomationObject> resolve(const QJsonValue &target) const;
    void send(int connection, const QJsonObject &message);

    QLocalServer *m_listener = nullptr;
    QString m_endpoint;
    std::map<QString, std::shared_ptr<AutomationObject>> m_roots;
    std::map<ObjectHandle, std::shared_ptr<AutomationObject>> m_objects;
    std::map<const AutomationObject *, ObjectHandle> m_handles;
    ObjectHandle m_nextHandle = 1;
    std::map<int, std::unique_ptr<Connection>> m_connections;
    int m_nextConnection = 1;
    qint64 m_nextEventId = 1;
    int m_eventTimeoutMs = 60000;
    mutable std::mutex m_handleMutex; // handleFor may be called from a macro thread
};

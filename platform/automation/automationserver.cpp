#include "platform/automation/automationserver.h"

#include "host/hosterror.h"
#include "platform/automation/automationerrors.h"
#include "platform/automation/messageframing.h"

#include <QFile>
#include <QJsonArray>
#include <QLocalServer>
#include <QLocalSocket>
#include <QThread>

#include <condition_variable>

#include <cstdio>

struct AutomationServer::Connection
{
    QLocalSocket *socket = nullptr;
    wire::MessageFrameReader reader;
    std::set<ObjectHandle> advised;
    std::map<qint64, std::shared_ptr<EventWait>> pendingEvents;
};

// A fired event waiting for its receivers, shared with the firing thread.
struct AutomationServer::EventWait
{
    std::mutex mutex;
    std::condition_variable changed;
    bool sent = false;
    int remaining = 0;
    HRESULT hr = S_OK;

    void start(int receivers)
    {
        std::lock_guard lock(mutex);
        sent = true;
        remaining = receivers;
        changed.notify_all();
    }
    void done(HRESULT result)
    {
        std::lock_guard lock(mutex);
        hr = combineResult(hr, result);
        --remaining;
        changed.notify_all();
    }
};

namespace {

const QString kAdvise = QStringLiteral("Advise");
const QString kUnadvise = QStringLiteral("Unadvise");

AutomationValue::HandleResolver resolverFor(AutomationServer &server)
{
    return [&server](const std::shared_ptr<AutomationObject> &object) { return server.handleFor(object); };
}

QJsonArray argsToJson(const AutomationArgs &args, const AutomationValue::HandleResolver &resolve)
{
    QJsonArray array;
    for (const AutomationValue &arg : args)
        array.append(arg.toJson(resolve));
    return array;
}

} // namespace

const AutomationValue &AutomationCall::arg(std::size_t index) const
{
    static const AutomationValue empty;
    return index < m_args.size() ? m_args[index] : empty;
}

std::shared_ptr<PendingReply> AutomationCall::defer()
{
    if (!m_pending)
        m_pending = std::make_shared<PendingReply>(&m_server, m_connection, m_id, m_args);
    return m_pending;
}

void PendingReply::complete(HRESULT hr, AutomationValue result, std::function<void()> then)
{
    std::call_once(m_done, [&] {
        AutomationServer *server = m_server;
        QMetaObject::invokeMethod(
            server,
            [server, connection = m_connection, id = m_id, hr, result = std::move(result), out = m_args,
             then = std::move(then)] {
                server->sendReply(connection, id, hr, result, out);
                if (then)
                    then();
            },
            Qt::QueuedConnection);
    });
}

AutomationServer::AutomationServer(QObject *parent) : QObject(parent) {}

AutomationServer::~AutomationServer()
{
    close();
    while (!m_connections.empty())
        dropConnection(m_connections.begin()->first);
}

void AutomationServer::addRoot(const QString &name, std::shared_ptr<AutomationObject> object)
{
    m_roots[name] = std::move(object);
}

bool AutomationServer::listen(const QString &endpoint)
{
    close();
    m_listener = new QLocalServer(this);
    QLocalServer::removeServer(endpoint);
    if (!m_listener->listen(endpoint)) {
        delete m_listener;
        m_listener = nullptr;
        return false;
    }
    connect(m_listener, &QLocalServer::newConnection, this, &AutomationServer::acceptConnections);
    m_endpoint = m_listener->fullServerName();
    return true;
}

bool AutomationServer::publishAs(const QString &path)
{
    if (!m_listener)
        return false;
    if (::rename(QFile::encodeName(m_endpoint).constData(), QFile::encodeName(path).constData()) != 0)
        return false;
    m_endpoint = path;
    return true;
}

void AutomationServer::close()
{
    if (!m_listener)
        return;
    m_listener->close();
    QFile::remove(m_endpoint);
    delete m_listener;
    m_listener = nullptr;
    m_endpoint.clear();
}

QString AutomationServer::endpoint() const { return m_endpoint; }

bool AutomationServer::isListening() const { return m_listener && m_listener->isListening(); }

ObjectHandle AutomationServer::handleFor(const std::shared_ptr<AutomationObject> &object)
{
    if (!object)
        return 0;
    std::lock_guard lock(m_handleMutex);
    if (auto found = m_handles.find(object.get()); found != m_handles.end())
        return found->second;
    const ObjectHandle handle = m_nextHandle++;
    m_handles[object.get()] = handle;
    m_objects[handle] = object; // callers may come back to it at any time
    return handle;
}

int AutomationServer::connectionCount() const { return static_cast<int>(m_connections.size()); }

int AutomationServer::advisedCount(const std::shared_ptr<AutomationObject> &source) const
{
    ObjectHandle handle = 0;
    {
        std::lock_guard lock(m_handleMutex);
        auto found = m_handles.find(source.get());
        if (found == m_handles.end())
            return 0;
        handle = found->second;
    }
    int count = 0;
    for (const auto &[id, connection] : m_connections)
        count += connection->advised.contains(handle) ? 1 : 0;
    return count;
}

HRESULT AutomationServer::fireEvent(const std::shared_ptr<AutomationObject> &source, int dispId,
                                    AutomationArgs args)
{
    const ObjectHandle handle = handleFor(source);
    if (QThread::currentThread() == thread()) {
        sendEvent(handle, dispId, args, nullptr);
        return S_OK;
    }
    auto wait = std::make_shared<EventWait>();
    QMetaObject::invokeMethod(
        this, [this, handle, dispId, args = std::move(args), wait] { sendEvent(handle, dispId, args, wait); },
        Qt::QueuedConnection);
    std::unique_lock lock(wait->mutex);
    const bool finished = wait->changed.wait_for(lock, std::chrono::milliseconds(m_eventTimeoutMs),
                                                 [&] { return wait->sent && wait->remaining <= 0; });
    return finished ? wait->hr : RPC_E_TIMEOUT;
}

void AutomationServer::sendEvent(ObjectHandle source, int dispId, const AutomationArgs &args,
                                 const std::shared_ptr<EventWait> &wait)
{
    QJsonObject message;
    message[wire::kKind] = wire::kEvent;
    message[wire::kSource] = static_cast<qint64>(source);
    message[wire::kDispId] = dispId;
    message[wire::kArgs] = argsToJson(args, resolverFor(*this));
    int receivers = 0;
    for (auto &[id, connection] : m_connections) {
        if (!connection->advised.contains(source))
            continue;
        const qint64 eventId = m_nextEventId++;
        message[wire::kId] = eventId;
        if (wait)
            connection->pendingEvents[eventId] = wait;
        send(id, message);
        ++receivers;
    }
    if (wait)
        wait->start(receivers);
}

void AutomationServer::acceptConnections()
{
    while (QLocalSocket *socket = m_listener->nextPendingConnection()) {
        const int id = m_nextConnection++;
        auto connection = std::make_unique<Connection>();
        connection->socket = socket;
        m_connections[id] = std::move(connection);
        connect(socket, &QLocalSocket::readyRead, this, [this, id] { readConnection(id); });
        connect(socket, &QLocalSocket::disconnected, this, [this, id] { dropConnection(id); });
        if (socket->bytesAvailable() > 0)
            readConnection(id);
    }
}

void AutomationServer::readConnection(int connection)
{
    auto found = m_connections.find(connection);
    if (found == m_connections.end())
        return;
    Connection &state = *found->second;
    state.reader.append(state.socket->readAll());
    for (;;) {
        // A handler may drop this very connection; look it up each time.
        found = m_connections.find(connection);
        if (found == m_connections.end())
            return;
        auto message = found->second->reader.next();
        if (!message)
            break;
        const QString kind = message->value(wire::kKind).toString();
        if (kind == wire::kCall)
            handleCall(connection, *message);
        else if (kind == wire::kEventReply)
            handleEventReply(connection, *message);
    }
    found = m_connections.find(connection);
    if (found != m_connections.end() && found->second->reader.broken())
        dropConnection(connection);
}

void AutomationServer::dropConnection(int connection)
{
    auto found = m_connections.find(connection);
    if (found == m_connections.end())
        return;
    std::unique_ptr<Connection> state = std::move(found->second);
    m_connections.erase(found);
    for (auto &[id, wait] : state->pendingEvents)
        wait->done(RPC_E_DISCONNECTED);
    state->socket->disconnect(this);
    state->socket->abort();
    state->socket->deleteLater();
    emit clientDisconnected();
}

std::shared_ptr<AutomationObject> AutomationServer::resolve(const QJsonValue &target) const
{
    if (target.isString()) {
        auto found = m_roots.find(target.toString());
        return found == m_roots.end() ? nullptr : found->second;
    }
    if (!target.isDouble())
        return nullptr;
    std::lock_guard lock(m_handleMutex);
    auto found = m_objects.find(target.toInteger());
    return found == m_objects.end() ? nullptr : found->second;
}

void AutomationServer::handleCall(int connection, const QJsonObject &message)
{
    const qint64 id = message.value(wire::kId).toInteger();
    const QString member = message.value(wire::kMember).toString();
    AutomationArgs args;
    bool wellFormed = !member.isEmpty() && message.value(wire::kArgs).isArray();
    if (wellFormed) {
        for (const QJsonValue &item : message.value(wire::kArgs).toArray()) {
            AutomationValue value;
            if (!AutomationValue::fromJson(item, value)) {
                wellFormed = false;
                break;
            }
            args.push_back(std::move(value));
        }
    }
    if (!wellFormed) {
        sendReply(connection, id, RPC_E_INVALID_DATA, {}, {});
        return;
    }
    const std::shared_ptr<AutomationObject> object = resolve(message.value(wire::kObject));
    if (!object) {
        sendReply(connection, id, CO_E_OBJNOTCONNECTED, {}, args);
        return;
    }

    const bool advise = member.compare(kAdvise, Qt::CaseInsensitive) == 0;
    if (advise || member.compare(kUnadvise, Qt::CaseInsensitive) == 0) {
        if (!object->sourcesEvents()) {
            sendReply(connection, id, CONNECT_E_NOCONNECTION, {}, args);
            return;
        }
        const ObjectHandle handle = handleFor(object);
        auto &advised = m_connections.at(connection)->advised;
        if (advise)
            advised.insert(handle);
        else
            advised.erase(handle);
        // The handle lets the caller tell which object an event comes from,
        // also for roots it only knows by name.
        sendReply(connection, id, S_OK, AutomationValue::fromHandle(handle), args);
        return;
    }

    AutomationCall call(*this, connection, id, std::move(args));
    HRESULT hr = S_OK;
    try {
        hr = object->invoke(member, call);
    } catch (const HostError &error) {
        hr = error.code();
    } catch (const std::exception &) {
        hr = E_UNEXPECTED;
    }
    if (!call.deferred())
        sendReply(connection, id, hr, call.result(), call.args());
}

void AutomationServer::handleEventReply(int connection, const QJsonObject &message)
{
    Connection &state = *m_connections.at(connection);
    auto found = state.pendingEvents.find(message.value(wire::kId).toInteger());
    if (found == state.pendingEvents.end())
        return;
    found->second->done(static_cast<HRESULT>(message.value(wire::kHr).toInteger()));
    state.pendingEvents.erase(found);
}

void AutomationServer::sendReply(int connection, qint64 id, HRESULT hr, const AutomationValue &result,
                                 const AutomationArgs &out)
{
    if (!m_connections.contains(connection))
        return; // the caller went away
    const auto resolve = resolverFor(*this);
    QJsonObject message;
    message[wire::kKind] = wire::kReply;
    message[wire::kId] = id;
    message[wire::kHr] = hr;
    message[wire::kResult] = result.toJson(resolve);
    message[wire::kOut] = argsToJson(out, resolve);
    send(connection, message);
}

void AutomationServer::send(int connection, const QJsonObject &message)
{
    auto found = m_connections.find(connection);
    if (found == m_connections.end())
        return;
    found->second->socket->write(wire::encodeFrame(message));
    found->second->socket->flush();
}

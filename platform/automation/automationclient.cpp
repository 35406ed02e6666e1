#include "platform/automation/automationclient.h"

#include "platform/automation/automationerrors.h"

#include <QDeadlineTimer>
#include <QJsonArray>
#include <QLocalSocket>

namespace {

QJsonArray argsToJson(const AutomationArgs &args)
{
    QJsonArray array;
    for (const AutomationValue &arg : args)
        array.append(arg.toJson());
    return array;
}

bool argsFromJson(const QJsonValue &json, AutomationArgs &out)
{
    out.clear();
    if (json.isUndefined())
        return true;
    if (!json.isArray())
        return false;
    for (const QJsonValue &item : json.toArray()) {
        AutomationValue value;
        if (!AutomationValue::fromJson(item, value))
            return false;
        out.push_back(std::move(value));
    }
    return true;
}

} // namespace

AutomationClient::AutomationClient(int defaultTimeoutMs) : m_defaultTimeoutMs(defaultTimeoutMs) {}

AutomationClient::~AutomationClient() { disconnect(); }

HRESULT AutomationClient::connectTo(const QString &endpoint, int timeoutMs)
{
    disconnect();
    m_socket = std::make_unique<QLocalSocket>();
    m_socket->connectToServer(endpoint);
    if (!m_socket->waitForConnected(timeoutMs)) {
        m_socket.reset();
        return RPC_S_SERVER_UNAVAILABLE;
    }
    m_reader = wire::MessageFrameReader();
    return S_OK;
}

bool AutomationClient::isConnected() const
{
    return m_socket && m_socket->state() == QLocalSocket::ConnectedState && !m_reader.broken();
}

void AutomationClient::disconnect()
{
    if (m_socket) {
        m_socket->abort();
        m_socket.reset();
    }
    m_replies.clear();
    m_waiting.clear();
}

AutomationReply AutomationClient::call(const ObjectRef &object, const QString &member,
                                       AutomationArgs args, int timeoutMs)
{
    AutomationReply failure;
    if (!isConnected()) {
        failure.hr = RPC_S_SERVER_UNAVAILABLE;
        return failure;
    }
    const qint64 id = m_nextId++;
    QJsonObject message;
    message[wire::kKind] = wire::kCall;
    message[wire::kId] = id;
    if (object.isRoot())
        message[wire::kObject] = object.rootName();
    else
        message[wire::kObject] = static_cast<qint64>(object.handle());
    message[wire::kMember] = member;
    message[wire::kArgs] = argsToJson(args);
    if (!writeFrame(message)) {
        failure.hr = RPC_S_SERVER_UNAVAILABLE;
        return failure;
    }

    const int timeout = timeoutMs == 0 ? m_defaultTimeoutMs : timeoutMs;
    const QDeadlineTimer deadline = timeout < 0 ? QDeadlineTimer(QDeadlineTimer::Forever)
                                                : QDeadlineTimer(timeout);
    m_waiting[id] = true;
    for (;;) {
        if (auto found = m_replies.find(id); found != m_replies.end()) {
            AutomationReply reply = std::move(found->second);
            m_replies.erase(found);
            m_waiting.erase(id);
            return reply;
        }
        if (!isConnected()) {
            if (m_socket && !m_reader.broken() && readFrames(0))
                continue; // answers that arrived before the hang-up
            m_waiting.erase(id);
            failure.hr = RPC_S_SERVER_UNAVAILABLE;
            return failure;
        }
        if (deadline.hasExpired()) {
            m_waiting.erase(id);
            failure.hr = RPC_E_TIMEOUT;
            return failure;
        }
        const qint64 remaining = deadline.remainingTime();
        readFrames(remaining < 0 ? -1 : static_cast<int>(remaining));
    }
}

int AutomationClient::processEvents(int waitMs)
{
    const int before = m_eventsHandled;
    if (isConnected())
        readFrames(waitMs);
    return m_eventsHandled - before;
}

bool AutomationClient::readFrames(int waitMs)
{
    if (m_socket->bytesAvailable() == 0 && m_socket->state() == QLocalSocket::ConnectedState)
        m_socket->waitForReadyRead(waitMs);
    // Read whatever came, also after the server hung up: its last answers
    // may have arrived together with the end of the connection.
    const QByteArray bytes = m_socket->readAll();
    if (bytes.isEmpty())
        return false;
    m_reader.append(bytes);
    while (m_socket) {
        auto message = m_reader.next();
        if (!message)
            break;
        handleMessage(*message); // a sink may disconnect meanwhile
    }
    if (m_socket && m_reader.broken())
        m_socket->abort(); // a garbled stream cannot be resynchronised
    return true;
}

void AutomationClient::handleMessage(const QJsonObject &message)
{
    const QString kind = message.value(wire::kKind).toString();
    if (kind == wire::kEvent) {
        dispatchEvent(message);
        return;
    }
    if (kind != wire::kReply)
        return;
    const qint64 id = message.value(wire::kId).toInteger();
    if (!m_waiting.contains(id))
        return; // the caller gave up on it
    AutomationReply reply;
    reply.hr = static_cast<HRESULT>(message.value(wire::kHr).toInteger());
    if (!AutomationValue::fromJson(message.value(wire::kResult), reply.value)
        || !argsFromJson(message.value(wire::kOut), reply.out)) {
        reply = AutomationReply();
        reply.hr = RPC_E_INVALID_DATA;
    }
    m_replies[id] = std::move(reply);
}

void AutomationClient::dispatchEvent(const QJsonObject &message)
{
    AutomationEvent event;
    event.source = message.value(wire::kSource).toInteger();
    event.dispId = message.value(wire::kDispId).toInt();
    HRESULT hr = S_OK;
    if (!argsFromJson(message.value(wire::kArgs), event.args))
        hr = RPC_E_INVALID_DATA;
    else if (m_sink)
        hr = m_sink->onEvent(event);
    ++m_eventsHandled;

    QJsonObject answer;
    answer[wire::kKind] = wire::kEventReply;
    answer[wire::kId] = message.value(wire::kId);
    answer[wire::kHr] = hr;
    writeFrame(answer);
}

bool AutomationClient::writeFrame(const QJsonObject &message)
{
    if (!m_socket || m_socket->state() != QLocalSocket::ConnectedState)
        return false;
    m_socket->write(wire::encodeFrame(message));
    // No event loop runs here: push the bytes out before waiting for an answer.
    while (m_socket->bytesToWrite() > 0) {
        if (!m_socket->waitForBytesWritten(m_defaultTimeoutMs < 0 ? -1 : qMax(m_defaultTimeoutMs, 1000)))
            return false;
    }
    return true;
}

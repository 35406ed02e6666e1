#pragma once

#include "host/hresult.h"
#include "platform/automation/automationvalue.h"
#include "platform/automation/messageframing.h"

#include <QString>

#include <map>
#include <memory>
#include <variant>

class QLocalSocket;

// The target of a call: a root object that the server publishes by name
// ("Application", "Windows") or an object handle that an earlier call returned.
class ObjectRef final
{
public:
    ObjectRef(const QString &rootName) : m_target(rootName) {} // NOLINT: names read naturally
    ObjectRef(const char *rootName) : m_target(QString::fromUtf8(rootName)) {} // NOLINT
    ObjectRef(ObjectHandle handle) : m_target(handle) {} // NOLINT
    ObjectRef(const AutomationValue &object) : m_target(object.handle()) {} // NOLINT

    bool isRoot() const { return std::holds_alternative<QString>(m_target); }
    QString rootName() const { return isRoot() ? std::get<QString>(m_target) : QString(); }
    ObjectHandle handle() const { return isRoot() ? 0 : std::get<ObjectHandle>(m_target); }

private:
    std::variant<QString, ObjectHandle> m_target;
};

// What a call returned: its result code, its return value and the final
// values of its arguments (a callee may write back ByRef arguments).
struct AutomationReply
{
    HRESULT hr = S_OK;
    AutomationValue value;
    AutomationArgs out;

    bool ok() const { return succeeded(hr); }
};

// An event fired by a server object to which the client is connected (Advise).
struct AutomationEvent
{
    ObjectHandle source = 0;
    int dispId = 0;
    AutomationArgs args;
};

class AutomationEventSink
{
public:
    virtual ~AutomationEventSink() = default;
    // Runs on the thread that waits in AutomationClient::call. The sink may
    // make calls of its own on the same client; the server's object that
    // fired the event waits until this returns.
    virtual HRESULT onEvent(const AutomationEvent &event) = 0;
};

// The caller's end of an automation connection. Calls block the calling thread
// until the reply arrives or the timeout passes; events that arrive meanwhile
// are handed to the sink on the calling thread before the call returns, the
// way an apartment delivers them on Windows.
//
// A client belongs to the thread that connected it: use it there only. The members Advise and Unadvise of a server
// object connect this client to (or disconnect it from) that object's events;
// Advise returns the object's handle, which events carry as their source.
class AutomationClient final
{
public:
    static constexpr int kNoTimeout = -1;

    explicit AutomationClient(int defaultTimeoutMs = 30000);
    ~AutomationClient();
    AutomationClient(const AutomationClient &) = delete;
    AutomationClient &operator=(const AutomationClient &) = delete;

    // Connects to a server endpoint (a socket path from the object table).
    HRESULT connectTo(const QString &endpoint, int timeoutMs = 5000);
    bool isConnected() const;
    void disconnect();

    void setEventSink(AutomationEventSink *sink) { m_sink = sink; }
    void setDefaultTimeout(int timeoutMs) { m_defaultTimeoutMs = timeoutMs; }

    // Calls member of object. Failures of the channel come back as hr:
    // RPC_S_SERVER_UNAVAILABLE when not connected or the server went away,
    // RPC_E_TIMEOUT after the timeout (a late reply is then dropped).
    // timeoutMs 0 means the default timeout, kNoTimeout waits without limit.
    AutomationReply call(const ObjectRef &object, const QString &member, AutomationArgs args = {},
                         int timeoutMs = 0);

    // Dispatches events that arrive within waitMs while no call is pending;
    // returns how many were handled.
    int processEvents(int waitMs);

private:
    bool readFrames(int waitMs);
    void handleMessage(const QJsonObject &message);
    void dispatchEvent(const QJsonObject &message);
    bool writeFrame(const QJsonObject &message);

    std::unique_ptr<QLocalSocket> m_socket;
    wire::MessageFrameReader m_reader;
    AutomationEventSink *m_sink = nullptr;
    int m_defaultTimeoutMs;
    qint64 m_nextId = 1;
    std::map<qint64, AutomationReply> m_replies; // arrived, not yet collected
    std::map<qint64, bool> m_waiting;            // ids still wanted
    int m_eventsHandled = 0;
};

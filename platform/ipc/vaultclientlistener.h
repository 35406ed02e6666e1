#pragma once

#include "platform/ipc/pipelistener.h"
#include "platform/ipc/vaultclientmessage.h"

#include <QString>

#include <functional>
#include <mutex>
#include <vector>

// Stands where the vault client serves its pipe: records every request
// (decoded code and path) and answers each with a short acknowledgement.
// Used by the embedded host, which shows what arrives while a task runs,
// and by tests.
class VaultClientListener final
{
public:
    struct Message {
        std::int32_t code = 0;
        QString path;
        qsizetype byteCount = 0;
        bool valid = false;
    };
    // Called on the listener thread after a message is recorded.
    using Observer = std::function<void(const Message &)>;

    explicit VaultClientListener(const QString &folder);
    ~VaultClientListener();

    void setObserver(Observer observer);
    bool start();
    void stop();
    bool isListening() const { return m_listener.isListening(); }
    const QString &socketPath() const { return m_listener.socketPath(); }

    std::vector<Message> messages() const;
    // The messages once per code and path, in the order each first came,
    // with how often it came: the add-in announces some outputs several
    // times, and people want one line for each.
    struct Tally {
        Message message;
        int count = 0;
    };
    std::vector<Tally> tally() const;
    void clear();

private:
    QByteArray receive(const QByteArray &request);

    PipeListener m_listener;
    mutable std::mutex m_mutex;
    std::vector<Message> m_messages;
    Observer m_observer;
};

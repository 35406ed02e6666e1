#include "platform/ipc/vaultclientlistener.h"

#include <QtEndian>

#include <algorithm>

VaultClientListener::VaultClientListener(const QString &folder)
    : m_listener(VaultClientMessage::PipeName, folder)
{
}

VaultClientListener::~VaultClientListener()
{
    stop();
}

void VaultClientListener::setObserver(Observer observer)
{
    std::lock_guard guard(m_mutex);
    m_observer = std::move(observer);
}

bool VaultClientListener::start()
{
    return m_listener.start([this](const QByteArray &request) { return receive(request); });
}

void VaultClientListener::stop()
{
    m_listener.stop();
}

std::vector<VaultClientListener::Message> VaultClientListener::messages() const
{
    std::lock_guard guard(m_mutex);
    return m_messages;
}

std::vector<VaultClientListener::Tally> VaultClientListener::tally() const
{
    std::vector<Tally> tallies;
    for (const Message &message : messages()) {
        const auto same = std::find_if(tallies.begin(), tallies.end(), [&](const Tally &t) {
            return t.message.valid == message.valid && t.message.code == message.code && t.message.path == message.path;
        });
        if (same != tallies.end())
            ++same->count;
        else
            tallies.push_back(Tally{message, 1});
    }
    return tallies;
}

void VaultClientListener::clear()
{
    std::lock_guard guard(m_mutex);
    m_messages.clear();
}

QByteArray VaultClientListener::receive(const QByteArray &request)
{
    const VaultClientMessage::Decoded decoded = VaultClientMessage::decode(request);
    Message message{decoded.code, decoded.path, decoded.byteCount, decoded.valid};
    Observer observer;
    {
        std::lock_guard guard(m_mutex);
        m_messages.push_back(message);
        observer = m_observer;
    }
    if (observer)
        observer(message);
    // The sender reads and ignores the answer; a status word keeps it short.
    QByteArray reply(4, '\0');
    qToLittleEndian<std::int32_t>(decoded.valid ? 0 : 1, reply.data());
    return reply;
}

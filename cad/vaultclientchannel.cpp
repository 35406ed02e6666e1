#include "cad/vaultclientchannel.h"

#include "platform/ipc/ipcnames.h"
#include "platform/ipc/pipeclient.h"
#include "platform/ipc/vaultclientmessage.h"

VaultClientChannel::VaultClientChannel(QString folder) : m_folder(std::move(folder)) {}

VaultClientChannel::VaultClientChannel() : VaultClientChannel(IpcNames::defaultFolder()) {}

void VaultClientChannel::notify(std::int32_t code, const QString &path) const
{
    // Without the mutex the message still goes out, only unserialised.
    VaultClientLock lock(m_folder);

    PipeClient pipe(VaultClientMessage::PipeName, m_folder);
    if (!pipe.open())
        return; // nobody serves the pipe: the notification is lost
    if (pipe.write(VaultClientMessage::encode(code, path))) {
        QByteArray ignored;
        pipe.read(VaultClientMessage::MaxReplyBytes, ignored);
    }
    pipe.close();
}

void NotifyVaultClient(std::int32_t code, const QString &path)
{
    VaultClientChannel().notify(code, path);
}

VaultClientLock::VaultClientLock() : VaultClientLock(IpcNames::defaultFolder()) {}

VaultClientLock::VaultClientLock(const QString &folder) : m_mutex(VaultClientMessage::MutexName, folder)
{
    m_mutex.lock();
}

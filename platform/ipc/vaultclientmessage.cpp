#include "platform/ipc/vaultclientmessage.h"

#include <QtEndian>

namespace VaultClientMessage {

QByteArray encode(std::int32_t code, const QString &path)
{
    const qsizetype n = qMin(path.size(), MaxPathChars);
    QByteArray out(4 + 2 * n + 2, '\0');
    char *data = out.data();
    qToLittleEndian<std::int32_t>(code, data);
    for (qsizetype i = 0; i < n; ++i)
        qToLittleEndian<std::uint16_t>(path.at(i).unicode(), data + 4 + 2 * i);
    // The terminating zero is already there.
    return out;
}

Decoded decode(const QByteArray &raw)
{
    Decoded d;
    d.byteCount = raw.size();
    if (raw.size() < 4)
        return d;
    const char *data = raw.constData();
    d.code = qFromLittleEndian<std::int32_t>(data);
    for (qsizetype at = 4; at + 2 <= raw.size(); at += 2) {
        const auto unit = qFromLittleEndian<std::uint16_t>(data + at);
        if (unit == 0) {
            d.valid = true;
            break;
        }
        d.path.append(QChar(unit));
    }
    return d;
}

} // namespace VaultClientMessage

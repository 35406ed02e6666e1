#include "platform/automation/messageframing.h"

#include <QJsonDocument>
#include <QtEndian>

namespace wire {

QByteArray encodeFrame(const QJsonObject &message)
{
    const QByteArray body = QJsonDocument(message).toJson(QJsonDocument::Compact);
    QByteArray frame(4, Qt::Uninitialized);
    qToBigEndian<quint32>(static_cast<quint32>(body.size()), frame.data());
    frame.append(body);
    return frame;
}

void MessageFrameReader::append(const QByteArray &bytes)
{
    if (!m_broken)
        m_buffer.append(bytes);
}

std::optional<QJsonObject> MessageFrameReader::next()
{
    if (m_broken || m_buffer.size() < 4)
        return std::nullopt;
    const quint32 length = qFromBigEndian<quint32>(m_buffer.constData());
    if (length > static_cast<quint32>(kMaxFrameBytes)) {
        m_broken = true;
        m_buffer.clear();
        return std::nullopt;
    }
    if (m_buffer.size() - 4 < static_cast<qsizetype>(length))
        return std::nullopt;
    QJsonParseError error{};
    const QJsonDocument document = QJsonDocument::fromJson(m_buffer.mid(4, length), &error);
    m_buffer.remove(0, 4 + static_cast<qsizetype>(length));
    if (error.error != QJsonParseError::NoError || !document.isObject()) {
        m_broken = true;
        m_buffer.clear();
        return std::nullopt;
    }
    return document.object();
}

} // namespace wire

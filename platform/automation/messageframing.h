#pragma once

#include <QByteArray>
#include <QJsonObject>

#include <optional>

// Framing of the automation channel: each message is a JSON object preceded
// by its length as a 32-bit big-endian number.
namespace wire {

inline constexpr qsizetype kMaxFrameBytes = 64 * 1024 * 1024;

QByteArray encodeFrame(const QJsonObject &message);

// Collects bytes as they arrive and hands out whole messages.
class MessageFrameReader final
{
public:
    void append(const QByteArray &bytes);
    // The next complete message, or nothing while one is incomplete. A frame
    // that is too long or is not a JSON object marks the stream broken.
    std::optional<QJsonObject> next();
    bool broken() const { return m_broken; }

private:
    QByteArray m_buffer;
    bool m_broken = false;
};

// Message kinds and field names.
inline const QString kKind = QStringLiteral("k");
inline const QString kId = QStringLiteral("id");
inline const QString kCall = QStringLiteral("call");
inline const QString kReply = QStringLiteral("reply");
inline const QString kEvent = QStringLiteral("event");
inline const QString kEventReply = QStringLiteral("eventReply");
inline const QString kObject = QStringLiteral("obj");
inline const QString kMember = QStringLiteral("m");
inline const QString kArgs = QStringLiteral("a");
inline const QString kResult = QStringLiteral("r");
inline const QString kOut = QStringLiteral("out");
inline const QString kHr = QStringLiteral("hr");
inline const QString kSource = QStringLiteral("src");
inline const QString kDispId = QStringLiteral("dispid");

} // namespace wire

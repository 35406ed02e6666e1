#pragma once

#include <QByteArray>
#include <QString>
#include <cstdint>

// The request the vault client's pipe takes: a little-endian 32-bit code,
// then the path in UTF-16LE with a terminating zero. Paths longer than
// MaxPathChars are cut, so a request is 4 + 2n + 2 bytes with n <= 260.
namespace VaultClientMessage {

inline constexpr qsizetype MaxPathChars = 260;
inline constexpr std::int32_t CodeFileReplaced = 1;
inline constexpr qsizetype MaxReplyBytes = 256;

inline const QString PipeName = QStringLiteral("\\\\.\\pipe\\9E0E8EB3-C8DC-4772-8E45-44C907C2D30B");
inline const QString MutexName = QStringLiteral("{2F22C261-233E-4dcf-A4BD-0443B7120F4A}");

QByteArray encode(std::int32_t code, const QString &path);

struct Decoded {
    bool valid = false;      // at least the code and a terminated path
    std::int32_t code = 0;
    QString path;            // up to the first zero unit
    qsizetype byteCount = 0; // size of the raw message
};

Decoded decode(const QByteArray &raw);

} // namespace VaultClientMessage

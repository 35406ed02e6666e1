#pragma once

// Lets GoogleTest print Qt strings readably in failure messages. Include it
// in test files only.
#include <QByteArray>
#include <QString>
#include <QStringList>
#include <ostream>

inline void PrintTo(const QString &text, std::ostream *out)
{
    *out << '"' << text.toStdString() << '"';
}

inline void PrintTo(const QStringList &list, std::ostream *out)
{
    *out << '{';
    for (qsizetype i = 0; i < list.size(); ++i)
        *out << (i ? ", \"" : "\"") << list[i].toStdString() << '"';
    *out << '}';
}

inline void PrintTo(const QByteArray &bytes, std::ostream *out)
{
    *out << '"' << bytes.toStdString() << '"';
}

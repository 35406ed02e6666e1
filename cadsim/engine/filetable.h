#pragma once

#include "cadsim/engine/ast.h"

#include <QFile>
#include <QString>
#include <QStringList>

#include <map>
#include <memory>

namespace cadsim {

// The numbered files of Open/Print #/Line Input #/Close. Paths are native (already resolved).
// Text is Windows-1252 with CR LF line ends.
class FileTable final {
public:
    static constexpr int kMaxFiles = 255;

    void open(int number, const QString &nativePath, OpenMode mode);
    void close(int number);
    void closeAll();
    void write(int number, const QString &text); // as it stands, no line end added
    QString readLine(int number);
    // One item of Input #: a quoted text keeps its quotes, anything else comes trimmed.
    QString readItem(int number);
    bool atEnd(int number);
    qint64 length(int number); // LOF: the size of the open file in bytes
    int freeFile() const;
    bool isOpen(int number) const { return m_files.count(number) != 0; }
    bool isPathOpen(const QString &nativePath) const;

private:
    struct OpenFile {
        std::unique_ptr<QFile> file;
        OpenMode mode;
        QString path;
        QByteArray content; // Input mode: whole file
        qsizetype position = 0;
    };
    OpenFile &get(int number);

    std::map<int, OpenFile> m_files;
};

} // namespace cadsim

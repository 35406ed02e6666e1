#pragma once

#include "platform/memoryfilesystem.h"

#include <QDir>
#include <QFile>

// Puts the tests' German modules (built by lrelease from common/testing/lang)
// into folder of a memory file system.
inline void addTestLanguage(MemoryFileSystem &files, const QString &folder)
{
    const QDir built(QStringLiteral(MCTASK_TEST_LANG_DIR));
    for (const QString &name : built.entryList({QStringLiteral("*.qm")}, QDir::Files)) {
        QFile file(built.filePath(name));
        if (file.open(QIODevice::ReadOnly))
            files.addFile(folder + QLatin1Char('/') + name, file.readAll());
    }
}

#pragma once

// A test with a folder of its own for the files it makes and the homes and
// vaults of the programs it runs.

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QString>
#include <QTemporaryDir>

#include <gtest/gtest.h>

class FolderTest : public ::testing::Test
{
protected:
    QString path(const QString &relative) const { return m_dir.path() + '/' + relative; }
    // Writes a file below the folder, making its folders first.
    void write(const QString &relative, const QByteArray &bytes) const
    {
        QDir().mkpath(QFileInfo(path(relative)).absolutePath());
        QFile file(path(relative));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }
    QByteArray read(const QString &relative) const
    {
        QFile file(path(relative));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(missing)");
    }

    QTemporaryDir m_dir;
};

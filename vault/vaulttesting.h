#pragma once

#include "vault/vaultstore.h"

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

// A vault in a fresh temporary folder, with helpers to write local files.
class TempVault
{
public:
    explicit TempVault(const QString &user = QStringLiteral("alice"))
    {
        VaultOpenOptions options;
        options.user = user;
        store = VaultStore::create(m_dir.path() + "/vault", QStringLiteral("Demo"), options);
    }

    QString root() const { return m_dir.path() + "/vault"; }
    // A native file outside the vault.
    QString outsideFile(const QString &name, const QByteArray &bytes) const
    {
        return writeFile(m_dir.path() + "/outside/" + name, bytes);
    }
    // A native file in the vault's local view.
    QString localFile(const QString &relative, const QByteArray &bytes) const
    {
        return writeFile(root() + '/' + relative, bytes);
    }
    static QString writeFile(const QString &path, const QByteArray &bytes)
    {
        QDir().mkpath(QFileInfo(path).absolutePath());
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
        return path;
    }
    static QByteArray readFile(const QString &path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    std::shared_ptr<VaultStore> reopen(const QString &user = QStringLiteral("alice")) const
    {
        VaultOpenOptions options;
        options.user = user;
        return VaultStore::open(root(), options);
    }

    std::shared_ptr<VaultStore> store;

private:
    QTemporaryDir m_dir;
};

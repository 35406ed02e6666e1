#pragma once

#include "vault/pgtesting.h"
#include "vault/vaultstore.h"

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <ostream>
#include <string>

// A vault in a fresh temporary folder, with helpers to write local files.
// With a server URL its store is that PostgreSQL database and the folder is
// its local view; else an SQLite file in the folder.
class TempVault
{
public:
    explicit TempVault(const QString &user = QStringLiteral("alice"), const QString &server = {})
    {
        VaultOpenOptions options;
        options.user = user;
        store = server.isEmpty() ? VaultStore::create(root(), QStringLiteral("Demo"), options)
                                 : VaultStore::createOnServer(server, root(), QStringLiteral("Demo"), options);
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

enum class VaultBackend { Sqlite, Postgres };

// A suite whose tests run once on each back end (INSTANTIATE_TEST_SUITE_P
// with VaultBackends). On PostgreSQL each test has a schema of its own, made
// before the fixture's members so that they can hold a TempVault on it; the
// test skips in SetUp where there is no server. A fixture's own SetUp calls
// this one first and returns when IsSkipped() or HasFatalFailure().
class VaultBackendTest : public ::testing::TestWithParam<VaultBackend>
{
protected:
    VaultBackendTest()
    {
        if (GetParam() == VaultBackend::Postgres)
            m_schema = PgTestSchema::create(&m_whyNot);
    }
    void SetUp() override
    {
        if (GetParam() != VaultBackend::Postgres || m_schema)
            return;
        if (PgTestSchema::required())
            FAIL() << qPrintable(m_whyNot);
        GTEST_SKIP() << qPrintable(m_whyNot);
    }
    // The URL to give TempVault: empty for SQLite.
    QString server() const { return m_schema ? m_schema->url() : QString(); }
    bool onPostgres() const { return GetParam() == VaultBackend::Postgres; }

    std::unique_ptr<PgTestSchema> m_schema;
    QString m_whyNot;
};

inline std::string vaultBackendName(const ::testing::TestParamInfo<VaultBackend> &info)
{
    return info.param == VaultBackend::Sqlite ? "Sqlite" : "Postgres";
}
// How GoogleTest shows the parameter (and CTest's test names with it).
inline void PrintTo(VaultBackend backend, std::ostream *out)
{
    *out << (backend == VaultBackend::Sqlite ? "Sqlite" : "Postgres");
}

#define VaultBackends ::testing::Values(VaultBackend::Sqlite, VaultBackend::Postgres), vaultBackendName

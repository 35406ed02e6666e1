#pragma once

// A schema of the test's own on the tests' PostgreSQL server, dropped with
// everything in it when the test ends. The server is the one in
// MCTASK_TEST_PG, else the private one the build's test fixture starts
// (tools/privatepg.sh). Where there is none the tests skip and say why,
// unless MCTASK_REQUIRE_PG is set (as in CI): then they fail.

#include "host/hosterror.h"
#include "vault/pgdb.h"

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QUuid>

#include <gtest/gtest.h>

#include <memory>

class PgTestSchema
{
public:
    static QString serverUrl()
    {
        const QString url = qEnvironmentVariable("MCTASK_TEST_PG");
#ifdef MCTASK_TEST_PG_URL
        if (url.isEmpty())
            return QStringLiteral(MCTASK_TEST_PG_URL);
#endif
        return url;
    }
    static bool required() { return !qEnvironmentVariableIsEmpty("MCTASK_REQUIRE_PG"); }

    // A fresh schema, or null with the reason in whyNot.
    static std::unique_ptr<PgTestSchema> create(QString *whyNot)
    {
        const QString server = serverUrl();
        if (server.isEmpty()) {
            *whyNot = QStringLiteral("no PostgreSQL server for the tests (MCTASK_TEST_PG is not set)");
            return nullptr;
        }
        try {
            return std::unique_ptr<PgTestSchema>(new PgTestSchema(server));
        } catch (const HostError &e) {
            *whyNot = QStringLiteral("no PostgreSQL server for the tests: %1").arg(e.context());
            return nullptr;
        }
    }

    ~PgTestSchema()
    {
        try {
            m_admin.exec(("DROP SCHEMA IF EXISTS " + m_name + " CASCADE").constData());
        } catch (const HostError &) {
            // A test that stopped the server leaves the schema to the next cluster.
        }
    }

    // The server's URL with the schema as the search path: every table the
    // connection makes lands in the schema.
    QString url() const { return pgUrlWithSearchPath(m_server, QString::fromLatin1(m_name)); }
    PgDb &admin() { return m_admin; }

private:
    explicit PgTestSchema(const QString &server)
        : m_server(server), m_admin(server),
          m_name("t_" + QUuid::createUuid().toByteArray(QUuid::Id128))
    {
        m_admin.exec(("CREATE SCHEMA " + m_name).constData());
    }

    QString m_server;
    PgDb m_admin;
    QByteArray m_name;
};

// In a fixture's SetUp (or a test): a schema in `schema`, or the test skips
// (fails where a server is required).
#define MCTASK_PG_SCHEMA_OR_SKIP(schema)                                                                               \
    do {                                                                                                               \
        QString whyNot_;                                                                                               \
        schema = PgTestSchema::create(&whyNot_);                                                                       \
        if (!schema) {                                                                                                 \
            if (PgTestSchema::required())                                                                              \
                FAIL() << qPrintable(whyNot_);                                                                         \
            GTEST_SKIP() << qPrintable(whyNot_);                                                                       \
        }                                                                                                              \
    } while (0)

// A PostgreSQL server of the test's own (tools/privatepg.sh, cluster in a
// temporary folder), for tests that stop and start their server: the
// shared one serves other tests meanwhile and must never be stopped. It is
// stopped when the object goes.
class PrivatePgServer
{
public:
    // script: the path of tools/privatepg.sh.
    explicit PrivatePgServer(QString script) : m_script(std::move(script))
    {
        // The server's user (not root) must reach the folder.
        QFile::setPermissions(m_dir.path(), QFile::permissions(m_dir.path()) | QFileDevice::ExeOther
                                                | QFileDevice::ReadOther);
    }
    ~PrivatePgServer() { stop(); }
    PrivatePgServer(const PrivatePgServer &) = delete;
    PrivatePgServer &operator=(const PrivatePgServer &) = delete;

    // Starts it (the cluster is made the first time); false, with why, when
    // it does not come up.
    bool start(QString *why = nullptr)
    {
        QProcess process;
        process.start(QStringLiteral("bash"), {m_script, QStringLiteral("start"), m_dir.path()});
        if (!process.waitForFinished(120000) || process.exitCode() != 0) {
            if (why)
                *why = QStringLiteral("no private PostgreSQL server: %1")
                           .arg(QString::fromUtf8(process.readAllStandardError()).trimmed());
            return false;
        }
        m_url = QString::fromUtf8(process.readAllStandardOutput()).trimmed();
        return true;
    }
    void stop()
    {
        QProcess process;
        process.start(QStringLiteral("bash"), {m_script, QStringLiteral("stop"), m_dir.path()});
        process.waitForFinished(120000);
    }
    QString url() const { return m_url; }

private:
    QString m_script;
    QTemporaryDir m_dir;
    QString m_url;
};

// In a test: a private server started in `server` from `script`, or the test
// skips (fails where a server is required).
#define MCTASK_PRIVATE_PG_OR_SKIP(server, script)                                                                      \
    do {                                                                                                               \
        QString whyNot_;                                                                                               \
        server = std::make_unique<PrivatePgServer>(script);                                                            \
        if (!server->start(&whyNot_)) {                                                                                \
            if (PgTestSchema::required())                                                                              \
                FAIL() << qPrintable(whyNot_);                                                                         \
            GTEST_SKIP() << qPrintable(whyNot_);                                                                       \
        }                                                                                                              \
    } while (0)

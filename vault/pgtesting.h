#pragma once

// A schema of the test's own on the tests' PostgreSQL server, dropped with
// everything in it when the test ends. The server is the one in
// MCTASK_TEST_PG, else the private one the build's test fixture starts
// (tools/privatepg.sh). Where there is none the tests skip and say why,
// unless MCTASK_REQUIRE_PG is set (as in CI): then they fail.

#include "host/hosterror.h"
#include "vault/pgdb.h"

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

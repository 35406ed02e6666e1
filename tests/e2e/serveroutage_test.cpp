// Task hosts on two machines (homes of their own) that share a vault on a
// PostgreSQL server, and the server going away under them: stopped while
// instances run, for longer than their leases, and started again; or not
// running yet when a host starts.

#include "tests/e2e/hostservetest.h"
#include "vault/pgtesting.h"

#include <QSet>

#include <algorithm>
#include <map>
#include <set>

namespace {

class ServerOutageHostsTest : public HostServeTest
{
protected:
    // In place of the fixture's vault: one on a private server, which the
    // test stops and starts, with this home's local view and a second
    // machine attached to it.
    void SetUp() override
    {
        VaultBackendTest::SetUp();
        if (IsSkipped() || HasFatalFailure())
            return;
        ASSERT_TRUE(m_home.isValid() && m_work.isValid());
        MCTASK_PRIVATE_PG_OR_SKIP(m_server, MCTASK_PRIVATEPG_SCRIPT);
        m_vault = m_work.filePath("vault");
        ok({"vault", "init", m_vault, "--server", m_server->url(), "--name", "E2E"});
        registerMecadra(client());
        m_other = {m_work.filePath("b/home"), m_work.filePath("b/vault")};
        ASSERT_TRUE(QDir().mkpath(m_other.home));
        ok(m_other, {"vault", "attach", m_server->url(), m_other.vault});
        registerMecadra(m_other);
    }

    void TearDown() override
    {
        for (QProcess *host : {m_alpha.get(), m_beta.get()}) {
            if (host && host->state() != QProcess::NotRunning) {
                host->kill();
                host->waitForFinished(10000);
            }
        }
        HostServeTest::TearDown();
    }

    static int count(const std::vector<QJsonObject> &lines, const char *event)
    {
        return static_cast<int>(std::count_if(lines.begin(), lines.end(),
                                              [&](const QJsonObject &line) { return line["event"] == QJsonValue(event); }));
    }

    std::unique_ptr<PrivatePgServer> m_server;
    Machine m_other;
    std::unique_ptr<QProcess> m_alpha;
    std::unique_ptr<QProcess> m_beta;
};
// Only a server can go away.
INSTANTIATE_TEST_SUITE_P(Server, ServerOutageHostsTest, ::testing::Values(VaultBackend::Postgres),
                         [](const auto &) { return std::string("Postgres"); });

TEST_P(ServerOutageHostsTest, AServerStoppedLongerThanTheLeasesLosesNoInstanceAndRunsNoneToTheEndTwice)
{
    constexpr int Count = 4;
    addPartCopies(2 * Count);
    createPdfTask("To PDF");
    std::vector<int> ids;
    for (int i = 1; i <= Count; ++i)
        ids.push_back(launch({"To PDF", QStringLiteral("V:\\Parts\\part%1.mcdprt").arg(2 * i - 1),
                              QStringLiteral("V:\\Parts\\part%1.mcdprt").arg(2 * i)}));
    const ScopedEnv slow("MCSIM_MACRO_DELAY_MS", "1500");
    m_alpha = startHost(client(), "alpha", {"--once", "--lease", "2"});
    m_beta = startHost(m_other, "beta", {"--once", "--lease", "2"});
    ASSERT_TRUE(waitFor([&] {
        std::set<QString> holders;
        for (const int id : ids)
            if (instanceRow(id)["held"].toBool())
                holders.insert(instanceRow(id)["host"].toString());
        return holders.size() == 2;
    }));

    m_server->stop();
    QThread::msleep(5000); // two and a half leases
    ASSERT_TRUE(m_server->start());
    expectCleanExit(*m_alpha);
    expectCleanExit(*m_beta);

    // Who ended each instance, from the hosts' own lines; each host tells the
    // outage once.
    std::map<int, std::vector<QString>> endedBy;
    for (QProcess *host : {m_alpha.get(), m_beta.get()}) {
        const std::vector<QJsonObject> lines = events(*host);
        EXPECT_EQ(count(lines, "serverLost"), 1);
        EXPECT_EQ(count(lines, "serverRegained"), 1);
        for (const QJsonObject &line : lines)
            if (line["event"] == QJsonValue("ended"))
                endedBy[line["instance"].toInt()].push_back(line["host"].toString());
    }
    for (const int id : ids) {
        const QJsonObject row = instanceRow(id);
        ASSERT_EQ(endedBy[id].size(), 1u) << "instance " << id;
        EXPECT_FALSE(row["held"].toBool()) << id;
        // The run that ended it is the one the instance names.
        EXPECT_EQ(row["host"].toString(), endedBy[id].front()) << id;
        if (row["status"].toInt() != 7) {
            // Ended with errors: lost after it had begun the hand-over (not
            // run again), or run again after a lost attempt whose failure
            // its log tells.
            EXPECT_EQ(row["status"], QJsonValue(9)) << id;
            const QString message = row["message"].toString();
            if (!message.contains("not run again")) {
                EXPECT_EQ(row["attempt"], QJsonValue(2)) << id << ": " << message.toStdString();
                ok({"vault", "get", "V:\\Logs"});
                QFile log(m_vault + "/Logs/" + row["guid"].toString() + ".log");
                ASSERT_TRUE(log.open(QIODevice::ReadOnly)) << log.fileName().toStdString();
                const QByteArray lines = log.readAll();
                EXPECT_TRUE(lines.contains("vault server") || lines.contains("was lost")) << lines.toStdString();
            }
        }
    }
    // Every output is in the vault once, with one version.
    const QStringList outputs = filesUnder("Parts/PDF");
    EXPECT_LE(outputs.size(), 2 * Count);
    EXPECT_EQ(QSet<QString>(outputs.begin(), outputs.end()).size(), outputs.size());
    for (const QString &output : outputs)
        EXPECT_EQ(show(output)["versions"].toArray().size(), 1) << output.toStdString();
    int finished = 0;
    for (const int id : ids)
        finished += statusOf(id) == 7 ? 2 : 0;
    EXPECT_GE(outputs.size(), finished); // each finished instance left both its outputs
}

TEST_P(ServerOutageHostsTest, AHostStartedWhileTheServerIsDownWaitsForItAndThenServes)
{
    addPartCopies(1);
    createPdfTask("To PDF");
    const int id = launch({"To PDF", "V:\\Parts\\part1.mcdprt"});
    m_server->stop();
    m_alpha = startHost(client(), "alpha", {"--once"});
    // Still there after its first retries, and it said why it waits.
    EXPECT_FALSE(m_alpha->waitForFinished(4000));
    const QByteArray waiting = m_alpha->peek(1 << 20);
    EXPECT_TRUE(waiting.contains("\"event\":\"serverLost\"")) << waiting.toStdString();
    EXPECT_TRUE(waiting.contains("cannot connect")) << waiting.toStdString();

    ASSERT_TRUE(m_server->start());
    expectCleanExit(*m_alpha);
    const std::vector<QJsonObject> lines = events(*m_alpha);
    EXPECT_EQ(count(lines, "serverLost"), 1);
    EXPECT_EQ(count(lines, "serverRegained"), 1);
    EXPECT_EQ(count(lines, "ended"), 1);
    EXPECT_EQ(statusOf(id), 7);
}

} // namespace

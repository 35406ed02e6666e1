// The task host as an administrator runs it: "mctask host serve" processes
// on one vault, the add-in they load, the stand-in Mecadra of each worker,
// and people acting on the instances from other shells meanwhile. On a vault
// on a server each host is a machine of its own (home and local view).

#include "platform/testing/processgone.h"
#include "tests/e2e/hostservetest.h"

#include <map>
#include <set>

namespace {

INSTANTIATE_TEST_SUITE_P(Backends, HostServeTest, VaultBackends);

TEST_P(HostServeTest, TwoHostsOfTwoWorkersRunFortyInstancesEachExactlyOnce)
{
    constexpr int Count = 40;
    addPartCopies(Count);
    createPdfTask("To PDF", {"RefToSource:bool=true"});
    std::vector<int> ids;
    for (int i = 1; i <= Count; ++i)
        ids.push_back(launch({"To PDF", QStringLiteral("V:\\Parts\\part%1.mcdprt").arg(i)}));

    const std::map<QString, Machine> hostMachines{{"alpha", machine("alpha")}, {"beta", machine("beta")}};
    auto alpha = startHost(hostMachines.at("alpha"), "alpha", {"--workers", "2", "--once"});
    auto beta = startHost(hostMachines.at("beta"), "beta", {"--workers", "2", "--once"});
    expectCleanExit(*alpha);
    expectCleanExit(*beta);

    // Who started each instance, from the hosts' own lines.
    std::map<int, std::pair<QString, int>> startedBy;
    std::multiset<int> starts;
    std::multiset<int> ends;
    for (QProcess *host : {alpha.get(), beta.get()}) {
        for (const QJsonObject &event : events(*host)) {
            const int id = event["instance"].toInt();
            EXPECT_EQ(event["task"], QJsonValue("To PDF"));
            if (event["event"] == QJsonValue("started")) {
                starts.insert(id);
                startedBy[id] = {event["host"].toString(), event["worker"].toInt()};
            } else {
                ends.insert(id);
                const int status = event["status"].toInt();
                EXPECT_TRUE(status == 7 || status == 9) << id << ": " << status;
            }
        }
    }
    std::set<std::pair<QString, int>> workers;
    for (const int id : ids) {
        EXPECT_EQ(starts.count(id), 1u) << "instance " << id;
        EXPECT_EQ(ends.count(id), 1u) << "instance " << id;
        // The table says who ran it.
        const QJsonObject row = instanceRow(id);
        EXPECT_TRUE(row["status"].toInt() == 7 || row["status"].toInt() == 9) << id;
        EXPECT_EQ(row["held"], QJsonValue(false));
        EXPECT_EQ(row["attempt"], QJsonValue(1));
        EXPECT_EQ(std::make_pair(row["host"].toString(), row["worker"].toInt()), startedBy[id]) << id;
        workers.insert(startedBy[id]);
    }
    EXPECT_GE(workers.size(), 2u); // they ran side by side
    expectEachOutputOnce(Count);
    EXPECT_TRUE(liveMecadras().empty());
    // Every run removed the macro files it handed to Mecadra.
    EXPECT_EQ(QDir(tempFolder()).entryList({"TFR*"}, QDir::Files), QStringList());

    // Each host fetched the sources of the instances it ran, and no others.
    if (onPostgres()) {
        for (int i = 1; i <= Count; ++i) {
            for (const auto &[name, at] : hostMachines) {
                const QString source = QStringLiteral("%1/Parts/part%2.mcdprt").arg(at.vault).arg(i);
                EXPECT_EQ(QFile::exists(source), startedBy[ids[i - 1]].first == name) << source.toStdString();
            }
        }
    }

    // Both hosts are listed as stopped, with no run left.
    const QJsonArray hosts = run({"host", "status", "--json"}).json().array();
    ASSERT_EQ(hosts.size(), 2);
    for (const QJsonValue &host : hosts)
        EXPECT_FALSE(host.toObject()["stopped"].toString().isEmpty());
}

TEST_P(HostServeTest, AHostKilledMidInstanceIsRecoveredByTheOtherAfterTheLease)
{
    addPartCopies(3);
    createPdfTask("To PDF", {"RefToSource:bool=true"});
    const int id = launch({"To PDF", "V:\\Parts"});
    const Machine alphaAt = machine("alpha");
    const Machine betaAt = machine("beta");
    const ScopedEnv slow("MCSIM_MACRO_DELAY_MS", "1500");
    auto alpha = startHost(alphaAt, "alpha", {"--lease", "2"});
    ASSERT_TRUE(waitFor([&] { return progressOf(id) >= 1; })); // on its second file
    const std::vector<qint64> alphasMecadras = liveMecadras(alphaAt);
    EXPECT_EQ(alphasMecadras.size(), 1u);
    const QJsonObject firstAttempt = instanceRow(id);
    ::kill(static_cast<pid_t>(alpha->processId()), SIGKILL);
    ASSERT_TRUE(alpha->waitForFinished(10000));
    for (const qint64 pid : alphasMecadras)
        EXPECT_TRUE(waitUntilGone(pid, 10000)) << "the killed host's Mecadra is still running";
    EXPECT_EQ(instanceRow(id)["host"], QJsonValue("alpha"));
    const std::vector<QJsonObject> alphaLines = events(*alpha);
    ASSERT_EQ(alphaLines.size(), 1u);
    EXPECT_EQ(alphaLines[0]["event"], QJsonValue("started"));

    auto beta = startHost(betaAt, "beta", {"--lease", "2", "--once"});
    const qint64 betaPid = beta->processId();
    expectCleanExit(*beta);
    const QJsonObject row = instanceRow(id);
    EXPECT_EQ(row["held"], QJsonValue(false));
    // The instance ended once, and what its row says of the run is the
    // second attempt's.
    int ends = 0;
    for (const QJsonObject &event : events(*beta))
        ends += event["event"] == QJsonValue("ended") && event["instance"] == QJsonValue(id) ? 1 : 0;
    EXPECT_EQ(ends, 1);
    EXPECT_EQ(row["pid"].toInteger(), betaPid);
    EXPECT_NE(row["started"], firstAttempt["started"]);
    EXPECT_FALSE(row["finished"].toString().isEmpty());
    if (row["status"].toInt() == 7) {
        EXPECT_EQ(row["attempt"], QJsonValue(2));
        EXPECT_EQ(row["host"], QJsonValue("beta"));
        expectEachOutputOnce(3);
    } else {
        // Lost after it had begun the hand-over: not run again.
        EXPECT_EQ(row["status"], QJsonValue(9));
        EXPECT_TRUE(row["message"].toString().contains("not run again")) << row["message"].toString().toStdString();
    }
    for (const QString &log : filesUnder("Logs"))
        EXPECT_EQ(show(log)["versions"].toArray().size(), 1) << log.toStdString();
    for (const QJsonValue &instance : run({"task", "instances", "--json"}).json().array())
        EXPECT_NE(instance.toObject()["status"], QJsonValue(3));
}

TEST_P(HostServeTest, SigtermTakesNothingNewAndTheRunningInstanceFinishes)
{
    addPartCopies(2);
    createPdfTask("To PDF");
    const int first = launch({"To PDF", "V:\\Parts\\part1.mcdprt"});
    const int second = launch({"To PDF", "V:\\Parts\\part2.mcdprt"});
    const ScopedEnv slow("MCSIM_MACRO_DELAY_MS", "2000");
    auto alpha = startHost("alpha");
    ASSERT_TRUE(waitFor([&] { return held(first); }));

    // "task run" of an instance the host runs: refused with the holder's name; nothing changes.
    const QJsonObject before = instanceRow(first);
    const ProgramRun refused = run({"task", "run", QString::number(first)});
    EXPECT_EQ(refused.status, 2);
    EXPECT_EQ(refused.err, QStringLiteral("mctask: task run: instance %1 is held by host alpha (process %2, worker 1)\n")
                               .arg(first)
                               .arg(alpha->processId()));
    const QJsonObject after = instanceRow(first);
    for (const QString &key : QStringList{"host", "pid", "worker", "attempt", "started", "held"})
        EXPECT_EQ(after[key], before[key]) << key.toStdString();

    ::kill(static_cast<pid_t>(alpha->processId()), SIGTERM);
    expectCleanExit(*alpha);
    EXPECT_EQ(statusOf(first), 7);
    EXPECT_EQ(statusOf(second), 0);
    EXPECT_EQ(instanceRow(second)["host"], QJsonValue(""));
    const std::vector<QJsonObject> lines = events(*alpha);
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[1]["event"], QJsonValue("ended"));
    EXPECT_EQ(lines[1]["instance"], QJsonValue(first));

    const ProgramRun ended = run({"task", "run", QString::number(first)});
    EXPECT_EQ(ended.status, 2);
    EXPECT_EQ(ended.err, QStringLiteral("mctask: task run: instance %1 has ended (finished)\n").arg(first));
}

TEST_P(HostServeTest, SuspendResumeAndCancelFromAnotherShellReachTheHostsRuns)
{
    addPartCopies(3);
    createPdfTask("To PDF");
    const int first = launch({"To PDF", "V:\\Parts"});
    // Two files, so that a cancel is seen between them at the latest.
    const int second = launch({"To PDF", "V:\\Parts\\part1.mcdprt", "V:\\Parts\\part2.mcdprt"});
    const ScopedEnv slow("MCSIM_MACRO_DELAY_MS", "1000");
    auto alpha = startHost("alpha");
    ASSERT_TRUE(waitFor([&] { return progressOf(first) >= 1; }));

    ok({"task", "suspend", QString::number(first)});
    ASSERT_TRUE(waitForStatus(first, 5));
    const QJsonArray hosts = run({"host", "status", "--json"}).json().array();
    ASSERT_EQ(hosts.size(), 1);
    const QJsonObject worker = hosts[0].toObject()["workers"].toArray()[0].toObject();
    EXPECT_EQ(worker["instance"], QJsonValue(first));
    EXPECT_EQ(worker["status"], QJsonValue(5));
    ok({"task", "resume", QString::number(first)});
    ASSERT_TRUE(waitForStatus(first, 7));

    ASSERT_TRUE(waitFor([&] { return held(second); }));
    ok({"task", "cancel", QString::number(second)});
    ASSERT_TRUE(waitFor([&] { return statusOf(second) == 8; }));
    ::kill(static_cast<pid_t>(alpha->processId()), SIGTERM);
    expectCleanExit(*alpha);
}

} // namespace

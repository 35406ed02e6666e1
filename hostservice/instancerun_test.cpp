#include "hostservice/instancerun.h"

#include "host/hosterror.h"
#include "hostservice/testing/scriptedsession.h"
#include "platform/clock.h"
#include "vault/embeddedvault.h"
#include "vault/vaulttesting.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <map>

namespace {

const TaskHolder Worker{QStringLiteral("alpha"), 101, 1};
const TaskHolder Other{QStringLiteral("beta"), 202, 1};

class InstanceRunTest : public testing::Test
{
protected:
    InstanceRunTest() : m_clockGuard(m_clock), m_queue(m_vault.store), m_session(m_vault.store)
    {
        m_taskId = m_queue.tasks().createTask(QStringLiteral("Convert"), QStringLiteral("{0}")).id;
    }

    TaskClaim launchAndClaim(std::int32_t status = TaskStatus_Waiting)
    {
        const int id = m_queue.tasks().createInstance(m_taskId).id;
        if (status != TaskStatus_Waiting)
            m_queue.tasks().setStatusOnly(id, status);
        return m_queue.claim(id, Worker, m_policy).claim;
    }
    InstanceRow row(int id) { return *m_queue.tasks().instanceById(id); }

    FakeClock m_clock;
    ScopedClock m_clockGuard;
    TempVault m_vault;
    TaskQueue m_queue;
    ScriptedSession m_session;
    QueuePolicy m_policy{2000, 2};
    int m_taskId = 0;
};

TEST_F(InstanceRunTest, ACancelledInstanceNeverReachesTheAddIn)
{
    const TaskClaim claim = launchAndClaim(TaskStatus_CancelRequested);
    const RunReport report = runClaimedInstance(m_session, claim);
    EXPECT_EQ(m_session.sent, 0);
    EXPECT_TRUE(report.cancelled);
    EXPECT_EQ(report.commandResult, S_FALSE);
    EXPECT_EQ(report.end.status, TaskStatus_Finished);
    EXPECT_EQ(report.end.message, QStringLiteral("Cancelled before the run started."));
    EXPECT_FALSE(report.end.held());
}

TEST_F(InstanceRunTest, TheAddInGetsCommand43WithTheLaunchDataAndWhatItLeavesOpenIsEnded)
{
    const TaskClaim claim = launchAndClaim();
    m_queue.tasks().setInstanceData(claim.instanceId, {DoxCmdData{7, 1, QStringLiteral("V:\\a.mcdprt"), {}, 1, 0}});
    std::vector<QString> heard;
    std::int32_t seen = 0;
    m_session.script = [&](DoxCmd &cmd, DoxCmdDataArray &data, IDoxTaskInstance &instance, IDoxVault &) {
        EXPECT_EQ(cmd.commandType, DoxCmd_TaskRun);
        EXPECT_EQ(data.size(), 1u);
        instance.GetStatus(seen);
        EXPECT_EQ(instance.SetProgressRange(2, 0, QStringLiteral("a.mcdprt")), S_OK);
        EXPECT_EQ(instance.SetProgressPos(1, QStringLiteral("Adding files to vault...")), S_OK);
        return E_FAIL;
    };
    const RunReport report = runClaimedInstance(m_session, claim, [&](std::int32_t p, std::int32_t m, const QString &t) {
        heard.push_back(QStringLiteral("%1/%2 %3").arg(p).arg(m).arg(t));
    });
    EXPECT_EQ(seen, TaskStatus_Running);
    EXPECT_EQ(heard, (std::vector<QString>{"0/2 a.mcdprt", "1/2 Adding files to vault..."}));
    EXPECT_EQ(report.commandResult, E_FAIL);
    EXPECT_FALSE(report.claimLost);
    EXPECT_EQ(report.end.status, TaskStatus_Finished);
    EXPECT_EQ(report.end.result, E_FAIL);
    EXPECT_EQ(report.end.message, QStringLiteral("The add-in did not report the end of the run."));
    EXPECT_EQ(report.end.progressPos, 1);
}

TEST_F(InstanceRunTest, TheHandOverIsRecordedWhenTheRunFirstAsksForAWritingService)
{
    const TaskClaim claim = launchAndClaim();
    m_session.script = [&](DoxCmd &, DoxCmdDataArray &, IDoxTaskInstance &instance, IDoxVault &vault) {
        HostObjectPtr service;
        EXPECT_EQ(vault.CreateUtility(DoxUtil_BatchListing, service), S_OK);
        EXPECT_TRUE(row(claim.instanceId).handover.isEmpty()); // reading is no hand-over
        EXPECT_EQ(vault.CreateUtility(DoxUtil_BatchAdd, service), S_OK);
        EXPECT_TRUE(queryInterface<IDoxBatchAdd>(service));
        EXPECT_FALSE(row(claim.instanceId).handover.isEmpty());
        return instance.SetStatus(TaskStatus_FinishedOk, S_OK, std::nullopt, {}, std::nullopt);
    };
    EXPECT_EQ(runClaimedInstance(m_session, claim).end.status, TaskStatus_FinishedOk);
}

TEST_F(InstanceRunTest, ARunWhoseClaimWasLostChangesNothingAndChecksNothingIn)
{
    const TaskClaim claim = launchAndClaim();
    m_session.script = [&](DoxCmd &, DoxCmdDataArray &, IDoxTaskInstance &instance, IDoxVault &vault) {
        // The host hangs past its lease; another host takes the instance over.
        m_clock.advance(m_policy.leaseMs + 1);
        EXPECT_TRUE(m_queue.claimNext(Other, m_policy));
        HostObjectPtr service;
        EXPECT_EQ(vault.CreateUtility(DoxUtil_BatchAdd, service), E_ACCESSDENIED);
        EXPECT_FALSE(service);
        EXPECT_EQ(instance.SetVariable(QStringLiteral("__output_list"), Variant::fromBStr("x")), E_ACCESSDENIED);
        return instance.SetStatus(TaskStatus_FinishedOk, S_OK, std::nullopt, {}, std::nullopt);
    };
    const RunReport report = runClaimedInstance(m_session, claim);
    EXPECT_TRUE(report.claimLost);
    // The other host's claim stands, untouched.
    EXPECT_EQ(report.end.status, TaskStatus_Running);
    EXPECT_EQ(report.end.holderHost, QStringLiteral("beta"));
    EXPECT_EQ(report.end.attempt, 2);
    EXPECT_TRUE(report.end.handover.isEmpty());
    EXPECT_TRUE(report.end.finished.isEmpty());
}

// A run hands its outputs over through four services: a new file, a
// check-in of a file it changed, a reference and a card value.
class RunOutputTest : public VaultBackendTest
{
protected:
    RunOutputTest() : m_clockGuard(m_clock), m_queue(m_vault.store), m_session(m_vault.store) {}

    void SetUp() override
    {
        VaultBackendTest::SetUp();
        if (IsSkipped() || HasFatalFailure())
            return;
        VaultStore &store = *m_vault.store;
        store.defineCardVariable(QStringLiteral("Title"));
        m_part = store.addFile(m_vault.outsideFile("part.mcdprt", "part 1"), "Parts", "part.mcdprt", {}).id;
        m_drawing = store.addFile(m_vault.outsideFile("part.mcddrw", "drawing 1"), "Parts", "part.mcddrw", {}).id;
        store.checkOut(m_part, 0);
        m_vault.localFile("Parts/part.mcdprt", "part 2");
        const int taskId = m_queue.tasks().createTask(QStringLiteral("Convert"), QStringLiteral("{0}")).id;
        m_claim = m_queue.claim(m_queue.tasks().createInstance(taskId).id, Worker, m_policy).claim;
    }

    // Runs the claim: the add-in makes and fills the services, between()
    // runs, then it commits them and leaves the end to the host. The
    // commits' results in order; refused: the vault's refused writes.
    std::vector<HRESULT> handOver(const std::function<void()> &between, int &refused, RunReport &report)
    {
        std::vector<HRESULT> results;
        m_session.script = [&](DoxCmd &, DoxCmdDataArray &, IDoxTaskInstance &, IDoxVault &vault) {
            HostObjectPtr add, checkIn, references, update;
            EXPECT_EQ(vault.CreateUtility(DoxUtil_BatchAdd, add), S_OK);
            EXPECT_EQ(vault.CreateUtility(DoxUtil_BatchCheckIn, checkIn), S_OK);
            EXPECT_EQ(vault.CreateUtility(DoxUtil_CustomReferences, references), S_OK);
            EXPECT_EQ(vault.CreateUtility(DoxUtil_BatchUpdate, update), S_OK);
            const auto batchAdd = queryInterface<IDoxBatchAdd>(add);
            const auto batchCheckIn = queryInterface<IDoxBatchCheckIn>(checkIn);
            const auto customReferences = queryInterface<IDoxCustomReferences>(references);
            const auto batchUpdate = queryInterface<IDoxBatchUpdate>(update);
            EXPECT_EQ(batchAdd->AddFileFromPath(m_vault.outsideFile("part.pdf", "pdf"), "V:\\Parts"), S_OK);
            batchCheckIn->AddSelection({{m_part, 0}});
            customReferences->AddReferences(m_drawing, {{m_part, 0}});
            batchUpdate->SetVariable(m_part, QStringLiteral("Title"), QString(), Variant::fromBStr("Gear"));
            between();
            std::vector<DoxBatchAddResult> added;
            results = {batchAdd->CommitAdd(added), batchCheckIn->CheckIn(), customReferences->Commit(),
                       batchUpdate->Commit()};
            refused = dynamic_cast<HandoverRecordingVault &>(vault).refusedWrites();
            return S_OK;
        };
        report = runClaimedInstance(m_session, m_claim);
        return results;
    }

    FakeClock m_clock;
    ScopedClock m_clockGuard;
    TempVault m_vault{QStringLiteral("alice"), server()};
    TaskQueue m_queue;
    ScriptedSession m_session;
    QueuePolicy m_policy{2000, 2};
    TaskClaim m_claim;
    int m_part = 0;
    int m_drawing = 0;
};
INSTANTIATE_TEST_SUITE_P(Backends, RunOutputTest, VaultBackends);

TEST_P(RunOutputTest, ARunThatHoldsItsClaimCommitsItsOutputsAndTheHostEndsIt)
{
    int refused = -1;
    RunReport report;
    const auto results = handOver([] {}, refused, report);
    EXPECT_EQ(results, (std::vector<HRESULT>{S_OK, S_OK, S_OK, S_OK}));
    EXPECT_EQ(refused, 0);
    VaultStore &store = *m_vault.store;
    const auto pdf = store.fileByPath(QStringLiteral("Parts\\part.pdf"));
    ASSERT_TRUE(pdf);
    EXPECT_EQ(store.fileById(m_part)->latestVersion, 2);
    EXPECT_EQ(store.references(m_drawing, 1).size(), 1u);
    EXPECT_EQ(store.cardValue(m_part, 2, QStringLiteral("Title"), QString()), Variant::fromBStr("Gear"));
    // The queue's end of the run is written while and after the outputs are.
    EXPECT_FALSE(report.claimLost);
    EXPECT_EQ(report.end.status, TaskStatus_Finished);
    EXPECT_EQ(report.end.message, QStringLiteral("The add-in did not report the end of the run."));
    // The run's check ended with it: the ended claim no longer stops writes.
    EXPECT_NO_THROW(store.undoCheckOut(pdf->id));
}

TEST_P(RunOutputTest, ARunThatLostItsClaimAfterMakingItsServicesCommitsNoneOfItsOutputs)
{
    int refused = -1;
    RunReport report;
    const auto results = handOver(
        [&] {
            // The host hangs past its lease; another host's claim handles
            // the lost holder.
            m_clock.advance(m_policy.leaseMs + 1);
            EXPECT_FALSE(m_queue.claimNext(Other, m_policy));
        },
        refused, report);
    EXPECT_EQ(results, (std::vector<HRESULT>{E_ACCESSDENIED, E_ACCESSDENIED, E_ACCESSDENIED, E_ACCESSDENIED}));
    EXPECT_EQ(refused, 4);
    VaultStore &store = *m_vault.store;
    EXPECT_FALSE(store.fileByPath(QStringLiteral("Parts\\part.pdf")));
    EXPECT_FALSE(QFile::exists(m_vault.root() + "/Parts/part.pdf"));
    const VaultFileRow part = *store.fileById(m_part);
    EXPECT_EQ(part.latestVersion, 1);
    EXPECT_EQ(part.lock, VaultLock::CheckedOut);
    EXPECT_TRUE(store.references(m_drawing, 1).empty());
    EXPECT_TRUE(store.cardValues(m_part, 1).empty());
    EXPECT_TRUE(report.claimLost);
    EXPECT_EQ(report.end.status, TaskStatus_FinishedWithError);
}

TEST_P(RunOutputTest, OnAServerTheClaimAWriteCheckedStaysUntilTheWriteEnds)
{
    if (!onPostgres())
        GTEST_SKIP() << "an SQLite write transaction keeps every other writer out";
    HandoverRecordingVault vault(m_session.hostVault(), m_vault.store, m_claim);
    const std::shared_ptr<VaultStore> other = m_vault.reopen();
    other->db().exec("SET lock_timeout = '200ms'");
    TaskQueue otherQueue(other);
    {
        Transaction write(m_vault.store->db());
        vault.requireClaim();
        EXPECT_THROW(otherQueue.release(m_claim), HostError);
    }
    otherQueue.release(m_claim); // the row is free once the write ended
    EXPECT_EQ(m_queue.tasks().instanceById(m_claim.instanceId)->leaseExpiry, 0);
}

// A host home attached to a vault on a server starts with an empty local
// view; the run's reference resolution brings in what the run will open.
TEST(ServerInstanceRunTest, TheRunsFilesAndTheFilesTheyReferenceAreFetchedBeforeTheAddInOpensThem)
{
    std::unique_ptr<PgTestSchema> schema;
    MCTASK_PG_SCHEMA_OR_SKIP(schema);
    TempVault client(QStringLiteral("alice"), schema->url());
    std::map<QString, int> ids;
    for (const char *name : {"gearbox.mcdasm", "shaft.mcdprt", "cover.mcdprt", "bolt.mcdprt", "single.mcdprt",
                             "other.mcdprt"}) {
        const QString file = QString::fromLatin1(name);
        ids[file] = client.store->addFile(client.outsideFile(file, "bytes of " + file.toUtf8()), "Parts", file, {}).id;
    }
    client.store->addReference(ids["gearbox.mcdasm"], ids["shaft.mcdprt"], QString());
    client.store->addReference(ids["gearbox.mcdasm"], ids["cover.mcdprt"], QString());
    client.store->addReference(ids["cover.mcdprt"], ids["bolt.mcdprt"], QString()); // a second level
    client.store->addReference(ids["other.mcdprt"], ids["bolt.mcdprt"], QString());  // a parent is not fetched

    QTemporaryDir hostDir;
    const QString view = hostDir.filePath("view");
    VaultOpenOptions options;
    options.user = QStringLiteral("cad01");
    const auto host = VaultStore::attachToServer(schema->url(), view, options);
    TaskQueue queue(host);
    const int taskId = queue.tasks().createTask(QStringLiteral("Convert"), QStringLiteral("{0}")).id;
    const int instanceId = queue.tasks().createInstance(taskId).id;
    queue.tasks().setInstanceData(instanceId, {DoxCmdData{ids["gearbox.mcdasm"], 0, "V:\\Parts\\gearbox.mcdasm", {}, 1, 0},
                                               DoxCmdData{0, 0, "V:\\Parts\\single.mcdprt", {}, 1, 0}});
    const TaskClaim claim = queue.claim(instanceId, Worker, QueuePolicy{2000, 2}).claim;

    auto local = [&](const QString &name) { return TempVault::readFile(view + "/Parts/" + name); };
    ScriptedSession session(host, [&](DoxCmd &, DoxCmdDataArray &data, IDoxTaskInstance &instance, IDoxVault &vault) {
        EXPECT_TRUE(local("gearbox.mcdasm").isEmpty());
        std::vector<DoxReferenceQuery> queries;
        for (const DoxCmdData &element : data)
            queries.push_back({element.objectId1, element.objectId2, element.long2, element.string1});
        std::vector<std::int32_t> versions;
        EXPECT_EQ(vault.ResolveReferenceVersions(queries, 2, versions), S_OK);
        EXPECT_EQ(versions, (std::vector<std::int32_t>{1, 1}));
        return instance.SetStatus(TaskStatus_FinishedOk, S_OK, std::nullopt, {}, std::nullopt);
    });
    EXPECT_EQ(runClaimedInstance(session, claim).end.status, TaskStatus_FinishedOk);
    for (const char *name : {"gearbox.mcdasm", "shaft.mcdprt", "cover.mcdprt", "bolt.mcdprt", "single.mcdprt"})
        EXPECT_EQ(local(name), QByteArray("bytes of ") + name) << name;
    EXPECT_FALSE(QFile::exists(view + "/Parts/other.mcdprt"));
}

} // namespace

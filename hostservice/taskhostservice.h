#pragma once

#include "hostservice/instancerun.h"
#include "hostservice/taskqueue.h"

#include <QHash>
#include <QString>
#include <QStringList>

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

// Calls attempt until it no longer throws HostError, waiting 1, 2, 4 ... at
// most 30 s on the Clock before each call; for a vault server that went away.
// Gives up (false) once stopped() is true. When hurry() is true the wait ends
// early and the next attempt is made at once (another connection got through).
bool retryWithBackoff(const std::function<void()> &attempt, const std::function<bool()> &stopped,
                      const std::function<bool()> &hurry = {});
bool retryWithBackoff(const std::function<void()> &attempt, const std::atomic<bool> &stop);

// What the connections of one task host know of their vault server. However
// many of them see an outage, it is told once, when the first one loses the
// server, and its end once, when the first one reaches it again. A connection
// that learns of a loss only after another one rode that outage out
// reconnects without a word, and the ones still waiting try again at once.
class ServerOutage final
{
public:
    // lost: why; back: why is empty.
    using Report = std::function<void(bool lost, const QString &why)>;

    explicit ServerOutage(Report report) : m_report(std::move(report)) {}

    // Calls reach (a reconnect or an open) until it no longer throws HostError
    // (true) or stopped() is true (false). seen is the caller's count of the
    // outages it knows to have ended; why: the failure that showed the loss.
    bool rideOut(int &seen, const QString &why, const std::function<void()> &reach,
                 const std::function<bool()> &stopped);

private:
    std::mutex m_mutex;
    Report m_report;
    bool m_told = false;         // a loss was told and its end not yet
    std::atomic<int> m_ends{0}; // outages that ended
};

// Renews, from a thread of its own, the leases of every instance that one
// process holds, and (when announce is set) records the process in the hosts
// table as alive. It touches only the database, through a connection of its
// own, never the add-in or Mecadra, so a run that waits in Mecadra keeps its
// claim. Sleeps go through the process-wide Clock.
class LeaseKeeper final
{
public:
    struct Options {
        QString host;
        qint64 pid = 0;
        int workers = 1;
        qint64 leaseMs = 30000;
        bool announce = true; // a row in the hosts table
    };

    // outage: where a lost server is waited out and told; none: the keeper
    // waits quietly.
    LeaseKeeper(std::shared_ptr<VaultStore> store, Options options, std::shared_ptr<ServerOutage> outage = {});
    ~LeaseKeeper(); // stops

    void start();
    // Renews once more and ends the thread; an announced host is marked
    // stopped, an unannounced one leaves no row.
    void stop();

private:
    void loop();
    void beat();

    std::shared_ptr<VaultStore> m_store;
    Options m_options;
    std::shared_ptr<ServerOutage> m_outage;
    int m_outagesSeen = 0;
    std::atomic<bool> m_stop{false};
    std::thread m_thread;
};

// What a task host tells about its work: an instance started or ended.
// ServerLost and ServerRegained tell that the host lost its vault server
// (message: why) and has it back; they carry no instance.
struct HostEvent {
    enum class Kind { Started, Ended, ServerLost, ServerRegained };
    Kind kind = Kind::Started;
    QString time; // UTC, ISO 8601
    QString host;
    int worker = 0;
    int instanceId = 0;
    QString task;
    std::int32_t status = 0;
    QString message; // the end's message
};

// The task host: workers that each claim one instance at a time and run it
// through an add-in session of their own, and a lease keeper. stop() makes
// the workers take nothing new and lets running instances finish; cancel()
// also asks the host's running instances to stop between files (status 6).
// With once set, a worker ends when nothing waits and nothing is held any
// more. Signals are the caller's business; the service only offers
// stop() and cancel().
class TaskHostService final
{
public:
    struct Options {
        QString name;
        qint64 pid = 0;
        int workers = 1;
        qint64 leaseMs = 30000;
        qint64 pollMs = 1000;
        int attempts = 2;
        bool once = false;
        // The vault lives on a server: one that cannot be reached at the
        // start is waited for (awaitVault) as a lost one is.
        bool serverVault = false;
    };
    // A connection of its own for each caller (lease keeper, stop requests).
    using StoreFactory = std::function<std::shared_ptr<VaultStore>()>;
    // Made on the worker's own thread; worker numbers count from 1. A worker
    // whose session cannot be made ends, and the failure is its message.
    using SessionFactory = std::function<std::unique_ptr<AddInSession>(int worker, QString &failure)>;
    // Called from worker threads; the service serialises the calls.
    using EventSink = std::function<void(const HostEvent &)>;

    TaskHostService(Options options, StoreFactory stores, SessionFactory sessions, EventSink events);
    ~TaskHostService(); // stops and waits

    // Before start: calls open until it no longer fails with a server that
    // cannot be reached (with Options::serverVault; any other failure is
    // thrown), telling the loss and the return as events. False when a
    // signal came first (waitForSignal as for serve).
    bool awaitVault(const std::function<void()> &open, const std::function<int(int timeoutMs)> &waitForSignal);
    void start();
    void stop();
    void cancel();
    // True when every worker has ended.
    bool finished() const;
    // Waits for the workers' threads and stops the lease keeper.
    void join();
    // Failures of workers whose session could not be made.
    QStringList failures() const;

    // Runs until every worker has ended: waitForSignal(ms) blocks at most ms
    // and gives a signal number, or 0; the first signal stops the host, the
    // second cancels its runs. The exit status: 0, or 1 when a worker failed.
    int serve(const std::function<int(int timeoutMs)> &waitForSignal);

private:
    void work(int worker);
    // Claims and runs one instance, or waits a poll when none waits; false
    // when a --once host has nothing left. running holds the claim while its
    // run goes on.
    bool runNext(AddInSession &session, TaskQueue &queue, const TaskHolder &holder, const QueuePolicy &policy,
                 std::optional<TaskClaim> &running);
    HostEvent newEvent(HostEvent::Kind kind) const; // now, this host
    void report(HostEvent::Kind kind, int worker, const InstanceRow &row);
    // An idle worker's wait of one poll; ends early when an instance is
    // announced as waiting (on a server vault) or the host stops.
    void waitIdle(VaultDb &db);
    // The host's lost server as events.
    void serverState(bool lost, const QString &why);

    Options m_options;
    StoreFactory m_stores;
    SessionFactory m_sessions;
    EventSink m_events;
    std::unique_ptr<LeaseKeeper> m_leases;
    std::vector<std::thread> m_threads;
    std::atomic<bool> m_stopping{false};
    std::atomic<bool> m_cancelling{false};
    mutable std::mutex m_mutex; // events, failures, the count of running workers
    int m_running = 0;
    std::shared_ptr<ServerOutage> m_outage;
    QStringList m_failures;
    QHash<int, QString> m_taskNames; // task id to name, for the events
};

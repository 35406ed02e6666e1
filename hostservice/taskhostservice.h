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
#include <thread>
#include <vector>

// Calls attempt until it no longer throws HostError, waiting 1, 2, 4 ... at
// most 30 s on the Clock before each call; for a vault server that went away.
// Gives up (false) when stop is set.
bool retryWithBackoff(const std::function<void()> &attempt, const std::atomic<bool> &stop);

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

    // Told when the keeper's connection to a vault server is lost (with why)
    // and when it is back (why empty).
    using ServerWatch = std::function<void(bool lost, const QString &why)>;

    LeaseKeeper(std::shared_ptr<VaultStore> store, Options options, ServerWatch watch = {});
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
    ServerWatch m_watch;
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
    // when a --once host has nothing left.
    bool runNext(AddInSession &session, TaskQueue &queue, const TaskHolder &holder, const QueuePolicy &policy);
    HostEvent newEvent(HostEvent::Kind kind) const; // now, this host
    void report(HostEvent::Kind kind, int worker, const InstanceRow &row);
    // An idle worker's wait of one poll; ends early when an instance is
    // announced as waiting (on a server vault) or the host stops.
    void waitIdle(VaultDb &db);
    // A worker whose connection was lost waits for the server (see
    // retryWithBackoff); why: the failure that showed the loss.
    void rideOut(VaultDb &db, const QString &why);
    // Counts the host's lost connections: the first loss and the last
    // regain are events.
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
    int m_lostConnections = 0;
    QStringList m_failures;
    QHash<int, QString> m_taskNames; // task id to name, for the events
};

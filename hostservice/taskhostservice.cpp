#include "hostservice/taskhostservice.h"

#include "host/hosterror.h"
#include "platform/clock.h"

#include <algorithm>

namespace {

// The lease keeper and idle workers look at their stop flag this often
// while they wait.
constexpr qint64 StopCheckMs = 100;

// The waits between attempts to reach a lost server.
constexpr qint64 FirstRetryMs = 1000;
constexpr qint64 LastRetryMs = 30000;

} // namespace

bool retryWithBackoff(const std::function<void()> &attempt, const std::function<bool()> &stopped,
                      const std::function<bool()> &hurry)
{
    Clock &clock = Clock::instance();
    for (qint64 delay = FirstRetryMs;; delay = std::min(delay * 2, LastRetryMs)) {
        const qint64 due = clock.elapsed() + delay;
        for (qint64 left = delay; left > 0 && !stopped(); left = due - clock.elapsed()) {
            if (hurry && hurry())
                break;
            clock.sleep(std::min(left, StopCheckMs));
        }
        if (stopped())
            return false;
        try {
            attempt();
            return true;
        } catch (const HostError &) {
            // Still away.
        }
    }
}

bool retryWithBackoff(const std::function<void()> &attempt, const std::atomic<bool> &stop)
{
    return retryWithBackoff(attempt, [&stop] { return stop.load(); });
}

bool ServerOutage::rideOut(int &seen, const QString &why, const std::function<void()> &reach,
                           const std::function<bool()> &stopped)
{
    if (seen != m_ends) {
        // Another connection rode out an outage since this one last looked:
        // this loss is most likely that one, and the server is back.
        seen = m_ends;
        try {
            reach();
            return true;
        } catch (const HostError &) {
            // Away again: a new outage.
        }
    }
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (!m_told) {
            m_told = true;
            if (m_report)
                m_report(true, why);
        }
    }
    int hurried = m_ends;
    const bool back = retryWithBackoff(reach, stopped, [&] {
        if (m_ends == hurried)
            return false;
        hurried = m_ends;
        return true;
    });
    if (back) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (m_told) {
            m_told = false;
            ++m_ends;
            if (m_report)
                m_report(false, QString());
        }
        seen = m_ends;
    }
    return back;
}

LeaseKeeper::LeaseKeeper(std::shared_ptr<VaultStore> store, Options options, std::shared_ptr<ServerOutage> outage)
    : m_store(std::move(store)), m_options(std::move(options)), m_outage(std::move(outage))
{
}

LeaseKeeper::~LeaseKeeper()
{
    stop();
}

void LeaseKeeper::start()
{
    beat(); // the host is seen at once
    m_thread = std::thread([this] { loop(); });
}

void LeaseKeeper::stop()
{
    if (!m_thread.joinable())
        return;
    m_stop = true;
    m_thread.join();
    try {
        TaskQueue queue(m_store);
        if (m_options.announce)
            queue.markStopped(m_options.host, m_options.pid);
    } catch (const HostError &) {
        // The row only tells people; a heartbeat that stops shows the same.
    }
}

void LeaseKeeper::beat()
{
    TaskQueue queue(m_store);
    queue.renewLeases(m_options.host, m_options.pid, m_options.leaseMs);
    if (m_options.announce)
        queue.heartbeat(m_options.host, m_options.pid, m_options.workers);
}

void LeaseKeeper::loop()
{
    // Three renewals per lease: one late or lost beat costs no claim.
    const qint64 interval = std::max<qint64>(m_options.leaseMs / 3, 1);
    Clock &clock = Clock::instance();
    qint64 due = clock.elapsed() + interval;
    while (!m_stop) {
        clock.sleep(std::min(StopCheckMs, std::max<qint64>(due - clock.elapsed(), 0)));
        if (m_stop || clock.elapsed() < due)
            continue;
        try {
            beat();
        } catch (const HostError &e) {
            // A busy or failing database: the next beat tries again. A lost
            // server is waited for first.
            VaultDb &db = m_store->db();
            if (db.isConnectionLost()) {
                const auto reconnect = [&db] { db.reconnect(); };
                const auto stopped = [this] { return m_stop.load(); };
                if (m_outage)
                    m_outage->rideOut(m_outagesSeen, e.context(), reconnect, stopped);
                else
                    retryWithBackoff(reconnect, stopped);
            }
        }
        due = clock.elapsed() + interval;
    }
}

TaskHostService::TaskHostService(Options options, StoreFactory stores, SessionFactory sessions, EventSink events)
    : m_options(std::move(options)), m_stores(std::move(stores)), m_sessions(std::move(sessions)),
      m_events(std::move(events)),
      m_outage(std::make_shared<ServerOutage>([this](bool lost, const QString &why) { serverState(lost, why); }))
{
}

TaskHostService::~TaskHostService()
{
    stop();
    join();
}

bool TaskHostService::awaitVault(const std::function<void()> &open,
                                 const std::function<int(int timeoutMs)> &waitForSignal)
{
    QString why;
    try {
        open();
        return true;
    } catch (const HostError &e) {
        if (!m_options.serverVault || e.code() != E_DOX_CANT_OPEN_DATABASE)
            throw;
        why = e.context();
    }
    int seen = 0;
    return m_outage->rideOut(seen, why, open, [&waitForSignal] { return waitForSignal(0) != 0; });
}

void TaskHostService::start()
{
    m_leases = std::make_unique<LeaseKeeper>(
        m_stores(), LeaseKeeper::Options{m_options.name, m_options.pid, m_options.workers, m_options.leaseMs, true},
        m_outage);
    m_leases->start();
    m_running = m_options.workers;
    for (int worker = 1; worker <= m_options.workers; ++worker)
        m_threads.emplace_back([this, worker] { work(worker); });
}

void TaskHostService::stop()
{
    m_stopping = true;
}

void TaskHostService::cancel()
{
    m_stopping = true;
    m_cancelling = true;
    TaskQueue(m_stores()).requestCancelHeldBy(m_options.name, m_options.pid);
}

bool TaskHostService::finished() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_running == 0;
}

void TaskHostService::join()
{
    for (std::thread &thread : m_threads)
        if (thread.joinable())
            thread.join();
    m_threads.clear();
    if (m_leases)
        m_leases->stop();
}

QStringList TaskHostService::failures() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_failures;
}

int TaskHostService::serve(const std::function<int(int timeoutMs)> &waitForSignal)
{
    start();
    int received = 0;
    while (!finished()) {
        if (waitForSignal(static_cast<int>(std::min<qint64>(m_options.pollMs, 200))) == 0)
            continue;
        if (++received == 1)
            stop();
        else
            cancel();
    }
    join();
    return failures().isEmpty() ? 0 : 1;
}

void TaskHostService::waitIdle(VaultDb &db)
{
    // In slices, so that a stop is seen during a long poll.
    Clock &clock = Clock::instance();
    const qint64 due = clock.elapsed() + m_options.pollMs;
    for (qint64 left = m_options.pollMs; left > 0 && !m_stopping; left = due - clock.elapsed()) {
        if (db.waitForWaiting(std::min(left, StopCheckMs)))
            return;
    }
}

void TaskHostService::serverState(bool lost, const QString &why)
{
    if (!m_events)
        return;
    HostEvent event = newEvent(lost ? HostEvent::Kind::ServerLost : HostEvent::Kind::ServerRegained);
    event.message = why;
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_events(event);
}

HostEvent TaskHostService::newEvent(HostEvent::Kind kind) const
{
    HostEvent event;
    event.kind = kind;
    event.time = Clock::instance().now().toUTC().toString(Qt::ISODateWithMs);
    event.host = m_options.name;
    return event;
}

void TaskHostService::report(HostEvent::Kind kind, int worker, const InstanceRow &row)
{
    if (!m_events)
        return;
    HostEvent event = newEvent(kind);
    event.worker = worker;
    event.instanceId = row.id;
    event.status = row.status;
    event.message = row.message.value_or(QString());
    const std::lock_guard<std::mutex> lock(m_mutex);
    event.task = m_taskNames.value(row.taskId);
    m_events(event);
}

void TaskHostService::work(int worker)
{
    QString failure;
    std::unique_ptr<AddInSession> session;
    try {
        session = m_sessions(worker, failure);
    } catch (const HostError &e) {
        failure = e.context();
    }
    if (!session && failure.isEmpty())
        failure = QStringLiteral("the add-in could not be loaded");
    if (session) {
        TaskQueue queue(session->store());
        const TaskHolder holder{m_options.name, m_options.pid, worker};
        const QueuePolicy policy{m_options.leaseMs, m_options.attempts};
        int outagesSeen = 0;
        std::optional<TaskClaim> running;
        while (!m_stopping) {
            try {
                // A run that could not write its end gives its claim up, or
                // the lease keeper would hold the instance for ever; the next
                // claim handles it as after a lost host.
                if (running) {
                    queue.release(*running);
                    running.reset();
                }
                if (!runNext(*session, queue, holder, policy, running))
                    break;
            } catch (const HostError &e) {
                // The database stayed busy past its timeout, or the server
                // went away: wait a poll, or for the server.
                VaultDb &db = session->store()->db();
                if (db.isConnectionLost())
                    m_outage->rideOut(outagesSeen, e.context(), [&db] { db.reconnect(); },
                                      [this] { return m_stopping.load(); });
                else
                    Clock::instance().sleep(m_options.pollMs);
            }
        }
        session.reset(); // the add-in object ends on the thread that used it
    }
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (!failure.isEmpty())
        m_failures.append(QStringLiteral("worker %1: %2").arg(worker).arg(failure));
    --m_running;
}

bool TaskHostService::runNext(AddInSession &session, TaskQueue &queue, const TaskHolder &holder,
                              const QueuePolicy &policy, std::optional<TaskClaim> &running)
{
    VaultDb &db = session.store()->db();
    db.listenForWaiting(); // before the claim, so no launch falls between
    const std::optional<TaskClaim> claim = queue.claimNext(holder, policy);
    running = claim;
    if (!claim) {
        if (m_options.once && queue.pendingCount() == 0)
            return false;
        waitIdle(db);
        return true;
    }
    if (m_cancelling)
        queue.tasks().setStatusOnly(claim->instanceId, TaskStatus_CancelRequested);
    const InstanceRow row = *queue.tasks().instanceById(claim->instanceId);
    {
        const auto task = queue.tasks().taskById(row.taskId);
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_taskNames.insert(row.taskId, task ? task->name : QString());
    }
    report(HostEvent::Kind::Started, holder.worker, row);
    report(HostEvent::Kind::Ended, holder.worker, runClaimedInstance(session, *claim).end);
    running.reset();
    return true;
}

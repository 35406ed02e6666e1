#pragma once

#include <QDateTime>
#include <QElapsedTimer>

#include <functional>
#include <mutex>

// Every "now" and every sleep of the add-in goes through a Clock, so the
// polls and time limits can be tested without waiting.
class Clock
{
public:
    virtual ~Clock() = default;

    // Local date and time.
    virtual QDateTime now() const = 0;
    // Blocks the calling thread for ms milliseconds (negative counts as 0).
    virtual void sleep(qint64 ms) = 0;
    // Milliseconds on a monotonic time line; only differences mean something.
    virtual qint64 elapsed() const = 0;

    // The process-wide clock: the system clock unless a test installed another.
    static Clock &instance();
    // Installs clock as the process-wide clock (nullptr restores the system
    // clock) and returns the one it replaces. The caller keeps ownership.
    static Clock *setInstance(Clock *clock);
};

class SystemClock final : public Clock
{
public:
    SystemClock();
    QDateTime now() const override;
    void sleep(qint64 ms) override;
    qint64 elapsed() const override;

private:
    QElapsedTimer m_timer;
};

// A clock for tests: time stands still until advanced; sleep advances it at
// once. Thread-safe, so a watcher thread may sleep on it too.
class FakeClock final : public Clock
{
public:
    explicit FakeClock(const QDateTime &start = QDateTime(QDate(2024, 1, 15), QTime(10, 30, 0)));

    QDateTime now() const override;
    void sleep(qint64 ms) override;
    qint64 elapsed() const override;

    void advance(qint64 ms);
    void setNow(const QDateTime &now);

    // Number of sleep calls and their total length so far.
    int sleepCount() const;
    qint64 totalSlept() const;

    // Called after every sleep has advanced the time, with the sleep's
    // length; lets a test change the world while the code under test waits.
    void setOnSleep(std::function<void(qint64 ms)> callback);

private:
    mutable std::mutex m_mutex;
    QDateTime m_now;
    qint64 m_elapsed = 0;
    int m_sleepCount = 0;
    qint64 m_totalSlept = 0;
    std::function<void(qint64)> m_onSleep;
};

// Installs a clock for the lifetime of the guard (tests).
class ScopedClock final
{
public:
    explicit ScopedClock(Clock &clock) : m_previous(Clock::setInstance(&clock)) {}
    ~ScopedClock() { Clock::setInstance(m_previous); }
    ScopedClock(const ScopedClock &) = delete;
    ScopedClock &operator=(const ScopedClock &) = delete;

private:
    Clock *m_previous;
};

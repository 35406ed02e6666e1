#include "platform/clock.h"

#include <atomic>
#include <thread>

namespace {

std::atomic<Clock *> g_override{nullptr};

} // namespace

Clock &Clock::instance()
{
    if (Clock *clock = g_override.load())
        return *clock;
    static SystemClock systemClock;
    return systemClock;
}

Clock *Clock::setInstance(Clock *clock)
{
    return g_override.exchange(clock);
}

SystemClock::SystemClock()
{
    m_timer.start();
}

QDateTime SystemClock::now() const
{
    return QDateTime::currentDateTime();
}

void SystemClock::sleep(qint64 ms)
{
    if (ms > 0)
        std::this_thread::sleep_for(std::chrono::milliseconds(ms));
}

qint64 SystemClock::elapsed() const
{
    return m_timer.elapsed();
}

FakeClock::FakeClock(const QDateTime &start) : m_now(start) {}

QDateTime FakeClock::now() const
{
    std::lock_guard lock(m_mutex);
    return m_now;
}

void FakeClock::sleep(qint64 ms)
{
    ms = std::max<qint64>(ms, 0);
    std::function<void(qint64)> callback;
    {
        std::lock_guard lock(m_mutex);
        m_now = m_now.addMSecs(ms);
        m_elapsed += ms;
        ++m_sleepCount;
        m_totalSlept += ms;
        callback = m_onSleep;
    }
    // Outside the lock: the callback may read or advance the clock.
    if (callback)
        callback(ms);
    // Let other threads run, as a real sleep would.
    std::this_thread::yield();
}

qint64 FakeClock::elapsed() const
{
    std::lock_guard lock(m_mutex);
    return m_elapsed;
}

void FakeClock::advance(qint64 ms)
{
    std::lock_guard lock(m_mutex);
    m_now = m_now.addMSecs(ms);
    m_elapsed += ms;
}

void FakeClock::setNow(const QDateTime &now)
{
    std::lock_guard lock(m_mutex);
    m_now = now;
}

int FakeClock::sleepCount() const
{
    std::lock_guard lock(m_mutex);
    return m_sleepCount;
}

qint64 FakeClock::totalSlept() const
{
    std::lock_guard lock(m_mutex);
    return m_totalSlept;
}

void FakeClock::setOnSleep(std::function<void(qint64)> callback)
{
    std::lock_guard lock(m_mutex);
    m_onSleep = std::move(callback);
}

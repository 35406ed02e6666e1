#pragma once

#include "cad/mecadraprocesses.h"

#include <QThread>

#include <atomic>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>

// Answers or closes the message boxes of the Mecadra process that would stop
// an unattended run: one pass over the top-level windows per interval, at
// most maxPasses passes, on a thread of its own.
class DialogWatcher final
{
public:
    using WindowsFactory = std::function<std::unique_ptr<DesktopWindows>()>;

    // windows is called on the watcher's thread (a window connection belongs
    // to the thread that makes it).
    explicit DialogWatcher(WindowsFactory windows, qint64 intervalMs = 1000, int maxPasses = 1800);
    ~DialogWatcher();
    DialogWatcher(const DialogWatcher &) = delete;
    DialogWatcher &operator=(const DialogWatcher &) = delete;

    // Clears dialogDismissed(), stops a watcher that still runs and starts a
    // new one for processId.
    void start(qint64 processId);
    // Signals the watcher and waits for its thread to end.
    void stop();
    bool isRunning() const { return m_thread != nullptr; }
    void setTiming(qint64 intervalMs, int maxPasses)
    {
        m_intervalMs = intervalMs;
        m_maxPasses = maxPasses;
    }
    // Passes the last watcher made (read after stop).
    int passes() const { return m_passes; }
    // Whether the watcher since its start had to answer a "... Mecadra Task
    // Scheduler" window (read after stop). Each connection has its own
    // watcher, so workers of one host never see each other's dialogs.
    bool dialogDismissed() const { return m_dismissed; }

    // One pass of the title rules over the windows of processId; true when it
    // answered a "... Mecadra Task Scheduler" window.
    static bool answerWindows(DesktopWindows &windows, qint64 processId);

private:
    void run(qint64 processId);
    // Waits up to ms for the stop signal; true when it came (and resets it).
    bool waitForStop(qint64 ms);

    WindowsFactory m_windows;
    qint64 m_intervalMs;
    int m_maxPasses;
    std::unique_ptr<QThread> m_thread;
    std::mutex m_mutex;
    std::condition_variable m_signal;
    bool m_stopRequested = false;
    std::atomic<int> m_passes{0};
    std::atomic<bool> m_dismissed{false};
};

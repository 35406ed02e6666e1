#include "cad/dialogwatcher.h"

#include "platform/automation/windowmessages.h"

#include <chrono>

namespace {

constexpr qsizetype kTitleLength = 259;

void pressKey(DesktopWindows &windows, const TopWindow &window, std::uint32_t key)
{
    windows.postMessage(window, winmsg::KeyDown, key);
    windows.postMessage(window, winmsg::KeyUp, key);
}

} // namespace

DialogWatcher::DialogWatcher(WindowsFactory windows, qint64 intervalMs, int maxPasses)
    : m_windows(std::move(windows)), m_intervalMs(intervalMs), m_maxPasses(maxPasses)
{
}

DialogWatcher::~DialogWatcher() { stop(); }

void DialogWatcher::start(qint64 processId)
{
    stop();
    m_dismissed = false;
    {
        std::lock_guard lock(m_mutex);
        m_stopRequested = false;
    }
    m_passes = 0;
    m_thread.reset(QThread::create([this, processId] { run(processId); }));
    m_thread->start();
}

void DialogWatcher::stop()
{
    if (!m_thread)
        return;
    {
        std::lock_guard lock(m_mutex);
        m_stopRequested = true;
    }
    m_signal.notify_all();
    m_thread->wait();
    m_thread.reset();
}

bool DialogWatcher::waitForStop(qint64 ms)
{
    std::unique_lock lock(m_mutex);
    const bool signalled =
        m_signal.wait_for(lock, std::chrono::milliseconds(ms), [this] { return m_stopRequested; });
    m_stopRequested = false; // an auto-reset event
    return signalled;
}

void DialogWatcher::run(qint64 processId)
{
    if (waitForStop(0))
        return;
    const std::unique_ptr<DesktopWindows> windows = m_windows();
    for (int pass = 0; pass < m_maxPasses; ++pass) {
        if (windows && answerWindows(*windows, processId))
            m_dismissed = true;
        ++m_passes;
        if (waitForStop(m_intervalMs))
            return;
    }
}

bool DialogWatcher::answerWindows(DesktopWindows &windows, qint64 processId)
{
    bool dismissed = false;
    static const QString mecadra = QStringLiteral("Mecadra");
    static const QString basic = QStringLiteral("Microsoft Visual Basic");
    for (const TopWindow &window : windows.list()) {
        if (window.processId != processId)
            continue;
        const QString title = window.title.left(kTitleLength);
        if (title.isEmpty())
            continue;
        if (title.startsWith(mecadra) || title.contains(QLatin1String("Cadrix.exe"))) {
            pressKey(windows, window, winmsg::VkReturn);
        } else if (title == QLatin1String("Shapeminer") && window.parentTitle.startsWith(mecadra)) {
            pressKey(windows, window, winmsg::VkEscape);
        } else if (title == basic) {
            pressKey(windows, window, winmsg::VkReturn);
        } else if (title.startsWith(QLatin1String("Microsoft Visual Basic [break]"))) {
            windows.postMessage(window, winmsg::Close, 0);
        } else if (title.endsWith(QLatin1String("Mecadra Task Scheduler"))) {
            dismissed = true;
            pressKey(windows, window, winmsg::VkReturn);
        }
    }
    return dismissed;
}

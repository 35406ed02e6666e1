#include "cad/dialogwatcher.h"
#include "platform/automation/windowmessages.h"
#include "platform/testing/coreapp.h"


#include <gtest/gtest.h>

#include <mutex>

namespace {

using winmsg::Close;
using winmsg::KeyDown;
using winmsg::KeyUp;
using winmsg::VkEscape;
using winmsg::VkReturn;
constexpr qint64 kMecadra = 10;

struct Post {
    std::int64_t handle;
    std::uint32_t message;
    std::uint32_t wParam;
    bool operator==(const Post &) const = default;
};

class RecordingWindows final : public DesktopWindows
{
public:
    explicit RecordingWindows(std::vector<TopWindow> windows) : m_windows(std::move(windows)) {}
    std::vector<TopWindow> list() override
    {
        std::lock_guard lock(m_mutex);
        ++lists;
        return m_windows;
    }
    void postMessage(const TopWindow &window, std::uint32_t message, std::uint32_t wParam) override
    {
        std::lock_guard lock(m_mutex);
        posts.push_back({window.handle, message, wParam});
    }
    std::vector<Post> posts;
    int lists = 0;

private:
    std::mutex m_mutex;
    std::vector<TopWindow> m_windows;
};

std::vector<Post> keyPress(std::int64_t handle, std::uint32_t key)
{
    return {{handle, KeyDown, key}, {handle, KeyUp, key}};
}

// The posts one pass makes for a single window of the Mecadra process.
std::vector<Post> answer(const QString &title, const QString &parentTitle = {}, qint64 pid = kMecadra,
                         bool *dismissed = nullptr)
{
    RecordingWindows windows({{pid, 1, title, parentTitle}});
    const bool answered = DialogWatcher::answerWindows(windows, kMecadra);
    if (dismissed)
        *dismissed = answered;
    return windows.posts;
}

TEST(DialogWatcherTest, TitleRulesActOnTheFirstMatch)
{
    bool dismissed = true;
    EXPECT_EQ(answer(QStringLiteral("Mecadra")), keyPress(1, VkReturn));
    EXPECT_EQ(answer(QStringLiteral("Warning from Cadrix.exe")), keyPress(1, VkReturn));
    EXPECT_EQ(answer(QStringLiteral("Shapeminer"), QStringLiteral("Mecadra 2013")), keyPress(1, VkEscape));
    EXPECT_EQ(answer(QStringLiteral("Shapeminer"), QStringLiteral("Other")), std::vector<Post>{});
    EXPECT_EQ(answer(QStringLiteral("Microsoft Visual Basic")), keyPress(1, VkReturn));
    EXPECT_EQ(answer(QStringLiteral("Microsoft Visual Basic [break] - Module1")), (std::vector<Post>{{1, Close, 0}}));
    EXPECT_EQ(answer(QStringLiteral("microsoft visual basic")), std::vector<Post>{}); // case matters
    EXPECT_EQ(answer(QString()), std::vector<Post>{});
    // "Mecadra ... Mecadra Task Scheduler" takes the first row: no flag.
    EXPECT_EQ(answer(QStringLiteral("Mecadra Task Scheduler"), {}, kMecadra, &dismissed), keyPress(1, VkReturn));
    EXPECT_FALSE(dismissed);
    EXPECT_EQ(answer(QStringLiteral("Error - Mecadra Task Scheduler"), {}, kMecadra, &dismissed),
              keyPress(1, VkReturn));
    EXPECT_TRUE(dismissed);
}

TEST(DialogWatcherTest, WindowsOfOtherProcessesAreLeftAlone)
{
    bool dismissed = true;
    EXPECT_EQ(answer(QStringLiteral("Mecadra"), {}, kMecadra + 1), std::vector<Post>{});
    EXPECT_EQ(answer(QStringLiteral("Error - Mecadra Task Scheduler"), {}, kMecadra + 1, &dismissed),
              std::vector<Post>{});
    EXPECT_FALSE(dismissed);
}

TEST(DialogWatcherTest, EachWatcherKeepsItsOwnDismissedDialog)
{
    coreApp();
    // Two workers' watchers of one process: only the one whose Mecadra showed
    // the scheduler's box reports it, and a start clears only its own.
    const auto scheduler = [] {
        return std::make_unique<RecordingWindows>(
            std::vector<TopWindow>{{kMecadra, 1, QStringLiteral("Error - Mecadra Task Scheduler"), QString()}});
    };
    DialogWatcher first(scheduler, 0, 3);
    DialogWatcher second(scheduler, 0, 3);
    first.start(kMecadra);
    second.start(kMecadra + 1);
    for (int i = 0; i < 2000 && (first.passes() < 3 || second.passes() < 3); ++i)
        QThread::msleep(1);
    first.stop();
    second.stop();
    EXPECT_TRUE(first.dialogDismissed());
    EXPECT_FALSE(second.dialogDismissed());
    second.start(kMecadra + 1);
    second.stop();
    EXPECT_TRUE(first.dialogDismissed());
}

TEST(DialogWatcherTest, RunsAtMostItsPassesAndStopsOnTheSignal)
{
    coreApp();
    DialogWatcher bounded([] { return std::make_unique<RecordingWindows>(std::vector<TopWindow>{}); }, 0, 1800);
    bounded.start(kMecadra);
    // Left alone, it ends by itself after its passes.
    for (int i = 0; i < 2000 && bounded.passes() < 1800; ++i)
        QThread::msleep(1);
    bounded.stop();
    EXPECT_EQ(bounded.passes(), 1800);

    DialogWatcher slow([] { return std::make_unique<RecordingWindows>(std::vector<TopWindow>{}); }, 60000, 1800);
    slow.start(kMecadra);
    QThread::msleep(20);
    slow.stop(); // does not wait out the interval
    EXPECT_EQ(slow.passes(), 1);
    EXPECT_FALSE(slow.isRunning());
}

} // namespace

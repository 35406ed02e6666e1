#include "cadsim/server/faultconfig.h"
#include "cadsim/server/windowmessagebox.h"
#include "cadsim/server/windowservice.h"

#include <gtest/gtest.h>

#include <future>
#include <map>
#include <thread>

namespace {

using Answer = WindowService::Answer;

// Shows a modal box on another thread and waits until it is listed.
struct OpenBox
{
    OpenBox(WindowService &windows, const QString &title, WindowService::WindowId parent = 0)
    {
        answer = std::async(std::launch::async, [&windows, title, parent] { return windows.showModal(title, parent); });
        for (;;) {
            for (const auto &window : windows.list()) {
                if (window.title == title && window.modal)
                    id = window.id;
            }
            if (id != 0)
                break;
            std::this_thread::yield();
        }
    }
    std::future<Answer> answer;
    WindowService::WindowId id = 0;
};

} // namespace

TEST(WindowServiceTest, ModalBoxWaitsForEnterEscapeOrClose)
{
    WindowService windows;
    const struct {
        std::uint32_t message;
        std::uint32_t key;
        Answer expected;
    } cases[] = {
        {winmsg::KeyDown, winmsg::VkReturn, Answer::Enter},
        {winmsg::KeyDown, winmsg::VkEscape, Answer::Escape},
        {winmsg::Close, 0, Answer::Close},
    };
    for (const auto &c : cases) {
        OpenBox box(windows, QStringLiteral("Mecadra"));
        // Key-up alone and other keys leave it open.
        EXPECT_EQ(windows.postMessage(box.id, winmsg::KeyUp, winmsg::VkReturn), S_OK);
        EXPECT_EQ(windows.postMessage(box.id, winmsg::KeyDown, 'A'), S_OK);
        EXPECT_EQ(box.answer.wait_for(std::chrono::milliseconds(0)), std::future_status::timeout);
        EXPECT_EQ(windows.postMessage(box.id, c.message, c.key), S_OK);
        EXPECT_EQ(box.answer.get(), c.expected);
        // Gone: no longer listed, and later messages to it fail.
        EXPECT_TRUE(windows.list().empty());
        EXPECT_EQ(windows.postMessage(box.id, winmsg::KeyUp, winmsg::VkReturn), E_INVALID_WINDOW_HANDLE);
    }
}

TEST(WindowServiceTest, ListsTitlesWithParentTitlesOldestFirst)
{
    WindowService windows;
    const auto frame = windows.createWindow(QStringLiteral("Mecadra"));
    OpenBox box(windows, QStringLiteral("Shapeminer"), frame);
    const auto list = windows.list();
    ASSERT_EQ(list.size(), 2u);
    EXPECT_EQ(list[0].title, QStringLiteral("Mecadra"));
    EXPECT_TRUE(list[0].parentTitle.isEmpty());
    EXPECT_FALSE(list[0].modal);
    EXPECT_EQ(list[1].title, QStringLiteral("Shapeminer"));
    EXPECT_EQ(list[1].parentTitle, QStringLiteral("Mecadra"));

    // A plain window takes messages and ignores them; hiding is remembered.
    EXPECT_EQ(windows.postMessage(frame, winmsg::Close, 0), S_OK);
    EXPECT_EQ(windows.showWindow(frame, winmsg::SwHide), S_OK);
    EXPECT_FALSE(windows.list()[0].visible);
    EXPECT_EQ(windows.showWindow(12345, winmsg::SwHide), E_INVALID_WINDOW_HANDLE);

    windows.abandonAll(); // releases the waiting box
    EXPECT_EQ(box.answer.get(), Answer::Abandoned);
    EXPECT_EQ(windows.showModal(QStringLiteral("late")), Answer::Abandoned);
}

TEST(WindowMessageBoxTest, AnswersFollowTheButtonsOfTheBox)
{
    enum { vbOK = 1, vbCancel = 2, vbAbort = 3, vbRetry = 4, vbYes = 6, vbNo = 7 };
    constexpr int vbDefaultButton2 = 256;
    EXPECT_EQ(WindowMessageBox::answerFor(0, Answer::Enter), vbOK);
    EXPECT_EQ(WindowMessageBox::answerFor(0, Answer::Escape), vbOK);
    EXPECT_EQ(WindowMessageBox::answerFor(1, Answer::Enter), vbOK);
    EXPECT_EQ(WindowMessageBox::answerFor(1, Answer::Close), vbCancel);
    EXPECT_EQ(WindowMessageBox::answerFor(2, Answer::Enter), vbAbort);
    EXPECT_EQ(WindowMessageBox::answerFor(3, Answer::Escape), vbCancel);
    EXPECT_EQ(WindowMessageBox::answerFor(4, Answer::Enter), vbYes);
    EXPECT_EQ(WindowMessageBox::answerFor(4 | vbDefaultButton2, Answer::Enter), vbNo);
    EXPECT_EQ(WindowMessageBox::answerFor(4, Answer::Escape), vbNo);
    EXPECT_EQ(WindowMessageBox::answerFor(5, Answer::Enter), vbRetry);
    // An icon flag (vbExclamation) does not change the buttons.
    EXPECT_EQ(WindowMessageBox::answerFor(48 | 1, Answer::Escape), vbCancel);
}

TEST(FaultConfigTest, FlagsAndBadNumbersFallBackWithWarnings)
{
    QProcessEnvironment env;
    env.insert(QStringLiteral("MCSIM_NEVER_REGISTER"), QStringLiteral("0"));
    env.insert(QStringLiteral("MCSIM_REFUSE_EXIT"), QStringLiteral("false"));
    env.insert(QStringLiteral("MCSIM_CRASH_AFTER"), QStringLiteral("-1"));
    env.insert(QStringLiteral("MCSIM_GROW_MIB"), QStringLiteral("lots"));
    env.insert(QStringLiteral("MCSIM_RUN_ERROR"), QStringLiteral("x"));
    env.insert(QStringLiteral("MCSIM_SHOW_WINDOW_AT"), QStringLiteral("later"));
    QStringList warnings;
    const FaultConfig config = FaultConfig::fromEnvironment(env, &warnings);
    EXPECT_FALSE(config.neverRegister);
    EXPECT_FALSE(config.refuseExit);
    EXPECT_EQ(config.crashAfterMacros, 0);
    EXPECT_EQ(config.growMiBPerMacro, 0);
    EXPECT_EQ(config.runError, 0);
    EXPECT_EQ(config.showWindowAt, FaultConfig::WindowMoment::Macro);
    EXPECT_EQ(warnings.size(), 4);
}

TEST(FaultConfigTest, RandomFaultsFollowTheSeedAndTheShareAskedFor)
{
    QProcessEnvironment env;
    env.insert(QStringLiteral("MCSIM_RANDOM_FAULTS"), QStringLiteral("40"));
    env.insert(QStringLiteral("MCSIM_FAULT_SEED"), QStringLiteral("7"));
    const FaultConfig config = FaultConfig::fromEnvironment(env);
    EXPECT_EQ(config.randomFaultPercent, 40);
    EXPECT_EQ(config.faultSeed, 7u);

    using RandomFault = FaultConfig::RandomFault;
    std::map<RandomFault, int> counts;
    int sameWithOtherSeed = 0;
    FaultConfig otherSeed = config;
    otherSeed.faultSeed = 8;
    constexpr int kCalls = 2000;
    for (int i = 0; i < kCalls; ++i) {
        const QByteArray macro = "Sub main() ' file " + QByteArray::number(i);
        const RandomFault fault = config.drawFault(1 + i % 3, macro);
        EXPECT_EQ(fault, config.drawFault(1 + i % 3, macro)) << i; // reproducible
        ++counts[fault];
        sameWithOtherSeed += otherSeed.drawFault(1 + i % 3, macro) == fault ? 1 : 0;
    }
    // About 40 % get a fault, every kind among them, each about as often.
    EXPECT_NEAR(kCalls - counts[RandomFault::None], kCalls * 0.4, kCalls * 0.05);
    for (const RandomFault kind : {RandomFault::Crash, RandomFault::Hang, RandomFault::Dialog, RandomFault::Grow,
                                   RandomFault::RunError})
        EXPECT_NEAR(counts[kind], kCalls * 0.08, kCalls * 0.03) << static_cast<int>(kind);
    // Another seed draws other faults (agreeing about as often as chance has it).
    EXPECT_LT(sameWithOtherSeed, kCalls * 0.6);

    FaultConfig off = config;
    off.randomFaultPercent = 0;
    EXPECT_EQ(off.drawFault(1, "Sub main()"), RandomFault::None);
    env.insert(QStringLiteral("MCSIM_RANDOM_FAULTS"), QStringLiteral("250"));
    EXPECT_EQ(FaultConfig::fromEnvironment(env).randomFaultPercent, 100);
}

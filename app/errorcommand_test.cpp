#include "platform/qtestprint.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

#include "tests/programrun.h"

namespace {

// Runs the built program with its own empty home, so no settings or
// translations of the machine change the texts.
ProgramRun runMctask(const QStringList &args)
{
    QTemporaryDir home;
    return runProgram(MCTASK_PROGRAM, args, ProgramSetting(home.path()).timeout(30000));
}

} // namespace

TEST(ErrorCommandTest, PrintsNameColonMessageForHexAndDecimalCodes)
{
    const ProgramRun hex = runMctask({"error", "0x80040213"});
    EXPECT_EQ(hex.status, 0);
    EXPECT_EQ(hex.out, "E_DOX_FILE_NOT_FOUND: The file could not be found.\n");
    EXPECT_EQ(hex.err, "");

    // The same code as a signed decimal, and in lower-case hex.
    EXPECT_EQ(runMctask({"error", "-2147220973"}).out, hex.out);
    EXPECT_EQ(runMctask({"error", "0X80040213"}).out, hex.out);
    EXPECT_EQ(runMctask({"error", "2147746323"}).out, hex.out);

    EXPECT_EQ(runMctask({"error", "0x80072efd"}).out, "0x80072EFD: The attempt to connect to the server failed.\n");
    EXPECT_EQ(runMctask({"error", "0"}).out, "S_OK: The method was successfully executed.\n");
    EXPECT_EQ(runMctask({"error", "0x12345678"}).out, "0x12345678: Unknown error 0x12345678\n");
}

TEST(ErrorCommandTest, RefusesWhatIsNotA32BitCodeWithStatusTwo)
{
    for (const QStringList &args : {QStringList{"error", "0x1G"}, QStringList{"error", "file"},
                                    QStringList{"error", "0x100000000"}, QStringList{"error", "-2147483649"},
                                    QStringList{"error", "0x"}, QStringList{"error", "0x-5"},
                                    QStringList{"error"}, QStringList{"error", "1", "2"}}) {
        const ProgramRun run = runMctask(args);
        EXPECT_EQ(run.status, 2) << args.join(' ').toStdString();
        EXPECT_EQ(run.out, "") << args.join(' ').toStdString();
        EXPECT_TRUE(run.err.startsWith("mctask: error: ")) << run.err.toStdString();
        EXPECT_EQ(run.err.count('\n'), 1) << run.err.toStdString();
    }
}

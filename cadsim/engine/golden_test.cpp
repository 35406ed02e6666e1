// Runs every macro under golden/<feature>/ and compares what it prints (Debug.Print and message
// boxes) and how it ends with the expectations written in its comments:
//   ' expect-output: <line>                     one line of output, in order
//   ' expect-error: <number> line <n>           an unhandled run-time error
//   ' expect-compile-error: <code> line <n> [column <c>]
//   ' msgbox-answer: <n>                        what message boxes return (default 1)
#include "base/codepage.h"
#include "cadsim/engine/macroengine.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <gtest/gtest.h>

// Test names print as text.
void PrintTo(const QString &s, std::ostream *os)
{
    *os << s.toStdString();
}

namespace cadsim {
namespace {

struct Expectations {
    QStringList output;
    int errorNumber = 0;
    int errorLine = 0;
    int compileCode = 0;
    int compileLine = 0;
    int compileColumn = 0;
    int msgBoxAnswer = 1;
};

Expectations readExpectations(const QString &text)
{
    Expectations e;
    static const QRegularExpression output(QStringLiteral("^\\s*' expect-output: ?(.*)$"));
    static const QRegularExpression error(QStringLiteral("^\\s*' expect-error: (\\d+) line (\\d+)"));
    static const QRegularExpression compile(QStringLiteral("^\\s*' expect-compile-error: (\\d+) line (\\d+)(?: column (\\d+))?"));
    static const QRegularExpression answer(QStringLiteral("^\\s*' msgbox-answer: (\\d+)"));
    for (const QString &line : text.split(QLatin1Char('\n'))) {
        const QString l = line.endsWith(QLatin1Char('\r')) ? line.chopped(1) : line;
        if (auto m = output.match(l); m.hasMatch())
            e.output << m.captured(1);
        else if (auto m = error.match(l); m.hasMatch()) {
            e.errorNumber = m.captured(1).toInt();
            e.errorLine = m.captured(2).toInt();
        } else if (auto m = compile.match(l); m.hasMatch()) {
            e.compileCode = m.captured(1).toInt();
            e.compileLine = m.captured(2).toInt();
            e.compileColumn = m.captured(3).toInt();
        } else if (auto m = answer.match(l); m.hasMatch())
            e.msgBoxAnswer = m.captured(1).toInt();
    }
    return e;
}

class RecordingMessageBox final : public MessageBoxHandler {
public:
    RecordingMessageBox(QStringList &out, int answer) : m_out(out), m_answer(answer) {}
    int showMessage(const QString &title, const QString &prompt, int) override
    {
        m_out << QStringLiteral("msgbox[%1]: %2").arg(title, QString(prompt).replace(QLatin1Char('\n'), QLatin1Char('|')));
        return m_answer;
    }

private:
    QStringList &m_out;
    int m_answer;
};

QStringList goldenFiles()
{
    QStringList files;
    QDirIterator it(QStringLiteral(MCTASK_GOLDEN_DIR), {QStringLiteral("*.mcb")}, QDir::Files, QDirIterator::Subdirectories);
    while (it.hasNext())
        files << QDir(QStringLiteral(MCTASK_GOLDEN_DIR)).relativeFilePath(it.next());
    files.sort();
    return files;
}

class GoldenTest : public ::testing::TestWithParam<QString> {};

TEST_P(GoldenTest, MatchesExpectations)
{
    QFile file(QStringLiteral(MCTASK_GOLDEN_DIR) + QLatin1Char('/') + GetParam());
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QString text = decodeWindows1252(file.readAll());
    const Expectations want = readExpectations(text);

    QTemporaryDir root;
    ASSERT_TRUE(root.isValid());
    QStringList output;
    EngineHost host;
    // "X:\dir\file" lands in <root>/X/dir/file.
    host.resolvePath = [&root](const QString &windowsPath) {
        QString p = windowsPath;
        p.replace(QLatin1Char('\\'), QLatin1Char('/'));
        if (p.size() >= 2 && p.at(1) == QLatin1Char(':'))
            p = p.left(1).toUpper() + p.mid(2);
        return root.path() + QLatin1Char('/') + p;
    };
    QDir(root.path()).mkpath(QStringLiteral("C"));
    host.debugOutput = [&output](const QString &line) { output << line; };
    host.messageBox = std::make_shared<RecordingMessageBox>(output, want.msgBoxAnswer);
    host.now = [] { return 46349.378472222222; }; // 11/23/2026 9:05:00 AM
    MacroEngine engine(host);

    const MacroResult loaded = engine.load(text);
    if (want.compileCode) {
        EXPECT_FALSE(loaded.ok);
        EXPECT_EQ(loaded.runCode, want.compileCode) << loaded.message.toStdString();
        EXPECT_EQ(loaded.line, want.compileLine) << loaded.message.toStdString();
        if (want.compileColumn) {
            EXPECT_EQ(loaded.column, want.compileColumn) << loaded.message.toStdString();
        }
        return;
    }
    ASSERT_TRUE(loaded.ok) << "line " << loaded.line << " col " << loaded.column << ": " << loaded.message.toStdString();
    const MacroResult ran = engine.run(QStringLiteral("McMacro1"), QStringLiteral("main"));
    if (want.errorNumber) {
        EXPECT_FALSE(ran.ok);
        EXPECT_EQ(ran.errorNumber, want.errorNumber) << ran.message.toStdString();
        EXPECT_EQ(ran.line, want.errorLine) << ran.message.toStdString();
        // The run-time error window is the last thing shown.
        ASSERT_FALSE(output.isEmpty());
        EXPECT_TRUE(output.last().startsWith(QStringLiteral("msgbox[Mecadra]: Run-time error '%1'").arg(want.errorNumber)));
        output.removeLast();
    } else {
        EXPECT_TRUE(ran.ok) << "error " << ran.errorNumber << " line " << ran.line << ": " << ran.message.toStdString();
    }
    EXPECT_EQ(output.join(QLatin1Char('\n')).toStdString(), want.output.join(QLatin1Char('\n')).toStdString());
}

INSTANTIATE_TEST_SUITE_P(Scripts, GoldenTest, ::testing::ValuesIn([] { const QStringList f = goldenFiles(); return std::vector<QString>(f.begin(), f.end()); }()),
                         [](const ::testing::TestParamInfo<QString> &info) {
                             QString name = info.param;
                             name.chop(4);
                             name.replace(QRegularExpression(QStringLiteral("[^A-Za-z0-9]")), QStringLiteral("_"));
                             return name.toStdString();
                         });

} // namespace
} // namespace cadsim

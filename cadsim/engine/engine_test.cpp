#include "cadsim/engine/lexer.h"
#include "cadsim/engine/likematcher.h"
#include "cadsim/engine/macroengine.h"
#include "cadsim/engine/scriptobject.h"

#include <QTemporaryDir>
#include <QFile>

#include <gtest/gtest.h>

namespace cadsim {
namespace {

// ---- values -------------------------------------------------------------------------------

TEST(ScriptValueTest, ConversionsFollowVbaRules)
{
    // Integer conversions round halves to even.
    EXPECT_EQ(ScriptValue::fromDouble(2.5).toInteger(), 2);
    EXPECT_EQ(ScriptValue::fromDouble(3.5).toInteger(), 4);
    EXPECT_EQ(ScriptValue::fromDouble(-2.5).toLong(), -2);
    EXPECT_EQ(ScriptValue::fromString(QStringLiteral(" 42 ")).toLong(), 42);
    EXPECT_EQ(ScriptValue::fromString(QStringLiteral("&HFF")).toLong(), 255);
    EXPECT_TRUE(ScriptValue::fromString(QStringLiteral("true")).toBool());
    EXPECT_DOUBLE_EQ(ScriptValue().toDouble(), 0);
    EXPECT_EQ(ScriptValue().toString(), QString());
    EXPECT_EQ(ScriptValue::fromBool(true).toLong(), -1);

    try {
        ScriptValue::fromLong(40000).toInteger();
        FAIL() << "no overflow";
    } catch (const ScriptError &e) {
        EXPECT_EQ(e.number(), 6);
    }
    try {
        ScriptValue::fromString(QStringLiteral("12abc")).toDouble();
        FAIL() << "no type mismatch";
    } catch (const ScriptError &e) {
        EXPECT_EQ(e.number(), 13);
    }
    try {
        ScriptValue::null().toString();
        FAIL() << "Null converted";
    } catch (const ScriptError &e) {
        EXPECT_EQ(e.number(), 94);
    }
}

TEST(ScriptValueTest, TextOfNumbersAndDates)
{
    EXPECT_EQ(ScriptValue::fromDouble(0.5).toString(), QStringLiteral("0.5"));
    EXPECT_EQ(ScriptValue::fromDouble(1e20).toString(), QStringLiteral("1E+20"));
    EXPECT_EQ(ScriptValue::fromDouble(1.5e-7).toString(), QStringLiteral("1.5E-07"));
    EXPECT_EQ(ScriptValue::fromDouble(123456.0).toString(), QStringLiteral("123456"));
    EXPECT_EQ(formatOleDate(oleDateFromParts(2026, 1, 2, 13, 4, 5)), QStringLiteral("1/2/2026 1:04:05 PM"));
    EXPECT_EQ(formatOleDate(oleDateFromParts(2026, 1, 2)), QStringLiteral("1/2/2026"));
    EXPECT_EQ(formatOleDate(oleDateFromParts(1899, 12, 30, 0, 30, 0)), QStringLiteral("12:30:00 AM"));
}

TEST(ScriptValueTest, ArraysCopyOnCopiedAndCheckBounds)
{
    auto a = ScriptArray::create({{1, 2}, {0, 2}});
    a->at({2, 1}) = ScriptValue::fromLong(7);
    EXPECT_EQ(a->items[4].toLong(), 7); // row-major: (2-1)*3 + 1
    const ScriptValue v = ScriptValue::fromArray(a);
    const ScriptValue copy = v.copied();
    copy.array()->at({2, 1}) = ScriptValue::fromLong(8);
    EXPECT_EQ(a->at({2, 1}).toLong(), 7);
    EXPECT_THROW(a->at({0, 0}), ScriptError);
    EXPECT_THROW(a->at({1}), ScriptError);
}

// ---- Like and code page -------------------------------------------------------------------

TEST(LikeTest, ClassesRangesAndCase)
{
    EXPECT_TRUE(likeMatch(QStringLiteral("Sheet3"), QStringLiteral("Sheet[1-3]"), false));
    EXPECT_FALSE(likeMatch(QStringLiteral("Sheet4"), QStringLiteral("Sheet[1-3]"), false));
    EXPECT_TRUE(likeMatch(QStringLiteral("x-y"), QStringLiteral("x[-]y"), false));
    EXPECT_TRUE(likeMatch(QStringLiteral("ABC"), QStringLiteral("a*c"), true));
    EXPECT_FALSE(likeMatch(QStringLiteral("ABC"), QStringLiteral("a*c"), false));
    EXPECT_TRUE(likeMatch(QStringLiteral("a?b"), QStringLiteral("a[?]b"), false));
    EXPECT_THROW(likeMatch(QStringLiteral("a"), QStringLiteral("[z-a]"), false), ScriptError);
}

TEST(LikeTest, ManyStarsStayLinear)
{
    // Backtracking matchers take exponential time on this; the table walk does not.
    const QString text(2000, QLatin1Char('a'));
    EXPECT_FALSE(likeMatch(text, QStringLiteral("*a*a*a*a*a*a*a*a*a*a*a*b"), false));
    EXPECT_TRUE(likeMatch(text + QLatin1Char('b'), QStringLiteral("*a*a*a*a*a*a*a*a*a*a*a*b"), false));
}

// ---- lexer and syntax check ---------------------------------------------------------------

TEST(LexerTest, ContinuationsKeepPositionsAndDirectivesChooseBranches)
{
    Lexer lexer(QStringLiteral("#If Win64 And Not Mac Then\r\nx = 1 + _\r\n    &H10\r\n#Else\r\ny = 2\r\n#End If\r\n"));
    const std::vector<Token> tokens = lexer.tokenize();
    ASSERT_GE(tokens.size(), 6u);
    EXPECT_TRUE(tokens[0].isWord("x"));
    EXPECT_EQ(tokens[0].pos.line, 2);
    EXPECT_EQ(tokens[4].kind, TokenKind::Number);
    EXPECT_EQ(tokens[4].number, 16);
    EXPECT_EQ(tokens[4].pos.line, 3);
    EXPECT_EQ(tokens[4].pos.column, 5);
    EXPECT_TRUE(tokens[5].is(TokenKind::Newline)); // one statement; the #Else branch is gone
    for (const Token &t : tokens)
        EXPECT_FALSE(t.isWord("y"));
}

TEST(CheckMacroTest, ReportsFirstSyntaxErrorWithLineAndColumn)
{
    EXPECT_TRUE(MacroEngine::checkMacro(QStringLiteral("Sub main()\r\n  Debug.Print Len(\"a\")\r\nEnd Sub\r\n")).ok);

    const MacroResult bad = checkMacro(QStringLiteral("Sub main()\r\n  x = (1 + \r\nEnd Sub\r\n"));
    EXPECT_FALSE(bad.ok);
    EXPECT_EQ(bad.line, 2);
    EXPECT_EQ(bad.column, 12);
    EXPECT_EQ(bad.message, QStringLiteral("Expected: expression"));

    const MacroResult unterminated = MacroEngine::checkMacro(QStringLiteral("Sub main()\n  s = \"abc\nEnd Sub\n"));
    EXPECT_FALSE(unterminated.ok);
    EXPECT_EQ(unterminated.message, QStringLiteral("Unterminated string"));
    EXPECT_EQ(unterminated.line, 2);
    EXPECT_EQ(unterminated.column, 7); // the opening quote

    const MacroResult noEnd = MacroEngine::checkMacro(QStringLiteral("Sub main()\n  Do\n  x = 1\nEnd Sub\n"));
    EXPECT_FALSE(noEnd.ok);
    EXPECT_EQ(noEnd.line, 2);
    EXPECT_EQ(noEnd.message, QStringLiteral("Do without Loop"));

    const MacroResult badDirective = MacroEngine::checkMacro(QStringLiteral("#If VBA7 Then\nSub main()\nEnd Sub\n"));
    EXPECT_FALSE(badDirective.ok);
}

TEST(CheckMacroTest, ComplainsAboutNamesAsALoadDoes)
{
    // Under Option Explicit an undeclared name stops the check where it stands.
    const MacroResult undeclared = MacroEngine::checkMacro(
        QStringLiteral("Option Explicit\nSub main()\n  Dim a As Long\n  a = 1\n  total = a + 1\nEnd Sub\n"));
    EXPECT_FALSE(undeclared.ok);
    EXPECT_EQ(undeclared.message, QStringLiteral("Variable not defined"));
    EXPECT_EQ(undeclared.line, 5);
    EXPECT_EQ(undeclared.column, 3);
    const MacroResult unknownCall = MacroEngine::checkMacro(QStringLiteral("Sub main()\n  x = 1\n  Undefined x\nEnd Sub\n"));
    EXPECT_EQ(unknownCall.runCode, RunCode::SubOrFunctionExpected);
    EXPECT_EQ(unknownCall.line, 3);
    // The stand-in's application object and constants are known without a host.
    EXPECT_TRUE(MacroEngine::checkMacro(QStringLiteral("Option Explicit\nSub main()\n  Debug.Print Application Is Nothing\nEnd Sub\n")).ok);
}

TEST(CheckMacroTest, DeepNestingIsAnErrorNotACrash)
{
    const QString parens = QStringLiteral("Sub main()\n x = ") + QString(100000, QLatin1Char('(')) + QStringLiteral("1\nEnd Sub\n");
    EXPECT_EQ(MacroEngine::checkMacro(parens).message, QStringLiteral("Expression too complex"));
    QString ifs = QStringLiteral("Sub main()\n");
    for (int i = 0; i < 5000; ++i)
        ifs += QStringLiteral("If 1 Then\n");
    EXPECT_EQ(MacroEngine::checkMacro(ifs).message, QStringLiteral("Expression too complex"));
    const QString nots = QStringLiteral("Sub main()\n x = ") + QStringLiteral("Not -").repeated(50000) + QStringLiteral("1\nEnd Sub\n");
    EXPECT_FALSE(MacroEngine::checkMacro(nots).ok);
    // A long chain of operators builds a deep tree as surely as parentheses do.
    for (const char *op : {" + ", " & ", " And ", " = ", " ^ "}) {
        const QString chain = QStringLiteral("Sub main()\n x = 1") + (QLatin1String(op) + QStringLiteral("1")).repeated(175000)
                              + QStringLiteral("\nEnd Sub\n");
        const MacroResult r = MacroEngine::checkMacro(chain);
        EXPECT_EQ(r.message, QStringLiteral("Expression too complex")) << op;
        EXPECT_EQ(r.line, 2) << op;
    }
}

// ---- running ------------------------------------------------------------------------------

class ScriptedMessageBox final : public MessageBoxHandler {
public:
    int showMessage(const QString &title, const QString &prompt, int buttons) override
    {
        shown << title + QLatin1Char('|') + prompt + QLatin1Char('|') + QString::number(buttons);
        return 2; // vbCancel
    }
    QStringList shown;
};

struct EngineFixture : ::testing::Test {
    EngineFixture()
    {
        host.debugOutput = [this](const QString &line) { output << line; };
        host.messageBox = box;
    }
    MacroResult runText(const QString &text, const QString &procedure = QStringLiteral("main"))
    {
        MacroEngine engine(host);
        const MacroResult loaded = engine.load(text);
        if (!loaded.ok)
            return loaded;
        return engine.run(QStringLiteral("McMacro1"), procedure);
    }
    EngineHost host;
    std::shared_ptr<ScriptedMessageBox> box = std::make_shared<ScriptedMessageBox>();
    QStringList output;
};

TEST_F(EngineFixture, RunFindsModuleAndProcedure)
{
    const QString text = QStringLiteral("Sub main()\nDebug.Print \"hi\"\nEnd Sub\nSub needsArg(a)\nEnd Sub\n");
    MacroEngine engine(host);
    ASSERT_TRUE(engine.load(text).ok);
    EXPECT_EQ(engine.run(QStringLiteral("McMacro2"), QStringLiteral("main")).runCode, RunCode::InvalidProcedureName);
    EXPECT_EQ(engine.run(QStringLiteral("mcmacro1"), QStringLiteral("nothere")).runCode, RunCode::InvalidProcedureName);
    EXPECT_EQ(engine.run(QStringLiteral("McMacro1"), QStringLiteral("needsArg")).runCode, RunCode::InvalidParameterCount);
    EXPECT_TRUE(engine.run(QStringLiteral("McMacro1"), QStringLiteral("MAIN")).ok);
    EXPECT_EQ(output, QStringList{QStringLiteral("hi")});
}

TEST_F(EngineFixture, CompileFailureIsReportedByEveryRun)
{
    MacroEngine engine(host);
    const MacroResult loaded = engine.load(QStringLiteral("Sub main()\n  Foo 1\nEnd Sub\n"));
    EXPECT_FALSE(loaded.ok);
    EXPECT_EQ(loaded.runCode, RunCode::SubOrFunctionExpected);
    const MacroResult ran = engine.run(QStringLiteral("McMacro1"), QStringLiteral("main"));
    EXPECT_FALSE(ran.ok);
    EXPECT_EQ(ran.runCode, RunCode::SubOrFunctionExpected);
    EXPECT_EQ(ran.line, 2);
    EXPECT_TRUE(box->shown.isEmpty()); // compile errors show no window
}

TEST_F(EngineFixture, UnhandledErrorShowsRunTimeWindowAndMapsCode)
{
    const MacroResult r = runText(QStringLiteral("Sub main()\n  Dim a(1)\n  a(2) = 0\nEnd Sub\n"));
    EXPECT_FALSE(r.ok);
    EXPECT_EQ(r.errorNumber, 9);
    EXPECT_EQ(r.runCode, RunCode::InvalidIndex);
    EXPECT_EQ(r.line, 3);
    ASSERT_EQ(box->shown.size(), 1);
    EXPECT_EQ(box->shown[0], QStringLiteral("Mecadra|Run-time error '9':\n\nSubscript out of range|0"));

    EXPECT_EQ(runCodeForError(13), RunCode::TypeMismatch);
    EXPECT_EQ(runCodeForError(6), RunCode::ValueOverflow);
    EXPECT_EQ(runCodeForError(70), RunCode::PermissionDenied);
    EXPECT_EQ(runCodeForError(1234), RunCode::UnhandledException);
}

TEST_F(EngineFixture, EndStopsWithoutErrorAndModuleStateIsFreshPerRun)
{
    const QString text = QStringLiteral("Dim runs\nSub main()\n  runs = runs + 1\n  Debug.Print runs\n  End\n  Debug.Print \"no\"\nEnd Sub\n");
    MacroEngine engine(host);
    ASSERT_TRUE(engine.load(text).ok);
    EXPECT_TRUE(engine.run(QStringLiteral("McMacro1"), QStringLiteral("main")).ok);
    EXPECT_TRUE(engine.run(QStringLiteral("McMacro1"), QStringLiteral("main")).ok);
    EXPECT_EQ(output, (QStringList{QStringLiteral(" 1 "), QStringLiteral(" 1 ")}));
}

TEST_F(EngineFixture, MsgBoxTitleButtonsAndAnswer)
{
    ASSERT_TRUE(runText(QStringLiteral("Sub main()\n  Debug.Print MsgBox(\"Go?\", vbOKCancel)\nEnd Sub\n")).ok);
    EXPECT_EQ(box->shown, QStringList{QStringLiteral("Mecadra|Go?|1")});
    EXPECT_EQ(output, QStringList{QStringLiteral(" 2 ")});
}

TEST_F(EngineFixture, LoadFileDecodesWindows1252)
{
    QTemporaryDir dir;
    QFile f(dir.filePath(QStringLiteral("m.mcb")));
    ASSERT_TRUE(f.open(QIODevice::WriteOnly));
    f.write("Sub main()\r\n  Debug.Print \"\x80\" & AscW(\"\x80\")\r\nEnd Sub\r\n");
    f.close();
    MacroEngine engine(host);
    ASSERT_TRUE(engine.loadFile(f.fileName()).ok);
    ASSERT_TRUE(engine.run(QStringLiteral("McMacro1"), QStringLiteral("main")).ok);
    EXPECT_EQ(output, QStringList{QStringLiteral("\u20AC8364")});
    EXPECT_EQ(MacroEngine(host).loadFile(dir.filePath(QStringLiteral("none.mcb"))).runCode, RunCode::FileOpenFailed);
}

// An automation object that records what macros ask of it.
class FakeDoc final : public ScriptObject {
public:
    QString typeName() const override { return QStringLiteral("ModelDoc2"); }
    ScriptValue invoke(const QString &member, CallKind kind, ScriptArgs &args) override
    {
        const QString m = member.toLower();
        calls << QStringLiteral("%1:%2:%3").arg(m).arg(static_cast<int>(kind)).arg(args.size());
        if (m == QLatin1String("gettitle"))
            return ScriptValue::fromString(title);
        if (m == QLatin1String("title") && kind == CallKind::Let) {
            title = args.back()->toString();
            return {};
        }
        if (m == QLatin1String("saveas")) {
            // The last two arguments are ByRef results.
            *args[args.size() - 2] = ScriptValue::fromLong(256);
            *args[args.size() - 1] = ScriptValue::fromLong(512);
            return ScriptValue::fromBool(false);
        }
        if (m == QLatin1String("child") && kind == CallKind::Set) {
            child = args.back()->object();
            return {};
        }
        if (m == QLatin1String("child"))
            return ScriptValue::fromObject(child);
        throw ScriptError(ErrNo::NoSuchMember);
    }
    std::vector<ScriptValue> enumerate() override
    {
        return {ScriptValue::fromString(QStringLiteral("Sheet1")), ScriptValue::fromString(QStringLiteral("Sheet2"))};
    }
    QString title = QStringLiteral("part1.prt");
    std::shared_ptr<ScriptObject> child;
    QStringList calls;
};

TEST_F(EngineFixture, ObjectsGetByRefResultsKindsAndCollections)
{
    auto doc = std::make_shared<FakeDoc>();
    host.globals.insert(QStringLiteral("doc"), ScriptValue::fromObject(doc));
    const QString text = QStringLiteral(
        "Option Explicit\n"
        "Sub main()\n"
        "  Dim errors As Long, warnings As Long, ok\n"
        "  ok = doc.SaveAs(\"a.pdf\", 0, 1, Nothing, errors, warnings)\n"
        "  Debug.Print ok & \" \" & errors & \" \" & warnings\n"
        "  With doc\n"
        "    .Title = \"renamed\"\n"
        "    Debug.Print .GetTitle\n"
        "  End With\n"
        "  Set doc.Child = doc\n"
        "  Debug.Print doc.Child Is doc, doc.Child Is Nothing\n"
        "  Dim s\n"
        "  For Each s In doc\n"
        "    Debug.Print s\n"
        "  Next\n"
        "  On Error Resume Next\n"
        "  doc.Unknown 1\n"
        "  Debug.Print Err.Number & \" \" & Err.Description\n"
        "End Sub\n");
    const MacroResult r = runText(text);
    ASSERT_TRUE(r.ok) << r.message.toStdString() << " line " << r.line;
    EXPECT_EQ(output, (QStringList{QStringLiteral("False 256 512"), QStringLiteral("renamed"), QStringLiteral("True          False"),
                                   QStringLiteral("Sheet1"), QStringLiteral("Sheet2"),
                                   QStringLiteral("438 Object doesn't support this property or method")}));
    // Get for values, Let for assignment, Set for objects, Call for statements.
    EXPECT_EQ(doc->calls.value(0), QStringLiteral("saveas:1:6"));
    EXPECT_EQ(doc->calls.value(1), QStringLiteral("title:2:1"));
    EXPECT_EQ(doc->calls.value(3), QStringLiteral("child:3:1"));
    EXPECT_EQ(doc->calls.last(), QStringLiteral("unknown:0:1"));
    doc->child.reset(); // the macro made the document its own child
}

// An object whose method names its parameters, and records the arguments it gets.
class NamedParameters final : public ScriptObject {
public:
    QString typeName() const override { return QStringLiteral("Exporter"); }
    ScriptValue invoke(const QString &, CallKind, ScriptArgs &args) override
    {
        QStringList seen;
        for (const ScriptValue *a : args)
            seen << (a->isMissing() ? QStringLiteral("-") : a->toString());
        calls << seen.join(QLatin1Char(','));
        return {};
    }
    const QStringList &parameterNames(const QString &member) const override
    {
        static const QStringList names = {QStringLiteral("path"), QStringLiteral("format"), QStringLiteral("quiet")};
        static const QStringList none;
        return member.compare(QLatin1String("export"), Qt::CaseInsensitive) == 0 ? names : none;
    }
    QStringList calls;
};

TEST_F(EngineFixture, NamedArgumentsOfObjectsGoWhereTheMemberSays)
{
    auto exporter = std::make_shared<NamedParameters>();
    host.globals.insert(QStringLiteral("exporter"), ScriptValue::fromObject(exporter));
    const QString text = QStringLiteral(
        "Sub main()\n"
        "  exporter.Export Quiet:=True, Path:=\"a.pdf\"\n"
        "  exporter.Export \"b.pdf\", Quiet:=False\n"
        "  exporter.Export \"c.pdf\", 2\n"
        "  exporter.Other Quiet:=1, Path:=2\n"
        "  On Error Resume Next\n"
        "  exporter.Export Colour:=1\n"
        "  Debug.Print Err.Number\n"
        "  Err.Clear\n"
        "  exporter.Export \"d.pdf\", Path:=\"e.pdf\"\n"
        "  Debug.Print Err.Number\n"
        "End Sub\n");
    const MacroResult r = runText(text);
    ASSERT_TRUE(r.ok) << r.message.toStdString() << " line " << r.line;
    // Members without parameter names take named arguments in the order written, as before.
    EXPECT_EQ(exporter->calls, (QStringList{QStringLiteral("a.pdf,-,True"), QStringLiteral("b.pdf,-,False"),
                                            QStringLiteral("c.pdf,2"), QStringLiteral("1,2")}));
    EXPECT_EQ(output, (QStringList{QStringLiteral(" 448 "), QStringLiteral(" 448 ")}));
}

TEST_F(EngineFixture, NothingAndMissingApplicationFailAtRunTime)
{
    const MacroResult r = runText(QStringLiteral("Dim o As Object\nSub main()\n  Debug.Print o.Name\nEnd Sub\n"));
    EXPECT_EQ(r.errorNumber, 91);
    EXPECT_EQ(r.line, 3);
    // "Application" compiles without a host object and fails when used.
    const MacroResult app = runText(QStringLiteral("Sub main()\n  Set x = Application.Cadrix\nEnd Sub\n"));
    EXPECT_FALSE(app.ok);
    EXPECT_EQ(app.line, 2);
}

TEST_F(EngineFixture, DeepRecursionIsAnErrorNotACrash)
{
    const MacroResult r = runText(QStringLiteral("Sub f(n)\n  f n + 1\nEnd Sub\nSub main()\n  f 0\nEnd Sub\n"));
    EXPECT_FALSE(r.ok);
    EXPECT_EQ(r.errorNumber, 28);
    EXPECT_EQ(r.runCode, RunCode::OutOfMemory);
}

TEST_F(EngineFixture, DeepValuesAndDeepCallsDoNotExhaustTheStack)
{
    // Each call nests a deep expression: the calls run out of stack long before 1000 of them.
    const QString parens = QString(150, QLatin1Char('('));
    const MacroResult calls = runText(QStringLiteral("Function f(n)\n  f = ") + parens + QStringLiteral("f(n + 1)")
                                      + QString(150, QLatin1Char(')')) + QStringLiteral("\nEnd Function\nSub main()\n  x = f(0)\nEnd Sub\n"));
    EXPECT_EQ(calls.errorNumber, 28);
    // Arrays nested in arrays: copying stops at a depth no data needs.
    const MacroResult arrays = runText(QStringLiteral(
        "Sub main()\n  a = Array()\n  For i = 1 To 5000\n    a = Array(a)\n  Next\nEnd Sub\n"));
    EXPECT_EQ(arrays.errorNumber, 28);
    EXPECT_EQ(arrays.line, 4);
    // A chain of 300,000 collections, each holding the one before, is freed without recursion.
    const MacroResult chain = runText(QStringLiteral(
        "Sub main()\n  Dim c As Object, d As Object\n  Set c = New Collection\n  For i = 1 To 300000\n"
        "    Set d = New Collection\n    d.Add c\n    Set c = d\n  Next\n  Debug.Print c.Count\nEnd Sub\n"));
    EXPECT_TRUE(chain.ok) << chain.message.toStdString();
    EXPECT_EQ(output, QStringList{QStringLiteral(" 1 ")});
}

TEST_F(EngineFixture, HugeStringsFailTheMacroNotTheProcess)
{
    const MacroResult r = runText(QStringLiteral("Sub main()\n  Dim s\n  s = Space(2000000000)\nEnd Sub\n"));
    EXPECT_EQ(r.errorNumber, 14);
    EXPECT_EQ(r.runCode, RunCode::OutOfMemory);
    // Doubling a text until it is too long stops at the limit.
    const MacroResult doubling = runText(QStringLiteral("Sub main()\n  Dim s: s = \"x\"\n  Do\n    s = s & s\n  Loop\nEnd Sub\n"));
    EXPECT_EQ(doubling.errorNumber, 14);
    EXPECT_EQ(doubling.line, 4);
    const MacroResult array = runText(QStringLiteral("Sub main()\n  ReDim a(100000, 100000, 100000)\nEnd Sub\n"));
    EXPECT_EQ(array.errorNumber, 7);
}

TEST_F(EngineFixture, CadConstantsAreDefaultsHostConstantsWin)
{
    host.constants.insert(QStringLiteral("mcDocPART"), ScriptValue::fromLong(42));
    ASSERT_TRUE(runText(QStringLiteral("Sub main()\n  Debug.Print mcDocPART & \" \" & mcDocDRAWING\nEnd Sub\n")).ok);
    EXPECT_EQ(output, QStringList{QStringLiteral("42 3")});
}

TEST_F(EngineFixture, DeclaredTypesConvertOnAssignment)
{
    const MacroResult r = runText(QStringLiteral(
        "Sub main()\n"
        "  Dim i As Integer, l As Long, s As String, b As Boolean, d As Double\n"
        "  i = 2.5: l = \"7\": s = 12: b = \"False\": d = \"0.5\"\n"
        "  Debug.Print TypeName(i) & i & TypeName(l) & l & TypeName(s) & s & TypeName(b) & b & TypeName(d) & d\n"
        "  Dim v\n"
        "  v = 32767\n"
        "  v = v + 1\n"
        "  Debug.Print TypeName(v) & v\n"
        "  i = 32767\n"
        "  i = i + 1\n"
        "End Sub\n"));
    EXPECT_EQ(output, (QStringList{QStringLiteral("Integer2Long7String12BooleanFalseDouble0.5"), QStringLiteral("Long32768")}));
    EXPECT_EQ(r.errorNumber, 6); // a typed Integer does not widen
    EXPECT_EQ(r.line, 10);
}

TEST_F(EngineFixture, SetAndLetAreChecked)
{
    auto doc = std::make_shared<FakeDoc>();
    host.globals.insert(QStringLiteral("doc"), ScriptValue::fromObject(doc));
    EXPECT_EQ(runText(QStringLiteral("Sub main()\n  Dim o\n  Set o = 5\nEnd Sub\n")).errorNumber, 424);
    EXPECT_EQ(runText(QStringLiteral("Sub main()\n  Dim o As Object\n  o = doc\nEnd Sub\n")).errorNumber, 91);
    // Let of an object asks for its default value, which this object lacks.
    EXPECT_EQ(runText(QStringLiteral("Sub main()\n  Dim v\n  v = doc\nEnd Sub\n")).errorNumber, 438);
    const MacroResult constant = runText(QStringLiteral("Const K = 1\nSub main()\n  K = 2\nEnd Sub\n"));
    EXPECT_FALSE(constant.ok);
    EXPECT_EQ(constant.line, 3);
}

TEST_F(EngineFixture, ByRefArgumentsMustMatchTypedParameters)
{
    const QString text = QStringLiteral(
        "Sub SetLong(ByRef n As Long)\n  n = 5\nEnd Sub\n"
        "Sub main()\n"
        "  Dim l As Long, i As Integer\n"
        "  SetLong l\n"
        "  Debug.Print l\n"
        "  SetLong i + 0\n"
        "  SetLong i\n"
        "End Sub\n");
    const MacroResult r = runText(text);
    EXPECT_EQ(output, QStringList{QStringLiteral(" 5 ")});
    EXPECT_EQ(r.errorNumber, 13);
    EXPECT_EQ(r.message, QStringLiteral("ByRef argument type mismatch"));
    EXPECT_EQ(r.line, 9);
}

TEST_F(EngineFixture, OptionExplicitCoversLoopVariablesAndModuleScope)
{
    MacroEngine engine(host);
    const MacroResult loop = engine.load(QStringLiteral("Option Explicit\nSub main()\n  For k = 1 To 2\n  Next\nEnd Sub\n"));
    EXPECT_FALSE(loop.ok);
    EXPECT_EQ(loop.line, 3);
    EXPECT_EQ(loop.message, QStringLiteral("Variable not defined"));
    // Module variables, constants, local constants and ReDim'd arrays are declared.
    EXPECT_TRUE(engine.load(QStringLiteral("Option Explicit\nPrivate m As Long\nConst C = 2\nSub main()\n"
                                           "  Const L = 3\n  ReDim a(1)\n  m = C + L + UBound(a)\nEnd Sub\n")).ok);
    // A variable declared in another procedure is not visible.
    const MacroResult other = engine.load(QStringLiteral("Option Explicit\nSub a()\n  Dim x\nEnd Sub\nSub main()\n  x = 1\nEnd Sub\n"));
    EXPECT_FALSE(other.ok);
    EXPECT_EQ(other.line, 6);
}

} // namespace
} // namespace cadsim

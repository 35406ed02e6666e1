#include "cadsim/engine/fso.h"
#include "cadsim/engine/macroengine.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace cadsim {
namespace {

TEST(FsoPathTest, WindowsPathPieces)
{
    EXPECT_EQ(FileSystemObject::fileName(QStringLiteral("C:\\a\\b\\")), QStringLiteral("b"));
    EXPECT_EQ(FileSystemObject::fileName(QStringLiteral("C:")), QString());
    EXPECT_EQ(FileSystemObject::fileName(QStringLiteral("C:/a/x.pdf")), QStringLiteral("x.pdf"));
    EXPECT_EQ(FileSystemObject::parentFolder(QStringLiteral("C:\\x")), QStringLiteral("C:\\"));
    EXPECT_EQ(FileSystemObject::parentFolder(QStringLiteral("C:\\a\\b\\")), QStringLiteral("C:\\a"));
    EXPECT_EQ(FileSystemObject::parentFolder(QStringLiteral("name")), QString());
    EXPECT_EQ(FileSystemObject::parentFolder(QStringLiteral("C:\\")), QString());
    EXPECT_EQ(FileSystemObject::parentFolder(QStringLiteral("\\\\srv\\share\\f")), QStringLiteral("\\\\srv\\share"));
    EXPECT_EQ(FileSystemObject::extension(QStringLiteral("C:\\a.b\\c")), QString());
    EXPECT_EQ(FileSystemObject::baseName(QStringLiteral("C:\\a.tar.gz")), QStringLiteral("a.tar"));
    EXPECT_EQ(FileSystemObject::buildPath(QStringLiteral("C:\\"), QStringLiteral("x")), QStringLiteral("C:\\x"));
    EXPECT_EQ(FileSystemObject::buildPath(QStringLiteral("C:\\a"), QStringLiteral("\\x")), QStringLiteral("C:\\a\\x"));
    EXPECT_EQ(FileSystemObject::buildPath(QStringLiteral("C:\\a"), QStringLiteral("x")), QStringLiteral("C:\\a\\x"));
}

// Runs a macro whose "C:\" is a temporary folder and collects its Debug.Print lines.
struct FileMacro : ::testing::Test {
    FileMacro()
    {
        host.resolvePath = [this](const QString &windowsPath) {
            resolved << windowsPath;
            QString p = windowsPath.mid(2);
            p.replace(QLatin1Char('\\'), QLatin1Char('/'));
            return root.path() + p;
        };
        host.debugOutput = [this](const QString &line) { output << line; };
    }
    MacroResult run(const QString &body)
    {
        MacroEngine engine(host);
        const MacroResult loaded = engine.load(QStringLiteral("Sub main()\nDim fso: Set fso = CreateObject(\"Scripting.FileSystemObject\")\n") + body
                                               + QStringLiteral("\nEnd Sub\n"));
        if (!loaded.ok)
            return loaded;
        return engine.run(QStringLiteral("McMacro1"), QStringLiteral("main"));
    }
    QByteArray read(const QString &relative) const
    {
        QFile f(root.filePath(relative));
        return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray("<missing>");
    }
    QTemporaryDir root;
    EngineHost host;
    QStringList output;
    QStringList resolved;
};

TEST_F(FileMacro, TextStreamsWriteWindowsTextAndAppend)
{
    const MacroResult r = run(QStringLiteral(
        "Dim t\n"
        "Set t = fso.CreateTextFile(\"C:\\t.txt\")\n"
        "t.WriteLine \"caf\" & ChrW(233)\n"
        "t.Close\n"
        "Set t = fso.OpenTextFile(\"C:\\t.txt\", 8)\n"
        "t.Write \"end\"\n"
        "t.Close\n"
        "Debug.Print fso.OpenTextFile(\"C:\\t.txt\").ReadAll\n"));
    ASSERT_TRUE(r.ok) << r.message.toStdString();
    EXPECT_EQ(read(QStringLiteral("t.txt")), QByteArray("caf\xE9\r\nend"));
    EXPECT_EQ(output, QStringList{QStringLiteral("caf\u00E9\r\nend")});
    EXPECT_TRUE(resolved.contains(QStringLiteral("C:\\t.txt"))); // every access went through the drive map
}

TEST_F(FileMacro, RefusalsRaiseTheirErrorNumbers)
{
    QFile(root.filePath(QStringLiteral("a.txt"))).open(QIODevice::WriteOnly);
    const MacroResult r = run(QStringLiteral(
        "On Error Resume Next\n"
        "fso.CreateTextFile \"C:\\a.txt\", False\n"
        "Debug.Print \"overwrite refused \" & Err.Number: Err.Clear\n"
        "fso.OpenTextFile \"C:\\none.txt\"\n"
        "Debug.Print \"missing \" & Err.Number: Err.Clear\n"
        "fso.CopyFile \"C:\\a.txt\", \"C:\\a.txt\", False\n"
        "Debug.Print \"copy onto itself \" & Err.Number: Err.Clear\n"
        "fso.CreateFolder \"C:\\no\\such\"\n"
        "Debug.Print \"folder without parent \" & Err.Number: Err.Clear\n"
        "fso.DeleteFolder \"C:\\nofolder\"\n"
        "Debug.Print \"delete missing folder \" & Err.Number: Err.Clear\n"
        "fso.NoSuchMethod\n"
        "Debug.Print \"unknown member \" & Err.Number: Err.Clear\n"
        "fso.GetFile(\"C:\\none.txt\")\n"
        "Debug.Print \"get missing file \" & Err.Number\n"));
    ASSERT_TRUE(r.ok) << r.message.toStdString();
    EXPECT_EQ(output, (QStringList{QStringLiteral("overwrite refused 58"), QStringLiteral("missing 53"),
                                   QStringLiteral("copy onto itself 58"), QStringLiteral("folder without parent 76"),
                                   QStringLiteral("delete missing folder 76"), QStringLiteral("unknown member 438"),
                                   QStringLiteral("get missing file 53")}));
}

TEST_F(FileMacro, MoveCopyIntoFolderAndDeleteTree)
{
    QDir(root.path()).mkpath(QStringLiteral("src/deep"));
    QFile f(root.filePath(QStringLiteral("src/x.prt")));
    ASSERT_TRUE(f.open(QIODevice::WriteOnly));
    f.write("12345");
    f.close();
    const MacroResult r = run(QStringLiteral(
        "fso.CreateFolder \"C:\\dst\"\n"
        "fso.CopyFile \"C:\\src\\x.prt\", \"C:\\dst\\\"\n"
        "fso.MoveFile \"C:\\dst\\x.prt\", \"C:\\dst\\y.prt\"\n"
        "Debug.Print fso.GetFile(\"C:\\dst\\y.prt\").Size & \" \" & fso.GetFile(\"C:\\dst\\y.prt\").Name\n"
        "Debug.Print fso.GetFolder(\"C:\\src\").SubFolders.Count\n"
        "fso.DeleteFolder \"C:\\src\"\n"
        "Debug.Print fso.FolderExists(\"C:\\src\") & \" \" & fso.FileExists(\"C:\\dst\\x.prt\")\n"));
    ASSERT_TRUE(r.ok) << r.message.toStdString() << " line " << r.line;
    EXPECT_EQ(output, (QStringList{QStringLiteral("5 y.prt"), QStringLiteral(" 1 "), QStringLiteral("False False")}));
}

TEST_F(FileMacro, HolderFileProtocolOfTheConversionMacro)
{
    // A new output folder receives "~$holder", which is removed after the conversion; a folder
    // that existed already gets none.
    const QString macro = QStringLiteral(
        "Private Declare PtrSafe Function SHCreateDirectoryEx Lib \"shell32\" Alias \"SHCreateDirectoryExA\" "
        "(ByVal hwnd As LongPtr, ByVal pszPath As String, ByVal psa As Any) As Long\n"
        "Sub CreatePath(path)\n"
        "  If SHCreateDirectoryEx(0, path, 0) = 0 Then\n"
        "    Open path & \"~$holder\" For Append As #1\n"
        "    Close #1\n"
        "  End If\n"
        "End Sub\n"
        "Sub main()\n"
        "  Dim fso: Set fso = CreateObject(\"Scripting.FileSystemObject\")\n"
        "  CreatePath \"C:\\new\\out\\\"\n"
        "  CreatePath \"C:\\old\\\"\n"
        "  Debug.Print fso.FileExists(\"C:\\new\\out\\~$holder\") & \" \" & fso.FileExists(\"C:\\old\\~$holder\")\n"
        "  On Error Resume Next\n"
        "  If fso.FileExists(\"C:\\new\\out\\~$holder\") Then Kill \"C:\\new\\out\\~$holder\"\n"
        "  Debug.Print fso.FileExists(\"C:\\new\\out\\~$holder\")\n"
        "End Sub\n");
    QDir(root.path()).mkpath(QStringLiteral("old"));
    MacroEngine engine(host);
    ASSERT_TRUE(engine.load(macro).ok);
    const MacroResult r = engine.run(QStringLiteral("McMacro1"), QStringLiteral("main"));
    ASSERT_TRUE(r.ok) << r.message.toStdString() << " line " << r.line;
    EXPECT_EQ(output, (QStringList{QStringLiteral("True False"), QStringLiteral("False")}));
}

} // namespace
} // namespace cadsim

#pragma once

#include "cadsim/model/cadapplication.h"
#include "cadsim/model/exportrecords.h"
#include "cadsim/model/modelobserver.h"

#include <QFile>
#include <QImage>
#include <QProcess>
#include <QStringList>
#include <QTemporaryDir>

// Samples are reached as drive S:, a scratch folder as drive C:.
inline PathResolver testResolver(const QTemporaryDir &scratch)
{
    return makeDriveResolver({{QChar('S'), QStringLiteral(MCTASK_SAMPLES_DIR)}, {QChar('C'), scratch.path()}});
}

// Settings that keep export records in the scratch folder.
inline CadSettings testSettings(const QTemporaryDir &scratch)
{
    CadSettings settings;
    settings.exportRecordFolder = scratch.filePath(QStringLiteral("export-records"));
    return settings;
}

// What the export to a native path stated; empty when there was none.
inline QJsonObject exportRecord(const CadApplication &app, const QString &nativePath)
{
    return ExportRecords::read(app.exportRecordFolder(), nativePath);
}

// What a tool a user would open the file with prints (poppler's, file(1)),
// or a text starting "<failed" when it did not run through.
inline QString runTool(const QString &program, const QStringList &args)
{
    QProcess process;
    process.start(program, args);
    if (!process.waitForFinished(30000) || process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0)
        return QStringLiteral("<failed: %1 %2>").arg(program, QString::fromLocal8Bit(process.readAllStandardError()));
    return QString::fromUtf8(process.readAllStandardOutput());
}

inline QByteArray fileBytes(const QString &path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

// One page of a PDF as poppler renders it; null when it could not.
inline QImage pdfPageImage(const QString &pdf, int page, int dpi = 36)
{
    QTemporaryDir out;
    const QString prefix = out.filePath(QStringLiteral("page"));
    runTool(QStringLiteral("pdftoppm"), {QStringLiteral("-png"), QStringLiteral("-singlefile"), QStringLiteral("-r"),
                                         QString::number(dpi), QStringLiteral("-f"), QString::number(page),
                                         QStringLiteral("-l"), QString::number(page), pdf, prefix});
    return QImage(prefix + QStringLiteral(".png"));
}

// Writes every event down as "kind:title[:detail]".
class RecordingObserver final : public ModelObserver
{
public:
    explicit RecordingObserver(const PathResolver &resolver = {}) : m_resolver(resolver) {}
    void documentOpened(ModelDoc &doc) override { events << "opened:" + doc.title(); }
    void documentActivated(ModelDoc &doc) override { events << "activated:" + doc.title(); }
    void fileSaving(ModelDoc &doc, const QString &name) override
    {
        // Whether the bytes were already there when the event came.
        const bool exists = m_resolver && QFile::exists(m_resolver(name));
        events << "saving:" + doc.title() + ":" + name + (exists ? ":exists" : ":absent");
    }
    void documentDestroyed(ModelDoc &doc) override { events << "destroyed:" + doc.title(); }
    void printed(ModelDoc &doc, ModelView &view) override
    {
        events << "printed:" + doc.title() + (&view.document() == &doc ? QString() : QStringLiteral(":foreign view"));
    }

    QStringList events;

private:
    PathResolver m_resolver;
};

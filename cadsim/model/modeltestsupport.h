#pragma once

#include "cadsim/model/cadapplication.h"
#include "cadsim/model/exportrecords.h"
#include "cadsim/model/modelobserver.h"

#include <QFile>
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

#pragma once

#include <deque>

#include "cadsim/model/documentspec.h"
#include "cadsim/model/modeldoc.h"
#include "cadsim/model/modelfiles.h"
#include "cadsim/model/preferences.h"
#include "base/windowspath.h"

#include <QList>
#include <QProcessEnvironment>
#include <QString>
#include <QStringList>
#include <memory>
#include <vector>

class ModelObserver;

// A printer the stand-in offers; a non-empty failure makes every print on
// it fail with that message.
struct PrinterInfo
{
    QString name;
    QString failure;
    bool queue = false; // a queue of the machine's print system: jobs really print
};

struct CadSettings
{
    QList<PrinterInfo> printers;
    QString defaultPrinter; // empty: the first printer
    QString spoolFile;      // native path of the print spool
    QString revision = QStringLiteral("21.0.0");
    QString exportRecordFolder; // where what each export stated is kept; empty: nowhere

    // MCSIM_PRINTERS ("name;name=failure text;..."), MCSIM_DEFAULT_PRINTER
    // and MCSIM_REVISION, each when set; MCSIM_EXPORT_RECORDS, else the
    // stand-in's folder under the per-user home; MCSIM_SPOOL_FILE, else
    // "print-spool.jsonl" beside that folder.
    static CadSettings fromEnvironment(const QProcessEnvironment &env);
};

// The main frame of the application window.
struct Frame
{
    bool keepInvisible = false;
    std::int32_t window = 0; // its window handle, given by the process that shows it
};

// The stand-in's application object: the open documents, opening and
// closing them, preferences, printers and the error messages of prints.
// Not thread-safe: one thread uses it at a time.
class CadApplication final
{
public:
    explicit CadApplication(PathResolver resolver, CadSettings settings = {},
                            std::shared_ptr<ModelFiles> files = std::make_shared<DiskModelFiles>());
    ~CadApplication();
    CadApplication(const CadApplication &) = delete;
    CadApplication &operator=(const CadApplication &) = delete;

    // Opening and closing. Errors are type-library bits (mcFileNotFoundError...).
    std::unique_ptr<DocumentSpecification> getOpenDocSpec(const QString &fileName) const;
    ModelDocPtr openDoc7(DocumentSpecification &openRequest);
    ModelDocPtr openDoc6(const QString &fileName, std::int32_t type, std::int32_t options,
                         const QString &configuration, std::int32_t &errors, std::int32_t &warnings);
    ModelDocPtr loadFile4(const QString &fileName, const QString &argString, std::int32_t &errors);
    ModelDocPtr activateDoc2(const QString &name, bool silent, std::int32_t &errors);
    // By title, path or the file a document came from; false when none matches.
    bool closeDoc(const QString &name);
    void closeAllDocuments(bool includeUnsaved);

    ModelDocPtr activeDocument() const { return m_active; }
    const std::vector<ModelDocPtr> &documents() const { return m_documents; }
    ModelDocPtr findDocument(const QString &name) const;

    // Application state.
    QString revisionNumber() const { return m_settings.revision; }
    void setRevisionNumber(const QString &revision) { m_settings.revision = revision; }
    bool isVisible() const { return m_visible; }
    // Observers are told, so the process shows or hides its window.
    void setVisible(bool visible);
    bool backgroundMode() const { return m_backgroundMode; }
    void setBackgroundMode(bool on) { m_backgroundMode = on; }
    bool userControl() const { return m_userControl; }
    void setUserControl(bool on) { m_userControl = on; }
    Frame &frame() { return m_frame; }
    Preferences &preferences() { return m_preferences; }
    const Preferences &preferences() const { return m_preferences; }
    std::shared_ptr<ExportPdfData> exportFileData(std::int32_t type) const;

    // Printers and the spool.
    const QList<PrinterInfo> &printers() const { return m_settings.printers; }
    // A configured printer, else a queue of the machine's print system.
    void setPrinters(const QList<PrinterInfo> &printers) { m_settings.printers = printers; }
    const PrinterInfo *findPrinter(const QString &name) const;
    QString defaultPrinter() const;
    QString spoolFile() const { return m_settings.spoolFile; }
    QString exportRecordFolder() const { return m_settings.exportRecordFolder; }
    void setSpoolFile(const QString &nativePath) { m_settings.spoolFile = nativePath; }

    // Messages of the prints since the last call; reading them clears them.
    QStringList takeErrorMessages();
    void addErrorMessage(const QString &message) { m_errorMessages << message; }

    void addObserver(ModelObserver *observer);
    void removeObserver(ModelObserver *observer);

    // For the documents.
    QString resolve(const QString &windowsPath) const;
    ModelFiles &files() { return *m_files; }
    void notifySaving(ModelDoc &doc, const QString &fileName);
    void notifyPrinted(ModelDoc &doc, ModelView &view);

private:
    ModelDocPtr openNative(const QString &fileName, DocumentType type, const QString &configuration,
                           std::int32_t &errors);
    void adopt(const ModelDocPtr &doc);
    void activate(const ModelDocPtr &doc);
    void close(const ModelDocPtr &doc);
    template <class F> void notify(F &&f);

    PathResolver m_resolver;
    CadSettings m_settings;
    std::shared_ptr<ModelFiles> m_files;
    std::vector<ModelDocPtr> m_documents;
    ModelDocPtr m_active;
    Preferences m_preferences;
    std::shared_ptr<ExportPdfData> m_pdfData = std::make_shared<ExportPdfData>();
    QStringList m_errorMessages;
    std::vector<ModelObserver *> m_observers;
    bool m_visible = true;
    bool m_backgroundMode = false;
    bool m_userControl = true;
    Frame m_frame;
    mutable std::deque<PrinterInfo> m_queues; // print-system queues met so far
};

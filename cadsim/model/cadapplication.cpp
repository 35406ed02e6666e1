#include "cadsim/model/cadapplication.h"

#include "cadsim/model/exportrecords.h"

#include "cadsim/model/cadconstants.h"
#include "cadsim/model/modelobserver.h"
#include "platform/printing/printers.h"

#include <QDir>
#include <QFileInfo>
#include <algorithm>

CadSettings CadSettings::fromEnvironment(const QProcessEnvironment &env)
{
    CadSettings settings;
    if (env.contains(QStringLiteral("MCSIM_PRINTERS"))) {
        const QStringList entries =
            env.value(QStringLiteral("MCSIM_PRINTERS")).split(QLatin1Char(';'), Qt::SkipEmptyParts);
        for (const QString &entry : entries) {
            const qsizetype eq = entry.indexOf(QLatin1Char('='));
            if (eq < 0)
                settings.printers.append({entry.trimmed(), QString()});
            else
                settings.printers.append({entry.left(eq).trimmed(), entry.mid(eq + 1)});
        }
    }
    settings.defaultPrinter = env.value(QStringLiteral("MCSIM_DEFAULT_PRINTER"));
    settings.exportRecordFolder = env.value(QStringLiteral("MCSIM_EXPORT_RECORDS"), ExportRecords::defaultFolder());
    settings.spoolFile = env.value(QStringLiteral("MCSIM_SPOOL_FILE"));
    if (settings.spoolFile.isEmpty()) {
        // Prints are kept beside the export records, so that a run without
        // the variable still prints.
        const QString folder = QFileInfo(settings.exportRecordFolder.isEmpty() ? ExportRecords::defaultFolder()
                                                                              : settings.exportRecordFolder)
                                   .path();
        if (QDir().mkpath(folder))
            settings.spoolFile = QDir(folder).filePath(QStringLiteral("print-spool.jsonl"));
    }
    if (env.contains(QStringLiteral("MCSIM_REVISION")))
        settings.revision = env.value(QStringLiteral("MCSIM_REVISION"));
    return settings;
}

CadApplication::CadApplication(PathResolver resolver, CadSettings settings, std::shared_ptr<ModelFiles> files)
    : m_resolver(std::move(resolver)), m_settings(std::move(settings)), m_files(std::move(files))
{
}

CadApplication::~CadApplication()
{
    // Macros may still hold documents; they must not reach a dead application.
    for (const ModelDocPtr &doc : m_documents)
        doc->detach();
}

template <class F> void CadApplication::notify(F &&f)
{
    // An observer may remove itself while being told.
    const std::vector<ModelObserver *> observers = m_observers;
    for (ModelObserver *o : observers)
        f(*o);
}

std::unique_ptr<DocumentSpecification> CadApplication::getOpenDocSpec(const QString &fileName) const
{
    auto openRequest = std::make_unique<DocumentSpecification>();
    openRequest->fileName = fileName;
    const DocumentType type = nativeTypeOfExtension(WindowsPath::extension(fileName).toLower());
    openRequest->documentType = static_cast<std::int32_t>(type);
    return openRequest;
}

ModelDocPtr CadApplication::openDoc7(DocumentSpecification &openRequest)
{
    openRequest.error = 0;
    openRequest.warning = 0;
    const auto type = static_cast<DocumentType>(openRequest.documentType);
    if (openRequest.documentType < cad::mcDocPART || openRequest.documentType > cad::mcDocDRAWING) {
        openRequest.error = cad::mcInvalidFileTypeError;
        return nullptr;
    }
    return openNative(openRequest.fileName, type, openRequest.configurationName, openRequest.error);
}

ModelDocPtr CadApplication::openDoc6(const QString &fileName, std::int32_t type, std::int32_t /*options*/,
                                     const QString &configuration, std::int32_t &errors, std::int32_t &warnings)
{
    errors = 0;
    warnings = 0;
    if (type < cad::mcDocPART || type > cad::mcDocDRAWING) {
        errors = cad::mcInvalidFileTypeError;
        return nullptr;
    }
    return openNative(fileName, static_cast<DocumentType>(type), configuration, errors);
}

ModelDocPtr CadApplication::openNative(const QString &fileName, DocumentType type, const QString &configuration,
                                       std::int32_t &errors)
{
    if (ModelDocPtr open = findDocument(fileName)) {
        if (!configuration.isEmpty())
            open->showConfiguration(configuration);
        activate(open);
        return open;
    }
    const QString native = resolve(fileName);
    const std::optional<QByteArray> bytes = native.isEmpty() ? std::nullopt : m_files->read(native);
    if (!bytes) {
        errors = cad::mcFileNotFoundError;
        return nullptr;
    }
    const ParseResult parsed = parseDocument(QString::fromUtf8(*bytes));
    if (!parsed.data) {
        errors = cad::mcGenericError;
        return nullptr;
    }
    if (parsed.data->futureVersion) {
        errors = cad::mcFutureVersion;
        return nullptr;
    }
    if (parsed.data->type != type) {
        errors = cad::mcInvalidFileTypeError;
        return nullptr;
    }
    auto doc = std::make_shared<ModelDoc>(this, *parsed.data, fileName, fileName, WindowsPath::fileName(fileName));
    if (!configuration.isEmpty())
        doc->showConfiguration(configuration);
    adopt(doc);
    return doc;
}

ModelDocPtr CadApplication::loadFile4(const QString &fileName, const QString & /*argString*/, std::int32_t &errors)
{
    errors = 0;
    if (ModelDocPtr open = findDocument(fileName)) {
        activate(open);
        return open;
    }
    const DocumentType type = importTypeOfExtension(WindowsPath::extension(fileName).toLower());
    if (type == DocumentType::None) {
        errors = cad::mcInvalidFileTypeError;
        return nullptr;
    }
    const QString native = resolve(fileName);
    const std::optional<QByteArray> bytes = native.isEmpty() ? std::nullopt : m_files->read(native);
    if (!bytes) {
        errors = cad::mcFileNotFoundError;
        return nullptr;
    }
    // Foreign geometry becomes a fresh document of the import's type; a file
    // in our own text form (used to give an import flags) is read as such.
    DocumentData data;
    const QString text = QString::fromUtf8(*bytes);
    if (looksLikeDocumentText(text)) {
        const ParseResult parsed = parseDocument(text);
        if (!parsed.data) {
            errors = cad::mcGenericError;
            return nullptr;
        }
        data = *parsed.data;
        if (data.futureVersion) {
            errors = cad::mcFutureVersion;
            return nullptr;
        }
    } else {
        data.type = type;
        if (type == DocumentType::Drawing) {
            data.sheets << QStringLiteral("Sheet1");
            data.activeSheet = data.sheets.first();
        } else {
            data.configurations << QStringLiteral("Default");
            data.activeConfiguration = data.configurations.first();
        }
    }
    // An import has no file of its own until saved: empty path name.
    auto doc = std::make_shared<ModelDoc>(this, data, QString(), fileName, WindowsPath::baseName(fileName));
    adopt(doc);
    return doc;
}

ModelDocPtr CadApplication::activateDoc2(const QString &name, bool /*silent*/, std::int32_t &errors)
{
    errors = 0;
    ModelDocPtr doc = findDocument(name);
    if (!doc) {
        errors = cad::mcGenericError;
        return nullptr;
    }
    activate(doc);
    return doc;
}

ModelDocPtr CadApplication::findDocument(const QString &name) const
{
    if (name.isEmpty())
        return nullptr;
    for (const ModelDocPtr &doc : m_documents) {
        if (doc->title().compare(name, Qt::CaseInsensitive) == 0
            || (!doc->pathName().isEmpty() && WindowsPath::equals(doc->pathName(), name))
            || WindowsPath::equals(doc->sourcePath(), name))
            return doc;
    }
    return nullptr;
}

bool CadApplication::closeDoc(const QString &name)
{
    ModelDocPtr doc = findDocument(name);
    if (!doc)
        return false;
    close(doc);
    return true;
}

void CadApplication::closeAllDocuments(bool /*includeUnsaved*/)
{
    while (!m_documents.empty())
        close(m_documents.back());
}

void CadApplication::adopt(const ModelDocPtr &doc)
{
    m_documents.push_back(doc);
    notify([&](ModelObserver &o) { o.documentOpened(*doc); });
    activate(doc);
}

void CadApplication::activate(const ModelDocPtr &doc)
{
    m_active = doc;
    notify([&](ModelObserver &o) { o.documentActivated(*doc); });
}

void CadApplication::close(const ModelDocPtr &doc)
{
    const ModelDocPtr keep = doc; // the reference may live in m_documents
    notify([&](ModelObserver &o) { o.documentDestroyed(*keep); });
    m_documents.erase(std::remove(m_documents.begin(), m_documents.end(), keep), m_documents.end());
    keep->markClosed();
    if (m_active == keep)
        m_active = m_documents.empty() ? nullptr : m_documents.back();
}

std::shared_ptr<ExportPdfData> CadApplication::exportFileData(std::int32_t type) const
{
    return type == cad::mcExportPdfData ? m_pdfData : nullptr;
}

const PrinterInfo *CadApplication::findPrinter(const QString &name) const
{
    if (name.isEmpty())
        return nullptr;
    for (const PrinterInfo &p : m_settings.printers) {
        if (p.name.compare(name, Qt::CaseInsensitive) == 0)
            return &p;
    }
    for (const PrinterInfo &p : m_queues)
        if (p.name == name)
            return &p;
    if (!Printers::instance().names().contains(name))
        return nullptr;
    return &m_queues.emplace_back(PrinterInfo{name, QString(), true});
}

QString CadApplication::defaultPrinter() const
{
    if (const PrinterInfo *p = findPrinter(m_settings.defaultPrinter))
        return p->name;
    return m_settings.printers.isEmpty() ? QString() : m_settings.printers.first().name;
}

QStringList CadApplication::takeErrorMessages()
{
    return std::exchange(m_errorMessages, QStringList());
}

void CadApplication::addObserver(ModelObserver *observer)
{
    if (std::find(m_observers.begin(), m_observers.end(), observer) == m_observers.end())
        m_observers.push_back(observer);
}

void CadApplication::removeObserver(ModelObserver *observer)
{
    m_observers.erase(std::remove(m_observers.begin(), m_observers.end(), observer), m_observers.end());
}

QString CadApplication::resolve(const QString &windowsPath) const
{
    return m_resolver ? m_resolver(windowsPath) : QString();
}

void CadApplication::setVisible(bool visible)
{
    m_visible = visible;
    notify([&](ModelObserver &o) { o.visibilityChanged(visible); });
}

void CadApplication::notifySaving(ModelDoc &doc, const QString &fileName)
{
    notify([&](ModelObserver &o) { o.fileSaving(doc, fileName); });
}

void CadApplication::notifyPrinted(ModelDoc &doc, ModelView &view)
{
    notify([&](ModelObserver &o) { o.printed(doc, view); });
}

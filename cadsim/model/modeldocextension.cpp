#include "cadsim/model/modeldocextension.h"

#include "cadsim/model/cadapplication.h"
#include "cadsim/model/cadconstants.h"
#include "cadsim/model/documentgeometry.h"
#include "cadsim/model/exportdescription.h"
#include "cadsim/model/exportrecords.h"
#include "cadsim/model/exportwriter.h"
#include "cadsim/model/modeldoc.h"
#include "cadsim/model/printspool.h"
#include "cadsim/model/solidexports.h"
#include "base/windowspath.h"
#include "cadsim/geometry/shapebuilder.h"
#include "platform/printing/printers.h"

namespace {

// Names that all exist in available, in the document's spelling; empty when
// one is missing.
std::optional<QStringList> pickExisting(const QStringList &wanted, const QStringList &available)
{
    QStringList picked;
    for (const QString &name : wanted) {
        const auto it = std::find_if(available.cbegin(), available.cend(), [&](const QString &a) {
            return a.compare(name, Qt::CaseInsensitive) == 0;
        });
        if (it == available.cend())
            return std::nullopt;
        picked << *it;
    }
    return picked;
}

bool isViewerFormat(const QString &ext)
{
    return ext == QLatin1String("gprt") || ext == QLatin1String("gasm") || ext == QLatin1String("glmp");
}

// What a viewer-format export holds, by the selection-option preference.
std::optional<QStringList> viewerSelection(const Preferences &prefs, const QStringList &all, const QString &active)
{
    switch (prefs.integer(cad::mcGlimpseSaveAsSelectionOption)) {
    case cad::mcGlimpseSaveAll: return all;
    case cad::mcGlimpseSaveActive: return QStringList{active};
    case cad::mcGlimpseSaveSelected: {
        const QStringList wanted = prefs.stringList(cad::mcGlimpseModelSelectionList);
        if (wanted.isEmpty())
            return std::nullopt;
        return pickExisting(wanted, all);
    }
    default: return std::nullopt;
    }
}

ViewDirection viewDirection(SheetView::Direction d)
{
    switch (d) {
    case SheetView::Direction::Front: return ViewDirection::Front;
    case SheetView::Direction::Top: return ViewDirection::Top;
    case SheetView::Direction::Right: return ViewDirection::Right;
    case SheetView::Direction::Iso: return ViewDirection::Isometric;
    }
    return ViewDirection::Front;
}

// What a page of the document shows: a drawing sheet the views of its model
// where the sheet places them, a part or assembly configuration a pictorial
// view of its solid. A document whose solid cannot be built shows none.
std::function<std::vector<SheetPageView>(const QString &)> viewsOf(CadApplication &app, const ModelDoc &doc)
{
    // The drawing's model is the same on every sheet: built once.
    auto drawingSolid = std::make_shared<std::optional<TopoDS_Shape>>();
    return [&app, &doc, drawingSolid](const QString &item) {
        auto solidOf = [&](const QString &configuration) {
            const std::optional<ModelGeometry> geometry = documentGeometry(app, doc, configuration);
            return geometry ? buildSolid(*geometry) : TopoDS_Shape();
        };
        std::vector<SheetPageView> views;
        if (doc.type() == DocumentType::Drawing) {
            if (!*drawingSolid)
                *drawingSolid = solidOf(QString());
            for (const SheetView &v : doc.data().viewsOn(item))
                views.push_back({projectHiddenLines(**drawingSolid, viewDirection(v.direction)), QPointF(v.x, v.y),
                                 v.scale});
        } else {
            views.push_back({projectHiddenLines(solidOf(item), ViewDirection::Isometric), std::nullopt, 1});
        }
        return views;
    };
}

// An export's pages: a drawing on its sheets' paper, anything else on A4
// landscape; the PDF and image preferences as set, their defaults where a
// macro never set them.
SheetOptions exportSheetOptions(CadApplication &app, const ModelDoc &doc, const Preferences &prefs, const QString &ext)
{
    SheetOptions sheet;
    if (doc.type() == DocumentType::Drawing) {
        sheet.layout = pageLayoutOf(doc.data().paperSize, doc.data().orientation);
        sheet.sheetMm = sheet.layout.fullRect(QPageLayout::Millimeter).size();
    }
    if (ext == QLatin1String("pdf")) {
        auto toggle = [&](std::int32_t id, bool fallback) { return prefs.hasToggle(id) ? prefs.toggle(id) : fallback; };
        sheet.style.color = toggle(cad::mcPDFExportInColor, true);
        sheet.style.printerLineWeights = toggle(cad::mcPDFExportUseCurrentPrintLineWeights, true);
        if (prefs.toggle(cad::mcPDFExportPrintHeaderFooter)) {
            sheet.style.header = doc.pageSetup().header;
            sheet.style.footer = doc.pageSetup().footer;
        }
    }
    if (prefs.hasInteger(cad::mcTiffImageType))
        sheet.image.type = static_cast<ImageType>(qBound(0, prefs.integer(cad::mcTiffImageType), 2));
    sheet.image.compression =
        static_cast<ImageCompression>(qBound(0, prefs.integer(cad::mcTiffCompressionScheme), 2));
    sheet.views = viewsOf(app, doc);
    return sheet;
}

} // namespace

bool ModelDocExtension::saveAs(const QString &name, std::int32_t version, std::int32_t options,
                               const ExportPdfData *exportData, std::int32_t &errors, std::int32_t &warnings)
{
    errors = 0;
    warnings = 0;
    CadApplication *app = m_doc.application();
    if (!app || m_doc.isClosed()) {
        errors = cad::mcGenericSaveError;
        return false;
    }
    if (WindowsPath::fileName(name).isEmpty()) {
        errors = cad::mcFileNameEmpty;
        return false;
    }
    const QString ext = WindowsPath::extension(name).toLower();
    if (!canExportTo(m_doc.type(), ext)) {
        errors = cad::mcFileSaveAsBadExtension;
        return false;
    }
    const bool native = nativeTypeOfExtension(ext) == m_doc.type();
    if (!native && m_doc.data().oleObjects) {
        errors = cad::mcFileSaveAsNotSupported;
        warnings = cad::mcFileSaveWarning_MissingOLEObjects;
        return false;
    }
    const QString nativePath = app->resolve(name);
    if (nativePath.isEmpty()) {
        errors = cad::mcGenericSaveError;
        return false;
    }

    QByteArray content;
    QJsonObject description;
    std::vector<CompanionFile> companions;
    if (native) {
        DocumentData data = m_doc.data();
        data.paperSize = m_doc.pageSetup().paperSize;
        data.orientation = m_doc.pageSetup().orientation;
        content = writeDocument(data).toUtf8();
    } else {
        ExportDescription d;
        d.target = name;
        d.format = ext;
        d.imported = m_doc.pathName().isEmpty();
        d.source = d.imported ? m_doc.sourcePath() : m_doc.pathName();
        d.documentType = m_doc.type();
        d.version = version;
        d.options = options;
        const Preferences &prefs = app->preferences();
        std::optional<QStringList> items;
        if (m_doc.type() == DocumentType::Drawing) {
            const QStringList all = m_doc.sheetNames();
            if (isViewerFormat(ext)) {
                items = viewerSelection(prefs, all, m_doc.currentSheet());
            } else if (ext == QLatin1String("pdf")) {
                if (!exportData || exportData->which() == cad::mcExportData_ExportAllSheets)
                    items = all;
                else if (exportData->which() == cad::mcExportData_ExportCurrentSheet)
                    items = QStringList{m_doc.currentSheet()};
                else if (exportData->which() == cad::mcExportData_ExportSpecifiedSheets)
                    items = pickExisting(exportData->sheets(), all);
                if (items && items->isEmpty())
                    items.reset();
            } else {
                items = QStringList{m_doc.currentSheet()};
            }
            if (items)
                d.sheets = *items;
        } else {
            if (isViewerFormat(ext))
                items = viewerSelection(prefs, m_doc.configurationNames(), m_doc.activeConfiguration());
            else
                items = QStringList{m_doc.activeConfiguration()};
            if (items)
                d.configurations = *items;
        }
        if (!items) {
            errors = cad::mcGenericSaveError;
            return false;
        }
        description = exportDescriptionJson(d, prefs);
        if (SolidExports::handles(ext)) {
            SolidExport solid = SolidExports::write(*app, m_doc, d, description);
            if (!solid.ok()) {
                errors = cad::mcGenericSaveError;
                return false;
            }
            content = std::move(solid.bytes);
            companions = std::move(solid.companions);
        } else {
            const std::optional<QByteArray> written =
                ExportWriter::write(d, description, exportSheetOptions(*app, m_doc, prefs, ext));
            if (!written) {
                errors = cad::mcGenericSaveError;
                return false;
            }
            content = *written;
        }
    }

    app->notifySaving(m_doc, name);
    if (!app->files().write(nativePath, content)) {
        errors = cad::mcGenericSaveError;
        return false;
    }
    const QString stem = nativePath.left(nativePath.lastIndexOf(QLatin1Char('.')));
    for (const CompanionFile &file : companions) {
        if (!app->files().write(stem + file.suffix, file.bytes)) {
            errors = cad::mcGenericSaveError;
            return false;
        }
    }
    if (!description.isEmpty())
        ExportRecords::write(app->exportRecordFolder(), nativePath, description);
    return true;
}

bool ModelDocExtension::printOut2(const std::optional<std::vector<std::int32_t>> &sheets, std::int32_t copies,
                                  bool collate, const QString &printer, const QString &printToFile)
{
    CadApplication *app = m_doc.application();
    if (!app || m_doc.isClosed())
        return false;
    const QString printerName = printer.isEmpty() ? m_doc.printer() : printer;
    const PrinterInfo *info = app->findPrinter(printerName);
    if (!info) {
        app->addErrorMessage(QStringLiteral("The printer '%1' is not available.").arg(printerName));
        return false;
    }
    if (!info->failure.isEmpty()) {
        app->addErrorMessage(info->failure);
        return false;
    }
    if (copies < 1) {
        app->addErrorMessage(QStringLiteral("The number of copies must be at least 1."));
        return false;
    }

    PrintRecord r;
    r.document = m_doc.pathName().isEmpty() ? m_doc.sourcePath() : m_doc.pathName();
    r.printer = info->name;
    const PageSetup &page = m_doc.pageSetup();
    r.paperSize = page.paperSize;
    r.orientation = page.orientation;
    r.pageSetupInUse = m_usePageSetup;
    const Preferences &prefs = app->preferences();
    r.usePrinterMargins = prefs.toggle(cad::mcPageSetupPrinterUsePrinterMargin);
    r.marginTop = prefs.real(cad::mcPageSetupPrinterTopMargin);
    r.marginBottom = prefs.real(cad::mcPageSetupPrinterBottomMargin);
    r.marginLeft = prefs.real(cad::mcPageSetupPrinterLeftMargin);
    r.marginRight = prefs.real(cad::mcPageSetupPrinterRightMargin);
    r.header = page.header;
    r.footer = page.footer;
    r.copies = copies;
    r.collate = collate;
    r.printToFile = printToFile;
    if (m_doc.type() == DocumentType::Drawing) {
        const QStringList all = m_doc.sheetNames();
        if (!sheets) {
            r.sheets = all;
        } else {
            for (std::int32_t position : *sheets) {
                if (position < 1 || position > all.size()) {
                    app->addErrorMessage(QStringLiteral("Sheet %1 does not exist.").arg(position));
                    return false;
                }
                r.sheets << all.at(position - 1);
            }
        }
    } else {
        r.configuration = m_doc.activeConfiguration();
    }

    if (app->spoolFile().isEmpty() || !app->files().append(app->spoolFile(), printRecordLine(r))) {
        app->addErrorMessage(QStringLiteral("The print job for '%1' could not be spooled.").arg(r.document));
        return false;
    }
    if (info->queue && !printOnQueue(r))
        return false;
    app->notifyPrinted(m_doc, *m_doc.views().front());
    return true;
}

bool ModelDocExtension::printOnQueue(const PrintRecord &r)
{
    // The job is a PDF of what was printed, kept beside the spool.
    CadApplication *app = m_doc.application();
    static int jobs = 0;
    const QString pdf = QStringLiteral("%1.%2.pdf").arg(app->spoolFile()).arg(++jobs);
    ExportDescription d;
    d.target = pdf;
    d.format = QStringLiteral("pdf");
    d.source = r.document;
    d.documentType = m_doc.type();
    if (m_doc.type() == DocumentType::Drawing)
        d.sheets = r.sheets;
    else
        d.configurations = QStringList{r.configuration};
    // The page as the macro set it up: paper, orientation, margins, header
    // and footer; one page per printed sheet.
    const Preferences &prefs = app->preferences();
    SheetOptions sheet;
    sheet.layout = pageLayoutOf(r.paperSize, r.orientation, printMargins(prefs));
    if (m_doc.type() == DocumentType::Drawing)
        sheet.sheetMm = pageLayoutOf(m_doc.data().paperSize, m_doc.data().orientation).fullRect(QPageLayout::Millimeter).size();
    sheet.style.header = r.header;
    sheet.style.footer = r.footer;
    sheet.views = viewsOf(*app, m_doc);
    const std::optional<QByteArray> content = ExportWriter::write(d, exportDescriptionJson(d, prefs), sheet);
    if (!content || !app->files().write(pdf, *content)) {
        app->addErrorMessage(QStringLiteral("The print job for '%1' could not be written.").arg(r.document));
        return false;
    }
    const QString failure = Printers::instance().printPdf(r.printer, pdf, r.copies, m_doc.title());
    if (!failure.isEmpty()) {
        app->addErrorMessage(failure);
        return false;
    }
    return true;
}

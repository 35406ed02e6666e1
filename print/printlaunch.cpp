#include "print/printlaunch.h"

#include "settings/tasksettings.h"
#include "common/errortexts.h"
#include "common/translator.h"
#include "host/hosterror.h"
#include "host/idoxtask.h"
#include "host/idoxvault.h"
#include "print/printsettings.h"
#include "run/filerecord.h"
#include "run/filerecordbuilder.h"

#include <QRegularExpression>
#include <map>
#include <set>

namespace {

constexpr std::int32_t TotalText = 126;
constexpr std::int32_t CopiesText = 125;
constexpr std::int32_t NoFileText = 166;
constexpr std::int32_t NoPrinterText = 168;

const QString ListingColumns = QStringLiteral("\n#DoxCol_Name\n#DoxCol_Path\n#DoxCol_Configuration\n#DoxCol_ParentFileID"
                                              "\n#DoxCol_ParentFileConfiguration\n#DoxCol_DoxListRetFileFlag"
                                              "\n#DoxCol_AttachedVersion");

bool isDrawing(const QString &name)
{
    return fileExtension(name).compare(QLatin1String("mcddrw"), Qt::CaseInsensitive) == 0;
}

bool isPartOrAssembly(const QString &name)
{
    const QString ext = fileExtension(name);
    return ext.compare(QLatin1String("mcdprt"), Qt::CaseInsensitive) == 0
        || ext.compare(QLatin1String("mcdasm"), Qt::CaseInsensitive) == 0;
}

} // namespace

PrintLaunch::PrintLaunch(std::shared_ptr<IDoxVault> vault, std::shared_ptr<IDoxTaskInstance> instance,
                         DoxCmdDataArray &selection, TextLookup text)
    : m_vault(std::move(vault)), m_instance(std::move(instance)), m_selection(selection), m_text(std::move(text))
{
}

QString PrintLaunch::text(std::int32_t number, const char *english) const
{
    return lookupText(m_text, number, english);
}

bool PrintLaunch::marginsTabExists() const
{
    return m_marginType == PromptUser || m_headerType == PromptUser || m_footerType == PromptUser;
}

void PrintLaunch::initialise()
{
    IDoxTaskInstance &in = *m_instance;
    m_refVersion = getIntVariable(in, PrintKeys::RefVersion, RefVersionPrompt);
    m_marginType = getIntVariable(in, PrintKeys::MarginType, PromptUser);
    m_headerType = getIntVariable(in, PrintKeys::HeaderType, PromptUser);
    m_footerType = getIntVariable(in, PrintKeys::FooterType, PromptUser);

    // Absent, the mode fills the dialog as a fixed printer but takes its data
    // as a prompted one.
    std::int32_t mode = AlwaysPrinter;
    const bool modeStored = throwIfFailed(readIntVariable(in, PrintKeys::PrinterSelection, AlwaysPrinter, mode),
                                          PrintKeys::PrinterSelection) == S_OK;
    m_printerMode = mode;
    m_takeMode = modeStored ? mode : PromptPrinter;
    m_userSizeChange = getBoolVariable(in, PrintKeys::UserSizeChange, true);
    m_userOrientChange = getBoolVariable(in, PrintKeys::UserOrientChange, true);
    papers.clear();
    for (const PaperSizes::Entry &e : PaperSizes::listed())
        papers.push_back(e.code);
    const std::int32_t paper = getIntVariable(in, PrintKeys::PaperSize, PaperSizes::A4);
    const auto found = std::find(papers.begin(), papers.end(), paper);
    paperIndex = found == papers.end() ? -1 : static_cast<int>(found - papers.begin());
    if (m_printerMode == PrinterBySize) {
        selectPaper(paperIndex);
    } else {
        printers = getTextVariable(in, PrintKeys::PrinterNameList)
                       .split(QRegularExpression(QStringLiteral("[\r\n]")), Qt::SkipEmptyParts);
        printerIndex = static_cast<int>(printers.indexOf(getTextVariable(in, PrintKeys::PrinterName)));
    }
    latestVersion = getIntVariable(in, PrintKeys::RefVersion, RefVersionReferenced) != RefVersionReferenced;
    // Copies the launch was given (e.g. by the command line) are kept.
    const std::int32_t storedCopies = getIntVariable(in, PrintKeys::CopyCount, 1);
    copies = QString::number(storedCopies >= 1 ? storedCopies : 1);
    orientation = getIntVariable(in, PrintKeys::Orientation, 1) == 1 ? 1 : 0;

    const QString marginKeys[] = {PrintKeys::MarginTop, PrintKeys::MarginBottom, PrintKeys::MarginLeft,
                                  PrintKeys::MarginRight};
    for (int i = 0; i < 4; ++i) {
        float mm = 0;
        throwIfFailed(readRealVariable(in, marginKeys[i], 0, mm), marginKeys[i]);
        margins[i] = QString::number(qRound(mm));
    }
    const QString headerKeys[] = {PrintKeys::HeaderLeft, PrintKeys::HeaderCenter, PrintKeys::HeaderRight};
    const QString footerKeys[] = {PrintKeys::FooterLeft, PrintKeys::FooterCenter, PrintKeys::FooterRight};
    for (int i = 0; i < 3; ++i) {
        header[i] = getTextVariable(in, headerKeys[i]);
        footer[i] = getTextVariable(in, footerKeys[i]);
    }

    m_autoSelect = getIntVariable(in, PrintKeys::AutoSelectRefs, AutoSelectDrawings);
    loadFiles();
}

void PrintLaunch::selectPaper(int index)
{
    paperIndex = index;
    if (m_printerMode != PrinterBySize)
        return;
    printers.clear();
    printerIndex = -1;
    if (index < 0 || index >= static_cast<int>(papers.size()))
        return;
    const QString key = PaperSizes::printerKey(papers[static_cast<std::size_t>(index)]);
    const QString printer = key.isEmpty() ? QString() : getTextVariable(*m_instance, key);
    if (!printer.isEmpty()) {
        printers << printer;
        printerIndex = 0;
    }
}

void PrintLaunch::setLatestVersion(bool latest)
{
    if (latest == latestVersion)
        return;
    latestVersion = latest;
    loadFiles();
}

void PrintLaunch::loadFiles()
{
    m_files.clear();
    m_listingError.clear();
    std::vector<DoxListingRow> rows;
    std::shared_ptr<IDoxBatchListing> listing;
    HRESULT hr = createVaultUtility(*m_vault, DoxUtil_BatchListing, listing);
    for (const DoxCmdData &entry : m_selection) {
        if (failed(hr))
            break;
        if (entry.long1 == DoxObject_Folder)
            hr = listing->AddFolder(entry.objectId1);
        else if (entry.long1 == DoxObject_File)
            hr = listing->AddFile(entry.string1);
    }
    if (succeeded(hr))
        hr = listing->CreateList(ListingColumns,
                                 latestVersion ? DoxListing_LatestVersions : DoxListing_ReferencedVersions, rows);
    if (failed(hr)) {
        m_listingError = QStringLiteral("Failed to read information about selected files.\n");
        return;
    }

    const bool drawings = m_autoSelect == AutoSelectDrawings || m_autoSelect == AutoSelectAll;
    const bool models = m_autoSelect == AutoSelectModels || m_autoSelect == AutoSelectAll;
    // A selected file is listed once, as selected, even when it appears as
    // a reference of another selected file before its own row.
    std::set<std::int32_t> selectedIds;
    for (const DoxListingRow &row : rows)
        if (row.parentFileId == 0)
            selectedIds.insert(row.fileId);
    std::map<std::int32_t, int> selected;   // file id -> index of a selected file
    std::set<std::int32_t> references;      // file ids listed as references
    int currentParent = -1;
    for (const DoxListingRow &row : rows) {
        const bool isSelected = row.parentFileId == 0;
        if (isSelected && selected.count(row.fileId)) {
            currentParent = selected[row.fileId];
            continue;
        }
        if (!isSelected && (selectedIds.count(row.fileId) || references.count(row.fileId)))
            continue;
        FileInfo info;
        info.fileId = row.fileId;
        info.folderId = row.folderId;
        info.fileName = row.name;
        info.configuration = row.configuration;
        info.folderPath = row.path;
        info.version = row.attachedVersion;
        info.checked = isSelected || (drawings && isDrawing(row.name)) || (models && isPartOrAssembly(row.name));
        info.parent = isSelected ? -1 : currentParent;
        std::shared_ptr<IDoxFile> file;
        throwIfFailed(m_vault->GetFile(row.fileId, file), QStringLiteral("file"));
        const std::int32_t kind = file ? file->GetKind() : 1;
        if ((kind == 1 || kind == 2) && !isFolderFileExtension(fileExtension(row.name))) {
            info.state = 2;
            info.errorText = QStringLiteral("Unsupported File Format");
            info.checked = false;
        }
        const int index = static_cast<int>(m_files.size());
        if (isSelected) {
            selected[row.fileId] = index;
            currentParent = index;
        } else {
            references.insert(row.fileId);
        }
        m_files.push_back(std::move(info));
    }
}

void PrintLaunch::setChecked(std::size_t index, bool checked)
{
    FileInfo &info = m_files.at(index);
    if (info.hasCheckBox())
        info.checked = checked;
}

std::int64_t PrintLaunch::total() const
{
    bool ok = false;
    const uint count = copies.trimmed().toUInt(&ok);
    const auto ticked = std::count_if(m_files.begin(), m_files.end(), [](const FileInfo &f) { return f.checked; });
    return ok ? std::int64_t(ticked) * count : 0;
}

QString PrintLaunch::totalText() const
{
    return text(TotalText, "Total: %1").replace(QLatin1String("%1"), QString::asprintf("%d", int(total())));
}

PrintLaunch::Refusal PrintLaunch::failedWrite(HRESULT hr, Control control) const
{
    return {control, errorText(hr)};
}

PrintLaunch::Refusal PrintLaunch::takeData()
{
    IDoxTaskInstance &in = *m_instance;
    if (m_refVersion == RefVersionPrompt) {
        if (const HRESULT hr = writeIntVariable(in, PrintKeys::RefVersion, latestVersion ? 1 : 0); failed(hr))
            return failedWrite(hr, Control::Version);
    }
    if (m_userOrientChange) {
        if (const HRESULT hr = writeIntVariable(in, PrintKeys::Orientation, orientation == 0 ? 0 : 1); failed(hr))
            return failedWrite(hr, Control::Orientation);
    }
    if (m_takeMode == PromptPrinter) {
        const QString printer = printerIndex >= 0 && printerIndex < printers.size() ? printers[printerIndex] : QString();
        if (printer.isEmpty())
            return {Control::Printer, text(NoPrinterText, "No printer selected.")};
        if (const HRESULT hr = writeTextVariable(in, PrintKeys::PrinterName, printer); failed(hr))
            return failedWrite(hr, Control::Printer);
    }
    if (m_userSizeChange && paperIndex >= 0 && paperIndex < static_cast<int>(papers.size())) {
        if (const HRESULT hr = writeIntVariable(in, PrintKeys::PaperSize, papers[static_cast<std::size_t>(paperIndex)]);
            failed(hr))
            return failedWrite(hr, Control::Paper);
    }
    bool ok = false;
    const int copyCount = copies.trimmed().toInt(&ok);
    if (!ok || copyCount < 1)
        return {Control::Copies, text(CopiesText, "Enter number of copies to print.")};
    if (const HRESULT hr = writeIntVariable(in, PrintKeys::CopyCount, copyCount); failed(hr))
        return failedWrite(hr, Control::Copies);

    if (m_marginType == PromptUser) {
        HRESULT hr = S_OK;
        if (customMargins) {
            const QString keys[] = {PrintKeys::MarginTop, PrintKeys::MarginBottom, PrintKeys::MarginLeft,
                                    PrintKeys::MarginRight};
            for (int i = 0; i < 4 && succeeded(hr); ++i)
                hr = writeIntVariable(in, keys[i], margins[i].trimmed().toInt());
        } else {
            hr = writeIntVariable(in, PrintKeys::MarginType, PromptNone);
        }
        if (failed(hr))
            return failedWrite(hr, Control::Margins);
    }
    const auto writeSections = [&](std::int32_t type, bool use, const QString &typeKey, const QString (&keys)[3],
                                   const std::array<QString, 3> &texts) {
        if (type != PromptUser)
            return S_OK;
        HRESULT hr = writeIntVariable(in, typeKey, use ? PromptFixed : PromptNone);
        for (int i = 0; i < 3 && use && succeeded(hr); ++i)
            hr = writeTextVariable(in, keys[i], texts[i]);
        return hr;
    };
    const QString headerKeys[] = {PrintKeys::HeaderLeft, PrintKeys::HeaderCenter, PrintKeys::HeaderRight};
    const QString footerKeys[] = {PrintKeys::FooterLeft, PrintKeys::FooterCenter, PrintKeys::FooterRight};
    if (const HRESULT hr = writeSections(m_headerType, useHeader, PrintKeys::HeaderType, headerKeys, header); failed(hr))
        return failedWrite(hr, Control::Header);
    if (const HRESULT hr = writeSections(m_footerType, useFooter, PrintKeys::FooterType, footerKeys, footer); failed(hr))
        return failedWrite(hr, Control::Footer);

    DoxCmdDataArray records;
    for (const FileInfo &f : m_files) {
        if (!f.checked)
            continue;
        DoxCmdData record;
        record.objectId1 = f.fileId;
        record.objectId2 = f.folderId;
        record.string1 = f.fullPath();
        record.string2 = f.configuration;
        record.long1 = DoxObject_File;
        record.long2 = f.version;
        records.push_back(record);
    }
    if (records.empty())
        return {Control::Files, text(NoFileText, "Please select at least one file.")};
    m_selection = std::move(records);
    return {};
}

#include "run/vaulthandover.h"

#include "settings/tasksettings.h"
#include "host/hostcall.h"
#include "host/hosterror.h"
#include "host/idoxvault.h"
#include "platform/clock.h"
#include "run/filecardmapping.h"
#include "run/taskrunrecord.h"

#include <QHash>

namespace {

constexpr std::int32_t TaskTypeConvert = 1;
const QString RefToSourceKey = QStringLiteral("RefToSource");
const QString FileCardDataKey = QStringLiteral("FileCardData");

QString folderOf(const QString &path)
{
    return path.left(path.lastIndexOf(QLatin1Char('\\')));
}

// Outputs that the vault hand-over may touch.
bool isVaultOutput(const FileRecord &record)
{
    return !record.isPrintEntry && record.inVaultTree;
}

} // namespace

std::int32_t folderIdOf(IDoxFile &file, IDoxFolder *folder)
{
    if (folder)
        return folder->GetID();
    std::int32_t folderId = 0;
    throwIfFailed(file.GetParentFolderId(folderId));
    return folderId;
}

VaultHandOver::VaultHandOver(std::shared_ptr<IDoxVault> vault, IDoxVariables &instance, TaskRunRecord &record,
                             ErrorReporter report)
    : m_vault(std::move(vault)), m_instance(instance), m_record(record), m_report(std::move(report))
{
}

void VaultHandOver::check(HRESULT hr, const QString &context) const
{
    if (!failed(hr))
        return;
    if (m_report)
        m_report(hr, context);
    throw HostError(hr, context);
}

HRESULT VaultHandOver::addOutputs()
{
    return hostCall([&] {
        addOutputsOrThrow();
        return S_OK;
    });
}

void VaultHandOver::addOutputsOrThrow()
{
    std::vector<FileRecord> &records = m_record.records();
    if (records.empty() || !m_vault)
        return;

    std::shared_ptr<IDoxBatchAdd> add;
    check(createVaultUtility(*m_vault, DoxUtil_BatchAdd, add), QStringLiteral("Creating DoxUtil_BatchAdd interface."));

    // Outputs by case-folded path, so each commit result finds its records at once.
    QHash<QString, std::vector<std::size_t>> outputsByPath;
    int added = 0;
    for (std::size_t i = 0; i < records.size(); ++i) {
        const FileRecord &record = records[i];
        if (!isVaultOutput(record))
            continue;
        outputsByPath[record.path.toCaseFolded()].push_back(i);
        if (record.checkedOut || !m_record.isInVaultTree(record.path) || !TaskRunRecord::fileExists(record.path))
            continue;
        ++added;
        check(add->AddFileFromPath(record.path, folderOf(record.path)),
              QStringLiteral("Adding file '%1' from path.").arg(record.path));
    }

    std::vector<DoxBatchAddResult> results;
    if (added > 0)
        check(add->CommitAdd(results),
              QStringLiteral("Adding files to the vault. No permission to add files to the destination folder?"));

    const QString notAdded = QStringLiteral("Error adding a file to the vault.");
    for (DoxBatchAddResult &result : results) {
        if (result.result == E_DOX_NAME_ALREADY_EXISTS) {
            // Already in the vault: take its ids from there.
            std::shared_ptr<IDoxFile> file;
            std::shared_ptr<IDoxFolder> folder;
            if (throwIfFailed(m_vault->GetFileFromPath(result.path, file, folder)) == S_OK && file) {
                if (result.docId <= 0)
                    result.docId = file->GetID();
                if (result.folderId <= 0)
                    result.folderId = folderIdOf(*file, folder.get());
            }
            // Without both ids the output cannot be checked in, and one bad
            // pair would fail the check-in of every other output.
            if (result.docId <= 0 || result.folderId <= 0) {
                if (m_report)
                    m_report(result.result, notAdded);
                continue;
            }
        } else if (failed(result.result)) {
            if (m_report)
                m_report(result.result, notAdded);
            continue;
        }
        const auto it = outputsByPath.constFind(result.path.toCaseFolded());
        if (it == outputsByPath.cend())
            continue;
        for (const std::size_t index : *it) {
            records[index].docId = result.docId;
            records[index].projId = result.folderId;
            records[index].checkedOut = true;
        }
    }

    std::vector<DoxFolderPair> held;
    for (const FileRecord &record : records)
        if (isVaultOutput(record) && record.checkedOut)
            held.push_back({record.docId, record.projId});
    if (held.empty())
        return;

    if (m_record.taskType() == TaskTypeConvert) {
        HRESULT hr = fillDataCards();
        if (succeeded(hr))
            hr = makeReferencesToSource();
        check(hr, QStringLiteral("Error creating references from source to destination file."));
    }
    checkInOrThrow(held);
}

void VaultHandOver::checkInOrThrow(const std::vector<DoxFolderPair> &files)
{
    std::shared_ptr<IDoxBatchCheckIn> checkIn;
    check(createVaultUtility(*m_vault, DoxUtil_BatchCheckIn, checkIn),
          QStringLiteral("Checking in all checked out docs."));
    const QString unlocking = QStringLiteral("Unlocking files.");
    check(checkIn->SetComment(CheckInComment), unlocking);
    check(checkIn->AddSelection(files), unlocking);
    check(checkIn->CreateTree(), unlocking);
    check(checkIn->CheckIn(), unlocking);
}

HRESULT VaultHandOver::makeReferencesToSource()
{
    return hostCall([&] {
        bool refToSource = false;
        if (throwIfFailed(readBoolVariable(m_instance, RefToSourceKey, false, refToSource)) == S_FALSE
            || !refToSource)
            return S_OK;
        std::shared_ptr<IDoxCustomReferences> references;
        throwIfFailed(createVaultUtility(*m_vault, DoxUtil_CustomReferences, references));
        for (const FileRecord &record : m_record.records()) {
            if (!isVaultOutput(record) || !record.checkedOut || record.isErrorLog || !record.source)
                continue;
            throwIfFailed(references->AddReferences(record.docId, {{record.source->docId, record.source->projId}}));
        }
        bool commitNeeded = false;
        throwIfFailed(references->IsCommitNeeded(commitNeeded));
        return commitNeeded ? references->Commit() : S_OK;
    });
}

HRESULT VaultHandOver::fillDataCards()
{
    return hostCall([&] {
        QString stored;
        throwIfFailed(readTextVariable(m_instance, FileCardDataKey, QString(), stored));
        const std::vector<FileCardRow> rows = parseFileCardData(stored);
        if (rows.empty())
            return S_OK;
        std::shared_ptr<IDoxBatchUpdate> update;
        throwIfFailed(createVaultUtility(*m_vault, DoxUtil_BatchUpdate, update));
        const QDateTime now = Clock::instance().now();

        for (const FileRecord &output : m_record.records()) {
            if (!isVaultOutput(output) || !output.checkedOut || output.isErrorLog || !output.source)
                continue;
            FileRecord &source = *output.source;
            std::shared_ptr<IDoxFile> file;
            std::shared_ptr<IDoxFolder> folder;
            if (throwIfFailed(m_vault->GetFileFromPath(source.path, file, folder)) != S_OK || !file)
                continue; // a source the vault does not know has no card to read
            DoxVersionInfo info;
            throwIfFailed(file->GetVersionInfo(source.version, source.projId, info));
            source.altVersion = info.versionNumber;
            source.text1 = info.revision;
            source.text2 = info.stateName;
            const SourceCardLookup sourceCard = [&](const QString &variable) -> std::optional<Variant> {
                Variant value;
                if (throwIfFailed(file->GetCardValue(variable, QString(), info.versionNumber, value)) != S_OK)
                    return std::nullopt;
                return value;
            };
            for (const FileCardRow &row : rows) {
                if (const auto value = fileCardValue(row, output, now, sourceCard))
                    throwIfFailed(update->SetVariable(output.docId, row.destination, QString(), *value));
            }
        }
        return update->Commit();
    });
}

HRESULT VaultHandOver::putErrorLog(const QString &errorLogPath)
{
    if (errorLogPath.isEmpty() || !TaskRunRecord::fileExists(errorLogPath))
        return S_FALSE;
    return hostCall([&] {
        putErrorLogOrThrow(errorLogPath);
        return S_OK;
    });
}

void VaultHandOver::putErrorLogOrThrow(const QString &errorLogPath)
{
    FileRecord record;
    record.path = errorLogPath;
    record.isErrorLog = true;
    record.inVaultTree = m_record.isInVaultTree(errorLogPath);

    std::shared_ptr<IDoxFile> file;
    std::shared_ptr<IDoxFolder> folder;
    if (throwIfFailed(m_vault->GetFileFromPath(errorLogPath, file, folder)) == S_OK && file) {
        record.docId = file->GetID();
        record.projId = folderIdOf(*file, folder.get());
    } else {
        std::shared_ptr<IDoxBatchAdd> add;
        throwIfFailed(createVaultUtility(*m_vault, DoxUtil_BatchAdd, add));
        throwIfFailed(add->AddFileFromPath(errorLogPath, folderOf(errorLogPath)));
        std::vector<DoxBatchAddResult> results;
        throwIfFailed(add->CommitAdd(results));
        if (results.empty())
            throw HostError(E_UNEXPECTED, QStringLiteral("the vault reported no result for the error log"));
        throwIfFailed(results.front().result);
        record.docId = results.front().docId;
        record.projId = results.front().folderId;
    }
    record.checkedOut = true;
    const DoxFolderPair pair{record.docId, record.projId};
    m_record.appendRecord(std::move(record));

    std::shared_ptr<IDoxBatchCheckIn> checkIn;
    throwIfFailed(createVaultUtility(*m_vault, DoxUtil_BatchCheckIn, checkIn));
    throwIfFailed(checkIn->SetComment(CheckInComment));
    throwIfFailed(checkIn->AddSelection({pair}));
    throwIfFailed(checkIn->CreateTree());
    throwIfFailed(checkIn->CheckIn());
}

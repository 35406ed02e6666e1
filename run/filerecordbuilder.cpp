#include "run/filerecordbuilder.h"

#include "settings/tasksettings.h"
#include "host/hosterror.h"
#include "host/idoxvault.h"

#include <QSet>

#include <unordered_set>

namespace {

const QString SourceRefsKey = QStringLiteral("SourceRefs");
const QString RefVersionTypeKey = QStringLiteral("__printer_refversiontype");

FileRecord makeRecord(const QString &path, std::int32_t docId, std::int32_t projId, std::int32_t version,
                      const QString &sourceConf)
{
    FileRecord record;
    record.path = path;
    record.docId = docId;
    record.projId = projId;
    record.version = version;
    record.sourceConf = sourceConf;
    record.isCadDocument = isCadDocumentPath(path);
    return record;
}

void expandFolder(IDoxVault &vault, std::int32_t folderId, std::vector<FileRecord> &out)
{
    std::shared_ptr<IDoxFolder> top;
    const HRESULT hr = throwIfFailed(vault.GetFolder(folderId, top), QStringLiteral("GetFolder"));
    if (hr != S_OK || !top)
        return;

    // Depth first: a folder's files, then each sub-folder in turn.
    std::vector<std::shared_ptr<IDoxFolder>> pending{top};
    std::unordered_set<std::int32_t> visited;
    while (!pending.empty()) {
        const std::shared_ptr<IDoxFolder> folder = pending.back();
        pending.pop_back();
        if (!visited.insert(folder->GetID()).second)
            continue;

        std::vector<std::shared_ptr<IDoxFile>> files;
        throwIfFailed(folder->GetFiles(files), QStringLiteral("GetFiles"));
        for (const auto &file : files) {
            if (!file || !isFolderFileExtension(fileExtension(file->GetName())))
                continue;
            QString path;
            throwIfFailed(file->GetLocalPath(folder->GetID(), path), QStringLiteral("GetLocalPath"));
            out.push_back(makeRecord(path, file->GetID(), folder->GetID(), file->GetCurrentVersion(), QString()));
        }

        std::vector<std::shared_ptr<IDoxFolder>> subFolders;
        throwIfFailed(folder->GetSubFolders(subFolders), QStringLiteral("GetSubFolders"));
        for (auto it = subFolders.rbegin(); it != subFolders.rend(); ++it) {
            if (*it)
                pending.push_back(*it);
        }
    }
}

std::int32_t referenceSetting(IDoxVariables *holder)
{
    std::int32_t setting = 0;
    if (!holder)
        return setting;
    if (throwIfFailed(readIntVariable(*holder, SourceRefsKey, 0, setting), SourceRefsKey) == S_OK)
        return setting;
    throwIfFailed(readIntVariable(*holder, RefVersionTypeKey, 0, setting), RefVersionTypeKey);
    return setting;
}

} // namespace

bool isFolderFileExtension(const QString &extension)
{
    static const QSet<QString> extensions{
        QStringLiteral("mcdprt"), QStringLiteral("mcdasm"), QStringLiteral("mcddrw"), QStringLiteral("prt"),
        QStringLiteral("asm"),    QStringLiteral("drw"),    QStringLiteral("dxf"),    QStringLiteral("dwg"),
        QStringLiteral("psd"),    QStringLiteral("ai"),     QStringLiteral("lfp"),    QStringLiteral("mcdlfp"),
        QStringLiteral("prtdot"), QStringLiteral("asmdot"), QStringLiteral("drwdot"), QStringLiteral("x_t"),
        QStringLiteral("x_b"),    QStringLiteral("xmt_txt"), QStringLiteral("xmt_bin"), QStringLiteral("igs"),
        QStringLiteral("iges"),   QStringLiteral("step"),   QStringLiteral("stp"),    QStringLiteral("sat"),
        QStringLiteral("vda"),    QStringLiteral("wrl"),    QStringLiteral("stl"),    QStringLiteral("kgr"),
        QStringLiteral("xpr"),    QStringLiteral("xas"),    QStringLiteral("ipt"),    QStringLiteral("iam"),
        QStringLiteral("par"),    QStringLiteral("psm"),    QStringLiteral("ckd"),    QStringLiteral("emn"),
        QStringLiteral("brd"),    QStringLiteral("bdf"),    QStringLiteral("idb"),    QStringLiteral("3dm"),
    };
    return extensions.contains(extension.toLower());
}

std::vector<FileRecord> buildFileRecords(IDoxVault *vault, IDoxVariables *holder, const DoxCmdDataArray &data,
                                         bool atRun)
{
    std::vector<FileRecord> records;
    for (const DoxCmdData &element : data) {
        if (element.long1 == DoxObject_File) {
            bool hasExtension = false;
            fileExtension(element.string1, &hasExtension);
            if (hasExtension)
                records.push_back(makeRecord(element.string1, element.objectId1, element.objectId2, element.long2,
                                             element.string2));
        } else if (element.long1 == DoxObject_Folder && vault) {
            expandFolder(*vault, element.objectId1, records);
        }
    }
    if (atRun && vault)
        resolveReferenceVersions(*vault, holder, records);
    return records;
}

void resolveReferenceVersions(IDoxVault &vault, IDoxVariables *holder, std::vector<FileRecord> &records)
{
    if (records.empty())
        return;
    const std::int32_t setting = referenceSetting(holder);
    std::vector<DoxReferenceQuery> queries;
    queries.reserve(records.size());
    for (const FileRecord &record : records)
        queries.push_back({record.docId, record.projId, record.version, record.path});
    std::vector<std::int32_t> versions;
    throwIfFailed(vault.ResolveReferenceVersions(queries, setting, versions),
                  QStringLiteral("ResolveReferenceVersions"));
    const size_t count = qMin(versions.size(), records.size());
    for (size_t i = 0; i < count; ++i)
        records[i].altVersion = versions[i];
}

#include "run/taskdetailsmodel.h"

#include "host/hosterror.h"
#include "host/idoxtask.h"
#include "host/idoxvault.h"
#include "run/filerecordbuilder.h"
#include "run/taskrunrecord.h"

namespace {

using Field = TaskDetailsModel::Field;

struct ColumnSpec {
    int textId;
    const char *english;
    int widthTenths;
    Field field;
};

const ColumnSpec SourceFile{116, "Source File", 3, Field::Name};
const ColumnSpec FileName{117, "File Name", 3, Field::Name};
const ColumnSpec Configuration{118, "Configuration", 3, Field::Configuration};
const ColumnSpec Printer{119, "Printer", 3, Field::Printer};
const ColumnSpec Version{120, "Version", 1, Field::Version};
const ColumnSpec FoundIn{121, "Found in", 6, Field::Folder};
const ColumnSpec OutputFile{122, "Output File", 8, Field::OutputFile};

std::vector<ColumnSpec> columnSpecs(std::int32_t taskType, bool finished)
{
    if (!finished)
        return {FileName, Version, FoundIn};
    switch (taskType) {
    case 1: return {SourceFile, Configuration, Version, FoundIn, OutputFile};
    case 2: return {FileName, Configuration, Printer, Version, FoundIn};
    default: return {FileName, Configuration, Version, FoundIn};
    }
}

} // namespace

TaskDetailsModel::TaskDetailsModel(std::int32_t taskType, bool finished, TextLookup text)
    : m_taskType(taskType), m_finished(finished)
{
    for (const ColumnSpec &column : columnSpecs(taskType, finished)) {
        const QString english = QString::fromLatin1(column.english);
        m_columns.push_back({column.textId, text ? text(column.textId, english) : english, column.widthTenths, column.field});
    }
}

HRESULT TaskDetailsModel::load(IDoxTaskInstance &instance, IDoxVault *vault)
{
    m_rows.clear();
    std::vector<FileRecord> records;
    HRESULT hr = TaskRunRecord::readList(instance, m_finished, records);
    if (hr != S_OK)
        return hr;
    if (vault) {
        try {
            resolveReferenceVersions(*vault, &instance, records);
        } catch (const HostError &e) {
            hr = e.code(); // the rows stay, with the versions as stored
        }
    }
    setRecords(records);
    return hr;
}

void TaskDetailsModel::setRecords(const std::vector<FileRecord> &records)
{
    m_rows.clear();
    m_rows.reserve(records.size());
    for (const FileRecord &record : records)
        m_rows.push_back(rowFor(record));
}

TaskDetailsModel::Row TaskDetailsModel::rowFor(const FileRecord &record) const
{
    Row row;
    const qsizetype slash = record.path.lastIndexOf(QLatin1Char('\\'));
    row.name = slash < 0 ? record.path : record.path.mid(slash + 1);
    row.folder = slash < 0 ? QString() : record.path.left(slash);
    row.configuration = record.conf;
    row.info = record.info;
    if (m_finished && m_taskType == 1)
        row.outputFile = record.info;
    row.version = record.effectiveVersion();
    row.secondVersion = record.altVersion;
    return row;
}

QString TaskDetailsModel::versionText(std::int32_t version, std::int32_t secondVersion)
{
    if (secondVersion != -1)
        return QStringLiteral("%1/%2").arg(version).arg(secondVersion);
    return QStringLiteral("%1/-").arg(version);
}

QString TaskDetailsModel::cellText(std::size_t row, std::size_t column) const
{
    if (row >= m_rows.size() || column >= m_columns.size())
        return {};
    const Row &r = m_rows[row];
    switch (m_columns[column].field) {
    case Field::Name: return r.name;
    case Field::Configuration: return r.configuration;
    case Field::Printer: return r.info;
    case Field::Version: return versionText(r.version, r.secondVersion);
    case Field::Folder: return r.folder;
    case Field::OutputFile: return r.outputFile;
    }
    return {};
}

QStringList TaskDetailsModel::rowTexts(std::size_t row) const
{
    QStringList texts;
    for (std::size_t c = 0; c < m_columns.size(); ++c)
        texts << cellText(row, c);
    return texts;
}

QStringList TaskDetailsModel::captions() const
{
    QStringList texts;
    for (const Column &column : m_columns)
        texts << column.caption;
    return texts;
}

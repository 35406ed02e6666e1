#pragma once

#include "common/translator.h"
#include "host/hresult.h"
#include "run/filerecord.h"

#include <QString>
#include <QStringList>
#include <cstdint>
#include <functional>
#include <vector>

class IDoxTaskInstance;
class IDoxVault;

// The values of an instance's details page: the files selected at launch
// until the instance has finished, then what its run produced or printed.
// The page owns its values; the window only shows them.
class TaskDetailsModel final
{
public:
    enum class Field { Name, Configuration, Printer, Version, Folder, OutputFile };

    struct Column {
        int textId = 0;
        QString caption;
        int widthTenths = 0; // of the list's width
        Field field = Field::Name;
    };

    struct Row {
        QString name;
        QString folder;
        QString configuration;
        QString info;
        QString outputFile;
        std::int32_t version = 0;
        std::int32_t secondVersion = -1;
    };

    TaskDetailsModel(std::int32_t taskType, bool finished, TextLookup text = {});

    // Reads the instance's list ("__output_list" once finished, else
    // "__selection_list") and, with a vault, refreshes the second versions as
    // a run does. A missing list or a failure leaves the rows empty; the
    // failure is returned.
    HRESULT load(IDoxTaskInstance &instance, IDoxVault *vault);
    void setRecords(const std::vector<FileRecord> &records);

    std::int32_t taskType() const { return m_taskType; }
    bool finished() const { return m_finished; }
    const std::vector<Column> &columns() const { return m_columns; }
    const std::vector<Row> &rows() const { return m_rows; }

    QString cellText(std::size_t row, std::size_t column) const;
    QStringList rowTexts(std::size_t row) const;
    QStringList captions() const;
    // A column's width in a list this wide (tenths, by integer division).
    static int columnWidth(const Column &column, int listWidth) { return listWidth / 10 * column.widthTenths; }

    // "%d/%d", or "%d/-" when there is no second version.
    static QString versionText(std::int32_t version, std::int32_t secondVersion);

private:
    Row rowFor(const FileRecord &record) const;

    std::int32_t m_taskType;
    bool m_finished;
    std::vector<Column> m_columns;
    std::vector<Row> m_rows;
};

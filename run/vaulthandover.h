#pragma once

#include "host/hresult.h"
#include "host/idoxvault.h"

#include <QString>
#include <functional>
#include <memory>
#include <vector>

class IDoxVariables;
class TaskRunRecord;

// The id of the folder that holds file: the looked-up folder's, else the
// file's parent. Host failures throw HostError.
std::int32_t folderIdOf(IDoxFile &file, IDoxFolder *folder);

// Brings what a run produced into the vault: the outputs in one batch, their
// data cards and references to their sources (conversions), one check-in,
// then the error log. Every failure is written to the error log through the
// reporter (context, then the host's name and description of the code) and
// returned; nothing here talks to the user.
class VaultHandOver final
{
public:
    using ErrorReporter = std::function<void(HRESULT code, const QString &context)>;

    static inline const QString CheckInComment = QStringLiteral("Mecadra Task Add-in");

    VaultHandOver(std::shared_ptr<IDoxVault> vault, IDoxVariables &instance, TaskRunRecord &record,
                  ErrorReporter report);

    // Adds the outputs that are not in the vault yet, fills cards and makes
    // references for conversions, and checks in every output the run holds.
    HRESULT addOutputs();
    // S_FALSE when there is no log file; else puts it into the vault (adding
    // it when the vault does not know it), appends its record and checks it in.
    HRESULT putErrorLog(const QString &errorLogPath);

    // Both run inside addOutputs for conversions; public for their own tests.
    HRESULT makeReferencesToSource();
    HRESULT fillDataCards();

private:
    void addOutputsOrThrow();
    void putErrorLogOrThrow(const QString &errorLogPath);
    void checkInOrThrow(const std::vector<DoxFolderPair> &files);
    // Logs context with hr and throws when hr failed.
    void check(HRESULT hr, const QString &context) const;

    std::shared_ptr<IDoxVault> m_vault;
    IDoxVariables &m_instance;
    TaskRunRecord &m_record;
    ErrorReporter m_report;
};

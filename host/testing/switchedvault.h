#pragma once

#include "host/idoxvault.h"

#include <QHash>
#include <QStringList>

#include <algorithm>
#include <functional>
#include <memory>
#include <vector>

// A vault that hands every call to another one and has switches that make
// its batch services fail: the creation of a service, any operation of a
// service by name ("BatchAdd.CommitAdd", "CheckIn.CheckIn",
// "References.Commit", "Update.Commit", ...), single files of an add (they
// never reach the other vault and come back from the commit with a failed
// result), and a last look at the add's results. Every service operation
// is recorded by name, in call order.
class SwitchedVault final : public IDoxVault
{
public:
    explicit SwitchedVault(std::shared_ptr<IDoxVault> inner) : m_inner(std::move(inner)) {}

    // Creating the utility with that number fails with hr.
    void failCreate(std::int32_t utility, HRESULT hr) { m_failCreate.insert(utility, hr); }
    // The named operation fails with hr, without reaching the other vault.
    void failOperation(const QString &name, HRESULT hr) { m_failOperation.insert(name, hr); }
    // A file added from this local path (any letter case) is kept back and
    // committed with hr as its result, with no ids.
    void failAdd(const QString &localPath, HRESULT hr) { m_failAdd.insert(localPath.toCaseFolded(), hr); }
    // Called with the results of every successful CommitAdd, to change them.
    std::function<void(std::vector<DoxBatchAddResult> &)> editAddResults;

    const QStringList &calls() const { return m_calls; }
    QStringList callsOf(const QString &service) const { return m_calls.filter(service + QLatin1Char('.')); }

    HRESULT GetName(QString &name) override { return m_inner->GetName(name); }
    HRESULT GetRootFolderPath(QString &path) override { return m_inner->GetRootFolderPath(path); }
    HRESULT GetFileFromPath(const QString &path, std::shared_ptr<IDoxFile> &file,
                            std::shared_ptr<IDoxFolder> &folder) override
    {
        return m_inner->GetFileFromPath(path, file, folder);
    }
    HRESULT GetFolderFromPath(const QString &path, std::shared_ptr<IDoxFolder> &folder) override
    {
        return m_inner->GetFolderFromPath(path, folder);
    }
    HRESULT GetFile(std::int32_t id, std::shared_ptr<IDoxFile> &file) override { return m_inner->GetFile(id, file); }
    HRESULT GetFolder(std::int32_t id, std::shared_ptr<IDoxFolder> &folder) override
    {
        return m_inner->GetFolder(id, folder);
    }
    HRESULT ResolveReferenceVersions(const std::vector<DoxReferenceQuery> &files, std::int32_t setting,
                                     std::vector<std::int32_t> &versions) override
    {
        return m_inner->ResolveReferenceVersions(files, setting, versions);
    }
    HRESULT GetCardVariableNames(QStringList &names) override { return m_inner->GetCardVariableNames(names); }
    HRESULT GetErrorInfo(HRESULT code, QString &name, QString &description) override
    {
        return m_inner->GetErrorInfo(code, name, description);
    }
    HRESULT BrowseForFiles(HostWindow owner, const QString &title, const QString &filter,
                           std::vector<std::shared_ptr<IDoxFile>> &files,
                           std::vector<std::shared_ptr<IDoxFolder>> &folders) override
    {
        return m_inner->BrowseForFiles(owner, title, filter, files, folders);
    }
    HRESULT BrowseForFolder(HostWindow owner, const QString &title, std::shared_ptr<IDoxFolder> &folder) override
    {
        return m_inner->BrowseForFolder(owner, title, folder);
    }

    HRESULT CreateUtility(std::int32_t utility, HostObjectPtr &service) override
    {
        if (const auto it = m_failCreate.constFind(utility); it != m_failCreate.cend())
            return *it;
        const HRESULT hr = m_inner->CreateUtility(utility, service);
        if (failed(hr))
            return hr;
        switch (utility) {
        case DoxUtil_BatchAdd:
            service = std::make_shared<Add>(*this, queryInterface<IDoxBatchAdd>(service));
            break;
        case DoxUtil_BatchCheckIn:
            service = std::make_shared<CheckIn>(*this, queryInterface<IDoxBatchCheckIn>(service));
            break;
        case DoxUtil_CustomReferences:
            service = std::make_shared<References>(*this, queryInterface<IDoxCustomReferences>(service));
            break;
        case DoxUtil_BatchUpdate:
            service = std::make_shared<Update>(*this, queryInterface<IDoxBatchUpdate>(service));
            break;
        default:
            break;
        }
        return hr;
    }

private:
    // Records the call; the switch's answer when one is set for it.
    HRESULT enter(const QString &name)
    {
        m_calls.append(name);
        return m_failOperation.value(name, S_OK);
    }

    class Add final : public IDoxBatchAdd
    {
    public:
        Add(SwitchedVault &vault, std::shared_ptr<IDoxBatchAdd> inner) : m_vault(vault), m_inner(std::move(inner)) {}
        HRESULT AddFileFromPath(const QString &localPath, const QString &folderPath) override
        {
            if (const HRESULT hr = m_vault.enter(QStringLiteral("BatchAdd.AddFileFromPath")); failed(hr))
                return hr;
            const auto kept = m_vault.m_failAdd.constFind(localPath.toCaseFolded());
            m_order.push_back(kept == m_vault.m_failAdd.cend() ? DoxBatchAddResult{S_OK, 0, 0, {}}
                                                               : DoxBatchAddResult{*kept, 0, 0, localPath});
            return kept == m_vault.m_failAdd.cend() ? m_inner->AddFileFromPath(localPath, folderPath) : S_OK;
        }
        HRESULT CommitAdd(std::vector<DoxBatchAddResult> &results) override
        {
            if (const HRESULT hr = m_vault.enter(QStringLiteral("BatchAdd.CommitAdd")); failed(hr))
                return hr;
            std::vector<DoxBatchAddResult> passed;
            const bool anyPassed = std::any_of(m_order.begin(), m_order.end(),
                                               [](const DoxBatchAddResult &r) { return r.path.isEmpty(); });
            if (anyPassed) {
                if (const HRESULT hr = m_inner->CommitAdd(passed); failed(hr))
                    return hr;
            }
            // The kept-back files take their places among the others' results.
            results.clear();
            std::size_t next = 0;
            for (const DoxBatchAddResult &entry : m_order)
                results.push_back(entry.path.isEmpty() && next < passed.size() ? passed[next++] : entry);
            if (m_vault.editAddResults)
                m_vault.editAddResults(results);
            return S_OK;
        }

    private:
        SwitchedVault &m_vault;
        std::shared_ptr<IDoxBatchAdd> m_inner;
        std::vector<DoxBatchAddResult> m_order; // empty path: passed on
    };

    class CheckIn final : public IDoxBatchCheckIn
    {
    public:
        CheckIn(SwitchedVault &vault, std::shared_ptr<IDoxBatchCheckIn> inner)
            : m_vault(vault), m_inner(std::move(inner))
        {
        }
        HRESULT SetComment(const QString &comment) override
        {
            const HRESULT hr = m_vault.enter(QStringLiteral("CheckIn.SetComment"));
            return failed(hr) ? hr : m_inner->SetComment(comment);
        }
        HRESULT AddSelection(const std::vector<DoxFolderPair> &files) override
        {
            const HRESULT hr = m_vault.enter(QStringLiteral("CheckIn.AddSelection"));
            return failed(hr) ? hr : m_inner->AddSelection(files);
        }
        HRESULT CreateTree() override
        {
            const HRESULT hr = m_vault.enter(QStringLiteral("CheckIn.CreateTree"));
            return failed(hr) ? hr : m_inner->CreateTree();
        }
        HRESULT CheckIn() override
        {
            const HRESULT hr = m_vault.enter(QStringLiteral("CheckIn.CheckIn"));
            return failed(hr) ? hr : m_inner->CheckIn();
        }

    private:
        SwitchedVault &m_vault;
        std::shared_ptr<IDoxBatchCheckIn> m_inner;
    };

    class References final : public IDoxCustomReferences
    {
    public:
        References(SwitchedVault &vault, std::shared_ptr<IDoxCustomReferences> inner)
            : m_vault(vault), m_inner(std::move(inner))
        {
        }
        HRESULT AddReferences(std::int32_t fromDocId, const std::vector<DoxFolderPair> &to) override
        {
            const HRESULT hr = m_vault.enter(QStringLiteral("References.AddReferences"));
            return failed(hr) ? hr : m_inner->AddReferences(fromDocId, to);
        }
        HRESULT IsCommitNeeded(bool &needed) override
        {
            const HRESULT hr = m_vault.enter(QStringLiteral("References.IsCommitNeeded"));
            return failed(hr) ? hr : m_inner->IsCommitNeeded(needed);
        }
        HRESULT Commit() override
        {
            const HRESULT hr = m_vault.enter(QStringLiteral("References.Commit"));
            return failed(hr) ? hr : m_inner->Commit();
        }

    private:
        SwitchedVault &m_vault;
        std::shared_ptr<IDoxCustomReferences> m_inner;
    };

    class Update final : public IDoxBatchUpdate
    {
    public:
        Update(SwitchedVault &vault, std::shared_ptr<IDoxBatchUpdate> inner) : m_vault(vault), m_inner(std::move(inner))
        {
        }
        HRESULT SetVariable(std::int32_t docId, const QString &variable, const QString &configuration,
                            const Variant &value) override
        {
            const HRESULT hr = m_vault.enter(QStringLiteral("Update.SetVariable"));
            return failed(hr) ? hr : m_inner->SetVariable(docId, variable, configuration, value);
        }
        HRESULT Commit() override
        {
            const HRESULT hr = m_vault.enter(QStringLiteral("Update.Commit"));
            return failed(hr) ? hr : m_inner->Commit();
        }

    private:
        SwitchedVault &m_vault;
        std::shared_ptr<IDoxBatchUpdate> m_inner;
    };

    std::shared_ptr<IDoxVault> m_inner;
    QHash<std::int32_t, HRESULT> m_failCreate;
    QHash<QString, HRESULT> m_failOperation;
    QHash<QString, HRESULT> m_failAdd;
    QStringList m_calls;
};

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
            service = std::make_shared<CheckInBatch>(*this, queryInterface<IDoxBatchCheckIn>(service));
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
    // Records the call; the switch's answer when one is set for it, else
    // what call gives.
    template <class Call>
    HRESULT pass(const char *name, Call call)
    {
        const QString operation = QString::fromLatin1(name);
        m_calls.append(operation);
        const HRESULT hr = m_failOperation.value(operation, S_OK);
        return failed(hr) ? hr : call();
    }

    // A service of the other vault seen through the switches.
    template <class Service>
    class Switched : public Service
    {
    public:
        Switched(SwitchedVault &vault, std::shared_ptr<Service> inner) : m_vault(vault), m_inner(std::move(inner)) {}

    protected:
        SwitchedVault &m_vault;
        std::shared_ptr<Service> m_inner;
    };

    class Add final : public Switched<IDoxBatchAdd>
    {
    public:
        using Switched::Switched;
        HRESULT AddFileFromPath(const QString &localPath, const QString &folderPath) override
        {
            return m_vault.pass("BatchAdd.AddFileFromPath", [&] {
                const auto kept = m_vault.m_failAdd.constFind(localPath.toCaseFolded());
                if (kept != m_vault.m_failAdd.cend()) {
                    m_order.push_back({*kept, 0, 0, localPath});
                    return S_OK;
                }
                m_order.push_back({S_OK, 0, 0, {}});
                return m_inner->AddFileFromPath(localPath, folderPath);
            });
        }
        HRESULT CommitAdd(std::vector<DoxBatchAddResult> &results) override
        {
            return m_vault.pass("BatchAdd.CommitAdd", [&] {
                std::vector<DoxBatchAddResult> passed;
                if (std::any_of(m_order.begin(), m_order.end(), [](const auto &r) { return r.path.isEmpty(); })) {
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
            });
        }

    private:
        std::vector<DoxBatchAddResult> m_order; // empty path: passed on
    };

    class CheckInBatch final : public Switched<IDoxBatchCheckIn>
    {
    public:
        using Switched::Switched;
        HRESULT SetComment(const QString &comment) override
        {
            return m_vault.pass("CheckIn.SetComment", [&] { return m_inner->SetComment(comment); });
        }
        HRESULT AddSelection(const std::vector<DoxFolderPair> &files) override
        {
            return m_vault.pass("CheckIn.AddSelection", [&] { return m_inner->AddSelection(files); });
        }
        HRESULT CreateTree() override { return m_vault.pass("CheckIn.CreateTree", [&] { return m_inner->CreateTree(); }); }
        HRESULT CheckIn() override { return m_vault.pass("CheckIn.CheckIn", [&] { return m_inner->CheckIn(); }); }
    };

    class References final : public Switched<IDoxCustomReferences>
    {
    public:
        using Switched::Switched;
        HRESULT AddReferences(std::int32_t fromDocId, const std::vector<DoxFolderPair> &to) override
        {
            return m_vault.pass("References.AddReferences", [&] { return m_inner->AddReferences(fromDocId, to); });
        }
        HRESULT IsCommitNeeded(bool &needed) override
        {
            return m_vault.pass("References.IsCommitNeeded", [&] { return m_inner->IsCommitNeeded(needed); });
        }
        HRESULT Commit() override { return m_vault.pass("References.Commit", [&] { return m_inner->Commit(); }); }
    };

    class Update final : public Switched<IDoxBatchUpdate>
    {
    public:
        using Switched::Switched;
        HRESULT SetVariable(std::int32_t docId, const QString &variable, const QString &configuration,
                            const Variant &value) override
        {
            return m_vault.pass("Update.SetVariable",
                                [&] { return m_inner->SetVariable(docId, variable, configuration, value); });
        }
        HRESULT Commit() override { return m_vault.pass("Update.Commit", [&] { return m_inner->Commit(); }); }
    };

    std::shared_ptr<IDoxVault> m_inner;
    QHash<std::int32_t, HRESULT> m_failCreate;
    QHash<QString, HRESULT> m_failOperation;
    QHash<QString, HRESULT> m_failAdd;
    QStringList m_calls;
};

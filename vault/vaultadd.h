#pragma once

#include <QString>
#include <QStringList>

#include <optional>
#include <stdexcept>
#include <utility>
#include <vector>

class VaultStore;

// A source the vault will not take: missing, no regular file, the vault's
// own data, or a name the vault cannot hold. Nothing has changed.
class VaultAddError final : public std::runtime_error
{
public:
    explicit VaultAddError(const QString &message) : std::runtime_error(message.toStdString()) {}
    QString message() const { return QString::fromStdString(what()); }
};

// Adding files to the vault, or new versions of files it holds: which files
// the sources stand for, then all of them in one transaction, checked in,
// with the revision, workflow state and card values asked for.
class VaultAdd final
{
public:
    struct Item {
        QString source; // native file
        QString folder; // relative vault folder
        QString name;
    };
    enum class Action { Added, NewVersion, Unchanged };
    struct Result {
        int id = 0;
        QString path; // the vault path
        int version = 0;
        Action action = Action::Added;
    };
    // What new versions get; unset labels keep the vault's defaults (a
    // new version keeps its file's labels).
    struct Labels {
        std::optional<QString> revision;
        std::optional<QString> state;
        std::vector<std::pair<QString, QString>> cards; // name, value
    };

    explicit VaultAdd(VaultStore &store);

    // Takes the files one source stands for: a file, or every regular file
    // below a folder, keeping the folder's own name and structure. source is
    // a vault path or a native one (relative to the current folder). They go
    // to folder (relative to the vault root) when given, else where they lie
    // inside the vault, else to the root. What is not a regular file below a
    // folder (a FIFO, a device, a broken link) is put in skipped(); the
    // vault's own data folder is never taken. Throws VaultAddError.
    void addSource(const QString &source, const std::optional<QString> &folder);

    const std::vector<Item> &items() const { return m_items; }
    const QStringList &skipped() const { return m_skipped; }

    // Adds every item in one transaction: a new file, a new version when the
    // bytes differ from its latest version, else nothing. Throws
    // VaultAddError for a name the vault cannot hold before anything
    // changes, HostError when the vault refuses (and nothing is kept).
    std::vector<Result> commit(const Labels &labels);

    static QString actionText(Action action);

private:
    VaultStore &m_store;
    std::vector<Item> m_items;
    QStringList m_skipped;
};

#pragma once

#include <QChar>
#include <QString>
#include <QStringList>

// Paths of the vault's local view. Inside the vault every path is relative
// to the root, with "\" between components ("Folder\Sub\a.mcdprt", the root
// is ""); its look-up key is the lower-cased form, since paths compare
// without regard to case as on Windows. Outside, the view is seen either as
// Windows paths on the vault's drive ("V:\Folder\a.mcdprt") or as native
// paths under the vault folder.
class VaultPaths final
{
public:
    VaultPaths(QChar driveLetter, const QString &nativeRoot);

    QChar driveLetter() const { return m_letter; }
    QString nativeRoot() const { return m_root; }
    // "V:" (no trailing backslash).
    QString windowsRoot() const;

    // Relative path -> "V:\..." ("" -> "V:").
    QString toWindows(const QString &relative) const;
    // Relative path -> native path under the root ("" -> the root).
    QString toNative(const QString &relative) const;

    // Like toNative, but each component that does not exist in the written
    // case is matched without regard to case against what is on disk (kept
    // as written when nothing matches).
    QString findNative(const QString &relative) const;

    // A Windows path on this drive or a native path under the root ->
    // relative path, with "." and ".." resolved and separators unified.
    // False when the path lies outside the vault (another drive, a native
    // path elsewhere, ".." above the root, a relative path).
    bool toRelative(const QString &path, QString &relative) const;

    static QString key(const QString &relative) { return relative.toLower(); }
    static QString join(const QString &folder, const QString &name);
    static QString fileName(const QString &relative);
    static QString parentOf(const QString &relative);
    // True for a name a vault file or folder may have.
    static bool isValidName(const QString &name);
    // True for the vault's own data folder (".mctask" at the root) and what
    // lies in it: never part of the vault's contents.
    static bool isReserved(const QString &relative);

private:
    QChar m_letter;
    QString m_root;
};

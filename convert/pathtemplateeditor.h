#pragma once

#include "common/translator.h"

#include <QObject>
#include <QPointer>
#include <QString>
#include <cstdint>
#include <functional>
#include <memory>

class IDoxVault;
class PlaceholderEdit;
class QLabel;
#include <QMenu>
class QPushButton;

// Binds an output path editor to its ">" button and its example line: the
// button opens the menu of the nine placeholders, every change rebuilds the
// example and turns a leading vault root into "<VaultPath>".
class PathTemplateEditor final : public QObject
{
public:
    PathTemplateEditor(PlaceholderEdit *edit, QPushButton *button, QLabel *example, const TextLookup &text);

    // The vault root path, and the date of the example in the vault's style.
    void setVault(const std::shared_ptr<IDoxVault> &vault);
    void setExtension(std::function<QString()> extension) { m_extension = std::move(extension); }

    void setText(const QString &text);
    QString text() const;
    QMenu *menu() const { return m_menu; }
    // Rebuilds the example line (and applies the vault root rule).
    void refresh();

private:
    PlaceholderEdit *m_edit;
    QPushButton *m_button;
    QLabel *m_example;
    QPointer<QMenu> m_menu;
    QString m_exampleWord;
    QString m_vaultRoot;
    QString m_today;
    std::function<QString()> m_extension;
    bool m_refreshing = false;
};

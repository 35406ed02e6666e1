#include "convert/pathtemplateeditor.h"

#include "common/widgets/placeholderedit.h"
#include "convert/conversionsettings.h"
#include "host/idoxvault.h"
#include "macro/dateformat.h"
#include "macro/outputnames.h"
#include "macro/vaultdatestyle.h"
#include "platform/clock.h"

#include <QLabel>
#include <QMenu>
#include <QPushButton>

namespace {
constexpr std::int32_t ExampleTextId = 123;
}

PathTemplateEditor::PathTemplateEditor(PlaceholderEdit *edit, QPushButton *button, QLabel *example,
                                       const TextLookup &text)
    : QObject(edit), m_edit(edit), m_button(button), m_example(example)
{
    const auto translated = [&](std::int32_t number, const QString &english) {
        return text ? text(number, english) : english;
    };
    m_exampleWord = lookupText(text, ExampleTextId, "Example");
    m_menu = new QMenu(button);
    m_menu->setObjectName(button->objectName() + QStringLiteral("Menu"));
    for (const OutputPlaceholder &entry : outputPathPlaceholders()) {
        const QString name = translated(entry.textId, entry.displayName);
        m_edit->addPattern(name, entry.placeholder);
        QAction *action = m_menu->addAction(name);
        const QString placeholder = entry.placeholder;
        connect(action, &QAction::triggered, this, [this, placeholder] { m_edit->insertPlaceholder(placeholder); });
    }
    connect(button, &QPushButton::clicked, this, [this] { m_menu->popup(m_button->mapToGlobal(QPoint(0, 0))); });
    connect(edit, &PlaceholderEdit::textEdited, this, [this] { refresh(); });
    m_today = todayText(Clock::instance().now(), 0);
}

void PathTemplateEditor::setVault(const std::shared_ptr<IDoxVault> &vault)
{
    if (!vault)
        return;
    QString root;
    QString name;
    if (succeeded(vault->GetRootFolderPath(root)))
        m_vaultRoot = root;
    if (succeeded(vault->GetName(name)))
        m_today = todayText(Clock::instance().now(), GetVaultDateStyle(name));
    refresh();
}

void PathTemplateEditor::setText(const QString &text)
{
    m_edit->setText(text);
    refresh();
}

QString PathTemplateEditor::text() const
{
    return m_edit->text();
}

void PathTemplateEditor::refresh()
{
    if (m_refreshing)
        return;
    m_refreshing = true;
    const QString text = m_edit->text();
    // Typing or pasting a path inside the vault keeps a vault-relative template.
    const QString relative = withVaultPathPlaceholder(text, m_vaultRoot);
    if (relative != text) {
        m_edit->setText(relative);
        m_edit->moveCursor(QTextCursor::End);
    }
    const QString extension = m_extension ? m_extension() : QString();
    m_example->setText(m_exampleWord + QStringLiteral(": ") + examplePath(relative, m_vaultRoot, m_today, extension));
    m_refreshing = false;
}

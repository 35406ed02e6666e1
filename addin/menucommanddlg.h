#pragma once

#include "addin/addinservices.h"
#include "addin/taskpage.h"

#include <QPointer>
#include <QWidget>
#include <memory>

namespace Ui {
class MenuCommandDlg;
}

// The set-up page "Menu Command": whether the task offers a menu command in
// the explorer, with which text and status-bar help. Only the display flag
// is a task variable; text and help live in the host's menu-command list.
class CMenuCommandDlg final : public MenuCommandPage
{
public:
    static constexpr int MenuTextLimit = 255;
    static constexpr int HelpTextLimit = 1020;

    explicit CMenuCommandDlg(std::int32_t taskType, TextLookup text = {});
    ~CMenuCommandDlg() override;

    HostWindow create(HostWindow parent) override;
    HostWindow window() const override { return m_window; }
    // Needs the task properties (the host's menu-command list).
    HRESULT load(IDoxVariables &holder) override;
    // S_FALSE when the page refuses its values; nothing is written then.
    HRESULT save(IDoxVariables &holder) override;
    bool takeControlValues() override;

    bool displayMenuCommand() const override { return m_display; }
    QString menuText() const override { return m_menuText; }
    QString statusBarHelp() const override { return m_help; }

    // Values as an administrator enters them (into the controls when the
    // window exists).
    void setDisplayMenuCommand(bool display);
    void setMenuText(const QString &text);
    void setStatusBarHelp(const QString &text);

private:
    QString text(std::int32_t number, const char *english) const;
    void showValues();

    std::int32_t m_taskType;
    TextLookup m_text;
    bool m_display = false;
    QString m_menuText;
    QString m_help;
    QPointer<QWidget> m_window;
    std::unique_ptr<Ui::MenuCommandDlg> m_ui;
};

#pragma once

#include "addin/addinservices.h"
#include "addin/taskpage.h"
#include "script/mecadraversions.h"

#include <QPointer>
#include <QWidget>
#include <functional>
#include <memory>

class QMenu;
class QDialog;
class IDoxTaskProperties;

namespace Ui {
class ScriptPageDlg;
}

// The editor of a task's macro ("__script") with the Mecadra version to
// start ("__mc_version") and the task kind ("__type"). In page mode it is
// the "Script" set-up page of an execute-script task; in dialog mode it is
// the "Advanced Scripting Options" dialog of the other kinds.
//
// The page keeps what the window shows (editor text, selected kind and
// version, whether "Reset..." is enabled) so every rule holds without a
// window; the window, made on demand, mirrors those values.
class CScriptPageDlg final : public TaskPage
{
public:
    struct Macro {
        std::int32_t textNumber;
        const char *english;
        const char *placeholder;
    };
    // The entries of "Insert Macro >", in menu order.
    static const std::vector<Macro> &macros();

    using ProductList = std::function<std::vector<InstalledProducts::Product>()>;
    using TemplateSource = std::function<QString(std::int32_t kind)>;

    // Products and templates come from the machine and the module unless
    // given (tests).
    CScriptPageDlg(bool pageMode, std::int32_t taskType, TextLookup text = {}, ProductList products = {},
                   TemplateSource templates = {});
    ~CScriptPageDlg() override;

    HostWindow create(HostWindow parent) override;
    HostWindow window() const override;
    HRESULT load(IDoxVariables &holder) override;
    // Page mode takes the shown values first.
    HRESULT save(IDoxVariables &holder) override;
    bool takeControlValues() override;

    // Dialog mode: runs the dialog; true when it ended with "OK" (values taken).
    bool exec(QWidget *parent);

    // Stored values (as loaded, or as last taken).
    const QString &script() const { return m_script; }
    std::int32_t version() const { return m_version; }
    std::int32_t taskType() const { return m_taskType; }

    // What the window shows.
    const QString &editorText() const { return m_editorText; }
    std::int32_t selectedKind() const { return m_selectedKind; }
    const std::vector<VersionChoice> &versionChoices() const { return m_versions; }
    std::size_t selectedVersion() const { return m_selectedVersion; }
    bool resetEnabled() const { return m_resetEnabled; }

    // What the administrator does.
    void editScript(const QString &text);
    void selectKind(std::int32_t kind);
    void selectVersion(std::size_t index);
    // "Reset...": asks first; true when the template replaced the script.
    bool reset();
    // "OK" of the dialog: a changed kind brings its template first.
    void acceptDialog();

    QString templateText(std::int32_t kind) const;

private:
    QString text(std::int32_t number, const char *english) const;
    void prepare();
    void showEditorText();
    void showValues();
    void takeValues();
    void buildWindow(QWidget *window);
    void insertMacro(const QString &placeholder);

    bool m_pageMode;
    std::int32_t m_taskType;
    TextLookup m_text;
    ProductList m_products;
    TemplateSource m_templates;

    QString m_script;
    std::int32_t m_version = 0;

    bool m_prepared = false;
    QString m_editorText;
    std::int32_t m_selectedKind = 3;
    std::vector<VersionChoice> m_versions;
    std::size_t m_selectedVersion = 0;
    bool m_resetEnabled = false;

    QPointer<QWidget> m_window;
    QPointer<QDialog> m_dialog;
    std::unique_ptr<Ui::ScriptPageDlg> m_ui;
    QPointer<QMenu> m_macroMenu;
    bool m_showing = false; // values are going into the controls
    QString m_shownScript;  // the script the editor was last filled from
};

// "Advanced Scripting Options" for a task of any kind: loads the page in
// dialog mode from props, runs it and saves when it ends with "OK". S_FALSE
// when cancelled; a host failure of the load or the save is shown over
// parent and returned.
HRESULT runAdvancedScriptingOptions(IDoxTaskProperties &props, std::int32_t taskType, QWidget *parent,
                                    TextLookup text = {});

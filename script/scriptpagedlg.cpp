#include "script/scriptpagedlg.h"

#include "addin/taskcatalogue.h"
#include "settings/tasksettings.h"
#include "common/help/help.h"
#include "common/translator.h"
#include "common/widgets/icons.h"
#include "common/widgets/prompter.h"
#include "common/widgets/strwnd.h"
#include "host/idoxtask.h"
#include "macro/templateloader.h"

#include "ui_scriptpagedlg.h"

#include <QDialog>
#include <QFontDatabase>
#include <QMenu>
#include <QVBoxLayout>

#include <algorithm>
#include <cstdint>
#include <vector>

namespace {

constexpr std::int32_t ScriptIcon = 229;

struct KindEntry {
    std::int32_t textNumber;
    const char *english;
    std::int32_t kind;
};
const KindEntry KindEntries[] = {{89, "File Conversion", 1}, {90, "Printing", 2}, {91, "General", 3}};

// The editor shows lines; the script keeps the line ends it came with
// (the templates end theirs with CR LF, a pasted line may not).
QString shownText(const QString &script)
{
    QString text = script;
    return text.replace(QLatin1String("\r\n"), QLatin1String("\n"));
}

// The editor's text with the line ends of base, the script it was shown
// from: every line that is still there keeps its own end; lines typed in
// place of others take the ends of the lines they replace, further new lines
// the end of the line before them.
QString scriptText(const QString &shown, const QString &base)
{
    struct Line {
        QStringView text;
        QStringView end;
    };
    const auto split = [](QStringView text, bool crlf) {
        std::vector<Line> lines;
        for (qsizetype start = 0;;) {
            const qsizetype lf = text.indexOf(u'\n', start);
            if (lf < 0) {
                lines.push_back({text.mid(start), {}});
                return lines;
            }
            const bool cr = crlf && lf > start && text[lf - 1] == u'\r';
            lines.push_back({text.mid(start, lf - start - (cr ? 1 : 0)), text.mid(lf - (cr ? 1 : 0), cr ? 2 : 1)});
            start = lf + 1;
        }
    };
    const std::vector<Line> before = split(base, true);
    std::vector<Line> after = split(shown, false);
    const std::size_t m = before.size();
    const std::size_t n = after.size();

    // Lines still there: the longest common subsequence, inside the common
    // head and tail that a single edit leaves.
    std::size_t head = 0;
    while (head < m && head < n && before[head].text == after[head].text)
        ++head;
    std::size_t tail = 0;
    while (tail < m - head && tail < n - head && before[m - 1 - tail].text == after[n - 1 - tail].text)
        ++tail;
    const std::size_t rows = m - head - tail;
    const std::size_t cols = n - head - tail;
    std::vector<std::uint32_t> lcs((rows + 1) * (cols + 1), 0);
    const auto at = [&](std::size_t i, std::size_t j) -> std::uint32_t & { return lcs[i * (cols + 1) + j]; };
    for (std::size_t i = rows; i-- > 0;)
        for (std::size_t j = cols; j-- > 0;)
            at(i, j) = before[head + i].text == after[head + j].text ? at(i + 1, j + 1) + 1
                                                                     : std::max(at(i + 1, j), at(i, j + 1));
    std::vector<std::pair<std::size_t, std::size_t>> kept; // (line of base, line of the editor)
    for (std::size_t i = 0; i < head; ++i)
        kept.emplace_back(i, i);
    for (std::size_t i = 0, j = 0; i < rows && j < cols;) {
        if (before[head + i].text == after[head + j].text) {
            kept.emplace_back(head + i++, head + j++);
        } else if (at(i + 1, j) >= at(i, j + 1)) {
            ++i;
        } else {
            ++j;
        }
    }
    for (std::size_t k = tail; k > 0; --k)
        kept.emplace_back(m - k, n - k);
    kept.emplace_back(m, n); // the end of both

    // The end of a line of base, or of the nearest one before it that has one.
    const auto endOf = [&](std::size_t line) -> QStringView {
        for (std::size_t j = std::min(line, m - 1) + 1; j-- > 0;)
            if (!before[j].end.isEmpty())
                return before[j].end;
        return u"\n";
    };
    std::size_t previousBase = 0;
    std::size_t previousShown = 0;
    bool started = false;
    for (const auto &[baseLine, shownLine] : kept) {
        // The lines between two kept ones: edited in place, or new.
        const std::size_t firstBase = started ? previousBase + 1 : 0;
        const std::size_t firstShown = started ? previousShown + 1 : 0;
        const std::size_t replaced = baseLine - firstBase;
        for (std::size_t k = 0; firstShown + k < shownLine; ++k) {
            Line &line = after[firstShown + k];
            if (k < replaced)
                line.end = endOf(firstBase + k);
            else if (replaced > 0)
                line.end = endOf(baseLine - 1);
            else
                line.end = started ? endOf(previousBase) : endOf(0);
        }
        if (shownLine < n)
            after[shownLine].end = endOf(baseLine);
        previousBase = baseLine;
        previousShown = shownLine;
        started = true;
    }
    after.back().end = {}; // the last line has no end

    QString text;
    text.reserve(shown.size() + shown.size() / 16);
    for (const Line &line : after) {
        text += line.text;
        text += line.end;
    }
    return text;
}

QString loadTemplate(std::int32_t kind)
{
    return loadScriptTemplate(TaskCatalogue::kind(kind).scriptTemplate, [](const QString &message) {
        Prompter::instance().message(nullptr, message, QStringLiteral("Mecadra Task Add-in"), Prompter::Icon::Warning);
    });
}

} // namespace

const std::vector<CScriptPageDlg::Macro> &CScriptPageDlg::macros()
{
    static const std::vector<Macro> list{
        {23, "Source File Name", "<Filename>"},        {24, "Source File Extension", "<Extension>"},
        {25, "Configuration Name", "<Configuration>"}, {26, "Source Folder Path", "<Path>"},
        {27, "Vault Root Folder Path", "<VaultPath>"}, {88, "Task Instance GUID", "<TaskInstanceGuid>"},
        {160, "Source File Path", "<Filepath>"},
    };
    return list;
}

CScriptPageDlg::CScriptPageDlg(bool pageMode, std::int32_t taskType, TextLookup text, ProductList products,
                               TemplateSource templates)
    : m_pageMode(pageMode), m_taskType(taskType), m_text(std::move(text)), m_products(std::move(products)),
      m_templates(std::move(templates))
{
    if (!m_products)
        m_products = [] { return InstalledProducts::list(); };
    if (!m_templates)
        m_templates = loadTemplate;
}

CScriptPageDlg::~CScriptPageDlg()
{
    delete m_window.data();
}

QString CScriptPageDlg::text(std::int32_t number, const char *english) const
{
    return lookupText(m_text, number, english);
}

QString CScriptPageDlg::templateText(std::int32_t kind) const
{
    return m_templates(kind);
}

HostWindow CScriptPageDlg::window() const
{
    return m_window;
}

HRESULT CScriptPageDlg::load(IDoxVariables &holder)
{
    QString script;
    if (const HRESULT hr = readTextVariable(holder, TaskKeys::Script, QString(), script); failed(hr))
        return hr;
    if (const HRESULT hr = readIntVariable(holder, TaskKeys::McVersion, m_version, m_version); failed(hr))
        return hr;
    if (const HRESULT hr = readIntVariable(holder, TaskKeys::Type, m_taskType, m_taskType); failed(hr))
        return hr;
    m_script = script;
    m_prepared = false;
    prepare();
    showValues();
    return S_OK;
}

void CScriptPageDlg::prepare()
{
    if (m_prepared)
        return;
    m_prepared = true;
    const QString kindTemplate = templateText(m_taskType);
    if (m_script.isEmpty())
        m_script = kindTemplate;
    m_editorText = m_script;
    m_resetEnabled = !m_pageMode && m_script != kindTemplate;
    m_selectedKind = m_taskType;
    m_versions = mecadraVersionChoices(m_products(), text(1, "<Use default>"));
    m_selectedVersion = versionChoiceIndex(m_versions, m_version);
}

void CScriptPageDlg::editScript(const QString &text)
{
    prepare();
    m_editorText = text;
    if (!m_pageMode)
        m_resetEnabled = true;
    showEditorText();
}

void CScriptPageDlg::selectKind(std::int32_t kind)
{
    prepare();
    m_selectedKind = kind;
    if (m_window && !m_showing) {
        m_showing = true;
        for (int i = 0; i < m_ui->kindCombo->count(); ++i)
            if (m_ui->kindCombo->itemData(i).toInt() == kind)
                m_ui->kindCombo->setCurrentIndex(i);
        m_showing = false;
    }
    if (m_pageMode && kind != m_taskType) {
        // The other kind's pages appear only when the dialog is opened again.
        editScript(templateText(kind));
        Prompter::instance().message(
            m_window,
            text(124, "You must restart the task property dialog box in order to see the new user interface."),
            QStringLiteral("Mecadra Task Add-in"), Prompter::Icon::Information);
    }
}

void CScriptPageDlg::selectVersion(std::size_t index)
{
    prepare();
    if (index < m_versions.size())
        m_selectedVersion = index;
    if (m_window && !m_showing) {
        m_showing = true;
        m_ui->versionCombo->setCurrentIndex(static_cast<int>(m_selectedVersion));
        m_showing = false;
    }
}

bool CScriptPageDlg::reset()
{
    prepare();
    if (!Prompter::instance().askYesNo(
            m_window, text(127, "Are you sure you want to discard any changes you have made to the script?"),
            text(128, "Reset")))
        return false;
    editScript(templateText(m_selectedKind));
    m_resetEnabled = false;
    if (m_window)
        m_ui->resetButton->setEnabled(false);
    return true;
}

void CScriptPageDlg::acceptDialog()
{
    prepare();
    if (m_selectedKind != m_taskType) {
        editScript(templateText(m_selectedKind));
        Prompter::instance().message(
            m_window,
            text(124, "You must restart the task property dialog box in order to see the new user interface."),
            QStringLiteral("Mecadra Task Add-in"), Prompter::Icon::Information);
    }
    takeValues();
}

void CScriptPageDlg::takeValues()
{
    prepare();
    m_script = m_editorText;
    m_version = m_selectedVersion < m_versions.size() ? m_versions[m_selectedVersion].year : 0;
    m_taskType = m_selectedKind;
}

bool CScriptPageDlg::takeControlValues()
{
    takeValues();
    return true;
}

HRESULT CScriptPageDlg::save(IDoxVariables &holder)
{
    if (m_pageMode)
        takeValues();
    const HRESULT hr = writeTextVariable(holder, TaskKeys::Script, m_script);
    if (failed(hr))
        return hr;
    writeIntVariable(holder, TaskKeys::McVersion, m_version);
    writeIntVariable(holder, TaskKeys::Type, m_taskType);
    return hr;
}

HostWindow CScriptPageDlg::create(HostWindow parent)
{
    delete m_window.data();
    prepare();
    if (m_pageMode) {
        m_window = new QWidget(parent);
    } else {
        m_dialog = new QDialog(parent);
        m_dialog->setSizeGripEnabled(true);
        m_window = m_dialog;
    }
    buildWindow(m_window);
    return m_window;
}

void CScriptPageDlg::buildWindow(QWidget *window)
{
    m_ui = std::make_unique<Ui::ScriptPageDlg>();
    m_ui->setupUi(window);
    m_ui->scriptEdit->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    m_ui->scriptEdit->setLineWrapMode(QPlainTextEdit::NoWrap);
    if (m_pageMode) {
        m_ui->resetButton->hide();
        m_ui->buttons->hide();
        window->setWindowTitle(QString());
    }
    window->setWindowIcon(ProjectIcons::icon(ScriptIcon));

    // The kind list is sorted by its text, as the list shows it.
    std::vector<std::pair<QString, std::int32_t>> kinds;
    for (const KindEntry &entry : KindEntries)
        kinds.emplace_back(text(entry.textNumber, entry.english), entry.kind);
    std::sort(kinds.begin(), kinds.end(),
              [](const auto &a, const auto &b) { return a.first.compare(b.first, Qt::CaseInsensitive) < 0; });
    for (const auto &[caption, kind] : kinds)
        m_ui->kindCombo->addItem(caption, kind);
    for (const VersionChoice &choice : m_versions)
        m_ui->versionCombo->addItem(choice.text, choice.year);

    m_macroMenu = new QMenu(window);
    m_macroMenu->setObjectName(QStringLiteral("insertMacroMenu"));
    for (const Macro &macro : macros()) {
        QAction *action = m_macroMenu->addAction(text(macro.textNumber, macro.english));
        const QString placeholder = QString::fromLatin1(macro.placeholder);
        QObject::connect(action, &QAction::triggered, window, [this, placeholder] { insertMacro(placeholder); });
    }
    (new StrWnd(window))->localise(QStringLiteral("ScriptPageDlg"));

    QObject::connect(m_ui->scriptEdit, &QPlainTextEdit::textChanged, window, [this] {
        if (m_showing)
            return;
        m_editorText = scriptText(m_ui->scriptEdit->toPlainText(), m_shownScript);
        if (!m_pageMode) {
            m_resetEnabled = true;
            m_ui->resetButton->setEnabled(true);
        }
    });
    QObject::connect(m_ui->kindCombo, &QComboBox::currentIndexChanged, window, [this](int index) {
        if (!m_showing && index >= 0)
            selectKind(m_ui->kindCombo->itemData(index).toInt());
    });
    QObject::connect(m_ui->versionCombo, &QComboBox::currentIndexChanged, window, [this](int index) {
        if (!m_showing && index >= 0)
            selectVersion(static_cast<std::size_t>(index));
    });
    QObject::connect(m_ui->resetButton, &QPushButton::clicked, window, [this] { reset(); });
    QObject::connect(m_ui->insertMacroButton, &QPushButton::clicked, window, [this] {
        m_macroMenu->popup(m_ui->insertMacroButton->mapToGlobal(QPoint(0, 0)));
    });
    if (m_dialog) {
        QObject::connect(m_ui->buttons, &QDialogButtonBox::accepted, m_dialog, [this] {
            acceptDialog();
            m_dialog->accept();
        });
        QObject::connect(m_ui->buttons, &QDialogButtonBox::rejected, m_dialog, &QDialog::reject);
        QPushButton *help = m_ui->buttons->button(QDialogButtonBox::Help);
        help->setObjectName(QStringLiteral("helpButton"));
        connectHelp(m_dialog, help, QStringLiteral("ScriptPageDlg"));
    }
    showValues();
}

void CScriptPageDlg::showEditorText()
{
    if (!m_window)
        return;
    m_shownScript = m_editorText;
    const QString shown = shownText(m_editorText);
    if (m_ui->scriptEdit->toPlainText() == shown)
        return;
    m_showing = true;
    m_ui->scriptEdit->setPlainText(shown);
    m_showing = false;
}

void CScriptPageDlg::showValues()
{
    if (!m_window)
        return;
    showEditorText();
    m_showing = true;
    m_ui->kindCombo->setCurrentIndex(m_ui->kindCombo->findData(m_selectedKind));
    m_ui->versionCombo->setCurrentIndex(static_cast<int>(m_selectedVersion));
    m_ui->resetButton->setEnabled(m_resetEnabled);
    m_showing = false;
}

void CScriptPageDlg::insertMacro(const QString &placeholder)
{
    // One edit step: undo takes the whole placeholder back.
    m_ui->scriptEdit->textCursor().insertText(placeholder);
}

bool CScriptPageDlg::exec(QWidget *parent)
{
    if (!m_dialog)
        create(parent);
    return m_dialog->exec() == QDialog::Accepted;
}

HRESULT runAdvancedScriptingOptions(IDoxTaskProperties &props, std::int32_t taskType, QWidget *parent,
                                    TextLookup text)
{
    CScriptPageDlg dialog(false, taskType, std::move(text));
    HRESULT hr = dialog.load(props);
    if (succeeded(hr)) {
        if (!dialog.exec(parent))
            return S_FALSE;
        hr = dialog.save(props);
    }
    if (failed(hr))
        Prompter::showError(parent, hr);
    return hr;
}

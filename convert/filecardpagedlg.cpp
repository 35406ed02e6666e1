#include "convert/filecardpagedlg.h"

#include "settings/tasksettings.h"
#include "common/translator.h"
#include "common/widgets/icons.h"
#include "common/widgets/strwnd.h"
#include "host/idoxvault.h"

#include "ui_filecardpagedlg.h"

#include <QHeaderView>

namespace {

struct Kind {
    std::int32_t kind;
    std::int32_t textId;
    const char *english;
    int icon;
};

// The source kinds in the order of the source list.
constexpr Kind Kinds[] = {
    {1, 23, "Source File Name", 229},
    {2, 81, "Source File Path", 122},
    {3, 82, "Source Configuration", 164},
    {4, 83, "Source Revision Number", 158},
    {5, 84, "Source Version Number", 156},
    {6, 85, "Source Workflow State", 131},
    {7, 86, "Conversion Date and Time", 260},
    {8, 87, "Free Text", 220},
};
constexpr int CardVariableIcon = 157;
constexpr std::int32_t FreeText = 8;
constexpr std::int32_t CardVariable = 100;
constexpr int GroupSelected = 0;

int iconOf(std::int32_t kind)
{
    for (const Kind &k : Kinds)
        if (k.kind == kind)
            return k.icon;
    return CardVariableIcon;
}

} // namespace

CFileCardPageDlg::CFileCardPageDlg(const PageContext &context, TextLookup text)
    : m_context(context), m_text(std::move(text))
{
}

CFileCardPageDlg::~CFileCardPageDlg()
{
    delete m_window.data();
}

QString CFileCardPageDlg::text(std::int32_t number, const char *english) const
{
    return lookupText(m_text, number, english);
}

QString CFileCardPageDlg::kindName(std::int32_t kind) const
{
    for (const Kind &k : Kinds)
        if (k.kind == kind)
            return text(k.textId, k.english);
    return {};
}

QString CFileCardPageDlg::sourceText(const FileCardRow &row) const
{
    return row.kind == FreeText || row.kind == CardVariable ? row.text : kindName(row.kind);
}

bool CFileCardPageDlg::knownVariable(const QString &name) const
{
    return m_names.contains(name);
}

HRESULT CFileCardPageDlg::readVariableNames()
{
    if (m_namesRead)
        return S_OK;
    if (m_context.vault) {
        QStringList names;
        // Not marked as read on a failure: Load asks again and reports it.
        if (const HRESULT hr = m_context.vault->GetCardVariableNames(names); failed(hr))
            return hr;
        names.sort(Qt::CaseSensitive);
        names.removeDuplicates();
        m_names = names;
    }
    m_namesRead = true;
    fillLists();
    return S_OK;
}

HostWindow CFileCardPageDlg::create(HostWindow parent)
{
    delete m_window.data();
    m_window = new QWidget(parent);
    m_ui = std::make_unique<Ui::FileCardPageDlg>();
    m_ui->setupUi(m_window);
    auto *helper = m_helper = new StrWnd(m_window);
    helper->localise(QStringLiteral("FileCardPageDlg"));
    for (QWidget *control : {static_cast<QWidget *>(m_ui->destinationList), static_cast<QWidget *>(m_ui->sourceList),
                             static_cast<QWidget *>(m_ui->freeTextEdit), static_cast<QWidget *>(m_ui->removeButton)})
        helper->addControl(GroupSelected, control);
    m_ui->mappingList->setHeaderLabels({text(80, "Source"), text(79, "Destination Variable")});
    m_ui->mappingList->header()->setSectionResizeMode(QHeaderView::Stretch);

    QObject::connect(m_ui->addButton, &QPushButton::clicked, m_window, [this] { addRow(); });
    QObject::connect(m_ui->removeButton, &QPushButton::clicked, m_window, [this] { removeSelectedRow(); });
    QObject::connect(m_ui->mappingList, &QTreeWidget::itemSelectionChanged, m_window, [this] {
        if (m_showing)
            return;
        const auto items = m_ui->mappingList->selectedItems();
        selectRow(items.isEmpty() ? -1 : m_ui->mappingList->indexOfTopLevelItem(items.first()));
    });
    QObject::connect(m_ui->sourceList, &QComboBox::currentIndexChanged, m_window, [this](int index) {
        if (!m_showing)
            chooseSource(index);
    });
    QObject::connect(m_ui->destinationList, &QComboBox::currentIndexChanged, m_window, [this](int index) {
        if (!m_showing)
            chooseDestination(index);
    });
    QObject::connect(m_ui->freeTextEdit, &QLineEdit::textEdited, m_window,
                     [this](const QString &typed) { setFreeText(typed); });

    readVariableNames();
    fillLists();
    showRows();
    return m_window;
}

void CFileCardPageDlg::fillLists()
{
    if (!m_window)
        return;
    m_showing = true;
    m_ui->destinationList->clear();
    for (const QString &name : m_names)
        m_ui->destinationList->addItem(ProjectIcons::icon(CardVariableIcon), name, CardVariable);
    m_ui->sourceList->clear();
    for (const Kind &k : Kinds)
        m_ui->sourceList->addItem(ProjectIcons::icon(k.icon), text(k.textId, k.english), k.kind);
    for (const QString &name : m_names)
        m_ui->sourceList->addItem(ProjectIcons::icon(CardVariableIcon), name, CardVariable);
    m_ui->destinationList->setCurrentIndex(-1);
    m_ui->sourceList->setCurrentIndex(-1);
    m_showing = false;
}

HRESULT CFileCardPageDlg::load(IDoxVariables &holder)
{
    QString stored;
    if (const HRESULT hr = readTextVariable(holder, FileCardDataKey, {}, stored); failed(hr))
        return hr;
    m_rows = parseFileCardData(stored);
    m_selected = -1;
    // Without the vault's names nothing can be told lost: the stored rows
    // stay as they are, so that a later Save writes them back unchanged.
    const HRESULT namesRead = readVariableNames();
    if (succeeded(namesRead)) {
        // The vault may have lost a variable since the set-up.
        std::erase_if(m_rows, [this](const FileCardRow &row) {
            return !knownVariable(row.destination) || (row.kind == CardVariable && !knownVariable(row.text));
        });
    }
    showRows();
    return namesRead;
}

HRESULT CFileCardPageDlg::save(IDoxVariables &holder)
{
    std::vector<FileCardRow> rows = m_rows;
    for (FileCardRow &row : rows)
        if (row.kind != FreeText && row.kind != CardVariable)
            row.text.clear();
    if (auto *props = dynamic_cast<IDoxTaskProperties *>(&holder)) {
        QStringList declared;
        if (const HRESULT hr = props->GetDeclaredVariables(declared); failed(hr))
            return hr;
        for (const FileCardRow &row : rows) {
            QStringList names{row.destination};
            if (row.kind == CardVariable)
                names << row.text;
            for (const QString &name : names) {
                if (declared.contains(name))
                    continue;
                if (const HRESULT hr = props->DeclareVariable(name); failed(hr))
                    return hr;
                declared << name;
            }
        }
    }
    return writeTextVariable(holder, FileCardDataKey, formatFileCardData(rows));
}

void CFileCardPageDlg::showRows()
{
    if (!m_window)
        return;
    m_showing = true;
    m_ui->mappingList->clear();
    for (std::size_t i = 0; i < m_rows.size(); ++i) {
        new QTreeWidgetItem(m_ui->mappingList);
        showRow(static_cast<int>(i));
    }
    m_showing = false;
    showSelection();
}

void CFileCardPageDlg::showRow(int row)
{
    if (!m_window || row < 0 || row >= m_ui->mappingList->topLevelItemCount())
        return;
    QTreeWidgetItem *item = m_ui->mappingList->topLevelItem(row);
    const FileCardRow &r = m_rows[row];
    item->setText(0, sourceText(r));
    item->setIcon(0, ProjectIcons::icon(iconOf(r.kind)));
    item->setData(0, Qt::UserRole, r.kind);
    item->setText(1, r.destination);
    item->setIcon(1, ProjectIcons::icon(CardVariableIcon));
}

void CFileCardPageDlg::showSelection()
{
    if (!m_window)
        return;
    m_showing = true;
    auto *list = m_ui->mappingList;
    list->clearSelection();
    StrWnd *helper = m_helper;
    if (m_selected < 0) {
        m_ui->freeTextEdit->clear();
        helper->enableGroup(GroupSelected, false);
        m_ui->destinationList->setCurrentIndex(-1);
        m_ui->sourceList->setCurrentIndex(-1);
        m_showing = false;
        return;
    }
    QTreeWidgetItem *item = list->topLevelItem(m_selected);
    item->setSelected(true);
    list->setCurrentItem(item);
    helper->enableGroup(GroupSelected, true);
    const FileCardRow &row = m_rows[m_selected];
    // The row's own variable first; one differing only in case otherwise.
    int destination = m_ui->destinationList->findText(row.destination, Qt::MatchFixedString | Qt::MatchCaseSensitive);
    if (destination < 0)
        destination = m_ui->destinationList->findText(row.destination, Qt::MatchFixedString);
    m_ui->destinationList->setCurrentIndex(destination);
    if (row.kind == FreeText) {
        m_ui->sourceList->setCurrentIndex(m_ui->sourceList->findData(FreeText));
        m_ui->freeTextEdit->setEnabled(true);
        m_ui->freeTextEdit->setText(row.text);
    } else {
        m_ui->sourceList->setCurrentIndex(m_ui->sourceList->findText(sourceText(row), Qt::MatchFixedString | Qt::MatchCaseSensitive));
        m_ui->freeTextEdit->clear();
        m_ui->freeTextEdit->setEnabled(false);
    }
    m_showing = false;
}

void CFileCardPageDlg::addRow()
{
    m_rows.push_back({m_names.isEmpty() ? QString() : m_names.first(), FreeText, {}});
    m_selected = static_cast<int>(m_rows.size()) - 1;
    showRows();
    if (m_window)
        m_ui->destinationList->setFocus();
}

void CFileCardPageDlg::removeSelectedRow()
{
    if (m_selected < 0)
        return;
    m_rows.erase(m_rows.begin() + m_selected);
    m_selected = -1;
    showRows();
}

void CFileCardPageDlg::selectRow(int row)
{
    m_selected = row >= 0 && row < static_cast<int>(m_rows.size()) ? row : -1;
    showSelection();
}

void CFileCardPageDlg::chooseSource(int entry)
{
    if (m_selected < 0 || entry < 0)
        return;
    // Without a window the entries are those the list would hold.
    const int kindCount = static_cast<int>(std::size(Kinds));
    if (entry >= kindCount + m_names.size())
        return;
    FileCardRow &row = m_rows[m_selected];
    row.kind = entry < kindCount ? Kinds[entry].kind : CardVariable;
    row.text = row.kind == CardVariable ? m_names[entry - kindCount] : QString();
    showRow(m_selected);
    if (m_window) {
        m_showing = true;
        m_ui->sourceList->setCurrentIndex(entry);
        if (row.kind != FreeText)
            m_ui->freeTextEdit->clear();
        m_ui->freeTextEdit->setEnabled(row.kind == FreeText);
        m_showing = false;
    }
}

void CFileCardPageDlg::chooseDestination(int entry)
{
    if (m_selected < 0 || entry < 0 || entry >= m_names.size())
        return;
    m_rows[m_selected].destination = m_names[entry];
    showRow(m_selected);
}

void CFileCardPageDlg::setFreeText(const QString &typed)
{
    if (m_selected < 0 || m_rows[m_selected].kind != FreeText)
        return;
    m_rows[m_selected].text = typed;
    showRow(m_selected);
    if (m_window && m_ui->freeTextEdit->text() != typed)
        m_ui->freeTextEdit->setText(typed);
}

#include "print/printerpage.h"

#include "settings/tasksettings.h"
#include "common/translator.h"
#include "common/widgets/focusedit.h"
#include "common/widgets/icons.h"
#include "common/widgets/strwnd.h"
#include "common/widgets/vlistctrl.h"
#include "platform/printing/printers.h"
#include "print/printsettings.h"

#include "ui_printerdlg.h"

#include <QHeaderView>

namespace {
constexpr std::int32_t PaperSizeColumnText = 17;
constexpr std::int32_t PrinterNameColumnText = 18;
// The last row, the printer of every other size, is shown as the word "Default".
constexpr std::int32_t DefaultText = 54;
constexpr int PrinterIcon = 229;
} // namespace

// One paper size of the list with the printer that prints it; the printer
// cell is edited in place.
class PaperSizeRow final : public VListCtrlItem, public FocusEditValue
{
public:
    PaperSizeRow(CPrinterDlg &page, std::int32_t code)
        : m_page(page), code(code),
          label(code == PaperSizes::DefaultCode ? page.text(DefaultText, "Default") : PaperSizes::label(code))
    {
    }

    QString text(int column) const override { return column == 0 ? label : printer; }
    int imageIndex(int column) const override { return column == 0 ? 0 : -1; }
    int compare(const VListCtrlItem &, int) const override { return 0; } // the table's order stays
    bool onEvent(VListEvent event, QPoint, int row, int column, VListCtrl &) override
    {
        if ((event != VListEvent::LeftButton && event != VListEvent::DoubleClick) || column != 1)
            return false;
        m_page.editRowPrinter(static_cast<std::size_t>(row));
        return true;
    }
    void valueCommitted(FocusEdit &edit, const QString &text) override
    {
        printer = text;
        edit.deleteLater();
        m_page.refreshRows();
    }

    CPrinterDlg &m_page;
    const std::int32_t code;
    const QString label;
    QString printer;
    QString unused; // kept empty
};

CPrinterDlg::CPrinterDlg(TextLookup text, PrinterList printers) : m_text(std::move(text)), m_printers(std::move(printers))
{
    if (!m_printers)
        m_printers = [] { return Printers::instance().names(); };
    for (const PaperSizes::Entry &e : PaperSizes::listed())
        m_rows.push_back(std::make_shared<PaperSizeRow>(*this, e.code));
    m_rows.push_back(std::make_shared<PaperSizeRow>(*this, PaperSizes::DefaultCode));
}

CPrinterDlg::~CPrinterDlg()
{
    delete m_window.data();
}

QString CPrinterDlg::text(std::int32_t number, const char *english) const
{
    return lookupText(m_text, number, english);
}

HostWindow CPrinterDlg::create(HostWindow parent)
{
    delete m_window.data();
    m_window = new QWidget(parent);
    m_ui = std::make_unique<Ui::PrinterDlg>();
    m_ui->setupUi(m_window);
    (new StrWnd(m_window))->localise(QStringLiteral("PrinterDlg"));

    VListCtrl *list = m_ui->paperList;
    list->setImageList({ProjectIcons::icon(PrinterIcon)});
    list->setIconSize(QSize(16, 16));
    list->setSelectionMode(QAbstractItemView::SingleSelection);
    list->setFlags(VListCtrl::OfferLeftButton | VListCtrl::OfferDoubleClick);
    list->setColumns({text(PaperSizeColumnText, "Paper Size"), text(PrinterNameColumnText, "Printer Name")});
    // Before the first layout the list has no width yet; the page's own stands in.
    list->header()->resizeSection(0, std::max(list->width(), m_window->width()) / 5);
    list->header()->setStretchLastSection(true);
    refreshRows();

    m_ui->printerCombo->addItems(m_printers());
    QObject::connect(m_ui->alwaysRadio, &QRadioButton::clicked, m_window, [this] { setMode(AlwaysPrinter); });
    QObject::connect(m_ui->promptRadio, &QRadioButton::clicked, m_window, [this] { setMode(PromptPrinter); });
    QObject::connect(m_ui->bySizeRadio, &QRadioButton::clicked, m_window, [this] { setMode(PrinterBySize); });
    showValues();
    return m_window;
}

void CPrinterDlg::refreshRows()
{
    if (m_window)
        m_ui->paperList->setRows(VListRows(m_rows.begin(), m_rows.end()));
}

void CPrinterDlg::showValues()
{
    if (!m_window)
        return;
    m_ui->alwaysRadio->setChecked(m_mode == AlwaysPrinter);
    m_ui->promptRadio->setChecked(m_mode == PromptPrinter);
    m_ui->bySizeRadio->setChecked(m_mode == PrinterBySize);
    m_ui->printerCombo->setCurrentText(m_printerName);
    m_ui->printerListEdit->setPlainText(m_printerList);
    refreshRows();
    enableControls();
}

void CPrinterDlg::enableControls()
{
    if (!m_window)
        return;
    m_ui->printerCombo->setEnabled(m_mode == AlwaysPrinter);
    m_ui->printerListEdit->setEnabled(m_mode == PromptPrinter);
    m_ui->paperList->setEnabled(m_mode == PrinterBySize);
}

bool CPrinterDlg::takeControlValues()
{
    if (!m_window)
        return true;
    if (m_editor)
        m_editor->commit();
    m_printerName = m_ui->printerCombo->currentText();
    m_printerList = m_ui->printerListEdit->toPlainText();
    return true;
}

void CPrinterDlg::setMode(std::int32_t mode)
{
    m_mode = mode;
    if (m_window) {
        m_ui->alwaysRadio->setChecked(mode == AlwaysPrinter);
        m_ui->promptRadio->setChecked(mode == PromptPrinter);
        m_ui->bySizeRadio->setChecked(mode == PrinterBySize);
    }
    enableControls();
}

void CPrinterDlg::setPrinterName(const QString &name)
{
    m_printerName = name;
    if (m_window)
        m_ui->printerCombo->setCurrentText(name);
}

void CPrinterDlg::setPrinterList(const QString &list)
{
    m_printerList = list;
    if (m_window)
        m_ui->printerListEdit->setPlainText(list);
}

std::int32_t CPrinterDlg::rowCode(std::size_t row) const
{
    return m_rows.at(row)->code;
}

QString CPrinterDlg::rowLabel(std::size_t row) const
{
    return m_rows.at(row)->label;
}

QString CPrinterDlg::rowPrinter(std::size_t row) const
{
    return m_rows.at(row)->printer;
}

void CPrinterDlg::setRowPrinter(std::size_t row, const QString &printer)
{
    m_rows.at(row)->printer = printer;
    refreshRows();
}

FocusEdit *CPrinterDlg::editRowPrinter(std::size_t row)
{
    if (!m_window || row >= m_rows.size())
        return nullptr;
    delete m_editor.data();
    VListCtrl *list = m_ui->paperList;
    QRect cell = list->visualRect(list->model()->index(static_cast<int>(row), 1));
    cell.setHeight(std::max(cell.height(), 20));
    auto *editor = new FocusEdit(list->viewport());
    editor->setFrame(true);
    editor->setFont(list->font());
    editor->setGeometry(cell);
    editor->setText(m_rows[row]->printer);
    editor->selectAll();
    editor->setListener(m_rows[row].get());
    // Leaving the cell keeps what was typed, as Enter does.
    QObject::connect(editor, &QLineEdit::editingFinished, editor, [editor] { editor->commit(); });
    editor->show();
    editor->setFocus();
    m_editor = editor;
    return editor;
}

HRESULT CPrinterDlg::load(IDoxVariables &holder)
{
    VariableLoader loader(holder);
    loader.integer(PrintKeys::PrinterSelection, m_mode)
        .text(PrintKeys::PrinterName, m_printerName)
        .text(PrintKeys::PrinterNameList, m_printerList);
    for (const auto &row : m_rows)
        if (const QString key = PaperSizes::printerKey(row->code); !key.isEmpty())
            loader.text(key, row->printer);
    showValues();
    return loader.result();
}

HRESULT CPrinterDlg::save(IDoxVariables &holder)
{
    takeControlValues();
    VariableSaver saver(holder);
    saver.integer(PrintKeys::PrinterSelection, m_mode)
        .text(PrintKeys::PrinterName, m_printerName)
        .text(PrintKeys::PrinterNameList, m_printerList);
    for (const auto &row : m_rows)
        if (const QString key = PaperSizes::printerKey(row->code); !key.isEmpty())
            saver.text(key, row->printer);
    return saver.result();
}

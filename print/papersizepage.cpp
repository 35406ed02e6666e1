#include "print/papersizepage.h"

#include "settings/tasksettings.h"
#include "common/widgets/strwnd.h"
#include "print/printsettings.h"

#include "ui_papersizedlg.h"

CPaperSizeDlg::CPaperSizeDlg(TextLookup text) : m_text(std::move(text)) {}

CPaperSizeDlg::~CPaperSizeDlg()
{
    delete m_window.data();
}

HostWindow CPaperSizeDlg::create(HostWindow parent)
{
    delete m_window.data();
    m_window = new QWidget(parent);
    m_ui = std::make_unique<Ui::PaperSizeDlg>();
    m_ui->setupUi(m_window);
    for (const PaperSizes::Entry &e : PaperSizes::listed())
        m_ui->paperCombo->addItem(QString::fromLatin1(e.label), e.code);
    (new StrWnd(m_window))->localise(QStringLiteral("PaperSizeDlg"));
    showValues();
    return m_window;
}

void CPaperSizeDlg::showValues()
{
    if (!m_window)
        return;
    m_ui->useDrawingInfoCheck->setChecked(m_values.useDrawingInfo);
    m_ui->paperCombo->setCurrentIndex(m_ui->paperCombo->findData(m_values.paperSize));
    m_ui->allowSizeCheck->setChecked(m_values.allowSizeChange);
    m_ui->portraitRadio->setChecked(m_values.orientation == 0);
    m_ui->landscapeRadio->setChecked(m_values.orientation == 1);
    m_ui->allowOrientationCheck->setChecked(m_values.allowOrientationChange);
}

bool CPaperSizeDlg::takeControlValues()
{
    if (!m_window)
        return true;
    m_values.useDrawingInfo = m_ui->useDrawingInfoCheck->isChecked();
    m_values.paperSize = m_ui->paperCombo->currentIndex() < 0 ? -1 : m_ui->paperCombo->currentData().toInt();
    m_values.allowSizeChange = m_ui->allowSizeCheck->isChecked();
    if (m_ui->portraitRadio->isChecked())
        m_values.orientation = 0;
    else if (m_ui->landscapeRadio->isChecked())
        m_values.orientation = 1;
    m_values.allowOrientationChange = m_ui->allowOrientationCheck->isChecked();
    return true;
}

void CPaperSizeDlg::setValues(const Values &values)
{
    m_values = values;
    showValues();
}

std::int32_t CPaperSizeDlg::selectedPaperCode() const
{
    for (const PaperSizes::Entry &e : PaperSizes::listed())
        if (e.code == m_values.paperSize)
            return e.code;
    return -1;
}

HRESULT CPaperSizeDlg::load(IDoxVariables &holder)
{
    const HRESULT hr = VariableLoader(holder)
                           .boolean(PrintKeys::UseDrawingInfo, m_values.useDrawingInfo)
                           .integer(PrintKeys::PaperSize, m_values.paperSize)
                           .boolean(PrintKeys::UserSizeChange, m_values.allowSizeChange)
                           .integer(PrintKeys::Orientation, m_values.orientation)
                           .boolean(PrintKeys::UserOrientChange, m_values.allowOrientationChange)
                           .result();
    showValues();
    return hr;
}

HRESULT CPaperSizeDlg::save(IDoxVariables &holder)
{
    takeControlValues();
    return VariableSaver(holder)
        .boolean(PrintKeys::UseDrawingInfo, m_values.useDrawingInfo)
        .integer(PrintKeys::PaperSize, selectedPaperCode())
        .boolean(PrintKeys::UserSizeChange, m_values.allowSizeChange)
        .integer(PrintKeys::Orientation, m_values.orientation)
        .boolean(PrintKeys::UserOrientChange, m_values.allowOrientationChange)
        .result();
}

#include "print/marginspage.h"

#include "settings/tasksettings.h"
#include "common/widgets/prompter.h"
#include "common/widgets/strwnd.h"
#include "print/printsettings.h"

#include "ui_marginsdlg.h"

#include <QLocale>

namespace {

const QString MarginKeys[] = {PrintKeys::MarginTop, PrintKeys::MarginBottom, PrintKeys::MarginLeft,
                              PrintKeys::MarginRight};
const QString HeaderKeys[] = {PrintKeys::HeaderLeft, PrintKeys::HeaderCenter, PrintKeys::HeaderRight};
const QString FooterKeys[] = {PrintKeys::FooterLeft, PrintKeys::FooterCenter, PrintKeys::FooterRight};

// The three radio buttons of a group, in the order of their values.
template <class Ui> std::array<QRadioButton *, 3> marginRadios(Ui &ui)
{
    return {ui.printerMarginsRadio, ui.promptMarginsRadio, ui.fixedMarginsRadio};
}
template <class Ui> std::array<QRadioButton *, 3> headerRadios(Ui &ui)
{
    return {ui.noHeaderRadio, ui.promptHeaderRadio, ui.fixedHeaderRadio};
}
template <class Ui> std::array<QRadioButton *, 3> footerRadios(Ui &ui)
{
    return {ui.noFooterRadio, ui.promptFooterRadio, ui.fixedFooterRadio};
}

std::int32_t checkedIndex(const std::array<QRadioButton *, 3> &radios, std::int32_t current)
{
    for (int i = 0; i < 3; ++i)
        if (radios[i]->isChecked())
            return i;
    return current;
}

} // namespace

CMarginsDlg::CMarginsDlg(TextLookup text) : m_text(std::move(text)) {}

CMarginsDlg::~CMarginsDlg()
{
    delete m_window.data();
}

HostWindow CMarginsDlg::create(HostWindow parent)
{
    delete m_window.data();
    m_window = new QWidget(parent);
    m_ui = std::make_unique<Ui::MarginsDlg>();
    m_ui->setupUi(m_window);
    (new StrWnd(m_window))->localise(QStringLiteral("MarginsDlg"));
    for (const auto &radios : {marginRadios(*m_ui), headerRadios(*m_ui), footerRadios(*m_ui)})
        for (QRadioButton *radio : radios)
            QObject::connect(radio, &QRadioButton::clicked, m_window, [this] { enableEdits(); });
    showValues();
    return m_window;
}

void CMarginsDlg::showValues()
{
    if (!m_window)
        return;
    for (int i = 0; i < 3; ++i) {
        marginRadios(*m_ui)[i]->setChecked(m_values.marginType == i);
        headerRadios(*m_ui)[i]->setChecked(m_values.headerType == i);
        footerRadios(*m_ui)[i]->setChecked(m_values.footerType == i);
    }
    QLineEdit *margins[] = {m_ui->topEdit, m_ui->bottomEdit, m_ui->leftEdit, m_ui->rightEdit};
    QLineEdit *header[] = {m_ui->headerLeftEdit, m_ui->headerCenterEdit, m_ui->headerRightEdit};
    QLineEdit *footer[] = {m_ui->footerLeftEdit, m_ui->footerCenterEdit, m_ui->footerRightEdit};
    for (int i = 0; i < 4; ++i)
        margins[i]->setText(QLocale::c().toString(m_values.margins[i], 'g', 7));
    for (int i = 0; i < 3; ++i) {
        header[i]->setText(m_values.header[i]);
        footer[i]->setText(m_values.footer[i]);
    }
    enableEdits();
}

void CMarginsDlg::enableEdits()
{
    const bool fixedMargins = m_ui->fixedMarginsRadio->isChecked();
    const bool fixedHeader = m_ui->fixedHeaderRadio->isChecked();
    const bool fixedFooter = m_ui->fixedFooterRadio->isChecked();
    for (QWidget *w : {m_ui->topEdit, m_ui->bottomEdit, m_ui->leftEdit, m_ui->rightEdit})
        w->setEnabled(fixedMargins);
    for (QWidget *w : {m_ui->headerLeftEdit, m_ui->headerCenterEdit, m_ui->headerRightEdit})
        w->setEnabled(fixedHeader);
    for (QWidget *w : {m_ui->footerLeftEdit, m_ui->footerCenterEdit, m_ui->footerRightEdit})
        w->setEnabled(fixedFooter);
}

bool CMarginsDlg::takeControlValues()
{
    if (!m_window)
        return true;
    QLineEdit *margins[] = {m_ui->topEdit, m_ui->bottomEdit, m_ui->leftEdit, m_ui->rightEdit};
    std::array<float, 4> sizes{};
    for (int i = 0; i < 4; ++i) {
        bool ok = false;
        sizes[i] = QLocale::c().toFloat(margins[i]->text().trimmed(), &ok);
        if (!ok) {
            Prompter::instance().message(m_window, QStringLiteral("Please enter a number."),
                                         QStringLiteral("Mecadra Task Add-in"), Prompter::Icon::Warning);
            margins[i]->setFocus();
            margins[i]->selectAll();
            return false;
        }
    }
    m_values.margins = sizes;
    m_values.marginType = checkedIndex(marginRadios(*m_ui), m_values.marginType);
    m_values.headerType = checkedIndex(headerRadios(*m_ui), m_values.headerType);
    m_values.footerType = checkedIndex(footerRadios(*m_ui), m_values.footerType);
    m_values.header = {m_ui->headerLeftEdit->text(), m_ui->headerCenterEdit->text(), m_ui->headerRightEdit->text()};
    m_values.footer = {m_ui->footerLeftEdit->text(), m_ui->footerCenterEdit->text(), m_ui->footerRightEdit->text()};
    return true;
}

void CMarginsDlg::setValues(const Values &values)
{
    m_values = values;
    showValues();
}

HRESULT CMarginsDlg::load(IDoxVariables &holder)
{
    // An absent type asks the user.
    m_values.marginType = m_values.headerType = m_values.footerType = PromptUser;
    VariableLoader loader(holder);
    loader.integer(PrintKeys::MarginType, m_values.marginType)
        .integer(PrintKeys::HeaderType, m_values.headerType)
        .integer(PrintKeys::FooterType, m_values.footerType);
    for (int i = 0; i < 4; ++i)
        loader.real(MarginKeys[i], m_values.margins[i]);
    for (int i = 0; i < 3; ++i)
        loader.text(HeaderKeys[i], m_values.header[i]);
    for (int i = 0; i < 3; ++i)
        loader.text(FooterKeys[i], m_values.footer[i]);
    showValues();
    return loader.result();
}

HRESULT CMarginsDlg::save(IDoxVariables &holder)
{
    if (!takeControlValues())
        return S_FALSE;
    VariableSaver saver(holder);
    saver.integer(PrintKeys::MarginType, m_values.marginType)
        .integer(PrintKeys::HeaderType, m_values.headerType)
        .integer(PrintKeys::FooterType, m_values.footerType);
    for (int i = 0; i < 4; ++i)
        saver.real(MarginKeys[i], m_values.margins[i]);
    for (int i = 0; i < 3; ++i)
        saver.text(HeaderKeys[i], m_values.header[i]);
    for (int i = 0; i < 3; ++i)
        saver.text(FooterKeys[i], m_values.footer[i]);
    return saver.result();
}

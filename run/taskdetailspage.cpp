#include "run/taskdetailspage.h"

#include "common/widgets/icons.h"
#include "host/idoxtask.h"
#include "ui_taskdetailspage.h"

namespace {

// Icons of the add-in's own set for the cells that are not files.
constexpr int StateIcon = 121;   // configuration, printer
constexpr int FoundInIcon = 257; // folder

} // namespace

QString FileDetailsRow::text(int column) const
{
    return column < 0 ? QString() : m_model->cellText(m_row, static_cast<std::size_t>(column));
}

QIcon FileDetailsRow::image(int column, const VListCtrl &) const
{
    if (column < 0 || static_cast<std::size_t>(column) >= m_model->columns().size())
        return {};
    const QString cell = text(column);
    if (cell.isEmpty())
        return {};
    switch (m_model->columns()[static_cast<std::size_t>(column)].field) {
    case TaskDetailsModel::Field::Name:
    case TaskDetailsModel::Field::OutputFile: return ProjectIcons::fileTypeIcon(cell, false);
    case TaskDetailsModel::Field::Configuration:
    case TaskDetailsModel::Field::Printer: return ProjectIcons::icon(StateIcon);
    case TaskDetailsModel::Field::Folder: return ProjectIcons::icon(FoundInIcon);
    case TaskDetailsModel::Field::Version: break;
    }
    return {};
}

TaskDetailsPage::TaskDetailsPage(const PageContext &context, TextLookup text)
    : m_context(context), m_model(context.taskType, context.finished, std::move(text))
{
}

TaskDetailsPage::~TaskDetailsPage()
{
    // A window still under the host's parent goes with the page.
    delete m_window;
}

HostWindow TaskDetailsPage::create(HostWindow parent)
{
    delete m_window;
    m_window = new QWidget(parent);
    Ui::TaskDetailsPage ui;
    ui.setupUi(m_window);

    if (m_context.instance)
        m_loadResult = m_model.load(*m_context.instance, m_context.vault.get());

    VListCtrl &list = *ui.list391;
    list.setColumns(m_model.captions());
    const int width = m_window->width();
    for (std::size_t c = 0; c < m_model.columns().size(); ++c)
        list.setColumnWidth(static_cast<int>(c), TaskDetailsModel::columnWidth(m_model.columns()[c], width));
    VListRows rows;
    rows.reserve(m_model.rows().size());
    for (std::size_t row = 0; row < m_model.rows().size(); ++row)
        rows.push_back(std::make_shared<FileDetailsRow>(m_model, row));
    list.setRows(std::move(rows));
    return m_window;
}

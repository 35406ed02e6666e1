#include "run/taskdetailspage.h"

#include "host/idoxtask.h"
#include "ui_taskdetailspage.h"

#include <QTreeWidget>

TaskDetailsPage::TaskDetailsPage(const PageContext &context, TaskDetailsModel::TextLookup text)
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

    QTreeWidget &list = *ui.list391;
    list.setHeaderLabels(m_model.captions());
    const int width = m_window->width();
    for (std::size_t c = 0; c < m_model.columns().size(); ++c)
        list.setColumnWidth(static_cast<int>(c), TaskDetailsModel::columnWidth(m_model.columns()[c], width));
    QList<QTreeWidgetItem *> items;
    items.reserve(static_cast<qsizetype>(m_model.rows().size()));
    for (std::size_t row = 0; row < m_model.rows().size(); ++row)
        items.append(new QTreeWidgetItem(m_model.rowTexts(row)));
    list.addTopLevelItems(items);
    return m_window;
}

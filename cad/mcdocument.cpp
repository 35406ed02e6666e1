#include "cad/mcdocument.h"

#include "cad/mcmanager.h"
#include "run/taskrunrecord.h"

CMcDocument::CMcDocument(McManager &manager, ObjectHandle document, std::int32_t documentType,
                         std::int32_t taskType, std::int16_t revisionMajor, std::shared_ptr<TaskRunRecord> outputs,
                         const OutputLabels *labels)
    : m_manager(manager),
      m_document(document),
      m_documentType(documentType),
      m_taskType(taskType),
      m_revisionMajor(revisionMajor),
      m_outputs(std::move(outputs)),
      m_labels(labels)
{
}

bool CMcDocument::connect()
{
    McAutomation *app = m_manager.automation();
    if (!app || !app->call(m_document, QStringLiteral("Advise")).ok())
        return false;
    AutomationValue view = app->call(m_document, QStringLiteral("GetFirstModelView")).value;
    while (view.isObject() && !view.isNothing()) {
        if (app->call(view, QStringLiteral("Advise")).ok())
            m_views.push_back(view.handle());
        view = app->call(view, QStringLiteral("GetNext")).value;
    }
    return true;
}

void CMcDocument::disconnect()
{
    if (McAutomation *app = m_manager.automation()) {
        for (ObjectHandle view : m_views)
            app->call(view, QStringLiteral("Unadvise"));
        app->call(m_document, QStringLiteral("Unadvise"));
    }
    m_views.clear();
}

bool CMcDocument::ownsView(ObjectHandle view) const
{
    return std::find(m_views.begin(), m_views.end(), view) != m_views.end();
}

QString CMcDocument::label()
{
    McAutomation *app = m_manager.automation();
    if (!app)
        return {};
    const bool drawing = m_documentType == Drawing;
    const AutomationReply reply = app->call(
        m_document, drawing ? QStringLiteral("GetCurrentSheetName") : QStringLiteral("GetActiveConfigurationName"));
    const QString name = reply.ok() && !reply.value.isObject() && !reply.value.isArray() ? reply.value.toText() : QString();
    if (m_taskType != 1 || !m_labels)
        return name;
    return drawing ? m_labels->SheetLabel(name) : m_labels->ConfigurationLabel(name);
}

void CMcDocument::OnFileSaved(const QString &name, bool printed)
{
    const QString conf = label();
    m_manager.countSavedFile();
    if (!m_outputs)
        return;
    if (printed)
        m_outputs->registerPrintEntry(name, conf);
    else
        m_outputs->registerOutput(name, conf, false);
}

#pragma once

#include "addin/taskpage.h"
#include "run/taskdetailsmodel.h"

#include <QPointer>
#include <QWidget>
#include <memory>

class QTreeWidget;

// The details page of a task instance: one list (control 391) of the files
// of that execution, filled when the page's window is created.
class TaskDetailsPage final : public TaskPage
{
public:
    TaskDetailsPage(const PageContext &context, TaskDetailsModel::TextLookup text);
    ~TaskDetailsPage() override;

    HostWindow create(HostWindow parent) override;
    HostWindow window() const override { return m_window; }
    // The list is read from the instance when the window is created; the
    // page stores nothing.
    HRESULT load(IDoxVariables &) override { return S_OK; }
    HRESULT save(IDoxVariables &) override { return S_OK; }

    const TaskDetailsModel &model() const { return m_model; }
    // The result of reading the instance's list when the window was created.
    HRESULT loadResult() const { return m_loadResult; }

private:
    PageContext m_context;
    TaskDetailsModel m_model;
    HRESULT m_loadResult = S_OK;
    QPointer<QWidget> m_window;
};

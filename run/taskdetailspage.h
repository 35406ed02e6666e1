#pragma once

#include "addin/taskpage.h"
#include "common/translator.h"
#include "common/widgets/vlistctrl.h"
#include "run/taskdetailsmodel.h"

#include <QPointer>
#include <QWidget>
#include <memory>

// One file of the details list: its cells come from the page's model.
class FileDetailsRow final : public VListCtrlItem
{
public:
    FileDetailsRow(const TaskDetailsModel &model, std::size_t row) : m_model(&model), m_row(row) {}

    QString text(int column) const override;
    // Names and output files show their type's icon; configuration, printer
    // and folder cells the details icons.
    QIcon image(int column, const VListCtrl &list) const override;

private:
    const TaskDetailsModel *m_model;
    std::size_t m_row;
};

// The details page of a task instance: one list (control 391) of the files
// of that execution, filled when the page's window is created.
class TaskDetailsPage final : public TaskPage
{
public:
    TaskDetailsPage(const PageContext &context, TextLookup text);
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

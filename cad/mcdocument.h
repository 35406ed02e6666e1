#pragma once

#include "platform/automation/automationvalue.h"

#include <QString>

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

class McManager;
class OutputLabels;
class TaskRunRecord;

// The sink of one open Mecadra document and of its model views: learns the
// files the document is saved to and that it was printed, and records them
// in the run's output list.
class CMcDocument final
{
public:
    enum DocumentType { Part = 1, Assembly = 2, Drawing = 3 };

    CMcDocument(McManager &manager, ObjectHandle document, std::int32_t documentType, std::int32_t taskType,
                std::int16_t revisionMajor, std::shared_ptr<TaskRunRecord> outputs, const OutputLabels *labels);

    // Connects the document's events and those of its model views; false
    // when the document's own events cannot be connected.
    bool connect();
    void disconnect();

    ObjectHandle document() const { return m_document; }
    bool ownsView(ObjectHandle view) const;

    // Records one output: a file about to be saved, or the printed document.
    void OnFileSaved(const QString &name, bool printed);

private:
    QString label();

    McManager &m_manager;
    ObjectHandle m_document;
    std::int32_t m_documentType;
    std::int32_t m_taskType;
    std::int16_t m_revisionMajor;
    std::shared_ptr<TaskRunRecord> m_outputs;
    const OutputLabels *m_labels;
    std::vector<ObjectHandle> m_views;
};

#pragma once

#include "platform/automation/automationserver.h"

#include <map>
#include <memory>
#include <mutex>

class CadApplication;
class ModelDoc;
class ModelView;
class DocumentObjects;

// An open document as callers see it: its type, names, the next document,
// its views. It fires the document events (file about to be saved, document
// going away).
class DocumentObject final : public AutomationObject
{
public:
    DocumentObject(DocumentObjects &registry, std::shared_ptr<ModelDoc> doc);
    HRESULT invoke(const QString &member, AutomationCall &call) override;
    bool sourcesEvents() const override { return true; }
    const std::shared_ptr<ModelDoc> &document() const { return m_doc; }

private:
    DocumentObjects &m_registry;
    std::shared_ptr<ModelDoc> m_doc; // kept after closing, so late callers get an answer
};

// One model view of a document; fires the printed event.
class ViewObject final : public AutomationObject
{
public:
    ViewObject(DocumentObjects &registry, std::shared_ptr<ModelDoc> doc, std::size_t index);
    HRESULT invoke(const QString &member, AutomationCall &call) override;
    bool sourcesEvents() const override { return true; }

private:
    DocumentObjects &m_registry;
    std::shared_ptr<ModelDoc> m_doc;
    std::size_t m_index;
};

// One automation object per document and per view, so each keeps its
// handle for as long as callers hold it. Thread-safe: events create them on
// the macro thread, calls on the server thread.
class DocumentObjects final
{
public:
    explicit DocumentObjects(CadApplication &app) : m_app(app) {}

    CadApplication &application() { return m_app; }
    // The object of an open document; null when the application does not hold
    // it (and never held it while asked before).
    std::shared_ptr<DocumentObject> forDocument(ModelDoc &doc);
    std::shared_ptr<ViewObject> forView(ModelDoc &doc, const ModelView &view);
    std::shared_ptr<ViewObject> forViewIndex(ModelDoc &doc, std::size_t index);

private:
    CadApplication &m_app;
    std::recursive_mutex m_mutex;
    std::map<const ModelDoc *, std::shared_ptr<DocumentObject>> m_documents;
    std::map<std::pair<const ModelDoc *, std::size_t>, std::shared_ptr<ViewObject>> m_views;
};

#pragma once

#include "cadsim/engine/membertable.h"
#include "cadsim/model/cadapplication.h"

#include <QHash>
#include <map>
#include <memory>
#include <mutex>

// The model as automation objects: the application, its documents, their
// views and parts. Each object keeps one table of members; macros call it
// directly, automation callers through the stand-in's server. Member names
// are case-insensitive.

namespace cadsim {

class ScriptDocument;

// The application object ("Cadrix"). Hands out one automation object per
// open document, so that the same document is the same object every time.
class ScriptCadApplication final : public TableObject,
                                   public std::enable_shared_from_this<ScriptCadApplication>
{
public:
    static std::shared_ptr<ScriptCadApplication> create(std::shared_ptr<CadApplication> app);
    QString typeName() const override { return QStringLiteral("CadrixApplication"); }

    CadApplication &application() const { return *m_app; }
    // The object of a document; any thread.
    std::shared_ptr<ScriptDocument> wrap(const ModelDocPtr &doc);
    ScriptValue wrapValue(const ModelDocPtr &doc);
    // The object of a document that still has one (also after it closed).
    std::shared_ptr<ScriptDocument> existing(const ModelDoc &doc);

private:
    explicit ScriptCadApplication(std::shared_ptr<CadApplication> app);
    void addMembers();

    std::shared_ptr<CadApplication> m_app;
    std::mutex m_mutex;
    std::map<const ModelDoc *, std::weak_ptr<ScriptDocument>> m_wrappers;
};

class ScriptView;

// One document; serves as part, assembly and drawing alike.
class ScriptDocument final : public TableObject, public std::enable_shared_from_this<ScriptDocument>
{
public:
    ScriptDocument(std::shared_ptr<ScriptCadApplication> app, ModelDocPtr doc);
    QString typeName() const override;
    const ModelDocPtr &document() const { return m_doc; }
    // The object of the document's view by index, the same every time; null
    // past the last view or once the document is closed. Any thread.
    std::shared_ptr<ScriptView> view(std::size_t index);

private:
    std::shared_ptr<ScriptCadApplication> m_app;
    ModelDocPtr m_doc;
    std::mutex m_mutex;
    std::map<std::size_t, std::weak_ptr<ScriptView>> m_views;
};

// A model view of a document.
class ScriptView final : public TableObject
{
public:
    ScriptView(std::shared_ptr<ScriptDocument> doc, std::size_t index);
    QString typeName() const override { return QStringLiteral("ModelView"); }

private:
    std::shared_ptr<ScriptDocument> m_doc;
    std::size_t m_index;
};

// The global "Application" object a macro starts from: Application.Cadrix.
class ScriptMacroHost final : public TableObject
{
public:
    explicit ScriptMacroHost(std::shared_ptr<ScriptCadApplication> app);
    QString typeName() const override { return QStringLiteral("Application"); }

private:
    std::shared_ptr<ScriptCadApplication> m_app;
};

// The model's type-library constants for the engine's host table
// (lower-case name -> Long); they take precedence over the engine's defaults.
QHash<QString, ScriptValue> cadConstantValues();

} // namespace cadsim

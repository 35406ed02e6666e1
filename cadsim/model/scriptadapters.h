#pragma once

#include "cadsim/engine/scriptobject.h"
#include "cadsim/model/cadapplication.h"

#include <QHash>
#include <functional>
#include <map>
#include <memory>

// The model as macros see it: automation objects over the application,
// its documents and their parts. Member names are case-insensitive.

namespace cadsim {

// Base of the model's automation objects: a table of members by lower-case
// name. A handler gets the call kind and the arguments (for Let and Set the
// value is the last argument).
class ModelScriptObject : public ScriptObject
{
public:
    using Handler = std::function<ScriptValue(CallKind, ScriptArgs &)>;

    ScriptValue invoke(const QString &member, CallKind kind, ScriptArgs &args) override;

protected:
    void method(const char *name, Handler handler);
    // A property with a getter and, when given, a setter taking the value.
    void property(const char *name, std::function<ScriptValue()> get,
                  std::function<void(const ScriptValue &)> let = {});

private:
    QHash<QString, Handler> m_members;
};

class ScriptDocument;

// The application object ("Cadrix"). Hands out one automation object per
// open document, so that the same document is the same object every time.
class ScriptCadApplication final : public ModelScriptObject,
                                   public std::enable_shared_from_this<ScriptCadApplication>
{
public:
    static std::shared_ptr<ScriptCadApplication> create(std::shared_ptr<CadApplication> app);
    QString typeName() const override { return QStringLiteral("CadrixApplication"); }

    CadApplication &application() const { return *m_app; }
    std::shared_ptr<ScriptDocument> wrap(const ModelDocPtr &doc);
    ScriptValue wrapValue(const ModelDocPtr &doc);

private:
    explicit ScriptCadApplication(std::shared_ptr<CadApplication> app);
    void addMembers();

    std::shared_ptr<CadApplication> m_app;
    std::map<const ModelDoc *, std::weak_ptr<ScriptDocument>> m_wrappers;
};

// One document; serves as part, assembly and drawing alike.
class ScriptDocument final : public ModelScriptObject
{
public:
    ScriptDocument(std::shared_ptr<ScriptCadApplication> app, ModelDocPtr doc);
    QString typeName() const override;
    const ModelDocPtr &document() const { return m_doc; }

private:
    std::shared_ptr<ScriptCadApplication> m_app;
    ModelDocPtr m_doc;
};

// The global "Application" object a macro starts from: Application.Cadrix.
class ScriptMacroHost final : public ModelScriptObject
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

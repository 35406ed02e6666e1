#pragma once

#include <QByteArray>
#include <QString>

#include <functional>
#include <optional>

// Numbers of the "Script" resources that hold the three macro templates.
enum ScriptTemplate : int {
    ConversionTemplate = 209,
    PrintTemplate = 210,
    DefaultScriptTemplate = 211,
};

// Where template bytes come from, in the steps a resource is fetched: find it, ask its size,
// load it. The compiled-in resources serve the add-in; tests hand in their own.
class ScriptResourceStore
{
public:
    virtual ~ScriptResourceStore() = default;
    virtual bool contains(int number) const = 0;
    // Size in bytes; 0 or less when it cannot be told.
    virtual qint64 sizeOf(int number) const = 0;
    // The bytes, or nothing when the resource cannot be loaded.
    virtual std::optional<QByteArray> load(int number) const = 0;
};

// The templates compiled into the program (templates/templates.qrc).
class CompiledScriptResources final : public ScriptResourceStore
{
public:
    CompiledScriptResources();
    bool contains(int number) const override;
    qint64 sizeOf(int number) const override;
    std::optional<QByteArray> load(int number) const override;

    // The resource path of a template number, empty for an unknown number.
    static QString resourcePath(int number);
};

// Loads a macro template by number as the text the script page and the task store: the 8-bit
// bytes decoded from Windows-1252, with one line feed appended. A failure is shown through the
// message sink and gives an empty text.
class TemplateLoader final
{
public:
    using MessageSink = std::function<void(const QString &message)>;

    TemplateLoader(const ScriptResourceStore &store, MessageSink showMessage);

    QString load(int number) const;

private:
    QString fail(const QString &message) const;

    const ScriptResourceStore &m_store;
    MessageSink m_showMessage;
};

// Loads from the compiled-in templates.
QString loadScriptTemplate(int number, const TemplateLoader::MessageSink &showMessage);

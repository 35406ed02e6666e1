#pragma once

#include "cadsim/model/documentdata.h"
#include "cadsim/model/modeldocextension.h"

#include <QString>
#include <QStringList>
#include <array>
#include <cstdint>
#include <memory>
#include <vector>

class CadApplication;
class ModelDoc;
class ModelDocExtension;

// The page set-up a document prints with.
struct PageSetup
{
    std::int32_t paperSize = 9;
    std::int32_t orientation = 1;
    std::array<QString, 3> header; // left, center, right
    std::array<QString, 3> footer;
};

// One view of a document; prints are announced through it.
class ModelView final
{
public:
    explicit ModelView(ModelDoc &doc) : m_doc(doc) {}
    ModelDoc &document() const { return m_doc; }

private:
    ModelDoc &m_doc;
};

// A component of an assembly with its path resolved against the assembly.
struct Component
{
    QString name;     // file base name, as the tree shows it
    QString pathName; // Windows path
    bool isVirtual = false;
};

// An open document: part, assembly or drawing. Methods that belong to one
// type only answer neutrally (empty lists, false) on the others, as the
// automation objects of the other types would not have them.
class ModelDoc final
{
public:
    // pathName is empty for an imported document, which has no file of its
    // own yet; sourcePath is the file it was opened or imported from.
    ModelDoc(CadApplication *app, DocumentData data, QString pathName, QString sourcePath, QString title);
    ~ModelDoc();
    ModelDoc(const ModelDoc &) = delete;
    ModelDoc &operator=(const ModelDoc &) = delete;

    CadApplication *application() const { return m_app; }
    DocumentType type() const { return m_data.type; }
    const DocumentData &data() const { return m_data; }
    QString title() const { return m_title; }
    QString pathName() const { return m_pathName; }
    QString sourcePath() const { return m_sourcePath; }
    bool isClosed() const { return m_closed; }

    // Configurations (parts and assemblies).
    QStringList configurationNames() const;
    QString activeConfiguration() const;
    bool showConfiguration(const QString &name);

    // Sheets (drawings).
    QStringList sheetNames() const;
    QString currentSheet() const;
    bool activateSheet(const QString &name);

    // Components (assemblies); topLevelOnly is accepted for the call's sake:
    // the stand-in's assemblies are flat.
    std::vector<Component> components(bool topLevelOnly) const;

    // Printing. Setting a printer that the application does not know keeps
    // the current one.
    QString printer() const { return m_printer; }
    void setPrinter(const QString &name);
    PageSetup &pageSetup() { return m_pageSetup; }
    const PageSetup &pageSetup() const { return m_pageSetup; }

    ModelDocExtension &extension() { return *m_extension; }
    const std::vector<std::unique_ptr<ModelView>> &views() const { return m_views; }

    // Called by the application.
    void markClosed() { m_closed = true; }
    void detach() { m_app = nullptr; }

private:
    CadApplication *m_app;
    DocumentData m_data;
    QString m_pathName;
    QString m_sourcePath;
    QString m_title;
    QString m_printer;
    PageSetup m_pageSetup;
    bool m_closed = false;
    std::unique_ptr<ModelDocExtension> m_extension;
    std::vector<std::unique_ptr<ModelView>> m_views;
};

using ModelDocPtr = std::shared_ptr<ModelDoc>;

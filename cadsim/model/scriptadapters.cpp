#include "cadsim/model/scriptadapters.h"

#include "cadsim/model/cadconstants.h"

#include <algorithm>

namespace cadsim {

namespace {

ScriptValue &arg(ScriptArgs &args, std::size_t i)
{
    return requiredArg(args, i);
}

void writeBack(ScriptArgs &args, std::size_t i, std::int32_t value)
{
    cadsim::writeBack(args, i, ScriptValue::fromLong(value));
}

ScriptValue object(std::shared_ptr<ScriptObject> o)
{
    return ScriptValue::fromObject(std::move(o));
}

// Texts of a Variant that is an array of texts or a single text.
QStringList textList(const ScriptValue &v)
{
    QStringList out;
    if (v.isArray()) {
        for (const ScriptValue &item : v.array()->items)
            out << item.toString();
    } else if (!v.isEmpty() && !v.isMissing()) {
        out << v.toString();
    }
    return out;
}

// Entries of a preference list: one text separated by line feeds (as macros
// pass them) or an array; either way trimmed, empty ones dropped.
QStringList preferenceEntries(const ScriptValue &v)
{
    QStringList entries;
    for (const QString &text : textList(v)) {
        for (const QString &entry : text.split(QLatin1Char('\n'))) {
            if (!entry.trimmed().isEmpty())
                entries << entry.trimmed();
        }
    }
    return entries;
}

ScriptValue textArray(const QStringList &items)
{
    return ScriptValue::fromStringList(items);
}

class ScriptFrame final : public TableObject
{
public:
    explicit ScriptFrame(std::shared_ptr<ScriptCadApplication> app) : m_app(std::move(app))
    {
        Frame &frame = m_app->application().frame();
        property("KeepInVisible", [&frame] { return ScriptValue::fromBool(frame.keepInvisible); },
                           [&frame](const ScriptValue &v) { frame.keepInvisible = v.toBool(); });
        const Handler window = [&frame](CallKind, ScriptArgs &) { return ScriptValue::fromLong(frame.window); };
        method("GetHWnd", window);
        method("GetHWndx64", window);
    }
    QString typeName() const override { return QStringLiteral("Frame"); }

private:
    std::shared_ptr<ScriptCadApplication> m_app;
};

class ScriptDocSpec final : public TableObject
{
public:
    explicit ScriptDocSpec(std::unique_ptr<DocumentSpecification> openRequest) : m_spec(std::move(openRequest))
    {
        DocumentSpecification &s = *m_spec;
        property("FileName", [&s] { return ScriptValue::fromString(s.fileName); },
                 [&s](const ScriptValue &v) { s.fileName = v.toString(); });
        property("DocumentType", [&s] { return ScriptValue::fromLong(s.documentType); },
                 [&s](const ScriptValue &v) { s.documentType = v.toLong(); });
        property("ReadOnly", [&s] { return ScriptValue::fromBool(s.readOnly); },
                 [&s](const ScriptValue &v) { s.readOnly = v.toBool(); });
        property("Silent", [&s] { return ScriptValue::fromBool(s.silent); },
                 [&s](const ScriptValue &v) { s.silent = v.toBool(); });
        property("ConfigurationName", [&s] { return ScriptValue::fromString(s.configurationName); },
                 [&s](const ScriptValue &v) { s.configurationName = v.toString(); });
        property("DisplayState", [&s] { return ScriptValue::fromString(s.displayState); },
                 [&s](const ScriptValue &v) { s.displayState = v.toString(); });
        property("Error", [&s] { return ScriptValue::fromLong(s.error); });
        property("Warning", [&s] { return ScriptValue::fromLong(s.warning); });
    }
    QString typeName() const override { return QStringLiteral("DocumentSpecification"); }
    DocumentSpecification &openRequest() { return *m_spec; }

private:
    std::unique_ptr<DocumentSpecification> m_spec;
};

class ScriptPdfData final : public TableObject
{
public:
    explicit ScriptPdfData(std::shared_ptr<ExportPdfData> data) : m_data(std::move(data))
    {
        method("SetSheets", [this](CallKind, ScriptArgs &args) {
            m_data->setSheets(arg(args, 0).toLong(), hasArg(args, 1) ? textList(*args[1]) : QStringList());
            return ScriptValue::fromBool(true);
        });
        method("GetSheets", [this](CallKind, ScriptArgs &) { return textArray(m_data->sheets()); });
    }
    QString typeName() const override { return QStringLiteral("ExportPdfData"); }
    const ExportPdfData *data() const { return m_data.get(); }

private:
    std::shared_ptr<ExportPdfData> m_data;
};

class ScriptNamed final : public TableObject
{
public:
    // A sheet or configuration: an object that only has a name.
    ScriptNamed(QString type, QString name) : m_type(std::move(type)), m_name(std::move(name))
    {
        property("Name", [this] { return ScriptValue::fromString(m_name); });
        method("GetName", [this](CallKind, ScriptArgs &) { return ScriptValue::fromString(m_name); });
    }
    QString typeName() const override { return m_type; }

private:
    QString m_type;
    QString m_name;
};

class ScriptConfigurationManager final : public TableObject
{
public:
    explicit ScriptConfigurationManager(ModelDocPtr doc) : m_doc(std::move(doc))
    {
        property("ActiveConfiguration", [this]() -> ScriptValue {
            if (m_doc->type() == DocumentType::Drawing)
                return ScriptValue::nothing();
            return object(std::make_shared<ScriptNamed>(QStringLiteral("Configuration"), m_doc->activeConfiguration()));
        });
    }
    QString typeName() const override { return QStringLiteral("ConfigurationManager"); }

private:
    ModelDocPtr m_doc;
};

class ScriptComponent final : public TableObject
{
public:
    explicit ScriptComponent(Component c) : m_c(std::move(c))
    {
        property("IsVirtual", [this] { return ScriptValue::fromBool(m_c.isVirtual); });
        property("Name2", [this] { return ScriptValue::fromString(m_c.name); });
        method("GetPathName", [this](CallKind, ScriptArgs &) { return ScriptValue::fromString(m_c.pathName); });
    }
    QString typeName() const override { return QStringLiteral("Component"); }

private:
    Component m_c;
};

class ScriptPageSetup final : public TableObject
{
public:
    explicit ScriptPageSetup(ModelDocPtr doc) : m_doc(std::move(doc))
    {
        PageSetup &p = m_doc->pageSetup();
        property("PrinterPaperSize", [&p] { return ScriptValue::fromLong(p.paperSize); },
                 [&p](const ScriptValue &v) { p.paperSize = v.toLong(); });
        property("Orientation", [&p] { return ScriptValue::fromLong(p.orientation); },
                 [&p](const ScriptValue &v) { p.orientation = v.toLong(); });
        method("SetHeader", [&p](CallKind, ScriptArgs &args) {
            p.header = {arg(args, 0).toString(), arg(args, 1).toString(), arg(args, 2).toString()};
            return ScriptValue::fromBool(true);
        });
        method("SetFooter", [&p](CallKind, ScriptArgs &args) {
            p.footer = {arg(args, 0).toString(), arg(args, 1).toString(), arg(args, 2).toString()};
            return ScriptValue::fromBool(true);
        });
    }
    QString typeName() const override { return QStringLiteral("PageSetup"); }

private:
    ModelDocPtr m_doc; // keeps the page set-up alive
};

class ScriptExtension final : public TableObject
{
public:
    explicit ScriptExtension(ModelDocPtr doc) : m_doc(std::move(doc))
    {
        method("SaveAs", [this](CallKind, ScriptArgs &args) {
            const QString name = arg(args, 0).toString();
            const std::int32_t version = hasArg(args, 1) ? args[1]->toLong() : cad::mcSaveAsCurrentVersion;
            const std::int32_t options = hasArg(args, 2) ? args[2]->toLong() : cad::mcSaveAsOptions_Silent;
            const ExportPdfData *data = nullptr;
            if (hasArg(args, 3) && args[3]->isObject() && !args[3]->isNothing()) {
                if (auto pdf = std::dynamic_pointer_cast<ScriptPdfData>(args[3]->object()))
                    data = pdf->data();
            }
            std::int32_t errors = 0, warnings = 0;
            const bool ok = m_doc->extension().saveAs(name, version, options, data, errors, warnings);
            writeBack(args, 4, errors);
            writeBack(args, 5, warnings);
            return ScriptValue::fromBool(ok);
        });
        property("UsePageSetup", [this] { return ScriptValue::fromLong(m_doc->extension().usePageSetup()); },
                 [this](const ScriptValue &v) { m_doc->extension().setUsePageSetup(v.toLong()); });
        method("PrintOut2", [this](CallKind, ScriptArgs &args) {
            std::optional<std::vector<std::int32_t>> sheets;
            if (hasArg(args, 0) && !args[0]->isEmpty()) {
                sheets.emplace();
                if (args[0]->isArray()) {
                    for (const ScriptValue &v : args[0]->array()->items)
                        sheets->push_back(v.toLong());
                } else {
                    sheets->push_back(args[0]->toLong());
                }
            }
            const std::int32_t copies = hasArg(args, 1) ? args[1]->toLong() : 1;
            const bool collate = hasArg(args, 2) && args[2]->toBool();
            const QString printer = hasArg(args, 3) ? args[3]->toString() : QString();
            const QString toFile = hasArg(args, 4) ? args[4]->toString() : QString();
            return ScriptValue::fromBool(m_doc->extension().printOut2(sheets, copies, collate, printer, toFile));
        });
    }
    QString typeName() const override { return QStringLiteral("ModelDocExtension"); }

private:
    ModelDocPtr m_doc;
};

} // namespace

std::shared_ptr<ScriptCadApplication> ScriptCadApplication::create(std::shared_ptr<CadApplication> app)
{
    std::shared_ptr<ScriptCadApplication> object(new ScriptCadApplication(std::move(app)));
    object->addMembers();
    return object;
}

ScriptCadApplication::ScriptCadApplication(std::shared_ptr<CadApplication> app) : m_app(std::move(app)) {}

std::shared_ptr<ScriptDocument> ScriptCadApplication::wrap(const ModelDocPtr &doc)
{
    if (!doc)
        return nullptr;
    const std::lock_guard lock(m_mutex);
    // Forget wrappers of documents that are gone.
    for (auto it = m_wrappers.begin(); it != m_wrappers.end();)
        it = it->second.expired() ? m_wrappers.erase(it) : std::next(it);
    if (auto existing = m_wrappers[doc.get()].lock())
        return existing;
    auto wrapper = std::make_shared<ScriptDocument>(shared_from_this(), doc);
    m_wrappers[doc.get()] = wrapper;
    return wrapper;
}

std::shared_ptr<ScriptDocument> ScriptCadApplication::existing(const ModelDoc &doc)
{
    const std::lock_guard lock(m_mutex);
    const auto it = m_wrappers.find(&doc);
    return it == m_wrappers.end() ? nullptr : it->second.lock();
}

ScriptValue ScriptCadApplication::wrapValue(const ModelDocPtr &doc)
{
    return doc ? object(wrap(doc)) : ScriptValue::nothing();
}

void ScriptCadApplication::addMembers()
{
    CadApplication &app = *m_app;
    // Members capture a weak self so that the application object is not kept
    // alive by its own table.
    const std::weak_ptr<ScriptCadApplication> weakSelf = weak_from_this();
    const auto self = [weakSelf] {
        auto s = weakSelf.lock();
        if (!s)
            throw ScriptError(ErrNo::ObjectVariableNotSet);
        return s;
    };

    method("RevisionNumber", [&app](CallKind, ScriptArgs &) { return ScriptValue::fromString(app.revisionNumber()); });
    property("Visible", [&app] { return ScriptValue::fromBool(app.isVisible()); },
             [&app](const ScriptValue &v) { app.setVisible(v.toBool()); });
    method("Frame", [self](CallKind, ScriptArgs &) { return object(std::make_shared<ScriptFrame>(self())); });
    property("BackgroundMode", [&app] { return ScriptValue::fromBool(app.backgroundMode()); },
                       [&app](const ScriptValue &v) { app.setBackgroundMode(v.toBool()); });
    property("UserControl", [&app] { return ScriptValue::fromBool(app.userControl()); },
                       [&app](const ScriptValue &v) { app.setUserControl(v.toBool()); });
    property("ActiveDoc", [self, &app] { return self()->wrapValue(app.activeDocument()); });
    method("GetFirstDocument", [self, &app](CallKind, ScriptArgs &) {
        return app.documents().empty() ? ScriptValue::nothing() : self()->wrapValue(app.documents().front());
    });

    method("GetOpenDocSpec", [&app](CallKind, ScriptArgs &args) {
        return object(std::make_shared<ScriptDocSpec>(app.getOpenDocSpec(arg(args, 0).toString())));
    });
    method("OpenDoc7", [self, &app](CallKind, ScriptArgs &args) {
        auto openRequest = std::dynamic_pointer_cast<ScriptDocSpec>(arg(args, 0).toObject());
        if (!openRequest)
            throw ScriptError(ErrNo::TypeMismatch);
        return self()->wrapValue(app.openDoc7(openRequest->openRequest()));
    });
    method("OpenDoc6", [self, &app](CallKind, ScriptArgs &args) {
        std::int32_t errors = 0, warnings = 0;
        ModelDocPtr doc = app.openDoc6(arg(args, 0).toString(), arg(args, 1).toLong(),
                                       hasArg(args, 2) ? args[2]->toLong() : 0,
                                       hasArg(args, 3) ? args[3]->toString() : QString(), errors, warnings);
        writeBack(args, 4, errors);
        writeBack(args, 5, warnings);
        return self()->wrapValue(doc);
    });
    method("LoadFile4", [self, &app](CallKind, ScriptArgs &args) {
        std::int32_t errors = 0;
        ModelDocPtr doc = app.loadFile4(arg(args, 0).toString(), hasArg(args, 1) ? args[1]->toString() : QString(),
                                        errors);
        writeBack(args, 3, errors);
        return self()->wrapValue(doc);
    });
    method("ActivateDoc2", [self, &app](CallKind, ScriptArgs &args) {
        std::int32_t errors = 0;
        ModelDocPtr doc = app.activateDoc2(arg(args, 0).toString(), hasArg(args, 1) && args[1]->toBool(), errors);
        writeBack(args, 2, errors);
        return self()->wrapValue(doc);
    });
    const Handler closeDoc = [&app](CallKind, ScriptArgs &args) {
        return ScriptValue::fromBool(app.closeDoc(arg(args, 0).toString()));
    };
    method("QuitDoc", closeDoc);
    method("CloseDoc", closeDoc);
    method("CloseAllDocuments", [&app](CallKind, ScriptArgs &args) {
        app.closeAllDocuments(hasArg(args, 0) && args[0]->toBool());
        return ScriptValue::fromBool(true);
    });
    method("GetDocumentCount", [&app](CallKind, ScriptArgs &) {
        return ScriptValue::fromLong(static_cast<std::int32_t>(app.documents().size()));
    });
    method("GetDocuments", [self, &app](CallKind, ScriptArgs &) {
        std::vector<ScriptValue> docs;
        for (const ModelDocPtr &doc : app.documents())
            docs.push_back(self()->wrapValue(doc));
        return docs.empty() ? ScriptValue() : ScriptValue::fromList(docs);
    });

    Preferences &prefs = app.preferences();
    method("SetUserPreferenceToggle", [&prefs](CallKind, ScriptArgs &args) {
        prefs.setToggle(arg(args, 0).toLong(), arg(args, 1).toBool());
        return ScriptValue::fromBool(true);
    });
    method("GetUserPreferenceToggle", [&prefs](CallKind, ScriptArgs &args) {
        return ScriptValue::fromBool(prefs.toggle(arg(args, 0).toLong()));
    });
    method("SetUserPreferenceIntegerValue", [&prefs](CallKind, ScriptArgs &args) {
        prefs.setInteger(arg(args, 0).toLong(), arg(args, 1).toLong());
        return ScriptValue::fromBool(true);
    });
    method("GetUserPreferenceIntegerValue", [&prefs](CallKind, ScriptArgs &args) {
        return ScriptValue::fromLong(prefs.integer(arg(args, 0).toLong()));
    });
    method("SetUserPreferenceDoubleValue", [&prefs](CallKind, ScriptArgs &args) {
        prefs.setReal(arg(args, 0).toLong(), arg(args, 1).toDouble());
        return ScriptValue::fromBool(true);
    });
    method("GetUserPreferenceDoubleValue", [&prefs](CallKind, ScriptArgs &args) {
        return ScriptValue::fromDouble(prefs.real(arg(args, 0).toLong()));
    });
    method("SetUserPreferenceStringListValue", [&prefs](CallKind, ScriptArgs &args) {
        prefs.setStringList(arg(args, 0).toLong(), preferenceEntries(arg(args, 1)));
        return ScriptValue::fromBool(true);
    });
    method("GetUserPreferenceStringListValue", [&prefs](CallKind, ScriptArgs &args) {
        return ScriptValue::fromString(prefs.stringList(arg(args, 0).toLong()).join(QLatin1Char('\n')));
    });
    method("GetExportFileData", [&app](CallKind, ScriptArgs &args) -> ScriptValue {
        std::shared_ptr<ExportPdfData> data = app.exportFileData(arg(args, 0).toLong());
        return data ? object(std::make_shared<ScriptPdfData>(data)) : ScriptValue::nothing();
    });
    method("GetErrorMessages", [&app](CallKind, ScriptArgs &args) {
        const QStringList messages = app.takeErrorMessages();
        const auto count = static_cast<std::int32_t>(messages.size());
        if (hasArg(args, 0))
            *args[0] = count ? textArray(messages) : ScriptValue();
        if (hasArg(args, 1)) {
            std::vector<ScriptValue> ids(messages.size(), ScriptValue::fromLong(0));
            *args[1] = count ? ScriptValue::fromList(ids) : ScriptValue();
        }
        if (hasArg(args, 2)) {
            std::vector<ScriptValue> types(messages.size(), ScriptValue::fromLong(1));
            *args[2] = count ? ScriptValue::fromList(types) : ScriptValue();
        }
        return ScriptValue::fromLong(count);
    });
}

ScriptDocument::ScriptDocument(std::shared_ptr<ScriptCadApplication> app, ModelDocPtr doc)
    : m_app(std::move(app)), m_doc(std::move(doc))
{
    ModelDoc &d = *m_doc;
    const ModelDocPtr keep = m_doc;
    const auto plain = [this](const char *name, std::function<ScriptValue()> get) {
        method(name, [get = std::move(get)](CallKind, ScriptArgs &) { return get(); });
    };
    plain("GetType", [&d] { return ScriptValue::fromLong(static_cast<std::int32_t>(d.type())); });
    plain("GetPathName", [&d] { return ScriptValue::fromString(d.pathName()); });
    plain("GetTitle", [&d] { return ScriptValue::fromString(d.title()); });
    plain("Extension", [keep] { return object(std::make_shared<ScriptExtension>(keep)); });
    plain("ConfigurationManager", [keep] { return object(std::make_shared<ScriptConfigurationManager>(keep)); });
    plain("PageSetup", [keep] { return object(std::make_shared<ScriptPageSetup>(keep)); });
    plain("GetConfigurationNames", [&d]() -> ScriptValue {
        const QStringList names = d.configurationNames();
        return names.isEmpty() ? ScriptValue() : textArray(names);
    });
    plain("GetConfigurationCount", [&d] { return ScriptValue::fromLong(static_cast<std::int32_t>(d.configurationNames().size())); });
    const Handler show = [&d](CallKind, ScriptArgs &args) {
        return ScriptValue::fromBool(d.showConfiguration(arg(args, 0).toString()));
    };
    method("ShowConfiguration", show);
    method("ShowConfiguration2", show);
    plain("GetSheetNames", [&d]() -> ScriptValue {
        const QStringList names = d.sheetNames();
        return names.isEmpty() ? ScriptValue() : textArray(names);
    });
    plain("GetSheetCount", [&d] { return ScriptValue::fromLong(static_cast<std::int32_t>(d.sheetNames().size())); });
    plain("GetCurrentSheet", [&d]() -> ScriptValue {
        if (d.type() != DocumentType::Drawing)
            return ScriptValue::nothing();
        return object(std::make_shared<ScriptNamed>(QStringLiteral("Sheet"), d.currentSheet()));
    });
    method("ActivateSheet", [&d](CallKind, ScriptArgs &args) {
        return ScriptValue::fromBool(d.activateSheet(arg(args, 0).toString()));
    });
    method("GetComponents", [&d](CallKind, ScriptArgs &args) -> ScriptValue {
        std::vector<ScriptValue> items;
        for (const Component &c : d.components(hasArg(args, 0) && args[0]->toBool()))
            items.push_back(object(std::make_shared<ScriptComponent>(c)));
        return items.empty() ? ScriptValue() : ScriptValue::fromList(items);
    });
    method("GetComponentCount", [&d](CallKind, ScriptArgs &args) {
        return ScriptValue::fromLong(static_cast<std::int32_t>(d.components(hasArg(args, 0) && args[0]->toBool()).size()));
    });
    plain("GetActiveConfigurationName", [&d] { return ScriptValue::fromString(d.activeConfiguration()); });
    plain("GetCurrentSheetName", [&d] { return ScriptValue::fromString(d.currentSheet()); });
    plain("IsClosed", [&d] { return ScriptValue::fromBool(d.isClosed()); });
    plain("GetNext", [this]() -> ScriptValue {
        // The document after this one in the application's list.
        const auto &documents = m_app->application().documents();
        auto it = std::find(documents.begin(), documents.end(), m_doc);
        if (it == documents.end() || ++it == documents.end())
            return ScriptValue::nothing();
        return m_app->wrapValue(*it);
    });
    plain("GetFirstModelView", [this] {
        auto first = view(0);
        return first ? object(first) : ScriptValue::nothing();
    });
    property("Printer", [&d] { return ScriptValue::fromString(d.printer()); },
             [&d](const ScriptValue &v) { d.setPrinter(v.toString()); });
}

std::shared_ptr<ScriptView> ScriptDocument::view(std::size_t index)
{
    if (index >= m_doc->views().size() || m_doc->isClosed())
        return nullptr;
    const std::lock_guard lock(m_mutex);
    auto &slot = m_views[index];
    auto existing = slot.lock();
    if (!existing) {
        existing = std::make_shared<ScriptView>(shared_from_this(), index);
        slot = existing;
    }
    return existing;
}

ScriptView::ScriptView(std::shared_ptr<ScriptDocument> doc, std::size_t index) : m_doc(std::move(doc)), m_index(index)
{
    method("GetNext", [this](CallKind, ScriptArgs &) {
        auto next = m_doc->view(m_index + 1);
        return next ? object(next) : ScriptValue::nothing();
    });
    method("GetDocument", [this](CallKind, ScriptArgs &) { return object(m_doc); });
}

QString ScriptDocument::typeName() const
{
    switch (m_doc->type()) {
    case DocumentType::Part: return QStringLiteral("PartDoc");
    case DocumentType::Assembly: return QStringLiteral("AssemblyDoc");
    case DocumentType::Drawing: return QStringLiteral("DrawingDoc");
    case DocumentType::None: break;
    }
    return QStringLiteral("ModelDoc2");
}

QHash<QString, ScriptValue> cadConstantValues()
{
    QHash<QString, ScriptValue> table;
    for (const cad::NamedConstant &c : cad::constantTable())
        table.insert(QString::fromLatin1(c.name).toLower(), ScriptValue::fromLong(c.value));
    return table;
}

ScriptMacroHost::ScriptMacroHost(std::shared_ptr<ScriptCadApplication> app) : m_app(std::move(app))
{
    method("Cadrix", [this](CallKind, ScriptArgs &) { return object(m_app); });
}

} // namespace cadsim

#include "cadsim/model/modeldoc.h"

#include "cadsim/model/cadapplication.h"
#include "cadsim/model/modeldocextension.h"
#include "base/windowspath.h"

ModelDoc::ModelDoc(CadApplication *app, DocumentData data, QString pathName, QString sourcePath, QString title)
    : m_app(app),
      m_data(std::move(data)),
      m_pathName(std::move(pathName)),
      m_sourcePath(std::move(sourcePath)),
      m_title(std::move(title)),
      m_extension(std::make_unique<ModelDocExtension>(*this))
{
    m_pageSetup.paperSize = m_data.paperSize;
    m_pageSetup.orientation = m_data.orientation;
    if (m_app)
        m_printer = m_app->defaultPrinter();
    m_views.push_back(std::make_unique<ModelView>(*this));
}

ModelDoc::~ModelDoc() = default;

QStringList ModelDoc::configurationNames() const
{
    return type() == DocumentType::Drawing ? QStringList() : m_data.configurations;
}

QString ModelDoc::activeConfiguration() const
{
    return type() == DocumentType::Drawing ? QString() : m_data.activeConfiguration;
}

bool ModelDoc::showConfiguration(const QString &name)
{
    if (type() == DocumentType::Drawing || !m_data.configurations.contains(name))
        return false;
    m_data.activeConfiguration = name;
    return true;
}

QStringList ModelDoc::sheetNames() const
{
    return type() == DocumentType::Drawing ? m_data.sheets : QStringList();
}

QString ModelDoc::currentSheet() const
{
    return type() == DocumentType::Drawing ? m_data.activeSheet : QString();
}

bool ModelDoc::activateSheet(const QString &name)
{
    if (type() != DocumentType::Drawing)
        return false;
    // Sheet names compare without regard to case, as the sheet tabs do.
    for (const QString &sheet : std::as_const(m_data.sheets)) {
        if (sheet.compare(name, Qt::CaseInsensitive) == 0) {
            m_data.activeSheet = sheet;
            return true;
        }
    }
    return false;
}

std::vector<Component> ModelDoc::components(bool /*topLevelOnly*/) const
{
    std::vector<Component> result;
    if (type() != DocumentType::Assembly)
        return result;
    const QString base = WindowsPath::parent(m_pathName.isEmpty() ? m_sourcePath : m_pathName);
    for (const ComponentEntry &entry : m_data.components) {
        const QString path = WindowsPath::append(base, entry.path);
        result.push_back({WindowsPath::baseName(path), path, entry.isVirtual});
    }
    return result;
}

void ModelDoc::setPrinter(const QString &name)
{
    // Kept as given, so that reading it back gives the same text.
    if (m_app && m_app->findPrinter(name))
        m_printer = name;
}

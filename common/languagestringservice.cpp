#include "common/languagestringservice.h"

#include "common/translator.h"

HRESULT LanguageStringService::OpenModule(const QString &product, const QString &module)
{
    Q_UNUSED(product); // one product's files per language folder
    if (!Translator::instance().hasModule(module))
        return S_FALSE;
    m_module = module;
    return S_OK;
}

QString LanguageStringService::GetText(std::int32_t number, const QString &section)
{
    if (m_module.isEmpty())
        return {};
    return Translator::instance().find(m_module, section, number).value_or(QString());
}

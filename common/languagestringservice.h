#pragma once

#include "host/hoststrings.h"

// The host's string service as this system provides it: modules are the
// Translator's module files in the language folder.
class LanguageStringService final : public IHostStringService
{
public:
    // Opens module when the language folder has it (S_OK), else S_FALSE.
    HRESULT OpenModule(const QString &product, const QString &module) override;
    // The text, or an empty string when there is none or no module is open.
    QString GetText(std::int32_t number, const QString &section) override;

private:
    QString m_module;
};

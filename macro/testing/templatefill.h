#pragma once

#include "host/variant.h"

#include <QString>
#include <QStringList>

#include <map>

// Option values of a template run by task variable name.
using TemplateOptions = std::map<QString, Variant>;

// The conversion template's flag options (Bool) and number options (Long).
const QStringList &conversionFlagNames();
const QStringList &conversionNumberNames();

// The conversion options a plain run uses: every flag False, every number 0,
// output to "C:\Out\<Filename>", the error log under "\Logs\Convert".
// outputItems and fileItems go to both the sheet and the configuration options.
TemplateOptions conversionOptions(const QString &format, int outputItems, int fileItems);

// The vault and instance a filled template names.
inline const QString kTemplateVaultRoot = QStringLiteral("C:\\Vault");
inline const QString kTemplateInstanceGuid = QStringLiteral("{6B1E1B4C-0D8A-4A55-9E4B-7F2C1D3E5A60}");

// The macro for one file, filled by MacroBuilder the way a run fills it: the
// options from task variables, the file placeholders for file (a Windows path)
// in the vault kTemplateVaultRoot.
QString fillTemplate(const QString &text, const TemplateOptions &options, const QString &file,
                     const QString &cfgOrSheet = QString());

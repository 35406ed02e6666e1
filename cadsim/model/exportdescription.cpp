#include "cadsim/model/exportdescription.h"

#include "cadsim/model/cadconstants.h"
#include "cadsim/model/preferences.h"

#include <QJsonArray>

QJsonObject exportDescriptionJson(const ExportDescription &d, const Preferences &prefs)
{
    QJsonObject preferences;
    for (const cad::ExportPreference &p : cad::exportPreferences()) {
        if (!p.extensions.contains(d.format))
            continue;
        const QString name = QLatin1String(p.name);
        switch (p.kind) {
        case cad::PreferenceKind::Toggle: preferences.insert(name, prefs.toggle(p.id)); break;
        case cad::PreferenceKind::Integer: preferences.insert(name, prefs.integer(p.id)); break;
        case cad::PreferenceKind::Double: preferences.insert(name, prefs.real(p.id)); break;
        case cad::PreferenceKind::StringList:
            preferences.insert(name, QJsonArray::fromStringList(prefs.stringList(p.id)));
            break;
        }
    }

    QJsonObject o;
    o.insert(QStringLiteral("target"), d.target);
    o.insert(QStringLiteral("format"), d.format);
    o.insert(QStringLiteral("source"), d.source);
    o.insert(QStringLiteral("imported"), d.imported);
    o.insert(QStringLiteral("documentType"), documentTypeName(d.documentType));
    if (d.documentType == DocumentType::Drawing)
        o.insert(QStringLiteral("sheets"), QJsonArray::fromStringList(d.sheets));
    else
        o.insert(QStringLiteral("configurations"), QJsonArray::fromStringList(d.configurations));
    o.insert(QStringLiteral("version"), d.version);
    o.insert(QStringLiteral("options"), d.options);
    o.insert(QStringLiteral("preferences"), preferences);
    return o;
}

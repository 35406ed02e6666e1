#include "cadsim/model/documentdata.h"

#include <QHash>
#include <QRegularExpression>

namespace {

const QString headerKey = QStringLiteral("Mecadra-Document");
constexpr int formatVersion = 1;

bool isSkipped(const QString &line)
{
    return line.isEmpty() || line.startsWith(QLatin1Char('#'));
}

std::optional<bool> parseFlag(const QString &value)
{
    const QString v = value.toLower();
    if (v == QLatin1String("yes") || v == QLatin1String("true") || v == QLatin1String("1"))
        return true;
    if (v == QLatin1String("no") || v == QLatin1String("false") || v == QLatin1String("0"))
        return false;
    return std::nullopt;
}

std::optional<DocumentType> parseType(const QString &value)
{
    const QString v = value.toLower();
    if (v == QLatin1String("part"))
        return DocumentType::Part;
    if (v == QLatin1String("assembly"))
        return DocumentType::Assembly;
    if (v == QLatin1String("drawing"))
        return DocumentType::Drawing;
    return std::nullopt;
}

ParseResult failure(int lineNo, const QString &what)
{
    return ParseResult{std::nullopt, QStringLiteral("line %1: %2").arg(lineNo).arg(what)};
}

QString numberText(double v)
{
    return QString::number(v, 'g', 15);
}

// "path [at X Y Z] [rotate DEG]"; the path may hold spaces.
std::optional<ComponentEntry> parseComponent(const QString &value, bool isVirtual)
{
    static const QRegularExpression form(QStringLiteral(
        R"(^(.*?)(?:\s+at\s+(\S+)\s+(\S+)\s+(\S+))?(?:\s+rotate\s+(\S+))?$)"));
    const QRegularExpressionMatch m = form.match(value);
    ComponentEntry entry{m.captured(1), isVirtual, {}};
    for (int k = 0; k < 4; ++k) {
        const QString word = m.captured(2 + k);
        if (word.isEmpty())
            continue;
        bool ok = false;
        const double v = word.toDouble(&ok);
        if (!ok)
            return std::nullopt;
        (k < 3 ? entry.placement.offset[k] : entry.placement.rotationZ) = v;
    }
    if (entry.path.isEmpty())
        return std::nullopt;
    return entry;
}

QString componentText(const ComponentEntry &c)
{
    QString text = c.path;
    const auto &o = c.placement.offset;
    if (o != std::array<double, 3>{})
        text += QStringLiteral(" at %1 %2 %3").arg(numberText(o[0]), numberText(o[1]), numberText(o[2]));
    if (c.placement.rotationZ != 0)
        text += QStringLiteral(" rotate ") + numberText(c.placement.rotationZ);
    return text;
}

const char *const directionNames[] = {"front", "top", "right", "iso"};

// "front|top|right|iso [at X Y] [scale S]"
std::optional<SheetView> parseView(const QString &value, const QString &sheet)
{
    const QStringList words = value.simplified().split(QLatin1Char(' '), Qt::SkipEmptyParts);
    if (words.isEmpty())
        return std::nullopt;
    SheetView view;
    view.sheet = sheet;
    int direction = -1;
    for (int i = 0; i < 4; ++i)
        if (words.first().compare(QLatin1String(directionNames[i]), Qt::CaseInsensitive) == 0)
            direction = i;
    if (direction < 0)
        return std::nullopt;
    view.direction = SheetView::Direction(direction);
    for (qsizetype i = 1; i < words.size();) {
        const QString word = words[i].toLower();
        bool ok1 = false, ok2 = true;
        if (word == QLatin1String("at") && i + 2 < words.size()) {
            view.x = words[i + 1].toDouble(&ok1);
            view.y = words[i + 2].toDouble(&ok2);
            i += 3;
        } else if (word == QLatin1String("scale") && i + 1 < words.size()) {
            view.scale = words[i + 1].toDouble(&ok1);
            ok1 = ok1 && view.scale > 0;
            i += 2;
        }
        if (!ok1 || !ok2)
            return std::nullopt;
    }
    return view;
}

QString viewText(const SheetView &v)
{
    QString text = QLatin1String(directionNames[int(v.direction)]);
    if (v.x != 0 || v.y != 0)
        text += QStringLiteral(" at %1 %2").arg(numberText(v.x), numberText(v.y));
    if (v.scale != 1)
        text += QStringLiteral(" scale ") + numberText(v.scale);
    return text;
}

} // namespace

QString documentTypeName(DocumentType type)
{
    switch (type) {
    case DocumentType::Part: return QStringLiteral("part");
    case DocumentType::Assembly: return QStringLiteral("assembly");
    case DocumentType::Drawing: return QStringLiteral("drawing");
    case DocumentType::None: break;
    }
    return QStringLiteral("none");
}

bool looksLikeDocumentText(const QString &text)
{
    for (const QString &raw : text.split(QLatin1Char('\n'))) {
        const QString line = raw.trimmed();
        if (isSkipped(line))
            continue;
        return line.startsWith(headerKey + QLatin1Char(':'));
    }
    return false;
}

ParseResult parseDocument(const QString &text)
{
    DocumentData data;
    bool headerSeen = false;
    int lineNo = 0;
    for (const QString &raw : text.split(QLatin1Char('\n'))) {
        ++lineNo;
        const QString line = raw.trimmed();
        if (isSkipped(line))
            continue;
        const qsizetype colon = line.indexOf(QLatin1Char(':'));
        if (colon <= 0)
            return failure(lineNo, QStringLiteral("expected \"Key: value\""));
        const QString key = line.left(colon).trimmed();
        const QString value = line.mid(colon + 1).trimmed();

        if (!headerSeen) {
            if (key != headerKey)
                return failure(lineNo, QStringLiteral("missing \"%1\" header").arg(headerKey));
            bool ok = false;
            const int version = value.toInt(&ok);
            if (!ok || version < 1)
                return failure(lineNo, QStringLiteral("bad format version"));
            // A newer format is read as far as it goes, and marks the
            // document as written by a future version.
            data.futureVersion = version > formatVersion;
            headerSeen = true;
            continue;
        }

        if (key == QLatin1String("Type")) {
            const auto type = parseType(value);
            if (!type)
                return failure(lineNo, QStringLiteral("unknown type \"%1\"").arg(value));
            data.type = *type;
        } else if (key == QLatin1String("Configuration")) {
            data.configurations << value;
        } else if (key == QLatin1String("Feature")) {
            const FeatureParse feature = parseFeature(value);
            if (!feature.feature)
                return failure(lineNo, feature.error);
            data.features.push_back({data.configurations.isEmpty() ? QString() : data.configurations.last(),
                                     *feature.feature});
        } else if (key == QLatin1String("Model")) {
            data.model = value;
        } else if (key == QLatin1String("View")) {
            if (data.sheets.isEmpty())
                return failure(lineNo, QStringLiteral("a view belongs after its Sheet line"));
            const auto view = parseView(value, data.sheets.last());
            if (!view)
                return failure(lineNo, QStringLiteral("bad view \"%1\"").arg(value));
            data.views.push_back(*view);
        } else if (key == QLatin1String("ActiveConfiguration")) {
            data.activeConfiguration = value;
        } else if (key == QLatin1String("Component") || key == QLatin1String("VirtualComponent")) {
            if (value.isEmpty())
                return failure(lineNo, QStringLiteral("component without a path"));
            const auto component = parseComponent(value, key == QLatin1String("VirtualComponent"));
            if (!component)
                return failure(lineNo, QStringLiteral("bad component \"%1\"").arg(value));
            data.components.push_back(*component);
        } else if (key == QLatin1String("Sheet")) {
            data.sheets << value;
        } else if (key == QLatin1String("ActiveSheet")) {
            data.activeSheet = value;
        } else if (key == QLatin1String("PaperSize") || key == QLatin1String("Orientation")) {
            bool ok = false;
            const int number = value.toInt(&ok);
            if (!ok)
                return failure(lineNo, QStringLiteral("%1 is not a number").arg(key));
            (key == QLatin1String("PaperSize") ? data.paperSize : data.orientation) = number;
        } else if (key == QLatin1String("FutureVersion") || key == QLatin1String("OleObjects")) {
            const auto flag = parseFlag(value);
            if (!flag)
                return failure(lineNo, QStringLiteral("%1 must be yes or no").arg(key));
            if (key == QLatin1String("FutureVersion"))
                data.futureVersion = data.futureVersion || *flag;
            else
                data.oleObjects = *flag;
        } else {
            return failure(lineNo, QStringLiteral("unknown key \"%1\"").arg(key));
        }
    }
    if (!headerSeen)
        return failure(lineNo, QStringLiteral("empty document"));
    if (data.type == DocumentType::None)
        return failure(lineNo, QStringLiteral("no Type"));

    if (data.type == DocumentType::Drawing) {
        if (!data.configurations.isEmpty() || !data.components.empty() || !data.features.empty())
            return failure(lineNo, QStringLiteral("a drawing has sheets only"));
        if (data.sheets.isEmpty())
            data.sheets << QStringLiteral("Sheet1");
        if (data.activeSheet.isEmpty())
            data.activeSheet = data.sheets.first();
        if (!data.sheets.contains(data.activeSheet))
            return failure(lineNo, QStringLiteral("active sheet \"%1\" does not exist").arg(data.activeSheet));
    } else {
        if (!data.sheets.isEmpty() || !data.model.isEmpty())
            return failure(lineNo, QStringLiteral("only drawings have sheets"));
        if (data.type == DocumentType::Assembly && !data.features.empty())
            return failure(lineNo, QStringLiteral("only parts have features"));
        if (data.type == DocumentType::Part && !data.components.empty())
            return failure(lineNo, QStringLiteral("only assemblies have components"));
        if (data.configurations.isEmpty())
            data.configurations << QStringLiteral("Default");
        if (data.activeConfiguration.isEmpty())
            data.activeConfiguration = data.configurations.first();
        if (!data.configurations.contains(data.activeConfiguration))
            return failure(lineNo, QStringLiteral("active configuration \"%1\" does not exist")
                                       .arg(data.activeConfiguration));
    }
    return ParseResult{data, QString()};
}

QString writeDocument(const DocumentData &data)
{
    QString out;
    const auto put = [&out](const QString &key, const QString &value) {
        out += key + QLatin1String(": ") + value + QLatin1Char('\n');
    };
    put(headerKey, QString::number(formatVersion));
    put(QStringLiteral("Type"), documentTypeName(data.type));
    const auto putFeatures = [&](const QString &configuration) {
        for (const FeatureEntry &f : data.features)
            if (f.configuration == configuration)
                put(QStringLiteral("Feature"), featureText(f.feature));
    };
    putFeatures(QString());
    for (const QString &c : data.configurations) {
        put(QStringLiteral("Configuration"), c);
        putFeatures(c);
    }
    if (!data.activeConfiguration.isEmpty())
        put(QStringLiteral("ActiveConfiguration"), data.activeConfiguration);
    for (const ComponentEntry &c : data.components)
        put(c.isVirtual ? QStringLiteral("VirtualComponent") : QStringLiteral("Component"), componentText(c));
    if (!data.model.isEmpty())
        put(QStringLiteral("Model"), data.model);
    for (const QString &s : data.sheets) {
        put(QStringLiteral("Sheet"), s);
        for (const SheetView &v : data.viewsOn(s))
            put(QStringLiteral("View"), viewText(v));
    }
    if (!data.activeSheet.isEmpty())
        put(QStringLiteral("ActiveSheet"), data.activeSheet);
    put(QStringLiteral("PaperSize"), QString::number(data.paperSize));
    put(QStringLiteral("Orientation"), QString::number(data.orientation));
    put(QStringLiteral("FutureVersion"), data.futureVersion ? QStringLiteral("yes") : QStringLiteral("no"));
    put(QStringLiteral("OleObjects"), data.oleObjects ? QStringLiteral("yes") : QStringLiteral("no"));
    return out;
}

std::vector<Feature> DocumentData::featuresOf(const QString &configuration) const
{
    std::vector<Feature> result;
    for (const FeatureEntry &f : features)
        if (f.configuration.isEmpty())
            result.push_back(f.feature);
    for (const FeatureEntry &f : features)
        if (!f.configuration.isEmpty() && f.configuration == configuration)
            result.push_back(f.feature);
    return result;
}

std::vector<SheetView> DocumentData::viewsOn(const QString &sheet) const
{
    std::vector<SheetView> result;
    for (const SheetView &v : views)
        if (v.sheet == sheet)
            result.push_back(v);
    return result;
}

DocumentType nativeTypeOfExtension(const QString &extension)
{
    const QString ext = extension.toLower();
    if (ext == QLatin1String("mcdprt"))
        return DocumentType::Part;
    if (ext == QLatin1String("mcdasm"))
        return DocumentType::Assembly;
    if (ext == QLatin1String("mcddrw"))
        return DocumentType::Drawing;
    return DocumentType::None;
}

DocumentType importTypeOfExtension(const QString &extension)
{
    static const QHash<QString, DocumentType> imports = [] {
        QHash<QString, DocumentType> h;
        for (const char *e : {"prt", "prtdot", "psd", "ai", "lfp", "mcdlfp", "x_t", "x_b", "xmt_txt",
                              "xmt_bin", "igs", "iges", "step", "stp", "sat", "vda", "wrl", "stl", "kgr",
                              "xpr", "ipt", "par", "psm", "ckd", "emn", "brd", "bdf", "idb", "3dm"})
            h.insert(QLatin1String(e), DocumentType::Part);
        for (const char *e : {"asm", "asmdot", "xas", "iam"})
            h.insert(QLatin1String(e), DocumentType::Assembly);
        for (const char *e : {"drw", "drwdot", "dxf", "dwg"})
            h.insert(QLatin1String(e), DocumentType::Drawing);
        return h;
    }();
    return imports.value(extension.toLower(), DocumentType::None);
}

bool canExportTo(DocumentType type, const QString &extension)
{
    static const QStringList model = {"pdf", "igs", "iges", "step", "stp", "sat", "x_t", "x_b", "wrl", "stl",
                                      "tif", "psd", "jpg", "png", "bmp", "3dm", "ai", "scnxml", "kgr", "zpk",
                                      "hsf", "xaml", "u3d", "vda"};
    static const QStringList drawing = {"pdf", "dxf", "dwg", "tif", "psd", "jpg", "png", "bmp", "glmp", "ai",
                                        "scnxml", "xaml"};
    const QString ext = extension.toLower();
    if (nativeTypeOfExtension(ext) == type && type != DocumentType::None)
        return true;
    switch (type) {
    case DocumentType::Part:
        return model.contains(ext) || ext == QLatin1String("gprt");
    case DocumentType::Assembly:
        return model.contains(ext) || ext == QLatin1String("gasm");
    case DocumentType::Drawing:
        return drawing.contains(ext);
    case DocumentType::None:
        break;
    }
    return false;
}

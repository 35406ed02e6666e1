#include "cadsim/model/documentgeometry.h"

#include "cadsim/model/cadapplication.h"
#include "cadsim/model/documentdata.h"
#include "cadsim/model/modeldoc.h"
#include "base/windowspath.h"

#include <cmath>

namespace {

// Components inside components deeper than this are taken for a cycle.
constexpr int maxDepth = 8;

// outer after inner: the inner placement seen from the outer document.
Placement compose(const Placement &outer, const Placement &inner)
{
    const double a = outer.rotationZ * M_PI / 180.0;
    const auto &o = inner.offset;
    return Placement{{outer.offset[0] + std::cos(a) * o[0] - std::sin(a) * o[1],
                      outer.offset[1] + std::sin(a) * o[0] + std::cos(a) * o[1], outer.offset[2] + o[2]},
                     outer.rotationZ + inner.rotationZ};
}

class GeometryCollector
{
public:
    GeometryCollector(CadApplication &app, QString *error) : m_app(app), m_error(error) {}

    bool add(const DocumentData &data, const QString &path, const QString &configuration, const Placement &at,
             int depth)
    {
        if (depth > maxDepth)
            return fail(QStringLiteral("%1: components nest too deep").arg(path));
        switch (data.type) {
        case DocumentType::Part: {
            Body body{WindowsPath::baseName(path), data.featuresOf(configuration), at};
            if (body.features.empty())
                return fail(QStringLiteral("%1 (%2) describes no solid").arg(WindowsPath::fileName(path), configuration));
            m_geometry.bodies.push_back(std::move(body));
            return true;
        }
        case DocumentType::Assembly:
            for (const ComponentEntry &c : data.components) {
                const QString componentPath = WindowsPath::append(WindowsPath::parent(path), c.path);
                const auto component = read(componentPath);
                if (!component)
                    return false;
                if (!add(*component, componentPath, component->activeConfiguration, compose(at, c.placement), depth + 1))
                    return false;
            }
            if (data.components.empty())
                return fail(QStringLiteral("%1 has no components").arg(WindowsPath::fileName(path)));
            return true;
        case DocumentType::Drawing: {
            if (data.model.isEmpty())
                return fail(QStringLiteral("%1 names no model").arg(WindowsPath::fileName(path)));
            const QString modelPath = WindowsPath::append(WindowsPath::parent(path), data.model);
            const auto model = read(modelPath);
            return model && add(*model, modelPath, model->activeConfiguration, at, depth + 1);
        }
        case DocumentType::None:
            break;
        }
        return fail(QStringLiteral("%1 is no document").arg(path));
    }

    ModelGeometry take() { return std::move(m_geometry); }

private:
    std::optional<DocumentData> read(const QString &path)
    {
        const QString native = m_app.resolve(path);
        const auto bytes = native.isEmpty() ? std::nullopt : m_app.files().read(native);
        if (!bytes) {
            fail(QStringLiteral("%1 cannot be read").arg(path));
            return std::nullopt;
        }
        ParseResult parsed = parseDocument(QString::fromUtf8(*bytes));
        if (!parsed.data)
            fail(QStringLiteral("%1: %2").arg(path, parsed.error));
        return parsed.data;
    }

    bool fail(const QString &text)
    {
        if (m_error)
            *m_error = text;
        return false;
    }

    CadApplication &m_app;
    QString *m_error;
    ModelGeometry m_geometry;
};

} // namespace

std::optional<ModelGeometry> documentGeometry(CadApplication &app, const ModelDoc &doc, const QString &configuration,
                                              QString *error)
{
    GeometryCollector collector(app, error);
    const QString path = doc.pathName().isEmpty() ? doc.sourcePath() : doc.pathName();
    if (!collector.add(doc.data(), path, configuration, Placement{}, 0))
        return std::nullopt;
    return collector.take();
}

#include "cadsim/geometry/feature.h"

#include <QStringList>

#include <cmath>

namespace {

FeatureParse failure(const QString &what)
{
    return FeatureParse{std::nullopt, what};
}

std::optional<double> number(const QString &word)
{
    bool ok = false;
    const double v = word.toDouble(&ok);
    if (!ok || !std::isfinite(v))
        return std::nullopt;
    return v;
}

QString numberText(double v)
{
    return QString::number(v, 'g', 15);
}

const char *const kindNames[] = {"box", "cylinder", "hole", "extrude"};

} // namespace

FeatureParse parseFeature(const QString &text)
{
    const QStringList words = text.simplified().split(QLatin1Char(' '), Qt::SkipEmptyParts);
    if (words.isEmpty())
        return failure(QStringLiteral("empty feature"));
    Feature f;
    const QString kind = words.first().toLower();
    int kindIndex = -1;
    for (int i = 0; i < 4; ++i)
        if (kind == QLatin1String(kindNames[i]))
            kindIndex = i;
    if (kindIndex < 0)
        return failure(QStringLiteral("unknown feature \"%1\"").arg(words.first()));
    f.kind = Feature::Kind(kindIndex);

    // Leading numbers are the dimensions; "at" and "axis" follow.
    qsizetype i = 1;
    std::vector<double> dims;
    while (i < words.size()) {
        const auto v = number(words[i]);
        if (!v)
            break;
        dims.push_back(*v);
        ++i;
    }
    while (i < words.size()) {
        const QString word = words[i].toLower();
        if (word == QLatin1String("at")) {
            for (int k = 0; k < 3; ++k) {
                const auto v = i + 1 + k < words.size() ? number(words[i + 1 + k]) : std::nullopt;
                if (!v)
                    return failure(QStringLiteral("\"at\" needs three numbers"));
                f.at[k] = *v;
            }
            i += 4;
        } else if (word == QLatin1String("axis") && i + 1 < words.size() && f.kind != Feature::Kind::Box
                   && f.kind != Feature::Kind::Extrude) {
            const QString a = words[i + 1].toLower();
            if (a != QLatin1String("x") && a != QLatin1String("y") && a != QLatin1String("z"))
                return failure(QStringLiteral("axis must be x, y or z"));
            f.axis = a.at(0).unicode() - 'x';
            i += 2;
        } else {
            return failure(QStringLiteral("unexpected \"%1\"").arg(words[i]));
        }
    }

    const auto positive = [&](std::size_t count) {
        for (std::size_t k = 0; k < count; ++k)
            if (!(dims[k] > 0))
                return false;
        return true;
    };
    switch (f.kind) {
    case Feature::Kind::Box:
        if (dims.size() != 3 || !positive(3))
            return failure(QStringLiteral("box needs three positive lengths"));
        f.size = {dims[0], dims[1], dims[2]};
        break;
    case Feature::Kind::Cylinder:
    case Feature::Kind::Hole:
        if (dims.size() != 2 || !positive(2))
            return failure(QStringLiteral("%1 needs a positive diameter and height").arg(kind));
        f.size = {dims[0], dims[1], 0};
        break;
    case Feature::Kind::Extrude:
        if (dims.size() < 7 || dims.size() % 2 != 1 || !(dims[0] > 0))
            return failure(QStringLiteral("extrude needs a positive height and at least three points"));
        f.size = {dims[0], 0, 0};
        for (std::size_t k = 1; k + 1 < dims.size(); k += 2)
            f.outline.push_back({dims[k], dims[k + 1]});
        break;
    }
    return FeatureParse{f, QString()};
}

QString featureText(const Feature &f)
{
    QStringList words{QLatin1String(kindNames[int(f.kind)])};
    switch (f.kind) {
    case Feature::Kind::Box:
        for (double v : f.size)
            words << numberText(v);
        break;
    case Feature::Kind::Cylinder:
    case Feature::Kind::Hole:
        words << numberText(f.size[0]) << numberText(f.size[1]);
        break;
    case Feature::Kind::Extrude:
        words << numberText(f.size[0]);
        for (const auto &p : f.outline)
            words << numberText(p[0]) << numberText(p[1]);
        break;
    }
    if (f.at != std::array<double, 3>{})
        words << QStringLiteral("at") << numberText(f.at[0]) << numberText(f.at[1]) << numberText(f.at[2]);
    if ((f.kind == Feature::Kind::Cylinder || f.kind == Feature::Kind::Hole) && f.axis != 2)
        words << QStringLiteral("axis") << QString(QChar('x' + f.axis));
    return words.join(QLatin1Char(' '));
}

#include "cadsim/model/paperlayout.h"

#include "cadsim/model/cadconstants.h"
#include "cadsim/model/preferences.h"

#include <QRectF>
#include <QSizeF>

namespace {

// What printers leave unprinted at each edge when asked for their margins.
constexpr double kPrinterMarginMm = 6.35;

} // namespace

QPageSize paperSizeOfCode(std::int32_t code)
{
    switch (code) {
    case 1: return QPageSize(QPageSize::Letter);
    case 3: return QPageSize(QPageSize::Tabloid);
    case 5: return QPageSize(QPageSize::Legal);
    case 8: return QPageSize(QPageSize::A3);
    case 9: return QPageSize(QPageSize::A4);
    case 11: return QPageSize(QPageSize::A5);
    case 24: return QPageSize(QPageSize::AnsiC);
    case 25: return QPageSize(QPageSize::AnsiD);
    case 26: return QPageSize(QPageSize::AnsiE);
    case 66: return QPageSize(QPageSize::A2);
    // A4 fed the long edge first: the page itself lies on its side.
    case 77: return QPageSize(QSizeF(297, 210), QPageSize::Millimeter, QStringLiteral("A4 Rotated"));
    case 260: return QPageSize(QPageSize::A0);
    case 261: return QPageSize(QPageSize::A1);
    case 262: return QPageSize(QPageSize::Letter);
    case 263: return QPageSize(QPageSize::Tabloid);
    default: return QPageSize(QPageSize::A4);
    }
}

QPageLayout::Orientation orientationOfCode(std::int32_t orientation)
{
    return orientation == cad::mcPageSetupOrient_Portrait ? QPageLayout::Portrait : QPageLayout::Landscape;
}

QMarginsF printMargins(const Preferences &prefs)
{
    if (prefs.toggle(cad::mcPageSetupPrinterUsePrinterMargin))
        return {kPrinterMarginMm, kPrinterMarginMm, kPrinterMarginMm, kPrinterMarginMm};
    auto mm = [&](std::int32_t id) { return qMax(0.0, prefs.real(id) * 1000.0); };
    return {mm(cad::mcPageSetupPrinterLeftMargin), mm(cad::mcPageSetupPrinterTopMargin),
            mm(cad::mcPageSetupPrinterRightMargin), mm(cad::mcPageSetupPrinterBottomMargin)};
}

QPageLayout pageLayoutOf(std::int32_t paperCode, std::int32_t orientation, const QMarginsF &marginsMm)
{
    QPageLayout layout(paperSizeOfCode(paperCode), orientationOfCode(orientation), QMarginsF(),
                       QPageLayout::Millimeter);
    // Margins that leave no room are cut to a third of the page each way.
    const QSizeF full = layout.fullRect(QPageLayout::Millimeter).size();
    const double w = full.width() / 3, h = full.height() / 3;
    layout.setMargins(QMarginsF(qMin(marginsMm.left(), w), qMin(marginsMm.top(), h), qMin(marginsMm.right(), w),
                                qMin(marginsMm.bottom(), h)));
    return layout;
}

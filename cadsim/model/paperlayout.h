#pragma once

#include <QMarginsF>
#include <QPageLayout>
#include <QPageSize>
#include <cstdint>

class Preferences;
struct PageSetup;

// Paper by the printer's paper numbers that page set-ups and drawings use
// (9 A4, 8 A3, 66 A2, 24 to 26 ANSI C to E, and the user-defined 260 A0,
// 261 A1, 262 ANSI A, 263 ANSI B). An unknown number is A4.
QPageSize paperSizeOfCode(std::int32_t code);

// Orientation codes: 1 portrait, anything else landscape.
QPageLayout::Orientation orientationOfCode(std::int32_t orientation);

// The margins a print uses, in millimetres: the printer's own, or the
// custom ones of the page set-up preferences (kept in metres).
QMarginsF printMargins(const Preferences &prefs);

// The page of a sheet or a print: paper, orientation and margins.
QPageLayout pageLayoutOf(std::int32_t paperCode, std::int32_t orientation, const QMarginsF &marginsMm = {});

#pragma once

#include "platform/installedproducts.h"

#include <QString>
#include <vector>

// The entries of the Script page's version list: one per installed Mecadra
// release year (2008 or later), plus "<Use default>" with year 0, sorted by
// their text as the list shows them.
struct VersionChoice {
    QString text;
    int year = 0;
    bool operator==(const VersionChoice &) const = default;
};

// The release of an installed product's name: the word that names its
// year and the year it begins with ("Mecadra 2013a x64 Edition SP2.0" gives
// "2013a" and 2013); year 0 when the name is no Mecadra release.
struct MecadraRelease {
    QString yearText;
    int year = 0;
    bool operator==(const MecadraRelease &) const = default;
};
MecadraRelease mecadraRelease(const QString &productName);

std::vector<VersionChoice> mecadraVersionChoices(const std::vector<InstalledProducts::Product> &products,
                                                 const QString &useDefaultText);

// The entry to select for a stored version: its year's entry, else the
// first of the list.
std::size_t versionChoiceIndex(const std::vector<VersionChoice> &choices, int version);

#pragma once

#include <QIcon>
#include <QString>

// The add-in's icons by the numbers its pages and lists use. Each number
// names one image of common/icons (16 and 32 pixels); see icons.cpp.
namespace ProjectIcons {

// The icon of a number; a null icon for a number the set does not have.
QIcon icon(int number);
// The image's base name ("text-x-script"), empty for an unknown number.
QString imageName(int number);
// Every number the set has, ascending.
QList<int> numbers();

// The icon of a file's type judged by its name alone (no disk access), or a
// folder's: the desktop theme's when it has one, else the set's own.
QIcon fileTypeIcon(const QString &path, bool folder);

} // namespace ProjectIcons

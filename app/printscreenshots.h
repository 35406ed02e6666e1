#pragma once

#include <QDir>
#include <functional>

class QWidget;

// Shows a widget, grabs it into FOLDER/NAME.png and says so; false on failure.
using SaveShot = std::function<bool(QWidget &widget, const QDir &folder, const QString &name)>;

// The print task's set-up pages and launch dialog.
bool savePrintScreenshots(const QDir &folder, const SaveShot &save);

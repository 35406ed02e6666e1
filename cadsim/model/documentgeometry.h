#pragma once

#include "cadsim/geometry/feature.h"

#include <QString>
#include <optional>

class CadApplication;
class ModelDoc;

// What a document shows in a configuration: a part's features, an
// assembly's components (each part in its active configuration) at their
// places, a drawing's model part. Component and model files are read through
// the application's files. Empty with error set when a file is missing or
// unreadable, or a part describes no features.
std::optional<ModelGeometry> documentGeometry(CadApplication &app, const ModelDoc &doc, const QString &configuration,
                                              QString *error = nullptr);

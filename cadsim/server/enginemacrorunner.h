#pragma once

#include "base/windowspath.h"
#include "cadsim/server/macrorunner.h"

#include <memory>

class CadApplication;
class WindowService;

// Runs macro files with the stand-in's macro engine, with the application
// object as the macro's Application and MsgBox shown through the window
// service.
std::unique_ptr<MacroRunner> makeEngineMacroRunner(const std::shared_ptr<CadApplication> &app,
                                                   WindowService &windows, PathResolver resolver);

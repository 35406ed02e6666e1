#pragma once

#include "addin/addinservices.h"

// The services the module's add-in object runs with.
AddInServices makeModuleServices();

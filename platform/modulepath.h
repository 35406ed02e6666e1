#pragma once

#include <QString>

// Full path of the loaded shared object that contains address (a function
// or object of that module); empty when the loader cannot tell.
QString modulePathOf(const void *address);

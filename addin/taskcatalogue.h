#pragma once

#include "addin/taskpage.h"

#include <QString>
#include <cstdint>
#include <vector>

// The task kinds of the add-in ("__type") and what each one brings: its
// default menu command, its default macro template and its set-up pages.
namespace TaskCatalogue {

inline constexpr std::int32_t Convert = 1;
inline constexpr std::int32_t Print = 2;
inline constexpr std::int32_t ExecuteScript = 3;

struct Text {
    std::int32_t number;
    const char *english;
};

struct Kind {
    std::int32_t type;
    Text menuText;
    Text statusBarHelp;
    int scriptTemplate; // the macro template's resource number
    bool menuShownByDefault;
};

// The kind of a stored type; any type but 1 and 2 is treated as 3.
const Kind &kind(std::int32_t type);

struct Page {
    PageId id;
    Text caption;
};

// The set-up pages of a kind in the order the host shows them; the first is
// always "Menu Command".
std::vector<Page> setupPages(std::int32_t type);

} // namespace TaskCatalogue

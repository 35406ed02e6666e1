#include "platform/processbitness.h"

#include <cstring>
#include <sys/utsname.h>

bool isWow64Process()
{
    if constexpr (sizeof(void *) != 4) {
        return false;
    } else {
        utsname name {};
        if (::uname(&name) != 0)
            return false;
        return std::strstr(name.machine, "64") != nullptr;
    }
}

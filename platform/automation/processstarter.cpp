// Test helper: starts the program named by its arguments the way the add-in
// starts Mecadra, prints the child's process id and waits until killed.

#include "platform/automation/processes.h"

#include <cstdio>
#include <unistd.h>

int main(int argc, char **argv)
{
    if (argc < 2)
        return 2;
    Processes::StartRequest request;
    request.program = QString::fromLocal8Bit(argv[1]);
    for (int i = 2; i < argc; ++i)
        request.arguments.append(QString::fromLocal8Bit(argv[i]));
    const std::optional<qint64> pid = Processes::instance().start(request);
    if (!pid)
        return 1;
    std::printf("%lld\n", static_cast<long long>(*pid));
    std::fflush(stdout);
    for (;;)
        ::pause();
}

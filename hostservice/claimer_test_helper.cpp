// A second claimer for the queue's multi-process test:
//   hostservice_test_claimer VAULTDIR HOSTNAME
// claims instances of the vault until none waits, ends each at once, and
// prints the id of each claim on a line of its own.
#include "hostservice/taskqueue.h"

#include <QCoreApplication>

#include <cstdio>

int main(int argc, char **argv)
{
    if (argc != 3) {
        std::fprintf(stderr, "usage: hostservice_test_claimer VAULTDIR HOSTNAME\n");
        return 2;
    }
    TaskQueue queue(VaultStore::open(QString::fromLocal8Bit(argv[1])));
    const TaskHolder holder{QString::fromLocal8Bit(argv[2]), QCoreApplication::applicationPid(), 1};
    while (const auto claim = queue.claimNext(holder, {60000, 2})) {
        std::printf("%d\n", claim->instanceId);
        queue.setStatus(*claim, TaskStatus_FinishedOk, S_OK, std::nullopt, {}, std::nullopt);
    }
    return 0;
}

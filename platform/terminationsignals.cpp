#include "platform/terminationsignals.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <stdexcept>
#include <unistd.h>

namespace {

int g_pipe[2] = {-1, -1};
struct sigaction g_previousTerm;
struct sigaction g_previousInt;

void onSignal(int number)
{
    const int saved = errno;
    const unsigned char byte = static_cast<unsigned char>(number);
    [[maybe_unused]] const ssize_t written = ::write(g_pipe[1], &byte, 1);
    errno = saved;
}

} // namespace

TerminationSignals::TerminationSignals()
{
    if (g_pipe[0] >= 0)
        throw std::logic_error("TerminationSignals: one at a time");
    if (::pipe2(g_pipe, O_CLOEXEC | O_NONBLOCK) != 0)
        throw std::runtime_error("TerminationSignals: no pipe");
    struct sigaction action {};
    action.sa_handler = &onSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    ::sigaction(SIGTERM, &action, &g_previousTerm);
    ::sigaction(SIGINT, &action, &g_previousInt);
}

TerminationSignals::~TerminationSignals()
{
    ::sigaction(SIGTERM, &g_previousTerm, nullptr);
    ::sigaction(SIGINT, &g_previousInt, nullptr);
    ::close(g_pipe[0]);
    ::close(g_pipe[1]);
    g_pipe[0] = g_pipe[1] = -1;
}

int TerminationSignals::wait(int timeoutMs)
{
    pollfd fd{g_pipe[0], POLLIN, 0};
    if (::poll(&fd, 1, timeoutMs) <= 0)
        return 0;
    unsigned char byte = 0;
    return ::read(g_pipe[0], &byte, 1) == 1 ? byte : 0;
}

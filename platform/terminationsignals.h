#pragma once

// SIGTERM and SIGINT as something a loop can wait for: while an object
// lives, the two signals no longer end the process; their handler writes the
// signal's number into a pipe (the self-pipe trick, safe in any thread), and
// wait() reads it. The previous handlers come back when the object goes.
// One object at a time per process.
class TerminationSignals final
{
public:
    TerminationSignals();
    ~TerminationSignals();
    TerminationSignals(const TerminationSignals &) = delete;
    TerminationSignals &operator=(const TerminationSignals &) = delete;

    // Waits at most timeoutMs for a signal; its number, or 0.
    int wait(int timeoutMs);
};

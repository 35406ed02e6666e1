#pragma once

#include "cadsim/engine/environment.h"
#include "cadsim/server/windowservice.h"

// A macro's MsgBox as a window of the stand-in: it blocks the macro until the
// box is answered through the window service.
class WindowMessageBox final : public cadsim::MessageBoxHandler
{
public:
    explicit WindowMessageBox(WindowService &windows) : m_windows(windows) {}
    int showMessage(const QString &title, const QString &prompt, int buttons) override;

    // The button a box answers with: Enter takes the default button, Escape
    // and Close the cancelling one (VBA values, e.g. vbOK 1, vbCancel 2).
    static int answerFor(int buttons, WindowService::Answer answer);

private:
    WindowService &m_windows;
};

#include "cadsim/server/windowmessagebox.h"

namespace {

enum VbAnswer { vbOK = 1, vbCancel = 2, vbAbort = 3, vbRetry = 4, vbIgnore = 5, vbYes = 6, vbNo = 7 };

} // namespace

int WindowMessageBox::showMessage(const QString &title, const QString &prompt, int buttons)
{
    // Boxes of the stand-in carry its name whatever title the macro asked for
    // when it gave none.
    const QString caption = title.isEmpty() ? QStringLiteral("Mecadra") : title;
    return answerFor(buttons, m_windows.showModal(caption, 0, prompt));
}

int WindowMessageBox::answerFor(int buttons, WindowService::Answer answer)
{
    static const std::vector<std::vector<int>> sets = {
        {vbOK}, {vbOK, vbCancel}, {vbAbort, vbRetry, vbIgnore}, {vbYes, vbNo, vbCancel}, {vbYes, vbNo}, {vbRetry, vbCancel},
    };
    const int kind = buttons & 0x7;
    const std::vector<int> &set = kind < static_cast<int>(sets.size()) ? sets[static_cast<std::size_t>(kind)] : sets[0];
    if (answer == WindowService::Answer::Enter) {
        const std::size_t defaultButton = static_cast<std::size_t>((buttons >> 8) & 0x3);
        return set[defaultButton < set.size() ? defaultButton : 0];
    }
    // Escape and Close pick Cancel where there is one; a box without one
    // answers with its single or last button.
    for (int button : set) {
        if (button == vbCancel)
            return button;
    }
    return set.size() == 1 ? set[0] : set.back();
}

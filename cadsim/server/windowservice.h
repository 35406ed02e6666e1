#pragma once

#include "host/hresult.h"
#include "platform/automation/windowmessages.h"

#include <QString>

#include <condition_variable>
#include <cstdint>
#include <map>
#include <mutex>
#include <vector>


inline constexpr HRESULT E_INVALID_WINDOW_HANDLE = makeHresult(0x80070578u);

// The stand-in's top-level windows. It has no display: a window is an entry
// with a title that others can list and post messages to. A message box
// blocks the thread that shows it until Enter or Escape is pressed on it or
// it is asked to close. Thread-safe.
class WindowService final
{
public:
    using WindowId = std::int64_t;
    enum class Answer { Enter, Escape, Close, Abandoned };

    struct WindowInfo
    {
        WindowId id = 0;
        QString title;
        WindowId parent = 0;
        QString parentTitle;
        QString text; // what a message box says
        bool visible = true;
        bool modal = false;
    };

    WindowId createWindow(const QString &title, WindowId parent = 0);
    void destroyWindow(WindowId id);
    void setTitle(WindowId id, const QString &title);

    // Shows a modal box and waits for its answer; the box is gone afterwards.
    Answer showModal(const QString &title, WindowId parent = 0, const QString &text = {});

    // Top-level windows, oldest first (what enumerating windows would give).
    std::vector<WindowInfo> list() const;

    // A modal box takes Enter or Escape on key-down and closes on Close;
    // other messages and other windows accept and ignore them.
    HRESULT postMessage(WindowId id, std::uint32_t message, std::uint32_t wParam);
    HRESULT showWindow(WindowId id, int command);

    // Releases every waiting box (answer Abandoned); used on shutdown.
    void abandonAll();

private:
    struct Window
    {
        WindowInfo info;
        bool answered = false;
        Answer answer = Answer::Abandoned;
    };

    mutable std::mutex m_mutex;
    std::condition_variable m_answered;
    std::map<WindowId, Window> m_windows;
    WindowId m_nextId = 0x10010; // look like window handles
    bool m_abandoned = false;
};

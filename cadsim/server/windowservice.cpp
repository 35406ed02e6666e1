#include "cadsim/server/windowservice.h"

WindowService::WindowId WindowService::createWindow(const QString &title, WindowId parent)
{
    std::lock_guard lock(m_mutex);
    const WindowId id = m_nextId;
    m_nextId += 2;
    Window &window = m_windows[id];
    window.info.id = id;
    window.info.title = title;
    window.info.parent = parent;
    return id;
}

void WindowService::destroyWindow(WindowId id)
{
    std::lock_guard lock(m_mutex);
    m_windows.erase(id);
}

void WindowService::setTitle(WindowId id, const QString &title)
{
    std::lock_guard lock(m_mutex);
    if (auto found = m_windows.find(id); found != m_windows.end())
        found->second.info.title = title;
}

WindowService::Answer WindowService::showModal(const QString &title, WindowId parent, const QString &text)
{
    std::unique_lock lock(m_mutex);
    if (m_abandoned)
        return Answer::Abandoned;
    const WindowId id = m_nextId;
    m_nextId += 2;
    Window &window = m_windows[id];
    window.info.id = id;
    window.info.title = title;
    window.info.parent = parent;
    window.info.text = text;
    window.info.modal = true;
    m_answered.wait(lock, [&] { return m_abandoned || m_windows.at(id).answered; });
    const Answer answer = m_windows.at(id).answered ? m_windows.at(id).answer : Answer::Abandoned;
    m_windows.erase(id);
    return answer;
}

std::vector<WindowService::WindowInfo> WindowService::list() const
{
    std::lock_guard lock(m_mutex);
    std::vector<WindowInfo> windows;
    for (const auto &[id, window] : m_windows) {
        if (window.answered)
            continue; // gone as far as anyone can see
        WindowInfo info = window.info;
        if (auto parent = m_windows.find(info.parent); parent != m_windows.end())
            info.parentTitle = parent->second.info.title;
        windows.push_back(info);
    }
    return windows;
}

HRESULT WindowService::postMessage(WindowId id, std::uint32_t message, std::uint32_t wParam)
{
    std::lock_guard lock(m_mutex);
    auto found = m_windows.find(id);
    if (found == m_windows.end() || found->second.answered)
        return E_INVALID_WINDOW_HANDLE;
    Window &window = found->second;
    if (!window.info.modal)
        return S_OK;
    if (message == winmsg::KeyDown && wParam == winmsg::VkReturn)
        window.answer = Answer::Enter;
    else if (message == winmsg::KeyDown && wParam == winmsg::VkEscape)
        window.answer = Answer::Escape;
    else if (message == winmsg::Close)
        window.answer = Answer::Close;
    else
        return S_OK;
    window.answered = true;
    m_answered.notify_all();
    return S_OK;
}

HRESULT WindowService::showWindow(WindowId id, int command)
{
    std::lock_guard lock(m_mutex);
    auto found = m_windows.find(id);
    if (found == m_windows.end())
        return E_INVALID_WINDOW_HANDLE;
    found->second.info.visible = command != winmsg::SwHide;
    return S_OK;
}

void WindowService::abandonAll()
{
    std::lock_guard lock(m_mutex);
    m_abandoned = true;
    m_answered.notify_all();
}

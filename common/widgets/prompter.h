#pragma once

#include "host/hresult.h"

#include <QString>

class QWidget;

// The caption of the add-in's own message boxes.
inline const QString AddInMessageCaption = QStringLiteral("Mecadra Task Add-in");

// Every message box of the add-in goes through the prompter, so tests read
// and answer them and a program without a screen never waits on one.
class Prompter
{
public:
    enum class Icon { None, Information, Warning, Question };

    virtual ~Prompter() = default;
    virtual void message(QWidget *parent, const QString &text, const QString &caption, Icon icon) = 0;
    // True for "Yes".
    virtual bool askYesNo(QWidget *parent, const QString &text, const QString &caption) = 0;

    // Message boxes on a screen; on the offscreen platform or without
    // widgets the messages go to stderr and questions are answered "No".
    static Prompter &instance();
    static Prompter *setInstance(Prompter *prompter);

    // A failed host call as a person reads it: its error text, as a warning
    // under the add-in's caption.
    static void showError(QWidget *parent, HRESULT hr);
};

// Installs a prompter for the lifetime of the guard (tests).
class ScopedPrompter final
{
public:
    explicit ScopedPrompter(Prompter &prompter) : m_previous(Prompter::setInstance(&prompter)) {}
    ~ScopedPrompter() { Prompter::setInstance(m_previous); }
    ScopedPrompter(const ScopedPrompter &) = delete;
    ScopedPrompter &operator=(const ScopedPrompter &) = delete;

private:
    Prompter *m_previous;
};

#pragma once

#include "common/widgets/prompter.h"

#include <QStringList>

// A prompter for tests: records every message and question and answers
// questions with the next of the given answers ("No" when none is left).
class RecordingPrompter final : public Prompter
{
public:
    void message(QWidget *, const QString &text, const QString &caption, Icon) override
    {
        messages.append(text);
        captions.append(caption);
    }
    bool askYesNo(QWidget *, const QString &text, const QString &caption) override
    {
        questions.append(text);
        captions.append(caption);
        return answers.isEmpty() ? false : answers.takeFirst();
    }

    QStringList messages;
    QStringList questions;
    QStringList captions;
    QList<bool> answers;
};

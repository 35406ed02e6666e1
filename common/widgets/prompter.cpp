#include "common/widgets/prompter.h"

#include "common/errortexts.h"

#include <QApplication>
#include <QMessageBox>
#include <atomic>
#include <cstdio>

namespace {

class ScreenPrompter final : public Prompter
{
public:
    void message(QWidget *parent, const QString &text, const QString &caption, Icon icon) override
    {
        if (!onScreen()) {
            const QByteArray line = (caption.isEmpty() ? text : caption + QStringLiteral(": ") + text).toLocal8Bit();
            std::fprintf(stderr, "%s\n", line.constData());
            std::fflush(stderr);
            return;
        }
        QMessageBox box(boxIcon(icon), caption, text, QMessageBox::Ok, parent);
        box.setObjectName(QStringLiteral("messageBox"));
        box.exec();
    }

    bool askYesNo(QWidget *parent, const QString &text, const QString &caption) override
    {
        if (!onScreen())
            return false;
        QMessageBox box(QMessageBox::Question, caption, text, QMessageBox::Yes | QMessageBox::No, parent);
        box.setObjectName(QStringLiteral("messageBox"));
        return box.exec() == QMessageBox::Yes;
    }

private:
    static bool onScreen()
    {
        return qobject_cast<QApplication *>(QCoreApplication::instance())
            && QGuiApplication::platformName() != QLatin1String("offscreen");
    }

    static QMessageBox::Icon boxIcon(Icon icon)
    {
        switch (icon) {
        case Icon::Information: return QMessageBox::Information;
        case Icon::Warning: return QMessageBox::Warning;
        case Icon::Question: return QMessageBox::Question;
        case Icon::None: break;
        }
        return QMessageBox::NoIcon;
    }
};

std::atomic<Prompter *> g_override{nullptr};

} // namespace

Prompter &Prompter::instance()
{
    if (Prompter *prompter = g_override.load())
        return *prompter;
    static ScreenPrompter screen;
    return screen;
}

Prompter *Prompter::setInstance(Prompter *prompter)
{
    return g_override.exchange(prompter);
}

void Prompter::showError(QWidget *parent, HRESULT hr)
{
    instance().message(parent, errorText(hr), AddInMessageCaption, Icon::Warning);
}

#pragma once

#include <QDialog>
#include <QList>
#include <QPointer>

#include <functional>
#include <memory>

namespace Ui {
class SetupDialog;
}

// The host's task set-up dialog: the captions of the add-in's pages in a
// list on the left, the selected page on the right, "OK" and "Cancel" below.
// The pages stay the add-in's: the dialog gives them back to their owners
// when it goes.
class SetupDialog final : public QDialog
{
    Q_OBJECT
public:
    // "OK": the caption of a page that refused its values, empty to close.
    using OkHandler = std::function<QString()>;

    explicit SetupDialog(QWidget *parent = nullptr);
    ~SetupDialog() override;

    void addPage(const QString &caption, QWidget *page);
    int pageCount() const;
    QString currentCaption() const;
    QWidget *currentPage() const;
    // Brings a page to the front; false when no page has that caption.
    bool showPage(const QString &caption);

    void setOkHandler(OkHandler handler) { m_ok = std::move(handler); }
    void setCancelHandler(std::function<void()> handler) { m_cancel = std::move(handler); }

    // Gives every page back to the widget that owned it before.
    void releasePages();

private:
    struct Page {
        QPointer<QWidget> widget;
        QPointer<QWidget> owner;
    };

    void pressOk();
    void pressCancel();

    std::unique_ptr<Ui::SetupDialog> m_ui;
    QList<Page> m_pages;
    OkHandler m_ok;
    std::function<void()> m_cancel;
};

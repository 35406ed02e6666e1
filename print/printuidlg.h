#pragma once

#include "addin/addinservices.h"
#include "print/printlaunch.h"

#include <QDialog>
#include <QPointer>
#include <memory>

class QWidget;
class FileRefTreeModel;

namespace Ui {
class PrintUIDlg;
}

// The window of a print launch: the documents with their references to
// tick, the version choice, printer, paper, orientation and copies, and the
// "Margins" tab when the task asks the user about margins, header or footer.
class PrintUIDlg final
{
public:
    PrintUIDlg(std::shared_ptr<IDoxVault> vault, std::shared_ptr<IDoxTaskInstance> instance,
               DoxCmdDataArray &selection, TextLookup text = {}, QWidget *parent = nullptr);
    ~PrintUIDlg();

    // Reads the settings, lists the documents and fills the window. Host
    // failures raise HostError.
    void initialise();
    QDialog *window() const { return m_dialog; }
    PrintLaunch &launch() { return m_launch; }
    FileRefTreeModel &tree() { return *m_tree; }

    // "Print": takes the controls' values; a refusal shows its message and
    // focuses its control. True when the dialog ended with "Print".
    bool print();
    int exec();

private:
    QString text(std::int32_t number, const char *english) const;
    void showChoices();
    void takeChoices();
    void updateTotal();
    void focus(PrintLaunch::Control control);

    PrintLaunch m_launch;
    TextLookup m_text;
    QPointer<QDialog> m_dialog;
    std::unique_ptr<Ui::PrintUIDlg> m_ui;
    FileRefTreeModel *m_tree = nullptr;
};

// The launch of a print task: with show, the dialog runs modally; without,
// it takes its data at once and never appears. True when the launch goes on
// (always without show); false for a null command or a cancelled dialog.
bool runPrintLaunchDialog(const std::shared_ptr<IDoxVault> &vault, DoxCmd *cmd, DoxCmdDataArray &selection, bool show,
                          TextLookup text = {});

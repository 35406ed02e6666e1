#pragma once

#include <QString>
#include <QStringList>
#include <functional>

class QAbstractButton;
class QWidget;
class SettingsLight;

// The help files to try, in order: the help file of the current language
// (or the English one when the language has none) and the English one,
// as native paths.
QStringList helpFiles(SettingsLight &settings);

// Opens the topic named after a dialog in the help window beside from's
// window, from the first of helpFiles() that has it. False when none has
// it; nothing is shown to the user then.
bool showHelp(QWidget *from, const QString &topic);

// The topic of a page or dialog: its "helpTopic" property, else its object
// name (the dialog name).
QString helpTopicOf(const QWidget *window);
void setHelpTopic(QWidget *window, const QString &topic);
// The topic of the part of page that has the focus: the nearest widget from
// focus up to page that was given a topic, else page's topic.
QString helpTopicWithin(const QWidget *page, const QWidget *focus);

// Gives a dialog its help: button (when given) and F1 anywhere in window
// open the topic that topic() answers at that moment.
void connectHelp(QWidget *window, QAbstractButton *button, std::function<QString()> topic);
void connectHelp(QWidget *window, QAbstractButton *button, const QString &topic);

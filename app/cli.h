#pragma once

#include <QCommandLineOption>
#include <QJsonValue>
#include <QStringList>
#include <QTextStream>
#include <stdexcept>
#include <vector>

// Bad input on the command line: one line on stderr and exit status 2.
class CliError final : public std::runtime_error
{
public:
    explicit CliError(const QString &message) : std::runtime_error(message.toStdString()) {}
    QString message() const { return QString::fromStdString(what()); }
};

// What every command gets: its own arguments (after the command words) and
// the streams to write to.
struct CommandContext {
    QStringList args;
    QTextStream &out;
    QTextStream &err;
};

// One command of the program: "mctask <group> <name> ..." (name may be empty
// for single-word commands such as "mctask error").
struct CommandEntry {
    QString group;
    QString name;
    QString usage;   // argument synopsis shown by --help
    QString summary; // one line
    int (*run)(CommandContext &context);
};

// The table of all commands; each command file adds its entries here.
const std::vector<CommandEntry> &allCommands();

// Options many commands share.
const QCommandLineOption &helpOption();
const QCommandLineOption &vaultOption();
const QCommandLineOption &jsonOption();

class QCommandLineParser;
// Parses the command's arguments with parser, to which --help is added.
// Bad input throws CliError; --help prints "Usage: mctask <usage>", the
// about text and the options, and gives false.
bool parseCommandLine(QCommandLineParser &parser, CommandContext &context, const QString &usage,
                      const QString &about);

class HostError;
// A host failure at a command's boundary: "mctask: NAME: what happened" on
// err, and exit status 1. Every command ends here when the vault refuses.
int reportHostError(CommandContext &context, const HostError &error);

// A path argument must name something: an empty one would mean the current
// folder. Throws CliError naming what.
void requirePath(const QString &value, const QString &what);

// Helpers shared by the commands.
void printTable(QTextStream &out, const QStringList &headers, const std::vector<QStringList> &rows);
void printJson(QTextStream &out, const QJsonValue &value);

#include "cadsim/server/mcsimcommandline.h"

namespace {

bool is(const QString &argument, const char *name)
{
    return argument.compare(QLatin1String(name), Qt::CaseInsensitive) == 0;
}

// "--name value" or "--name=value"; advances index past what it took.
bool takeOption(const QStringList &arguments, qsizetype &index, const char *name, QString &value, QString &error)
{
    const QString argument = arguments.at(index);
    const QString prefix = QLatin1String(name) + QLatin1Char('=');
    if (argument.startsWith(prefix)) {
        value = argument.mid(prefix.size());
        return true;
    }
    if (argument != QLatin1String(name))
        return false;
    if (index + 1 >= arguments.size()) {
        error = QStringLiteral("%1 needs a value").arg(QLatin1String(name));
        return true;
    }
    value = arguments.at(++index);
    return true;
}

} // namespace

McsimCommandLine McsimCommandLine::parse(const QStringList &arguments)
{
    McsimCommandLine result;
    bool actionGiven = false;
    auto setAction = [&](Action action, const QString &argument) {
        if (actionGiven && result.action != action)
            result.error = QStringLiteral("%1 cannot be combined with another switch").arg(argument);
        result.action = action;
        actionGiven = true;
    };

    for (qsizetype i = 0; i < arguments.size() && result.error.isEmpty(); ++i) {
        const QString argument = arguments.at(i);
        QString value;
        if (is(argument, "/R") || is(argument, "/B")) {
            setAction(Action::Run, argument);
            result.startSwitch = argument.toUpper();
        } else if (is(argument, "/regserver")) {
            setAction(Action::Register, argument);
        } else if (is(argument, "/unregserver")) {
            setAction(Action::Unregister, argument);
        } else if (is(argument, "/?") || argument == QLatin1String("--help") || argument == QLatin1String("-h")) {
            result.action = Action::Help;
            return result;
        } else if (takeOption(arguments, i, "--year", value, result.error)) {
            bool ok = false;
            const int year = value.toInt(&ok);
            if (result.error.isEmpty() && (!ok || year < 1993 || year > 9999))
                result.error = QStringLiteral("--year takes a version year such as 2013, not \"%1\"").arg(value);
            result.installation.versionYear = year;
        } else if (takeOption(arguments, i, "--edition", value, result.error)) {
            if (is(value, "office"))
                result.installation.officeEdition = true;
            else if (is(value, "standard"))
                result.installation.officeEdition = false;
            else if (result.error.isEmpty())
                result.error = QStringLiteral("--edition takes office or standard, not \"%1\"").arg(value);
        } else if (takeOption(arguments, i, "--folder", value, result.error)) {
            result.installation.folder = value;
        } else {
            result.error = QStringLiteral("unknown switch \"%1\"").arg(argument);
        }
    }
    return result;
}

QString McsimCommandLine::usage()
{
    return QStringLiteral(
        "Usage: mcsim [/R | /B]\n"
        "       mcsim /regserver [--year YEAR] [--edition office|standard] [--folder DIR]\n"
        "       mcsim /unregserver [--year YEAR]\n"
        "\n"
        "  /R, /B         start as an automation server (regression or batch start)\n"
        "  /regserver     install this program as Mecadra YEAR in the registry store\n"
        "  /unregserver   remove that installation\n"
        "  --year YEAR    version year (default 2013)\n"
        "  --edition E    office (default) or standard\n"
        "  --folder DIR   installation folder (default \"Mecadra YEAR\" under MCTASK_HOME)\n");
}

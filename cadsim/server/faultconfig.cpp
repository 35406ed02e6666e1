#include "cadsim/server/faultconfig.h"

#include <QStringList>

namespace {

int readCount(const QProcessEnvironment &env, const QString &name, int fallback, QStringList *warnings)
{
    if (!env.contains(name))
        return fallback;
    bool ok = false;
    const int value = env.value(name).trimmed().toInt(&ok);
    if (ok && value >= 0)
        return value;
    if (warnings)
        warnings->append(QStringLiteral("%1: not a count: \"%2\"").arg(name, env.value(name)));
    return fallback;
}

bool readFlag(const QProcessEnvironment &env, const QString &name)
{
    const QString value = env.value(name).trimmed().toLower();
    return !value.isEmpty() && value != QLatin1String("0") && value != QLatin1String("false")
        && value != QLatin1String("no");
}

} // namespace

FaultConfig FaultConfig::fromEnvironment(const QProcessEnvironment &env, QStringList *warnings)
{
    FaultConfig config;
    config.registerDelayMs = readCount(env, QStringLiteral("MCSIM_REGISTER_DELAY_MS"), 0, warnings);
    config.neverRegister = readFlag(env, QStringLiteral("MCSIM_NEVER_REGISTER"));
    config.crashAfterMacros = readCount(env, QStringLiteral("MCSIM_CRASH_AFTER"), 0, warnings);
    // "1" means the first macro, so a plain flag reads naturally too.
    config.hangInMacro = readCount(env, QStringLiteral("MCSIM_HANG_IN_MACRO"), 0, warnings);
    config.macroDelayMs = readCount(env, QStringLiteral("MCSIM_MACRO_DELAY_MS"), 0, warnings);
    config.showWindow = env.value(QStringLiteral("MCSIM_SHOW_WINDOW"));
    config.showWindowParent = env.value(QStringLiteral("MCSIM_SHOW_WINDOW_PARENT"));
    const QString at = env.value(QStringLiteral("MCSIM_SHOW_WINDOW_AT")).trimmed().toLower();
    if (at == QLatin1String("start"))
        config.showWindowAt = WindowMoment::Start;
    else if (!at.isEmpty() && at != QLatin1String("macro") && warnings)
        warnings->append(QStringLiteral("MCSIM_SHOW_WINDOW_AT: expected \"start\" or \"macro\", got \"%1\"").arg(at));
    config.growMiBPerMacro = readCount(env, QStringLiteral("MCSIM_GROW_MIB"), 0, warnings);
    config.refuseExit = readFlag(env, QStringLiteral("MCSIM_REFUSE_EXIT"));
    if (env.contains(QStringLiteral("MCSIM_RUN_ERROR"))) {
        bool ok = false;
        config.runError = env.value(QStringLiteral("MCSIM_RUN_ERROR")).trimmed().toInt(&ok);
        if (!ok) {
            config.runError = 0;
            if (warnings)
                warnings->append(QStringLiteral("MCSIM_RUN_ERROR: not a number: \"%1\"")
                                     .arg(env.value(QStringLiteral("MCSIM_RUN_ERROR"))));
        }
    }
    return config;
}

#include "cadsim/server/faultconfig.h"

#include <algorithm>

#include <QCryptographicHash>
#include <QStringList>

#include <array>
#include <random>

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
    config.randomFaultPercent = std::min(100, readCount(env, QStringLiteral("MCSIM_RANDOM_FAULTS"), 0, warnings));
    if (env.contains(QStringLiteral("MCSIM_FAULT_SEED"))) {
        bool ok = false;
        config.faultSeed = env.value(QStringLiteral("MCSIM_FAULT_SEED")).trimmed().toULongLong(&ok);
        if (!ok && warnings)
            warnings->append(QStringLiteral("MCSIM_FAULT_SEED: not a number: \"%1\"")
                                 .arg(env.value(QStringLiteral("MCSIM_FAULT_SEED"))));
    }
    return config;
}

FaultConfig::RandomFault FaultConfig::drawFault(int number, const QByteArray &macro) const
{
    if (randomFaultPercent <= 0)
        return RandomFault::None;
    // A digest rather than qHash: the same on every run and every machine.
    QCryptographicHash digest(QCryptographicHash::Sha1);
    digest.addData(QByteArray::number(static_cast<qulonglong>(faultSeed)) + ':' + QByteArray::number(number) + ':');
    digest.addData(macro);
    const QByteArray bytes = digest.result();
    std::seed_seq seeds(bytes.begin(), bytes.end());
    std::mt19937 generator(seeds);
    if (std::uniform_int_distribution<int>(0, 99)(generator) >= randomFaultPercent)
        return RandomFault::None;
    static constexpr std::array kinds = {RandomFault::Crash, RandomFault::Hang, RandomFault::Dialog, RandomFault::Grow,
                                         RandomFault::RunError};
    return kinds[std::uniform_int_distribution<std::size_t>(0, kinds.size() - 1)(generator)];
}

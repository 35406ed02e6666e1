#include "cadsim/server/enginemacrorunner.h"

#include "cadsim/engine/macroengine.h"
#include "cadsim/model/cadapplication.h"
#include "cadsim/model/scriptadapters.h"
#include "cadsim/server/windowmessagebox.h"

namespace {

class EngineMacroRunner final : public MacroRunner
{
public:
    EngineMacroRunner(const std::shared_ptr<CadApplication> &app, WindowService &windows, PathResolver resolver)
    {
        m_host.resolvePath = std::move(resolver);
        m_host.messageBox = std::make_shared<WindowMessageBox>(windows);
        // Macros start from Application.Cadrix.
        m_host.globals.insert(QStringLiteral("application"),
                              cadsim::ScriptValue::fromObject(
                                  std::make_shared<cadsim::ScriptMacroHost>(cadsim::ScriptCadApplication::create(app))));
        m_host.constants = cadsim::cadConstantValues();
    }

    MacroOutcome run(const QString &nativePath, const QString &module, const QString &procedure) override
    {
        // A fresh engine per run: module variables do not outlive the call.
        cadsim::MacroEngine engine(m_host);
        cadsim::MacroResult result = engine.loadFile(nativePath);
        if (result.ok)
            result = engine.run(module, procedure);
        return {result.ok, result.runCode};
    }

private:
    cadsim::EngineHost m_host;
};

} // namespace

std::unique_ptr<MacroRunner> makeEngineMacroRunner(const std::shared_ptr<CadApplication> &app,
                                                   WindowService &windows, PathResolver resolver)
{
    return std::make_unique<EngineMacroRunner>(app, windows, std::move(resolver));
}

// Exports paint text and pictures, and painting needs a GUI application; the
// tests run it on the offscreen platform.
#include <QGuiApplication>
#include <gtest/gtest.h>

namespace {

class GuiTestEnvironment final : public ::testing::Environment
{
public:
    void SetUp() override
    {
        if (QCoreApplication::instance())
            return;
        qputenv("QT_QPA_PLATFORM", "offscreen");
        static int argc = 1;
        static char name[] = "test";
        static char *argv[] = {name, nullptr};
        new QGuiApplication(argc, argv);
    }
};

[[maybe_unused]] ::testing::Environment *const registered =
    ::testing::AddGlobalTestEnvironment(new GuiTestEnvironment);

} // namespace

// photrak-workbench [FILE.top...]: the workbench in a window.
#include <QApplication>
#include <QCommandLineParser>
#include <filesystem>

#include "models/block_tests.h"
#include "models/dispatch.h"
#include "platform/file_system.h"
#include "qt/theme.h"
#include "workbench/frame_window.h"
#include "workbench/look.h"

namespace photrak {
namespace {

int Main(QApplication& application) {
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Draws and simulates fiber-optical links in a window."));
    parser.addHelpOption();
    parser.addVersionOption();
    const QCommandLineOption theme(QStringLiteral("theme"),
                                   QStringLiteral("light, dark, or as the system has it."),
                                   QStringLiteral("light|dark|system"));
    parser.addOption(theme);
    parser.addPositionalArgument(QStringLiteral("FILE.top"), QStringLiteral("Topologies to open."),
                                 QStringLiteral("[FILE.top...]"));
    parser.process(application);
    const WindowPreferences preferences = WindowMemory().Preferences();
    ApplyToEnvironment(preferences);
    SetShownLinePatterns(preferences.linePatterns);
    const QString asked = parser.value(theme);
    const ThemeChoice choice = !parser.isSet(theme)               ? preferences.theme
                               : asked == QStringLiteral("dark")  ? ThemeChoice::Dark
                               : asked == QStringLiteral("light") ? ThemeChoice::Light
                                                                  : ThemeChoice::System;
    SetShownTheme(ApplyTheme(application, choice));
    WindowDesktop desktop;
    Workbench workbench{desktop,
                        {BuiltInModels(), HasBlockTest, TestByStages},
                        ExecutableDirectory(),
                        std::filesystem::current_path().string()};
    if (!StartWorkbench(workbench)) return 1;
    QApplication::setWindowIcon(IconOfFile(workbench, "photrak.bmp"));
    FrameWindow frame(workbench, desktop);
    desktop.SetWindow(&frame);
    frame.show();
    frame.Begin(parser.positionalArguments());
    return QApplication::exec();
}

}  // namespace
}  // namespace photrak

int main(int argc, char** argv) {
    photrak::KeepFreedMemory();
    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("photrak-workbench"));
    QApplication::setApplicationDisplayName(QStringLiteral("Photrak"));
    QApplication::setApplicationVersion(QStringLiteral(PHOTRAK_VERSION));
    QGuiApplication::setDesktopFileName(QStringLiteral("org.photrak.Workbench"));
    return photrak::Main(application);
}

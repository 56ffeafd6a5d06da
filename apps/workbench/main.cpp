// photrak-workbench [FILE.top...]: the workbench in a window.
#include <QApplication>
#include <QCommandLineParser>
#include <filesystem>
#include <iostream>

#include "models/block_tests.h"
#include "models/dispatch.h"
#include "platform/file_system.h"
#include "qt/theme.h"
#include "workbench/frame_window.h"
#include "workbench/look.h"

namespace photrak {
namespace {

const QCommandLineOption& TrustOption() {
    static const QCommandLineOption option(
        QStringLiteral("trust"),
        QStringLiteral(
            "Load user libraries too that belong to other users or that these can change."));
    return option;
}

const QCommandLineOption& IsolateOption() {
    static const QCommandLineOption option(
        QStringLiteral("isolate"),
        QStringLiteral(
            "Call user libraries in processes of their own, for so many seconds at most: "
            "a crash is an error of the block."),
        QStringLiteral("seconds"));
    return option;
}

/// How user libraries are called; false where the time is none.
bool ReadPolicy(const QCommandLineParser& parser, LibraryPolicy& policy) {
    policy.trustsAll = parser.isSet(TrustOption());
    if (!parser.isSet(IsolateOption())) return true;
    bool isNumber = false;
    policy.isolated = parser.value(IsolateOption()).toDouble(&isNumber);
    return isNumber && policy.isolated > 0.0;
}

int Main(QApplication& application) {
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Draws and simulates fiber-optical links in a window."));
    parser.addHelpOption();
    parser.addVersionOption();
    const QCommandLineOption theme(QStringLiteral("theme"),
                                   QStringLiteral("light, dark, or as the system has it."),
                                   QStringLiteral("light|dark|system"));
    parser.addOptions({theme, TrustOption(), IsolateOption()});
    parser.addPositionalArgument(QStringLiteral("FILE.top"), QStringLiteral("Topologies to open."),
                                 QStringLiteral("[FILE.top...]"));
    parser.process(application);
    LibraryPolicy policy;
    if (!ReadPolicy(parser, policy)) {
        std::cerr << "photrak-workbench: error: --isolate wants a time in seconds\n";
        return 64;
    }
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
    workbench.userModels.SetPolicy(policy);
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

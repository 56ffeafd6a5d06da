// vistrax: the plots of Photrak in a window, or as a picture without one.

#include <QApplication>
#include <QDir>
#include <QHashSeed>
#include <cstdio>

#include "qt/single_instance.h"
#include "qt/text_measure_qt.h"
#include "vistrax/options.h"
#include "vistrax/picture_export.h"
#include "vistrax/viewer_window.h"

namespace {

using namespace photrak;

void Report(const std::string& problem) {
    std::fprintf(stderr, "vistrax: error: %s\n", problem.c_str());
}

/// Without a session the toolkit complains about folders that a picture does not need.
void DropNotes(QtMsgType type, const QMessageLogContext&, const QString& text) {
    if (type == QtCriticalMsg || type == QtFatalMsg) Report(text.toStdString());
}

ThemeChoice ChoiceOf(const ViewerOptions& options) {
    return options.dark    ? ThemeChoice::Dark
           : options.light ? ThemeChoice::Light
                           : ThemeChoice::System;
}

int Export(const ViewerOptions& options) {
    Plot plot;
    std::string error;
    for (std::size_t i = 0; i < options.files.size(); ++i) {
        Plot other;
        if (!LoadPlot(options.files[i], i == 0 ? plot : other, error) ||
            (i > 0 && !Overlay(plot, other, error))) {
            Report(error);
            return 1;
        }
    }
    ExportLook look;
    look.size = options.size;
    look.scale = options.scale;
    look.theme = options.dark ? Theme::Dark : Theme::Light;
    look.eye = options.eye;
    if (ExportPlot(plot, PlotView(plot), {}, look, options.output, error)) return 0;
    Report(error);
    return 1;
}

QStringList FilesOf(const ViewerOptions& options) {
    QStringList files;
    for (const std::string& file : options.files) files.append(QString::fromStdString(file));
    return files;
}

int Show(const ViewerOptions& options) {
    SingleInstance instance(QStringLiteral("vistrax"));
    const InstanceRequest request{QDir::currentPath(), FilesOf(options),
                                  qEnvironmentVariable("XDG_ACTIVATION_TOKEN")};
    if (!options.ownWindow && instance.Start(request) == SingleInstance::Outcome::HandedOver)
        return 0;
    ViewerWindow window(ChoiceOf(options));
    QObject::connect(&instance, &SingleInstance::Requested, &window,
                     [&window](const InstanceRequest& wanted) {
                         // What lets a window come to the front where the desktop guards it.
                         if (!wanted.token.isEmpty())
                             qputenv("XDG_ACTIVATION_TOKEN", wanted.token.toUtf8());
                         window.Welcome(wanted.files, wanted.directory);
                     });
    window.OpenFiles(request.files, request.directory);
    window.show();
    return QApplication::exec();
}

}  // namespace

int main(int argc, char** argv) {
    ViewerOptions options;
    const std::string problem = ReadViewerOptions({argv + 1, argv + argc}, options);
    if (!problem.empty()) {
        Report(problem);
        return 2;
    }
    if (options.help || options.version) {
        const std::string text =
            options.help ? ViewerUsage() : std::string("vistrax " PHOTRAK_VERSION "\n");
        std::fwrite(text.data(), 1, text.size(), stdout);
        return 0;
    }
    const bool exports = !options.output.empty();
    const bool display =
        !qEnvironmentVariableIsEmpty("DISPLAY") || !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
    if (exports) {
        QHashSeed::setDeterministicGlobalSeed();  // the same bytes for the same plot
        qputenv("QT_QPA_PLATFORM", "offscreen");
        qInstallMessageHandler(DropNotes);
    } else if (!display && qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
        Report("there is no display; --export OUT.png writes a picture without one");
        return 2;
    }
    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("vistrax"));
    QApplication::setApplicationVersion(QStringLiteral(PHOTRAK_VERSION));
    QApplication::setDesktopFileName(QStringLiteral("org.photrak.Vistrax"));
    return exports ? Export(options) : Show(options);
}

#include "vistrax/viewer_file_commands.h"

#include <QApplication>
#include <QClipboard>
#include <QFileDialog>
#include <QFileInfo>
#include <QPainter>
#include <QPrintDialog>
#include <QPrinter>
#include <QStatusBar>

#include "qt/painter.h"
#include "qt/text_measure_qt.h"
#include "vistrax/picture_export.h"
#include "vistrax/viewer_window.h"

namespace photrak {

void FileCommands::Open(ViewerWindow& w) {
    const QStringList files =
        QFileDialog::getOpenFileNames(&w, ViewerWindow::tr("Open Plot"), w.directory_,
                                      QStringLiteral("All Vistr Graphs (*.p*);;All Files (*.*)"));
    w.OpenFiles(files, {});
}

void FileCommands::Reload(ViewerWindow& w) {
    const std::string& path = w.current_->Open().path;
    if (w.loading_.insert(path).second) w.loader_.Load(path, w.files_[path]);
}

void FileCommands::Export(ViewerWindow& w) {
    static constexpr std::pair<const char*, const char*> kinds[] = {
        {"SVG picture (*.svg)", ".svg"},
        {"PDF page (*.pdf)", ".pdf"},
        {"PNG picture (*.png)", ".png"},
        {"Table of what is seen (*.csv)", ".csv"}};
    QStringList filters;
    for (const auto& [text, suffix] : kinds) filters.append(QString::fromLatin1(text));
    const QFileInfo plot(ToQString(w.current_->Open().path));
    QString chosen;
    QString path = QFileDialog::getSaveFileName(
        &w, ViewerWindow::tr("Export"),
        plot.absolutePath() + QLatin1Char('/') + plot.baseName() + QStringLiteral(".svg"),
        filters.join(QStringLiteral(";;")), &chosen);
    if (path.isEmpty()) return;
    if (QFileInfo(path).suffix().isEmpty()) {
        const auto kind = std::max<qsizetype>(0, filters.indexOf(chosen));
        path += QLatin1String(kinds[kind].second);
    }
    w.ExportTo(path);
}

void FileCommands::Print(ViewerWindow& w) {
    QPrinter printer(QPrinter::HighResolution);
    printer.setPageOrientation(QPageLayout::Landscape);
    printer.setDocName(ToQString(w.current_->Open().plot.name));
    QPrintDialog dialog(&printer, &w);
    if (dialog.exec() == QDialog::Accepted) PrintOn(w, printer);
}

void FileCommands::PrintOn(ViewerWindow& w, QPrinter& printer) {
    QPainter painter(&printer);
    const double dots = printer.logicalDpiX() / 96.0;
    PlotPane& pane = w.current_->Pane();
    const QRectF page = printer.pageLayout().paintRectPixels(printer.resolution());
    const QtTextMeasure measure;
    PlotPicture picture = pane.MakeJob({page.width() / dots, page.height() / dots}, measure).Draw();
    DrawCursors(picture, pane.Shown(), pane.Open().view, pane.Open().cursors);
    painter.scale(dots, dots);
    PaintDrawing(painter, picture.drawing, Theme::Print, Surface::Page);
}

void FileCommands::Close(ViewerWindow& w) {
    QTabWidget* group = w.GroupOf(w.current_);
    w.CloseTab(group, group->indexOf(w.current_));
}

void FileCommands::Quit(ViewerWindow& w) {
    w.close();
}

void FileCommands::CopyValues(ViewerWindow& w) {
    const PlotPane& pane = w.current_->Pane();
    const Readout readout = MakeReadout(pane.Shown(), pane.Open().view, pane.Open().cursors);
    QApplication::clipboard()->setText(ToQString(ReadoutText(readout)));
    w.statusBar()->showMessage(ViewerWindow::tr("Values copied"), 3000);
}

void FileCommands::CopyPicture(ViewerWindow& w) {
    QApplication::clipboard()->setPixmap(w.current_->Display().grab());
    w.statusBar()->showMessage(ViewerWindow::tr("Picture copied"), 3000);
}

bool ViewerWindow::ExportTo(const QString& path) {
    const PlotPane& pane = current_->Pane();
    ExportLook look;
    const QSize size = current_->Display().size();
    look.size = {static_cast<double>(size.width()), static_cast<double>(size.height())};
    look.scale = 2.0;
    look.theme = theme_;
    look.eye = pane.eyeStyle;
    look.saturation = pane.saturation;
    std::string error;
    const bool done = ExportPlot(pane.Shown(), pane.Open().view, pane.Open().cursors, look,
                                 path.toStdString(), error);
    statusBar()->showMessage(done ? tr("Wrote %1").arg(path) : ToQString(error), 8000);
    return done;
}

}  // namespace photrak

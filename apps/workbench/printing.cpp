// The preview and the printer get the same pages.
#include "workbench/printing.h"

#include <QFileInfo>
#include <QMessageBox>
#include <QPageSetupDialog>
#include <QPainter>
#include <QPrintPreviewDialog>
#include <QPrinter>
#include <QPrinterInfo>
#include <cmath>

#include "qt/painter.h"
#include "qt/text_measure_qt.h"
#include "workbench/canvas_drawing.h"
#include "workbench/look.h"
#include "workbench/view_commands.h"

namespace photrak {
namespace {

QPrinter& ThePrinter() {
    static QPrinter printer(QPrinter::HighResolution);
    return printer;
}

/// Draws all pages at the print zoom; whoever calls sets the zoom again.
void PrintPages(Workbench& workbench, DiagramView& view, QPrinter& printer) {
    QPainter painter;
    if (!painter.begin(&printer)) {
        workbench.ErrorBox("can't open printer display");
        return;
    }
    const QRect page = printer.pageLayout().paintRectPixels(printer.resolution());
    const double zoom = PrintZoom(workbench, view, page.width());
    workbench.scale.SetPrintZoom(zoom);
    // Lines and names as on the screen at unity, whatever the pixels of the printer are.
    const Drawing drawing = DrawCanvas(workbench, view, {.measure = &TableMeasure(), .unit = zoom});
    const double height = Extent(*view.workspace, workbench.scale).y;
    const int pages = std::max(1, static_cast<int>(std::ceil(height / page.height())));
    for (int i = 0; i < pages; ++i) {
        if (i > 0) printer.newPage();
        painter.save();
        painter.setClipRect(0, 0, page.width(), page.height());
        painter.translate(0, -static_cast<double>(i) * page.height());
        PaintItems(painter, drawing.items, Theme::Print, Surface::Page);
        painter.restore();
    }
}

}  // namespace

void PrintDiagram(Workbench& workbench, DiagramView& view, QWidget& parent) {
    if (view.workspace->components.empty()) return;
    const Scale before = workbench.scale;
    QPrinter& printer = ThePrinter();
    // The dialog makes the name of a PDF file from the document's; the job has a title of its own.
    const QString document = QFileInfo(ToQString(view.fileName)).fileName();
    printer.setDocName(document);
    QPrintPreviewDialog preview(&printer, &parent);
    preview.setWindowTitle(QStringLiteral("Print"));
    QObject::connect(
        &preview, &QPrintPreviewDialog::paintRequested, &parent, [&](QPrinter* target) {
            workbench.scale = before;  // the page's zoom follows from the diagram's
            target->setDocName(QStringLiteral("Photrak printing ") + ToQString(view.fileName));
            PrintPages(workbench, view, *target);
            target->setDocName(document);
        });
    const bool printed = preview.exec() == QDialog::Accepted;
    const double printZoom = workbench.scale.zoom;
    workbench.scale = before;
    if (!printed) return;
    // By design: after a print, View Last goes to the zoom of the page.
    workbench.scale.SetPrintZoom(printZoom);
    workbench.scale.SetZoom(before.zoom);
}

void SetUpPrinter(QWidget& parent) {
    QPageSetupDialog dialog(&ThePrinter(), &parent);
    dialog.exec();
}

}  // namespace photrak

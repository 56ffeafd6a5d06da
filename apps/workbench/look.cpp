// Buttons of models show the picture that the canvas draws; the others one of their own name.
#include "workbench/look.h"

#include <QPainter>
#include <QPixmap>
#include <algorithm>

#include "base/text.h"
#include "qt/painter.h"
#include "qt/text_measure_qt.h"
#include "qt/theme.h"

namespace photrak {
namespace {

Theme& Current() {
    static Theme theme = Theme::Light;
    return theme;
}

bool& LinePatterns() {
    static bool shown = false;
    return shown;
}

}  // namespace

Theme ShownTheme() {
    return Current();
}

void SetShownTheme(Theme theme) {
    Current() = theme;
}

bool ShownLinePatterns() {
    return LinePatterns();
}

void SetShownLinePatterns(bool shown) {
    LinePatterns() = shown;
}

const TextMeasure& WindowMeasure() {
    static const QtTextMeasure measure;
    return measure;
}

namespace {

/// The file of a button's picture: that of its model, or one named after what it does.
std::string ButtonBitmap(const Workbench& workbench, const BarButton& button) {
    struct Row {
        std::string_view command, file;
    };
    static constexpr Row rows[] = {{"Run Go", "run-go"},
                                   {"Run Stop Simulation", "run-stop"},
                                   {"Run Scan Variable", "run-scan"},
                                   {"Edit Symbols", "edit-symbols"},
                                   {"File New", "file-new"},
                                   {"File Open", "file-open"},
                                   {"File Save", "file-save"},
                                   {"Edit Undo", "edit-undo"},
                                   {"Edit Cut", "edit-cut"},
                                   {"Edit Copy", "edit-copy"},
                                   {"Edit Paste", "edit-paste"},
                                   {"Edit Duplicate", "edit-duplicate"},
                                   {"View ReDraw", "view-redraw"},
                                   {"Graph View", "graph-view"},
                                   {"Help Online Help", "help"}};
    static constexpr std::string_view modes[] = {"", "mode-select", "mode-zoom", "mode-connect"};
    if (button.modelIndex != 0) return workbench.palette.Row(button.modelIndex).bitmap;
    const auto row = std::ranges::find(rows, button.command, &Row::command);
    const std::string_view stem =
        row != std::end(rows) ? row->file : modes[static_cast<std::size_t>(button.mode)];
    return Concat(stem, ".bmp");
}

}  // namespace

QIcon IconOfFile(const Workbench& workbench, const std::string& bitmap) {
    std::vector<DrawItem> items;
    const Rect square{0.0, 0.0, iconGrid, iconGrid};
    if (!workbench.icons->DrawFile(workbench.catalogue.modelDirectory + bitmap, square, items)) {
        return {};
    }
    QIcon icon;
    for (const int side : {16, 26, 52}) {
        QPixmap pixmap(side, side);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.scale(side / iconGrid, side / iconGrid);
        PaintItems(painter, items, ShownTheme());
        icon.addPixmap(pixmap);
    }
    return icon;
}

QIcon ButtonIcon(const Workbench& workbench, const BarButton& button) {
    return IconOfFile(workbench, ButtonBitmap(workbench, button));
}

QPixmap Thumbnail(const Drawing& drawing, QSize size, double ratio) {
    QPixmap pixmap(size * ratio);
    pixmap.setDevicePixelRatio(ratio);
    pixmap.fill(ColorFor(Role::Paper, ShownTheme()));
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    const double factor =
        std::min(size.width() / drawing.size.width, size.height() / drawing.size.height);
    painter.scale(factor, factor);
    PaintItems(painter, drawing.items, ShownTheme());
    return pixmap;
}

}  // namespace photrak

// Only what is in sight is painted. Gestures that belong to the window alone, panning and zooming
// at the pointer, never reach the diagram.
#include "workbench/diagram_window.h"

#include <QApplication>
#include <QHelpEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>
#include <QToolTip>
#include <algorithm>
#include <cmath>

#include "qt/painter.h"
#include "qt/text_measure_qt.h"
#include "qt/theme.h"
#include "workbench/canvas_drawing.h"
#include "workbench/canvas_tip.h"
#include "workbench/commands.h"
#include "workbench/look.h"
#include "workbench/mouse.h"
#include "workbench/view_commands.h"

namespace photrak {
namespace {

constexpr double wheelFactor = 1.1892071150027210667;  // the fourth root of two, a notch

CanvasPoint Whole(QPointF point) {
    return {static_cast<std::int32_t>(std::floor(point.x())),
            static_cast<std::int32_t>(std::floor(point.y()))};
}

}  // namespace

DiagramWindow::DiagramWindow(Workbench& workbench, DiagramView& view, Calls calls)
    : workbench_(workbench), view_(&view), calls_(std::move(calls)), zoom_(workbench.scale.zoom) {
    setFrameShape(QFrame::NoFrame);
    setFocusPolicy(Qt::StrongFocus);
    setAccessibleName(QStringLiteral("Canvas"));
    viewport()->setMouseTracking(true);
    viewport()->setAttribute(Qt::WA_OpaquePaintEvent);
    SetRanges();
}

void DiagramWindow::SetRanges() {
    const std::int32_t grid = workbench_.scale.gridSize;
    const auto set = [](QScrollBar& bar, int whole, int seen, int line, int page) {
        bar.setRange(0, std::max(0, whole - seen));
        bar.setSingleStep(line);
        bar.setPageStep(page);
    };
    set(*horizontalScrollBar(), canvasColumns * grid, viewport()->width(), grid, 4 * grid);
    set(*verticalScrollBar(), canvasRows * grid, viewport()->height(), grid, 3 * grid);
}

CanvasPoint DiagramWindow::ToCanvas(QPointF point) const {
    return Whole(point + QPointF(horizontalScrollBar()->value(), verticalScrollBar()->value()));
}

void DiagramWindow::ScrollToStart() {
    horizontalScrollBar()->setValue(0);
    verticalScrollBar()->setValue(0);
}

void DiagramWindow::ScrollTo(const Component& component) {
    const CanvasPoint at = IconAt(component, workbench_.scale);
    horizontalScrollBar()->setValue(at.x - viewport()->width() / 2);
    verticalScrollBar()->setValue(at.y - viewport()->height() / 2);
}

void DiagramWindow::Refresh() {
    if (!view_) return;
    const double zoom = workbench_.scale.zoom;
    if (zoom != zoom_) {
        const QPointF seen =
            anchor_.value_or(QPointF(viewport()->width() / 2.0, viewport()->height() / 2.0));
        const QPointF offset(horizontalScrollBar()->value(), verticalScrollBar()->value());
        const QPointF target = (seen + offset) * (zoom / zoom_) - seen;
        zoom_ = zoom;
        SetRanges();
        horizontalScrollBar()->setValue(static_cast<int>(std::lround(target.x())));
        verticalScrollBar()->setValue(static_cast<int>(std::lround(target.y())));
    }
    anchor_.reset();
    base_.Forget();
    switch (view_->mode) {
        case Mode::Connect:
            viewport()->setCursor(Qt::CrossCursor);
            break;
        case Mode::Zoom:
            viewport()->setCursor(Qt::SizeAllCursor);
            break;
        default:
            viewport()->setCursor(Qt::ArrowCursor);
    }
    viewport()->update();
}

void DiagramWindow::paintEvent(QPaintEvent*) {
    QPainter painter(viewport());
    const Theme theme = ShownTheme();
    if (!view_) {
        painter.fillRect(viewport()->rect(), ColorFor(Role::Paper, theme));
        return;
    }
    const QPoint offset(horizontalScrollBar()->value(), verticalScrollBar()->value());
    const Rect seen{static_cast<double>(offset.x()), static_cast<double>(offset.y()),
                    static_cast<double>(viewport()->width()),
                    static_cast<double>(viewport()->height())};
    CanvasLook look{.seen = seen, .measure = &WindowMeasure()};
    look.linePatterns = ShownLinePatterns();
    drawing_ = DrawCanvas(workbench_, *view_, look);
    base_.Paint(painter, viewport()->size(), offset, theme, drawing_.items);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(-offset);
    PaintItems(painter, drawing_.overlay, theme);
}

void DiagramWindow::resizeEvent(QResizeEvent* event) {
    QAbstractScrollArea::resizeEvent(event);
    SetRanges();
    if (!view_) return;
    // Without scroll bars: what a fit of the whole diagram may use.
    view_->width = width();
    view_->height = height();
}

void DiagramWindow::scrollContentsBy(int, int) {
    viewport()->update();
}

void DiagramWindow::Press(const QMouseEvent& event, bool isDouble) {
    if (!view_) return;
    if (event.button() == Qt::MiddleButton) {
        panFrom_ = event.pos();
        panStart_ = {horizontalScrollBar()->value(), verticalScrollBar()->value()};
        viewport()->setCursor(Qt::ClosedHandCursor);
        return;
    }
    if (event.button() != Qt::LeftButton && event.button() != Qt::RightButton) return;
    PressEvent press;
    press.at = ToCanvas(event.position());
    press.right = event.button() == Qt::RightButton;
    press.shift = event.modifiers().testFlag(Qt::ShiftModifier);
    press.isDouble = isDouble;
    MousePress(workbench_, *view_, press);
    calls_.changed();
}

void DiagramWindow::mousePressEvent(QMouseEvent* event) {
    Press(*event, false);
}

void DiagramWindow::mouseDoubleClickEvent(QMouseEvent* event) {
    Press(*event, true);
}

void DiagramWindow::mouseMoveEvent(QMouseEvent* event) {
    if (!view_) return;
    if (panFrom_) {
        const QPoint by = event->pos() - *panFrom_;
        horizontalScrollBar()->setValue(panStart_.x() - by.x());
        verticalScrollBar()->setValue(panStart_.y() - by.y());
        return;
    }
    const CanvasPoint at = ToCanvas(event->position());
    MouseMove(workbench_, *view_, at);
    const CanvasPoint cell = workbench_.scale.ToCell(at);
    calls_.pointedAt(QStringLiteral("%1, %2").arg(cell.x).arg(cell.y));
    viewport()->update();
}

void DiagramWindow::mouseReleaseEvent(QMouseEvent* event) {
    if (!view_) return;
    if (event->button() == Qt::MiddleButton) {
        panFrom_.reset();
        Refresh();
        return;
    }
    if (event->button() != Qt::LeftButton && event->button() != Qt::RightButton) return;
    MouseRelease(workbench_, *view_, ToCanvas(event->position()),
                 event->button() == Qt::RightButton);
    calls_.changed();
}

void DiagramWindow::ZoomAt(QPointF point, double factor) {
    anchor_ = point;
    // A run of turns is one change for View Last.
    constexpr qint64 pause = 700;  // milliseconds
    Scale& scale = workbench_.scale;
    const bool goesOn = wheel_.isValid() && wheel_.elapsed() < pause;
    goesOn ? scale.ContinueZoom(scale.zoom * factor) : scale.SetZoom(scale.zoom * factor);
    wheel_.start();
    calls_.changed();
}

void DiagramWindow::wheelEvent(QWheelEvent* event) {
    if (!event->modifiers().testFlag(Qt::ControlModifier)) {
        QAbstractScrollArea::wheelEvent(event);
        return;
    }
    constexpr double notch = 120.0;
    const double steps = event->angleDelta().y() / notch;
    if (steps != 0.0) ZoomAt(event->position(), std::pow(wheelFactor, steps));
    event->accept();
}

void DiagramWindow::keyPressEvent(QKeyEvent* event) {
    const Qt::KeyboardModifiers keys =
        event->modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier);
    const QString text = event->text();
    if (!keys && text.size() == 1 && text[0].isLetter() && calls_.typed(text)) return;
    const QString name = QKeySequence(event->keyCombination()).toString(QKeySequence::PortableText);
    static const std::map<QString, std::string> canvasKeys = {{QStringLiteral("Esc"), "Escape"},
                                                              {QStringLiteral("Left"), "Left"},
                                                              {QStringLiteral("Right"), "Right"},
                                                              {QStringLiteral("Up"), "Up"},
                                                              {QStringLiteral("Down"), "Down"}};
    static const std::map<QString, void (*)(Workbench&)> zoomKeys = {
        {QStringLiteral("Home"), ViewFit},
        {QStringLiteral("Ctrl+0"), ViewNormal},
        {QStringLiteral("Ctrl++"), ViewIn},
        {QStringLiteral("Ctrl+-"), ViewOut}};
    const auto zoom = zoomKeys.find(name);
    if (zoom != zoomKeys.end()) {
        zoom->second(workbench_);
        calls_.changed();
        if (zoom->second == ViewFit) ScrollToStart();
        return;
    }
    const auto key = canvasKeys.find(name);
    if (key == canvasKeys.end() || !PressKey(workbench_, key->second)) {
        event->ignore();
        return;
    }
    calls_.changed();
}

bool DiagramWindow::viewportEvent(QEvent* event) {
    if (event->type() != QEvent::ToolTip) return QAbstractScrollArea::viewportEvent(event);
    ShowTip(*static_cast<QHelpEvent*>(event));
    return true;
}

void DiagramWindow::ShowTip(const QHelpEvent& event) {
    const CanvasPoint at = ToCanvas(event.pos());
    const std::string text = view_ ? CanvasTip(workbench_, *view_, at) : std::string();
    if (text.empty()) {
        QToolTip::hideText();
        return;
    }
    // Names come from files: never rich text. Lines stay as they are.
    QToolTip::showText(event.globalPos(),
                       QStringLiteral("<div style='white-space:pre'>%1</div>")
                           .arg(ToQString(text).toHtmlEscaped()),
                       viewport());
}

}  // namespace photrak

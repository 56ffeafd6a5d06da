#include "qt/display_widget.h"

#include <QAccessible>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QNativeGestureEvent>
#include <QPainter>
#include <QToolTip>
#include <cmath>

#include "qt/accessible_marks.h"
#include "qt/painter.h"
#include "qt/theme.h"

namespace photrak {
namespace {

constexpr double tipTolerance = 3.0;

Point FromQt(const QPointF& p) {
    return {p.x(), p.y()};
}

Modifiers FromQt(Qt::KeyboardModifiers keys) {
    return {keys.testFlag(Qt::ShiftModifier), keys.testFlag(Qt::ControlModifier),
            keys.testFlag(Qt::AltModifier)};
}

PointerButton FromQt(Qt::MouseButton button) {
    switch (button) {
        case Qt::LeftButton:
            return PointerButton::Left;
        case Qt::MiddleButton:
            return PointerButton::Middle;
        case Qt::RightButton:
            return PointerButton::Right;
        default:
            return PointerButton::None;
    }
}
PointerButton HeldOf(Qt::MouseButtons buttons) {
    for (const auto button : {Qt::LeftButton, Qt::MiddleButton, Qt::RightButton}) {
        if (buttons.testFlag(button)) return FromQt(button);
    }
    return PointerButton::None;
}

Qt::CursorShape ToQt(PointerShape shape) {
    static constexpr Qt::CursorShape shapes[] = {
        Qt::ArrowCursor,   Qt::CrossCursor,   Qt::PointingHandCursor, Qt::ClosedHandCursor,
        Qt::SizeHorCursor, Qt::SizeVerCursor, Qt::BusyCursor};
    return shapes[static_cast<std::size_t>(shape)];
}

}  // namespace

DisplayWidget::DisplayWidget(DisplaySource& source, QWidget* parent)
    : QWidget(parent), source_(source) {
    InstallMarkAccessibility();
    setMouseTracking(true);
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_OpaquePaintEvent);
    setMinimumSize(160, 120);
}

void DisplayWidget::Redraw(Layer layer) {
    drawing_ = nullptr;
    if (layer == Layer::Base) fresh_ = false;
    update();
    AnnounceMarks(*this);
}

void DisplayWidget::SetBase(const QPixmap& base) {
    base_ = base;
    fresh_ = true;
    drawing_ = nullptr;
    update();
    AnnounceMarks(*this);
}

void DisplayWidget::SetTheme(Theme theme) {
    theme_ = theme;
    Redraw();
}

const Drawing& DisplayWidget::Ask() {
    if (!drawing_) {
        drawing_ = &source_.Picture({static_cast<double>(width()), static_cast<double>(height())},
                                    measure_);
    }
    return *drawing_;
}

const Marks& DisplayWidget::ShownMarks() {
    return Ask().marks;
}

QString DisplayWidget::AccessibleText() {
    return ToQString(source_.Name());
}

void DisplayWidget::ClickMark(const Mark& mark) {
    const Point at = mark.area.Center();
    source_.Pointer({PointerAction::Press, at, PointerButton::Left, {}});
    source_.Pointer({PointerAction::Release, at, PointerButton::Left, {}});
}

void DisplayWidget::PaintBase() {
    const double ratio = devicePixelRatioF();
    const QSize wanted = size() * ratio;
    const bool fits = base_.size() == wanted && base_.devicePixelRatio() == ratio;
    if (fresh_ && fits) return;
    if (!fits) drawing_ = nullptr;
    const Drawing& drawing = Ask();
    if (source_.IsBusy()) return;
    base_ = QPixmap(wanted);
    base_.setDevicePixelRatio(ratio);
    base_.fill(ColorFor(Role::Paper, theme_));
    QPainter painter(&base_);
    PaintItems(painter, drawing.items, theme_);
    fresh_ = true;
}

void DisplayWidget::paintEvent(QPaintEvent*) {
    PaintBase();
    QPainter painter(this);
    if (source_.IsBusy()) painter.fillRect(rect(), ColorFor(Role::Paper, theme_));
    painter.drawPixmap(0, 0, base_);
    if (!source_.IsBusy()) PaintItems(painter, Ask().overlay, theme_);
    if (hasFocus() && showsFocus_) {
        painter.setPen(QPen(ColorFor(Role::Selected, theme_), 1.0, Qt::DotLine));
        painter.drawRect(rect().adjusted(1, 1, -2, -2));
    }
}

void DisplayWidget::Send(PointerAction action, const QMouseEvent& event) {
    const PointerButton button =
        action == PointerAction::Move ? HeldOf(event.buttons()) : FromQt(event.button());
    const Point at = FromQt(event.position());
    source_.Pointer({action, at, button, FromQt(event.modifiers())});
    setCursor(ToQt(source_.Shape(at)));
}
void DisplayWidget::mousePressEvent(QMouseEvent* event) {
    Send(PointerAction::Press, *event);
}
void DisplayWidget::mouseMoveEvent(QMouseEvent* event) {
    Send(PointerAction::Move, *event);
}
void DisplayWidget::mouseReleaseEvent(QMouseEvent* event) {
    Send(PointerAction::Release, *event);
}
void DisplayWidget::mouseDoubleClickEvent(QMouseEvent* event) {
    Send(PointerAction::DoubleClick, *event);
}
/// Who comes with Tab sees where the keys go.
void DisplayWidget::focusInEvent(QFocusEvent* event) {
    showsFocus_ =
        event->reason() == Qt::TabFocusReason || event->reason() == Qt::BacktabFocusReason;
    QWidget::focusInEvent(event);
}
void DisplayWidget::leaveEvent(QEvent*) {
    source_.Pointer({PointerAction::Leave, {-1.0, -1.0}, PointerButton::None, {}});
}

void DisplayWidget::wheelEvent(QWheelEvent* event) {
    constexpr double notch = 120.0;
    // With Alt held a toolkit takes the wheel for a sideways one.
    const bool alt = event->modifiers().testFlag(Qt::AltModifier);
    const double up = event->angleDelta().y() / notch, side = event->angleDelta().x() / notch;
    source_.Wheel({FromQt(event->position()), alt ? up + side : up, alt ? 0.0 : side,
                   FromQt(event->modifiers())});
    event->accept();
}

void DisplayWidget::keyPressEvent(QKeyEvent* event) {
    const std::string key =
        QKeySequence(event->keyCombination()).toString(QKeySequence::PortableText).toStdString();
    if (!source_.Key(key)) QWidget::keyPressEvent(event);
}

void DisplayWidget::changeEvent(QEvent* event) {
    if (event->type() == QEvent::FontChange) Redraw();
    QWidget::changeEvent(event);
}

bool DisplayWidget::ShowTip(QHelpEvent& event) {
    const Mark* mark = MarkAt(ShownMarks(), FromQt(QPointF(event.pos())), tipTolerance);
    // A tip for most of the picture would only stand in the way.
    const bool covers =
        mark && 2.0 * mark->area.width > width() && 2.0 * mark->area.height > height();
    if (!mark || mark->hint.empty() || covers) {
        QToolTip::hideText();
        event.ignore();
        return true;
    }
    QString text = ToQString(mark->name).toHtmlEscaped();
    text += QStringLiteral("<br>") + ToQString(mark->hint).toHtmlEscaped();
    QToolTip::showText(event.globalPos(), QStringLiteral("<qt>") + text, this);
    return true;
}

bool DisplayWidget::event(QEvent* event) {
    if (event->type() == QEvent::ToolTip) return ShowTip(static_cast<QHelpEvent&>(*event));
    if (event->type() == QEvent::NativeGesture) {
        const auto& gesture = static_cast<const QNativeGestureEvent&>(*event);
        if (gesture.gestureType() == Qt::ZoomNativeGesture) {
            constexpr double notchesOfDouble = 4.0;
            source_.Wheel({FromQt(gesture.position()), notchesOfDouble * gesture.value(), 0.0, {}});
            return true;
        }
    }
    return QWidget::event(event);
}

}  // namespace photrak

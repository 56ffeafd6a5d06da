// A widget that shows a display list and hands on what pointer, wheel and keys do. It decides
// nothing: what a drawing means is the matter of its source. Marks of the list are tips and
// accessible items.
#pragma once

#include <QPixmap>
#include <QWidget>
#include <string>

#include "drawing/display_list.h"
#include "drawing/input.h"
#include "qt/text_measure_qt.h"

class QHelpEvent;

namespace photrak {

/// What a DisplayWidget shows and asks. Borrowed: it outlives the widget.
class DisplaySource {
  public:
    virtual ~DisplaySource() = default;
    /// The drawing for a page of this size. Asked for when the size changed or after Redraw; the
    /// reference holds until the next call of this source.
    virtual const Drawing& Picture(PageSize size, const TextMeasure& measure) = 0;
    /// True while a picture is made elsewhere: what was painted last stays until SetBase.
    virtual bool IsBusy() const { return false; }
    virtual void Pointer(const PointerInput&) {}
    virtual void Wheel(const WheelInput&) {}
    /// A key as "Ctrl+Left". False lets the window have it.
    virtual bool Key(std::string_view) { return false; }
    virtual PointerShape Shape(Point) { return PointerShape::Arrow; }
    /// What a screen reader says of the whole.
    virtual std::string Name() { return {}; }
};

class DisplayWidget : public QWidget {
    Q_OBJECT

  public:
    explicit DisplayWidget(DisplaySource& source, QWidget* parent = nullptr);

    /// Asks the source for a new picture. With Overlay the painted base layer is kept.
    enum class Layer { Base, Overlay };
    void Redraw(Layer layer = Layer::Base);
    /// The base layer of the source's picture, painted by it.
    void SetBase(const QPixmap& base);
    void SetTheme(Theme theme);
    /// Marks of what is shown.
    const Marks& ShownMarks();
    QString AccessibleText();
    /// Does what a click on a mark does.
    void ClickMark(const Mark& mark);

    QSize sizeHint() const override { return {800, 500}; }

  protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void changeEvent(QEvent* event) override;
    bool event(QEvent* event) override;

  private:
    void Send(PointerAction action, const QMouseEvent& event);
    const Drawing& Ask();
    void PaintBase();
    bool ShowTip(QHelpEvent& event);

    DisplaySource& source_;
    Theme theme_ = Theme::Light;
    QtTextMeasure measure_;
    const Drawing* drawing_ = nullptr;  // the source's; null asks for it again
    QPixmap base_;                      // its base layer, painted
    bool showsFocus_ = false;
    bool fresh_ = false;  // it is of this picture
};

}  // namespace photrak

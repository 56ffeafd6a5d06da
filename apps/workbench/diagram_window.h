// One open diagram in the frame: a scrolling canvas that paints the display list of its view and
// hands pointer and keys to the workbench.
#pragma once

#include <QAbstractScrollArea>
#include <QElapsedTimer>
#include <functional>
#include <optional>

#include "drawing/display_list.h"
#include "workbench/base_layer.h"
#include "workbench/workbench.h"

class QHelpEvent;

namespace photrak {

class DiagramWindow : public QAbstractScrollArea {
  public:
    /// What the frame is told: an event has changed something; the pointer stands over a cell.
    struct Calls {
        std::function<void()> changed;
        std::function<void(QString)> pointedAt;
        std::function<bool(const QString& letter)> typed;  // a letter on the canvas
    };

    DiagramWindow(Workbench& workbench, DiagramView& view, Calls calls);

    DiagramView& View() const { return *view_; }
    /// The view is gone: paints and forwards nothing any more.
    void Detach() { view_ = nullptr; }
    /// Takes over zoom and diagram; a changed zoom keeps the point in the middle, or the one that a
    /// wheel zooms at.
    void Refresh();
    /// The exact fit of the diagram, or unity, with the wanted point kept in sight.
    void ScrollToStart();
    /// Brings the block into sight.
    void ScrollTo(const Component& component);
    /// A point of the window in pixels of the canvas.
    CanvasPoint ToCanvas(QPointF point) const;

  protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    bool viewportEvent(QEvent* event) override;
    void scrollContentsBy(int dx, int dy) override;

  private:
    void Press(const QMouseEvent& event, bool isDouble);
    void ZoomAt(QPointF point, double factor);
    void SetRanges();
    void ShowTip(const QHelpEvent& event);

    Workbench& workbench_;
    DiagramView* view_;
    Calls calls_;
    double zoom_ = 1.0;
    QElapsedTimer wheel_;            // since its last turn
    std::optional<QPointF> anchor_;  // of the zoom under way
    std::optional<QPoint> panFrom_;  // the middle button is down
    QPoint panStart_;
    Drawing drawing_;
    BaseLayer base_;
};

}  // namespace photrak

// The diagram as it was painted last, kept as pixels: while the pointer drags something or the view
// scrolls, only what is new is painted.
#pragma once

#include <QPixmap>
#include <QPoint>
#include <QRegion>
#include <vector>

#include "drawing/display_list.h"

class QPainter;

namespace photrak {

class BaseLayer {
  public:
    /// The diagram may have changed: what is kept is not shown again.
    void Forget() { kept_ = {}; }
    /// Paints paper and items, in pixels of the canvas, with the point `offset` of it in the left
    /// top corner of the window.
    void Paint(QPainter& painter, QSize window, QPoint offset, Theme theme,
               const std::vector<DrawItem>& items);

  private:
    /// What of the window is not kept, after moving the rest to where it is now.
    QRegion Move(QSize window, double ratio, QPoint offset, Theme theme);

    QPixmap kept_;
    QPoint offset_;
    Theme theme_ = Theme::Light;
};

}  // namespace photrak

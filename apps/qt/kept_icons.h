// Icons as pixels: a diagram of thousands of blocks shows a few pictures over and over, and each is
// painted once for its size, theme and place between the pixels.
#pragma once

#include <QImage>
#include <functional>
#include <map>
#include <memory>
#include <tuple>

#include "drawing/display_list.h"

class QPainter;

namespace photrak {

class KeptIcons {
  public:
    /// Paints the items of an icon, its square at the origin of the painter.
    using Paint = std::function<void(QPainter& painter)>;

    /// Draws the icon with a painter whose transform scales by `scale` after moving by `offset`
    /// device pixels. False, with nothing drawn, for an icon that is too large to be kept.
    bool Draw(QPainter& painter, const IconItem& item, Theme theme, double scale, QPointF offset,
              const Paint& paint);

    /// The icons of this thread.
    static KeptIcons& OfThread();

  private:
    struct Kept {
        std::shared_ptr<const IconPicture> icon;  // so that its address stays its own
        QImage image;
    };
    using Key = std::tuple<const IconPicture*, Theme, double, double, double, double>;

    std::map<Key, Kept> kept_;
};

}  // namespace photrak

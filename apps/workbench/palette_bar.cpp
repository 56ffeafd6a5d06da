// The places come from the table: 30 by 30 each, with the gaps that it has.
#include "workbench/palette_bar.h"

#include <QIcon>
#include <QToolButton>
#include <algorithm>

namespace photrak {
namespace {

constexpr int side = 30, border = 1;

}  // namespace

ButtonBar::ButtonBar(const QString& name, Table table, IconOf icon, Pushed pushed)
    : table_(std::move(table)), icon_(std::move(icon)), pushed_(std::move(pushed)) {
    setObjectName(name);
    setAccessibleName(name);
    buttons_ = table_();
    int width = 0, height = 0;
    for (std::size_t i = 0; i < buttons_.size(); ++i) {
        const BarButton& button = buttons_[i];
        auto* widget = new QToolButton(this);
        const QString tip = QString::fromStdString(button.tooltip);
        widget->setObjectName(tip);
        widget->setAccessibleName(tip);
        widget->setToolTip(tip);
        widget->setAutoRaise(true);
        widget->setIconSize({side - 4, side - 4});
        widget->setCheckable(button.latches);
        widget->setGeometry(button.x + border, button.y + border, side, side);
        widget->setFocusPolicy(Qt::TabFocus);
        connect(widget, &QToolButton::clicked, this, [this, i] {
            const BarButton inHand = buttons_[i];  // Refresh makes the rows anew
            pushed_(inHand);
        });
        widgets_.push_back(widget);
        width = std::max(width, button.x + side + 2 * border);
        height = std::max(height, button.y + side + 2 * border);
    }
    setFixedSize(width, height);
    RefreshIcons();
    Refresh();
}

void ButtonBar::Refresh() {
    buttons_ = table_();
    const std::size_t count = std::min(buttons_.size(), widgets_.size());
    for (std::size_t i = 0; i < count; ++i) {
        widgets_[i]->setEnabled(buttons_[i].isOn);
        widgets_[i]->setChecked(buttons_[i].isDown);
    }
}

void ButtonBar::RefreshIcons() {
    for (std::size_t i = 0; i < widgets_.size(); ++i) widgets_[i]->setIcon(icon_(buttons_[i]));
}

}  // namespace photrak

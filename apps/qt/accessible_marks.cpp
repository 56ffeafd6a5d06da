#include "qt/accessible_marks.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <algorithm>
#include <map>
#include <memory>

#include "qt/display_widget.h"
#include "qt/text_measure_qt.h"

namespace photrak {
namespace {

QAccessible::Role RoleOfMark(const std::string& id) {
    static const std::map<std::string, QAccessible::Role, std::less<>> roles{
        {"legend", QAccessible::CheckBox},  {"axis", QAccessible::Slider},
        {"cursor", QAccessible::Indicator}, {"curve", QAccessible::Graphic},
        {"pane", QAccessible::Chart},       {"block", QAccessible::Graphic},
        {"port", QAccessible::PushButton},  {"wire", QAccessible::Graphic},
    };
    const auto found = roles.find(id.substr(0, id.find(':')));
    return found == roles.end() ? QAccessible::StaticText : found->second;
}

/// One mark, found again by its place in the list.
class MarkItem : public QAccessibleInterface, public QAccessibleActionInterface {
  public:
    MarkItem(QWidget* widget, int index) : widget_(widget), index_(index) {}

    bool isValid() const override { return Found() != nullptr; }
    QObject* object() const override { return nullptr; }
    QWindow* window() const override { return widget_->window()->windowHandle(); }
    QAccessibleInterface* parent() const override {
        return QAccessible::queryAccessibleInterface(widget_);
    }
    QAccessibleInterface* child(int) const override { return nullptr; }
    QAccessibleInterface* childAt(int, int) const override { return nullptr; }
    int childCount() const override { return 0; }
    int indexOfChild(const QAccessibleInterface*) const override { return -1; }
    void setText(QAccessible::Text, const QString&) override {}

    QString text(QAccessible::Text kind) const override {
        const Mark* mark = Found();
        if (!mark) return {};
        if (kind == QAccessible::Name) return ToQString(mark->name);
        return kind == QAccessible::Description || kind == QAccessible::Help ? ToQString(mark->hint)
                                                                             : QString();
    }
    QRect rect() const override {
        const Mark* mark = Found();
        if (!mark) return {};
        const QRectF area(mark->area.x, mark->area.y, mark->area.width, mark->area.height);
        const QRect pixels = area.toAlignedRect();
        return {widget_->mapToGlobal(pixels.topLeft()), pixels.size()};
    }
    QAccessible::Role role() const override {
        const Mark* mark = Found();
        return mark ? RoleOfMark(mark->id) : QAccessible::NoRole;
    }
    QAccessible::State state() const override {
        QAccessible::State state;
        const Mark* mark = Found();
        state.invalid = mark == nullptr;
        state.checkable = role() == QAccessible::CheckBox;
        state.checked = state.checkable && !mark->name.ends_with(", hidden");
        return state;
    }
    void* interface_cast(QAccessible::InterfaceType type) override {
        return type == QAccessible::ActionInterface ? static_cast<QAccessibleActionInterface*>(this)
                                                    : nullptr;
    }
    QStringList actionNames() const override { return {pressAction()}; }
    void doAction(const QString&) override {
        if (const Mark* mark = Found()) Display().ClickMark(*mark);
    }
    QStringList keyBindingsForAction(const QString&) const override { return {}; }

  private:
    DisplayWidget& Display() const { return static_cast<DisplayWidget&>(*widget_); }
    const Mark* Found() const {
        const Marks& marks = Display().ShownMarks();
        const auto place = static_cast<std::size_t>(index_);
        return place < marks.size() ? &marks[place] : nullptr;
    }

    QWidget* widget_;
    int index_;
};

class MarksItem : public QAccessibleWidget {
  public:
    explicit MarksItem(QWidget* widget) : QAccessibleWidget(widget, QAccessible::Canvas) {}
    ~MarksItem() override {
        for (const QAccessible::Id id : items_) QAccessible::deleteAccessibleInterface(id);
    }

    int childCount() const override { return static_cast<int>(Display().ShownMarks().size()); }
    QAccessibleInterface* child(int index) const override {
        if (index < 0 || index >= childCount()) return nullptr;
        while (items_.size() <= static_cast<std::size_t>(index)) {
            items_.push_back(QAccessible::registerAccessibleInterface(
                new MarkItem(widget(), static_cast<int>(items_.size()))));
        }
        return QAccessible::accessibleInterface(items_[static_cast<std::size_t>(index)]);
    }
    int indexOfChild(const QAccessibleInterface* item) const override {
        const auto is = [item](QAccessible::Id id) {
            return QAccessible::accessibleInterface(id) == item;
        };
        const auto found = std::find_if(items_.begin(), items_.end(), is);
        return found == items_.end() ? -1 : static_cast<int>(found - items_.begin());
    }
    QAccessibleInterface* childAt(int x, int y) const override {
        const QPoint at = widget()->mapFromGlobal(QPoint(x, y));
        const Marks& marks = Display().ShownMarks();
        const Mark* mark =
            MarkAt(marks, {static_cast<double>(at.x()), static_cast<double>(at.y())});
        return mark ? child(static_cast<int>(mark - marks.data())) : nullptr;
    }
    QString text(QAccessible::Text kind) const override {
        return kind == QAccessible::Name ? Display().AccessibleText()
                                         : QAccessibleWidget::text(kind);
    }

  private:
    DisplayWidget& Display() const { return static_cast<DisplayWidget&>(*widget()); }
    mutable std::vector<QAccessible::Id> items_;
};

QAccessibleInterface* MakeItem(const QString& className, QObject* object) {
    if (className != QLatin1String("photrak::DisplayWidget") || !object) return nullptr;
    return new MarksItem(static_cast<QWidget*>(object));
}

}  // namespace

void InstallMarkAccessibility() {
    static const bool done = [] {
        QAccessible::installFactory(MakeItem);
        return true;
    }();
    (void)done;
}

void AnnounceMarks(DisplayWidget& widget) {
    if (!QAccessible::isActive()) return;
    QAccessibleEvent event(&widget, QAccessible::ObjectReorder);
    QAccessible::updateAccessibility(&event);
}

}  // namespace photrak
